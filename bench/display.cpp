// Time per composed frame, beside a memset of the same frame in the same run.
//
// The screen is the worst there is: every cell holds a glyph with an attribute, the three planes are noise.
#include "machine/kiv_machine.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr size_t frame_pixels = frame_width * frame_height;
std::vector<uint32_t> frame(frame_pixels);

void memset_frame(benchmark::State &state) {
    for (auto _ : state) {
        std::memset(frame.data(), static_cast<int>(state.iterations()), frame_pixels * sizeof(uint32_t));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(memset_frame)->Unit(benchmark::kMicrosecond);

void full_screen_of_everything(uint32_t mode) {
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    machine_init(
        machine, [] {}, [] {});
    std::mt19937 random(8801);
    for (uint8_t &byte : machine.font_rom) byte = static_cast<uint8_t>(random() | 0x10);
    for (auto &plane : machine.gvram)
        for (uint8_t &byte : plane) byte = static_cast<uint8_t>(random());
    for (uint32_t row = 0; row < text_rows; ++row) {
        for (uint32_t i = 0; i < text_row_bytes; ++i)
            machine.ram[machine.text_start + row * text_row_bytes + i] = static_cast<uint8_t>(random());
        for (uint32_t pair = 0; pair < attr_pair_count; ++pair) // attributes that hide nothing
            machine.ram[machine.text_start + row * text_row_bytes + 81 + 2 * pair] &= 0xFC;
    }
    for (uint8_t i = 0; i < 8; ++i) machine.palette[i] = i;
    machine.crtc_mono = uint8_t{0};
    machine.select_attr_decoder(0);
    machine.select_renderer(mode);
    machine.crtc_status = uint8_t{0};
    set_frame_geometry(frame_width, frame_height, frame_width);
    geometry.frame_pixels = frame.data();
}

void compose(benchmark::State &state, bool text, bool graphics) {
    full_screen_of_everything(static_cast<uint32_t>(state.range(0)));
    if (!text) machine.crtc_status = uint8_t{crtc_stopped};
    if (graphics) machine.port31 |= port31_graphics_on;
    const uint32_t format = state.range(1) == 32 ? pixels_rgb32 : pixels_indexed8;
    for (auto _ : state) {
        benchmark::DoNotOptimize(compose_frame(format));
        benchmark::ClobberMemory();
    }
}

void text_and_graphics(benchmark::State &state) { compose(state, true, true); }
void text_only(benchmark::State &state) { compose(state, true, false); }
void graphics_only(benchmark::State &state) { compose(state, false, true); }

BENCHMARK(text_and_graphics)
    ->ArgNames({"mode", "bits"})
    ->ArgsProduct({{0, 1, 2, 3}, {8, 32}})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(text_only)->ArgNames({"mode", "bits"})->Args({3, 8})->Args({3, 32})->Unit(benchmark::kMicrosecond);
BENCHMARK(graphics_only)
    ->ArgNames({"mode", "bits"})
    ->Args({3, 8})
    ->Args({3, 32})
    ->Unit(benchmark::kMicrosecond);

} // namespace
