// Time per composed frame, beside a memset of the same frame: every screen mode, both pixel sizes, with text
// and graphics, text only, graphics only. The text is the worst case: no blank cell.
#include "display/renderers.h"
#include "machine/kiv_machine.h"
#include "platform/pixel_memory.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <ctime>
#include <random>
#include <string>

namespace {

// What differs from a plain frame.
enum variant { plain, interlaced, random_attributes, without_avx2, without_avx2_mixed_palette };

enum layers { nothing = 0, text = 1, graphics = 2, both = 3 };

constexpr const char *variant_names[] = {"", "/interlace", "/20 random attributes", "/without AVX2",
                                         "/without AVX2, mixed palette"};

const char *layer_name(int layers) {
    constexpr const char *names[] = {"nothing", "text", "graphics", "text+graphics"};
    return names[layers];
}

// Attributes that hide nothing. Few: four colour changes a row, the rest fillers.
void store_row(uint32_t row, bool few, std::mt19937 &random) {
    uint8_t *const line = machine.ram + machine.text_start + text_row_bytes * row;
    for (uint32_t x = 0; x < text_columns; ++x) line[x] = static_cast<uint8_t>(0x21 + random() % 0x5E);
    for (uint32_t i = 0; i < attr_pair_count; ++i) {
        uint8_t *const pair = line + text_columns + 2 * i;
        pair[0] = static_cast<uint8_t>(!few ? random() : i < 4 ? 20 * i : 80);
        pair[1] = static_cast<uint8_t>(!few ? random() & 0xFC : 0x28 + 0x20 * (random() % 7));
    }
}

// A full screen of text in four colours a row over planes of random bytes.
void fill_machine(int layers, uint32_t mode, variant how) {
    machine_init(
        machine, [] {}, [] {});
    std::mt19937 random(1);
    for (auto &plane : machine.gvram)
        for (uint8_t &byte : plane) byte = static_cast<uint8_t>(random());
    for (uint8_t &line : machine.font_rom)
        line = static_cast<uint8_t>(random() & random()); // as sparse as letters
    for (uint8_t i = 0; i < 8; ++i)
        machine.palette[i] = how == without_avx2_mixed_palette ? i * i / 7 & 7 : i;
    for (uint32_t row = 0; row < text_rows; ++row) store_row(row, how != random_attributes, random);
    machine.crtc_control(mode & 2 ? 1 : 0); // columns; colour attributes
    machine.select_renderer(mode);
    machine.select_scanline_colours(how == interlaced);
    machine.crtc_status = layers & text ? uint8_t{0} : uint8_t{crtc_stopped};
    machine.port31 = layers & graphics ? uint8_t{port31_graphics_on} : uint8_t{0};
}

size_t frame_bytes(uint32_t format) {
    return size_t{frame_width} * frame_height * (format == pixels_rgb32 ? 4 : 1);
}

double cpu_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// CPU time of one memset of the frame, taken just before the frames themselves.
double memset_seconds(platform::pixel_memory &frame, uint32_t format) {
    constexpr int times = 1000;
    const double start = cpu_seconds();
    for (int i = 0; i < times; ++i) {
        std::memset(frame.data(), i, frame_bytes(format));
        benchmark::ClobberMemory();
    }
    return (cpu_seconds() - start) / times;
}

void memset_frame(benchmark::State &state, uint32_t format) {
    platform::pixel_memory frame(frame_bytes(format) / 4);
    for (auto _ : state) {
        std::memset(frame.data(), 0, frame_bytes(format));
        benchmark::ClobberMemory();
    }
}

void compose(benchmark::State &state, int layers, uint32_t mode, uint32_t format, variant how) {
    fill_machine(layers, mode, how);
    use_wide_vectors = how < without_avx2;
    platform::pixel_memory frame(frame_width * frame_height);
    set_frame_geometry(frame_width, frame_height, frame_width);
    geometry.frame_pixels = frame.data();
    const double unit = memset_seconds(frame, format), start = cpu_seconds();
    for (auto _ : state) {
        benchmark::DoNotOptimize(compose_frame(format));
        benchmark::ClobberMemory();
    }
    state.counters["x memset"] = (cpu_seconds() - start) / static_cast<double>(state.iterations()) / unit;
}

void add(int layers, uint32_t mode, uint32_t format, variant how) {
    const std::string name = std::string(layer_name(layers)) + (mode & 2 ? "/80x" : "/40x") +
                             (mode & 1 ? "25" : "20") + (format == pixels_rgb32 ? "/32bit" : "/8bit") +
                             variant_names[how];
    benchmark::RegisterBenchmark(name.c_str(), compose, layers, mode, format, how)
        ->Unit(benchmark::kMicrosecond);
}

const bool registered = [] {
    for (const uint32_t format : {pixels_rgb32, pixels_indexed8}) {
        benchmark::RegisterBenchmark(format == pixels_rgb32 ? "memset/32bit" : "memset/8bit", memset_frame,
                                     format)
            ->Unit(benchmark::kMicrosecond);
        for (const int layers : {both, text, graphics, nothing})
            for (uint32_t mode = 4; mode-- > 0;)
                if ((layers & text) || mode == 3) add(layers, mode, format, plain);
        for (const variant how : {interlaced, random_attributes}) add(both, 3, format, how);
        for (const int layers : {both, graphics}) add(layers, 3, format, without_avx2);
        add(both, 3, format, without_avx2_mixed_palette);
    }
    return true;
}();

} // namespace
