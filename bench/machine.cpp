// The whole machine: the demonstration of our ROM set, every device, sound rendered at every slice and a
// 32-bit frame composed at every vertical blank, as a multiple of real time on one core; with plain passes
// for comparison.
#include "bench/demonstration.h"
#include "machine/machine_run.h"
#include "platform/pixel_memory.h"
#include "resources/resources.h"
#include "sound/sound_slices.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

sound_slices sound;

const sound_listener listener = {
    [] { sound.beepOn(); },
    [] { sound.beepOff(); },
    [](uint16_t frequency, uint32_t channel) { sound.setTone(frequency, channel); },
    [](uint32_t cycles) { sound.advanceClock(cycles); },
    [] { sound.muteTones(); },
    [] { sound.clearPCM(); },
};

bool load(const char *name, uint8_t *area, size_t size) {
    std::ifstream in(std::string(KIV_FIRMWARE_DIR "/") + name, std::ios::binary);
    in.read(reinterpret_cast<char *>(area), static_cast<std::streamsize>(size));
    return in.gcount() > 0;
}

bool boot(platform::pixel_memory &frame) {
    z80_fix_seed(1);
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    host_callbacks_listen(listener);
    machine_init(
        machine, [] {}, [] {});
    sound.reset_cpu_clk(machine.clock_hz);
    if (!load("8801-zun.rom", machine.main_rom, rom_size) ||
        !load("8801-4th.rom", machine.ext_rom, ext_rom_size))
        return false;
    register_program_resources();
    const platform::resource font = platform::find_resource(platform::resource_type::font, 104);
    std::memcpy(machine.font_rom, font.data, font_size);
    for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = font.data[i];
    machine.timing_reset();
    machine.select_scanline_colours(0);
    set_frame_geometry(frame_width, frame_height, frame_width);
    geometry.frame_pixels = frame.data();
    return true;
}

// One iteration is one emulated second.
void demonstration(benchmark::State &state) {
    const bool frames = state.range(0) != 0, plain = state.range(1) != 0;
    platform::pixel_memory frame(frame_width * frame_height);
    if (!boot(frame)) {
        state.SkipWithError("the ROM set was not built");
        return;
    }
    uint32_t iteration = 0, slice = 0;
    uint64_t seconds = 0, composed = 0;
    auto one_pass = [&] {
        const pass_outcome outcome = machine_pass(iteration++, true);
        return run_result{outcome, main_cpu.step_cycles};
    };
    auto run_second = [&] {
        for (uint32_t done = 0; done < machine.clock_hz;) {
            const run_result ran = plain ? one_pass() : run_passes(machine.cycles_per_slice - slice, true);
            if (ran.outcome == pass_outcome::stopped) return false;
            done += ran.cycles;
            slice += ran.cycles;
            if (ran.outcome == pass_outcome::frame && frames) {
                compose_frame(pixels_rgb32);
                ++composed;
            }
            if (slice >= machine.cycles_per_slice) {
                slice = 0;
                benchmark::DoNotOptimize(sound.renderSlice());
            }
        }
        return true;
    };
    start_demonstration([&iteration](int n) {
        while (n > 0)
            if (machine_pass(iteration++, true) == pass_outcome::frame) --n;
    });
    for (int i = 0; i < 5; ++i) run_second(); // past its picture and melody
    for (auto _ : state) {
        if (!run_second()) {
            state.SkipWithError("the CPU stopped");
            return;
        }
        ++seconds;
    }
    state.counters["x real time"] =
        benchmark::Counter(static_cast<double>(seconds), benchmark::Counter::kIsRate);
    state.counters["frames/s"] =
        benchmark::Counter(static_cast<double>(composed), benchmark::Counter::kIsRate);
}
BENCHMARK(demonstration)
    ->ArgNames({"frames", "plain"})
    ->ArgsProduct({{1, 0}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

} // namespace
