// The debug driver on the demonstration of our ROM set: what it costs while it is on, and how long going back
// takes from everywhere within two minutes.
#include "api/kiv.h"
#include "api/kiv_rom_files.h"
#include "bench/demonstration.h"
#include "debug/debug_driver.h"
#include "debug/memory_faults.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>

namespace {

bool boot(benchmark::State &state) {
    kiv_seed(1);
    if (kiv_rom_files(KIV_FIRMWARE_DIR) != KIV_OK || kiv_boot() != KIV_OK) {
        state.SkipWithError("the ROM set was not built");
        return false;
    }
    start_demonstration([](int frames) {
        for (int i = 0; i < frames; ++i) kiv_run_frame();
    });
    return true;
}

void stop_points(debug_driver &driver) {
    for (uint16_t i = 0; i < 10; ++i)
        driver.add({.kind = stop_kind::address,
                    .first = static_cast<uint16_t>(0xB000 + 7 * i),
                    .last = static_cast<uint16_t>(0xB000 + 7 * i)});
    driver.add({.kind = stop_kind::memory, .first = 0xB100, .last = 0xB1FF, .access = 3});
}

enum listening { nobody, with_condition, with_history, with_faults };

// One iteration is one emulated second.
void off(benchmark::State &state) {
    if (!boot(state)) return;
    uint64_t t_states = kiv_t_states();
    for (auto _ : state)
        for (const uint64_t end = kiv_t_states() + kiv_clock_hz(); kiv_t_states() < end;) kiv_run_frame();
    t_states = kiv_t_states() - t_states;
    state.counters["x real time"] =
        benchmark::Counter(static_cast<double>(t_states) / kiv_clock_hz(), benchmark::Counter::kIsRate);
}

void on(benchmark::State &state) {
    if (!boot(state)) return;
    debug_driver driver;
    stop_points(driver);
    memory_faults faults(driver.symbols, fault_every, true, [](const std::string &) {});
    if (state.range(0) == with_condition)
        driver.add({.kind = stop_kind::condition, .condition = "PC==$FFF0"});
    if (state.range(0) == with_history) driver.keep_history({});
    if (state.range(0) == with_faults) driver.listen(faults);
    uint64_t t_states = kiv_t_states();
    for (auto _ : state) driver.run_slice(kiv_clock_hz());
    t_states = kiv_t_states() - t_states;
    driver.unlisten(faults);
    state.counters["x real time"] =
        benchmark::Counter(static_cast<double>(t_states) / kiv_clock_hz(), benchmark::Counter::kIsRate);
}

// A step back from everywhere in the last two minutes, from the latest to the earliest place.
void back(benchmark::State &state) {
    if (!boot(state)) return;
    const auto kind = static_cast<aim_kind>(state.range(0));
    double worst = 0, worst_jump = 0;
    for (auto _ : state) {
        debug_driver driver;
        driver.keep_history({});
        for (int i = 0; i < 125; ++i) driver.run_slice(kiv_clock_hz());
        const auto seconds = [](auto what) {
            const auto start = std::chrono::steady_clock::now();
            what();
            return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        };
        double sum = 0;
        for (int i = 0; i < 115; ++i) {
            const uint64_t target = kiv_t_states() - kiv_clock_hz() - 12345;
            worst_jump = std::max(worst_jump, seconds([&] { driver.back_to(target); }));
            for (int step = 0; step < 5; ++step) {
                const double took = seconds([&] { driver.back(kind); });
                worst = std::max(worst, took);
                sum += took;
            }
        }
        state.SetIterationTime(sum / (115 * 5));
    }
    state.counters["worst ms"] = worst * 1000;
    state.counters["worst second back ms"] = worst_jump * 1000;
}

BENCHMARK(off)->Unit(benchmark::kMillisecond);
BENCHMARK(on)
    ->Unit(benchmark::kMillisecond)
    ->ArgName("with")
    ->Arg(nobody)
    ->Arg(with_condition)
    ->Arg(with_history)
    ->Arg(with_faults);
BENCHMARK(back)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(2)
    ->ArgName("aim")
    ->Arg(static_cast<int>(aim_kind::into))
    ->Arg(static_cast<int>(aim_kind::over))
    ->Arg(static_cast<int>(aim_kind::frame));

} // namespace
