// The whole machine: the demonstration of our ROM set, every device, sound rendered at every slice and a
// 32-bit frame composed at every vertical blank, as a multiple of real time on one core; with plain passes
// for comparison.
#include "bench/demonstration.h"
#include "machine/machine_run.h"
#include "platform/pixel_memory.h"
#include "sound/sound_slices.h"

#include <benchmark/benchmark.h>

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

bool boot(platform::pixel_memory &frame) {
    z80_fix_seed(1);
    if (!boot_rom_set(
            KIV_FIRMWARE_DIR, listener, [] {}, [] {}))
        return false;
    sound.reset_cpu_clk(machine.clock_hz);
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
