// The CPU thread on a machine of nothing but memory: park, resume, stop and pace. How many cycles the races
// are tried for comes from KIV_STRESS (default 300).
#include "cpu/z80_thread.h"

#include "machine/kiv_machine.h"
#include "platform/thread.h"
#include "support/main_window.h"
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <thread>

namespace {

using namespace std::chrono;

uint8_t memory[0x10000];
std::atomic<uint32_t> passes;
std::atomic<uint32_t> frames_due_every; // passes; 0 never

int cycles_to_try() {
    const char *set = std::getenv("KIV_STRESS");
    return set == nullptr ? 300 : std::max(1, std::atoi(set));
}

// A wait that ran into the 5000 ms limit is far above, a busy host far below.
constexpr auto a_lost_wake_up = milliseconds(2500);

struct posted_messages : main_window {
    std::atomic<int> count{0};
    std::atomic<uint64_t> address{0}, reason{0};
    void post(uint32_t message, uint64_t wparam, uint64_t lparam) override {
        EXPECT_EQ(message, z80_abort_message);
        address = wparam;
        reason = lparam;
        ++count;
    }
    void set_full_screen_style(int, int) override {}
    void set_window_style(int, int) override {}
};

struct thread_with_delay : z80_thread {
    explicit thread_with_delay(uint32_t milliseconds) { start_delay_ms = milliseconds; }
};

class z80_thread_test : public testing::Test {
  protected:
    z80_thread_test()
        : sync(platform::event::create("SYNC")), ack(platform::event::create("ACK")),
          cpu(new thread_with_delay(0)) {
        the_main_window = &window;
        platform::set_current_thread_affinity(1); // as the window thread: not where the CPU thread runs
        machine = {};
        machine.clock_hz = default_clock_hz;
        machine.cycles_per_slice = default_clock_hz * default_slice_ms / 1000;
        machine.machine_step = [](kiv_machine &, z80_cpu &) { ++passes; };
        machine.timing_tick = [](uint32_t) -> uint32_t {
            const uint32_t every = frames_due_every;
            return every != 0 && passes % every == 0 ? timing_vblank_ends : timing_nothing;
        };
        machine.interrupt_request1 = [](z80_cpu &) {};
        machine.advance_sound = [](uint32_t) {};
        passes = 0;
        frames_due_every = 0;
        main_cpu = {};
        z80_install(
            main_cpu, [](uint16_t a, uint32_t *) { return memory[a]; },
            [](uint16_t a, uint8_t v, uint32_t *) { memory[a] = v; }, [](uint16_t) { return uint8_t{0xFF}; },
            [](uint16_t, uint8_t) {});
        loop_forever();
        EXPECT_EQ(cpu->init(), 1);
    }
    ~z80_thread_test() override {
        cpu.reset();
        the_main_window = nullptr;
    }

    static void loop_forever() {
        std::memset(memory, 0, sizeof memory); // NOPs all around
    }
    void start() {
        ASSERT_EQ(cpu->create_thread(1), 1);
        cpu->resume_thread();
    }
    void start_and_wait_until_it_runs() {
        start();
        while (passes == 0) std::this_thread::sleep_for(milliseconds(1));
    }
    // Parked threads have nothing left to do when they are asked to end.
    void end_as_the_program_does() {
        cpu->request_stop();
        cpu->resume_run();
        cpu->stop();
        EXPECT_EQ(cpu->is_running(), 0);
    }
    template <class Call> auto timed(Call call) {
        const auto before = steady_clock::now();
        const auto result = call();
        longest = std::max(longest, steady_clock::now() - before);
        return result;
    }
    void report_longest(const char *what, int times) {
        EXPECT_LT(longest, a_lost_wake_up);
        std::printf("%s: %d times, longest wait %.2f ms\n", what, times,
                    duration<double, std::milli>(longest).count());
    }

