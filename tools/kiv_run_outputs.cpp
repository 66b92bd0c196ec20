#include "tools/kiv_run_outputs.h"

#include "machine/kiv_machine.h"
#include "sound/sound_slices.h"
#include "tools/kiv_run_options.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <png.h>
#include <vector>

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

namespace {

// Characters 0x80-0xFF of the font; the codes below are ASCII with the yen sign at 0x5C.
constexpr char16_t upper_half[] = u"▁▂▃▄▅▆▇█▏▎▍▌▋▊▉┼"
                                  u"┴┬┤├▔─│▕┌┐└┘╭╮╰╯"
                                  u" ｡｢｣､･ｦｧｨｩｪｫｬｭｮｯ"
                                  u"ｰｱｲｳｴｵｶｷｸｹｺｻｼｽｾｿ"
                                  u"ﾀﾁﾂﾃﾄﾅﾆﾇﾈﾉﾊﾋﾌﾍﾎﾏ"
                                  u"ﾐﾑﾒﾓﾔﾕﾖﾗﾘﾙﾚﾛﾜﾝﾞﾟ"
                                  u"═╞╪╡◢◣◥◤♠♥♦♣●○╱╲"
                                  u"╳円年月日時分秒        ";
static_assert(sizeof upper_half / sizeof *upper_half == 128 + 1);

char16_t character_of(uint8_t code) {
    if (code >= 0x80) return upper_half[code - 0x80];
    if (code < 0x20 || code == 0x7F) return u' ';
    return code == '\\' ? u'¥' : static_cast<char16_t>(code);
}

// Bits 0-3 are the left column from the top, 4-7 the right one; Braille counts its dots 1 2 3 7, 4 5 6 8.
char16_t braille_of(uint8_t code) {
    constexpr uint8_t dots[] = {0x01, 0x02, 0x04, 0x40, 0x08, 0x10, 0x20, 0x80};
    char16_t pattern = 0x2800;
    for (int bit = 0; bit < 8; ++bit)
        if (code >> bit & 1) pattern = static_cast<char16_t>(pattern | dots[bit]);
    return pattern == 0x2800 ? u' ' : pattern;
}

void append_utf8(std::string &text, char16_t c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
    } else if (c < 0x800) {
        text += static_cast<char>(0xC0 | c >> 6);
        text += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | c >> 12);
        text += static_cast<char>(0x80 | (c >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (c & 0x3F));
    }
}

std::string text_row(uint32_t row) {
    machine.text_row_fetch(row);
    machine.text_row_decode(row);
    std::string line, blanks;
    for (int column = 0; column < text_columns; column += machine.crtc_wide ? 1 : 2) {
        const uint8_t code = machine.row_chars[column], attribute = machine.cell_attr[column];
        char16_t c = attribute & cell_semigraphic ? braille_of(code) : character_of(code);
        if (attribute & cell_secret) c = u' ';
        if (c == u' ') {
            blanks += ' ';
            continue;
        }
        line += blanks;
        blanks.clear();
        append_utf8(line, c);
    }
    return line + "\n";
}

} // namespace

std::string text_screen() {
    if (machine.crtc_status != 0) return {};
    // Decoding a row leaves traces that the next frame would build on.
    const display_block as_it_was = machine;
    std::string text;
    const uint32_t rows = machine.crtc_rows25 ? 25 : 20;
    for (uint32_t row = 0; row < rows; ++row) text += text_row(row);
    static_cast<display_block &>(machine) = as_it_was;
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

namespace {

constexpr uint32_t wav_header_size = 44;
constexpr uint64_t wav_bytes_limit = 0xFFFFFFFF - wav_header_size;

void put32(uint8_t *at, uint64_t value) {
    for (int i = 0; i < 4; ++i) at[i] = static_cast<uint8_t>(value >> 8 * i);
}

} // namespace

void wav_file::write_header() {
    // RIFF, WAVE, a format chunk of 16 bytes: PCM (1), one channel, block of 2 bytes, 16 bits.
    uint8_t header[wav_header_size] = {'R', 'I', 'F', 'F', 0, 0, 0,  0, 'W', 'A', 'V', 'E', 'f', 'm',
                                       't', ' ', 16,  0,   0, 0, 1,  0, 1,   0,   0,   0,   0,   0,
                                       0,   0,   0,   0,   2, 0, 16, 0, 'd', 'a', 't', 'a'};
    put32(header + 4, wav_header_size - 8 + bytes);
    put32(header + 24, sample_rate);
    put32(header + 28, sample_rate * 2);
    put32(header + 40, bytes);
    if (bytes == 0)
        file.write(header, sizeof header);
    else
        file.rewrite_start(header, sizeof header);
}

void wav_file::open(const std::string &path) {
    name = path;
    file.open(path);
    write_header();
}

void wav_file::add(const int16_t *samples, uint32_t count) {
    const uint64_t size = uint64_t{count} * 2;
    if (bytes + size > wav_bytes_limit) throw run_failure(name + ": longer than a WAV file can be (6 hours)");
    file.write(samples, size); // the host stores the low byte first, as the file does
    bytes += size;
}

void wav_file::finish() {
    if (bytes != 0) write_header();
    file.finish();
}
