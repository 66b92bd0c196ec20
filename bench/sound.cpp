// Time to close and render one 20 ms slice of sound, by what the program did in it, and to advance the clock.
#include "sound/sound_slices.h"

#include <benchmark/benchmark.h>
#include <memory>

namespace {

constexpr uint64_t slice = 79872;

void slice_with(benchmark::State &state, uint64_t beeper_switches, uint64_t tone_changes) {
    auto slices = std::make_unique<sound_slices>();
    slices->setSoftVolume(1);
    bool on = false;
    for (auto _ : state) {
        const uint64_t changes = beeper_switches + tone_changes;
        for (uint64_t i = 0; i < changes; ++i) {
            slices->advanceClock(slice / changes);
            if (i < tone_changes)
                slices->setTone(static_cast<uint32_t>(200 + i % 800), static_cast<uint32_t>(i % 3));
            else
                (on = !on) ? slices->beepOn() : slices->beepOff();
        }
        slices->advanceClock(changes == 0 ? slice : slice % changes);
        benchmark::DoNotOptimize(slices->renderSlice());
    }
}

void quiet(benchmark::State &state) { slice_with(state, 0, 0); }
void beeper_100_switches(benchmark::State &state) { slice_with(state, 100, 0); }
void tones_3_changes(benchmark::State &state) { slice_with(state, 0, 3); }
void tones_1000_changes(benchmark::State &state) { slice_with(state, 0, 1000); }
void beeper_6000_switches(benchmark::State &state) { slice_with(state, 6000, 0); }

void advance_clock(benchmark::State &state) {
    auto slices = std::make_unique<sound_slices>();
    for (auto _ : state) {
        slices->advanceClock(11);
        benchmark::ClobberMemory();
    }
}

BENCHMARK(quiet);
BENCHMARK(beeper_100_switches);
BENCHMARK(tones_3_changes);
BENCHMARK(tones_1000_changes);
BENCHMARK(beeper_6000_switches);
BENCHMARK(advance_clock);

} // namespace