    platform::event sync, ack;
    posted_messages window;
    std::unique_ptr<z80_thread> cpu;
    steady_clock::duration longest{};
};

TEST_F(z80_thread_test, a_thread_that_was_never_started_is_neither_paused_nor_waited_for) {
    EXPECT_EQ(timed([&] { return cpu->pause(); }), 0);
    cpu->resume_run();
    cpu->stop();
    ASSERT_EQ(cpu->create_thread(1), 1);
    EXPECT_EQ(timed([&] { return cpu->pause(); }), 0); // not resumed yet
    EXPECT_EQ(cpu->is_running(), 0);
    timed([&] { return cpu->stop(), 0; });
    report_longest("pause and stop of a suspended thread", 2);
    EXPECT_EQ(passes, 0u);
}

TEST_F(z80_thread_test, parked_means_that_nothing_moves) {
    start_and_wait_until_it_runs();
    for (int n = 0; n < 3; ++n) {
        ASSERT_EQ(cpu->pause(), 1);
        EXPECT_EQ(cpu->is_suspended(), 1u);
        EXPECT_TRUE(ack.wait(0));
        const uint32_t then = passes;
        EXPECT_EQ(cpu->get_register(reg_pc), static_cast<uint16_t>(then));
        std::this_thread::sleep_for(milliseconds(40));
        EXPECT_EQ(passes, then);
        cpu->set_pc_sp(static_cast<uint16_t>(then), 0xC000);
        EXPECT_EQ(cpu->get_register(reg_sp), 0xC000);
        cpu->resume_run();
        while (passes == then) std::this_thread::yield();
        EXPECT_EQ(cpu->is_suspended(), 0u);
    }
    ASSERT_EQ(cpu->pause(), 1);
    cpu->reset_cpu();
    EXPECT_EQ(cpu->get_register(reg_pc), 0);
    timed([&] { return end_as_the_program_does(), 0; });
    report_longest("orderly end", 1);
    EXPECT_EQ(cpu->pause(), 0);
}

// A second must go by before the first instruction; requests are answered meanwhile.
TEST_F(z80_thread_test, the_start_delay_is_kept_and_answers) {
    cpu.reset(new z80_thread);
    ASSERT_EQ(cpu->init(), 1);
    const auto before = steady_clock::now();
    start();
    for (int n = 0; n < 50; ++n) {
        ASSERT_EQ(timed([&] { return cpu->pause(); }), 1);
        EXPECT_EQ(passes, 0u);
        cpu->resume_run();
        while (cpu->is_suspended() != 0) std::this_thread::yield(); // it sleeps again
    }
    EXPECT_LT(longest, milliseconds(900)) << "the delay was waited out";
    while (passes == 0) std::this_thread::sleep_for(milliseconds(1));
    EXPECT_GE(steady_clock::now() - before, milliseconds(999));
    report_longest("pause before the first instruction", 50);
}

TEST_F(z80_thread_test, real_time_is_never_overtaken_and_waits_are_charged_once) {
    start_and_wait_until_it_runs();
    cpu->take_elapsed_cycles();
    const auto before = steady_clock::now();
    uint64_t taken = 0;
    for (int n = 0; n < 20; ++n) {
        std::this_thread::sleep_for(milliseconds(25));
        taken += cpu->take_elapsed_cycles();
    }
    const double seconds = duration<double>(steady_clock::now() - before).count();
    EXPECT_GT(taken, 0u);
    EXPECT_LE(static_cast<double>(taken), seconds * default_clock_hz + 2 * machine.cycles_per_slice);
    ASSERT_EQ(cpu->pause(), 1);
    cpu->take_elapsed_cycles();
    EXPECT_EQ(cpu->take_elapsed_cycles(), 0u);
}

TEST_F(z80_thread_test, a_stop_of_the_cpu_is_posted_with_its_address_and_reason) {
    const struct {
        uint8_t bytes[2];
        uint64_t reason;
    } cases[] = {
        {{0x76, 0x00}, stop_halt},
        {{0xED, 0x00}, stop_undefined},
        {{0xED, 0xB2}, stop_unimplemented},
    };
    int posted = 0;
    for (const auto &c : cases) {
        cpu->reset_cpu();
        loop_forever();
        std::memcpy(memory + 0x1234, c.bytes, sizeof c.bytes);
        start();
        while (window.count == posted) std::this_thread::sleep_for(milliseconds(1));
        ++posted;
        EXPECT_EQ(window.address, 0x1234u);
        EXPECT_EQ(window.reason, c.reason);
        EXPECT_EQ(timed([&] { return cpu->pause(); }), 0);
        cpu->stop();
        EXPECT_EQ(cpu->is_running(), 0);
    }
    EXPECT_EQ(window.count, 3);
    report_longest("pause after the end", 3);
}

TEST_F(z80_thread_test, a_pause_right_after_a_resume_is_answered) {
    const int times = cycles_to_try();
    start_and_wait_until_it_runs();
    for (int n = 0; n < times; ++n) {
        ASSERT_EQ(timed([&] { return cpu->pause(); }), 1) << n;
        const uint32_t then = passes;
        EXPECT_EQ(timed([&] { return cpu->pause(); }), 1) << "while parked, " << n;
        cpu->resume_run();
        ASSERT_EQ(timed([&] { return cpu->pause(); }), 1) << n;
        const uint32_t parked_at = passes;
        if (n % 16 == 0) std::this_thread::sleep_for(milliseconds(1));
        ASSERT_EQ(passes, parked_at) << n;
        cpu->resume_run();
        if (n % 2 == 0)
            while (passes == then) std::this_thread::yield(); // it runs
    }
    report_longest("pause, pause while parked, pause right after a resume", times);
}

// A release that overtakes the acknowledgement of another thread's pause still ends that park.
TEST_F(z80_thread_test, a_resume_from_elsewhere_is_not_lost) {
    const int times = cycles_to_try();
    start_and_wait_until_it_runs();
    std::atomic<bool> done{false};
    std::thread releaser([&] {
        while (!done) {
            cpu->resume_run();
            std::this_thread::yield();
        }
    });
    for (int n = 0; n < times; ++n) EXPECT_EQ(timed([&] { return cpu->pause(); }), 1) << n;
    done = true;
    releaser.join();
    cpu->resume_run();
    const uint32_t then = passes;
    while (passes == then) std::this_thread::yield();
    report_longest("pause against a stream of resumes", times);
}

TEST_F(z80_thread_test, a_cpu_stop_that_races_a_pause_is_answered) {
    const int times = cycles_to_try();
    int answered[2] = {};
    for (int n = 0; n < times; ++n) {
        // From at once to a few thousand passes, about as long as a pause takes.
        std::memset(memory, 0, sizeof memory);
        memory[1 + n * 7919 % 4001] = 0x76;
        cpu->reset_cpu();
        passes = 0;
        start();
        while (passes == 0) {
        }
        for (std::atomic<int> spin{n % 100 * 50}; --spin > 0;) {
        }
        const int paused = timed([&] { return cpu->pause(); });
        ++answered[paused];
        if (paused == 1) {
            cpu->resume_run();
            if (n % 2) timed([&] { return cpu->pause(); });
        }
        timed([&] { return cpu->stop(), 0; });
        ASSERT_EQ(cpu->is_running(), 0) << n;
    }
    report_longest("pause against a HALT", times);
    std::printf("of these parked %d, ended %d\n", answered[1], answered[0]);
}

TEST_F(z80_thread_test, started_and_stopped_in_every_state) {
    for (int n = 0; n < 200; ++n) {
        start();
        if (n % 4 == 1) {
            ASSERT_EQ(timed([&] { return cpu->pause(); }), 1);
        }
        if (n % 4 == 2) {
            ASSERT_EQ(timed([&] { return cpu->pause(); }), 1);
            cpu->resume_run();
        }
        if (n % 4 == 3) cpu->request_stop();
        timed([&] { return cpu->stop(), 0; });
        ASSERT_EQ(cpu->is_running(), 0) << n;
        ASSERT_EQ(cpu->pause(), 0) << n;
    }
    report_longest("start and stop", 200);
}

} // namespace
