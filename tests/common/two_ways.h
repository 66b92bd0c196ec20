// The same run twice, in batches and in plain passes: every stop of the batches finds the same machine,
// processor and sound.
#pragma once

#include "machine/machine_run.h"
#include "machine/run_block.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

class two_ways {
  public:
    std::function<void()> power_on;                           // up to the first pass
    std::function<void(size_t stop)> at_stop = [](size_t) {}; // what is done to the machine between passes
    bool charge_waits = true;
    unsigned seed = 1;

    // Compares that many T-states, or until the CPU stops. The T-states that were run.
    uint64_t compare(uint64_t cycles) {
        const std::vector<stop> stops = in_batches(cycles);
        begin();
        uint32_t passes = 0;
        uint64_t charged = 0;
        for (size_t i = 0; i < stops.size(); ++i) {
            pass_outcome outcome = pass_outcome::nothing;
            const bool stops_here = stops[i].outcome == pass_outcome::stopped;
            for (const uint32_t until = stops[i].passes + stops_here; passes < until; ++passes) {
                EXPECT_EQ(outcome, pass_outcome::nothing) << "within a batch, seed " << seed;
                outcome = machine_pass(passes, charge_waits);
                if (outcome == pass_outcome::stopped) break;
                run_state.cycles = charged += main_cpu.step_cycles;
            }
            const stop plain{passes, outcome, charged, state()};
            EXPECT_EQ(plain.passes, stops[i].passes);
            EXPECT_EQ(plain.outcome, stops[i].outcome);
            EXPECT_EQ(plain.cycles, stops[i].cycles);
            EXPECT_EQ(plain.state, stops[i].state);
            if (testing::Test::HasFailure()) {
                ADD_FAILURE() << "stop " << i << ", T-state " << charged << ", seed " << seed;
                return charged;
            }
            at_stop(i);
        }
        return charged;
    }

  private:
    struct stop {
        uint32_t passes;
        pass_outcome outcome;
        uint64_t cycles;
        size_t state;
    };
    static inline uint64_t sound_time, sound; // what has come to the sound side, and when

    static void sound_event(uint64_t event) {
        sound = (sound ^ event ^ sound_time << 20) * 0x9E3779B97F4A7C15;
    }

    void begin() const {
        std::memset(&main_cpu, 0, sizeof main_cpu);
        run_state_init();
        power_on();
        sound_time = sound = 0;
        host_callbacks_listen({[] { sound_event(1); }, [] { sound_event(2); },
                               [](uint16_t hz, uint32_t channel) { sound_event(hz * 4u + channel + 3); },
                               [](uint32_t cycles) { sound_time += cycles; }, [] { sound_event(3); }, [] {}});
    }

    static size_t hash_of(const void *record, size_t size) {
        return std::hash<std::string_view>()({static_cast<const char *>(record), size});
    }
    static size_t state() {
        uint8_t *const tape = std::exchange(machine.tape_image, nullptr); // it lies where there was room
        const size_t all = hash_of(&machine, sizeof machine) ^ hash_of(&main_cpu, sizeof main_cpu) * 3;
        machine.tape_image = tape;
        return all ^ sound ^ sound_time;
    }

    // Stops at any place, as a slice, a look at a request or the end of a run would make it.
    std::vector<stop> in_batches(uint64_t cycles) const {
        std::minstd_rand random(seed);
        std::vector<stop> stops;
        begin();
        for (uint64_t charged = 0; charged < cycles;) {
            constexpr uint32_t longest[] = {1, 40, 1280, 8000, 80000, 500000};
            const uint32_t budget = 1 + static_cast<uint32_t>(random()) % longest[random() % 6];
            const run_result ran = run_passes(budget, charge_waits);
            charged += ran.cycles;
            stops.push_back({run_state.pass_counter, ran.outcome, charged, state()});
            if (ran.outcome == pass_outcome::stopped) break;
            at_stop(stops.size() - 1);
        }
        return stops;
    }
};
