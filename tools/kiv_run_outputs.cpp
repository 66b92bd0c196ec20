#include "tools/kiv_run_outputs.h"

#include "display/text_screen.h"
#include "machine/kiv_machine.h"
#include "sound/wave_header.h"
#include "tools/kiv_run_options.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <png.h>
#include <vector>

// ---- files ------------------------------------------------------------------------------------------

std::vector<uint8_t> bytes_of_file(const std::string &path, size_t most) {
    const platform::file_handle file = platform::open_file(path, true);
    if (file == platform::invalid_file) throw run_failure(path + ": " + platform::last_file_error());
    const int64_t size = platform::file_size(file);
    std::vector<uint8_t> bytes(std::min(most, static_cast<size_t>(std::max<int64_t>(size, 0))));
    size_t got = 0;
    while (got < bytes.size()) {
        const int64_t count = platform::read_file(file, bytes.data() + got, bytes.size() - got);
        if (count <= 0) break;
        got += static_cast<size_t>(count);
    }
    const std::string reason = platform::last_file_error();
    platform::close_file(file);
    if (size < 0 || got < bytes.size()) throw run_failure(path + ": " + reason);
    return bytes;
}

// ---- pictures ----------------------------------------------------------------------------------------

namespace {

void collect_png(png_structp png, png_bytep data, size_t size) {
    auto &bytes = *static_cast<std::vector<uint8_t> *>(png_get_io_ptr(png));
    bytes.insert(bytes.end(), data, data + size);
}

void png_failed(png_structp, png_const_charp text) { throw run_failure(std::string("picture: ") + text); }
void png_warned(png_structp, png_const_charp) {}

std::vector<uint8_t> encode_png(const uint8_t *pixels) {
    std::vector<uint8_t> bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, png_failed, png_warned);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &bytes, collect_png, nullptr);
    png_set_IHDR(png, info, frame_width, frame_height, 8, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    std::array<png_color, 256> palette;
    for (size_t i = 0; i < palette.size(); ++i)
        palette[i] = {static_cast<png_byte>(host_palette[i] >> 16),
                      static_cast<png_byte>(host_palette[i] >> 8), static_cast<png_byte>(host_palette[i])};
    png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
    png_write_info(png, info);
    for (int y = 0; y < frame_height; ++y) png_write_row(png, pixels + y * frame_width);
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return bytes;
}

} // namespace

void write_png(const std::string &path, const uint8_t *pixels) {
    const std::vector<uint8_t> bytes = encode_png(pixels);
    output_file file;
    file.open(path);
    file.write(bytes.data(), bytes.size());
    file.finish();
}

std::string numbered_name(const std::string &path, uint64_t frame) {
    const std::filesystem::path p(path);
    char number[32];
    std::snprintf(number, sizeof number, "-%06llu", static_cast<unsigned long long>(frame));
    return (p.parent_path() / (p.stem().string() + number + p.extension().string())).string();
}

// ---- the text screen ---------------------------------------------------------------------------------

std::string text_screen() {
    std::string text(text_screen_utf8(nullptr, 0), '\0');
    text_screen_utf8(text.data(), text.size() + 1);
    return text;
}

// ---- files that grow ---------------------------------------------------------------------------------

void output_file::check(bool good) const {
    if (!good) throw run_failure(name + ": " + platform::last_file_error());
}

void output_file::open(const std::string &path) {
    name = path;
    check(file.open(path));
}

// ---- sound -------------------------------------------------------------------------------------------

void wav_file::write_header() {
    const wave_header_bytes header = wave_header(bytes);
    if (bytes == 0)
        file.write(header.data(), header.size());
    else
        file.rewrite_start(header.data(), header.size());
}

void wav_file::open(const std::string &path) {
    name = path;
    file.open(path);
    write_header();
}

void wav_file::add(const int16_t *samples, uint32_t count) {
    const uint64_t size = uint64_t{count} * 2;
    if (bytes + size > wave_limit) throw run_failure(name + ": longer than a WAV file can be (6 hours)");
    file.write(samples, size); // the host stores the low byte first, as the file does
    bytes += size;
}

void wav_file::finish() {
    if (bytes != 0) write_header();
    file.finish();
}
