// The CPU thread on a machine of nothing but memory: park, resume, stop and pace. How many cycles the races
// are tried for comes from KIV_STRESS (default 300); each test prints the longest wait that it met.
#include "cpu/z80_thread.h"

#include "machine/kiv_machine.h"
#include "platform/host.h"
#include "support/main_window.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <thread>

namespace {

using namespace std::chrono;

uint8_t memory[0x10000];
std::atomic<uint32_t> passes;

int cycles_to_try() {
    const char *set = std::getenv("KIV_STRESS");
    return set == nullptr ? 300 : std::max(1, std::atoi(set));
}

struct posted_messages : main_window {
    std::atomic<int> count{0};
    std::atomic<uint32_t> id{0};
    std::atomic<uint64_t> address{0}, reason{0};
    void post(uint32_t message, uint64_t wparam, uint64_t lparam) override {
        id = message;
        address = wparam;
        reason = lparam;
        ++count;
    }
    void set_full_screen_style(int, int) override {}
    void set_window_style(int, int) override {}
};

struct thread_without_delay : z80_thread {
    thread_without_delay() { start_delay_ms = 0; }
};

class Z80Thread : public testing::Test {
  protected:
    Z80Thread()
        : sync(platform::event::create("SYNC")), ack(platform::event::create("ACK")),
          cpu(new thread_without_delay) {
        the_main_window = &window;
        platform::set_current_thread_affinity(1); // as the window thread: not where the CPU thread runs
        machine = {};
        machine.clock_hz = default_clock_hz;
        machine.cycles_per_slice = default_clock_hz * default_slice_ms / 1000;
        machine.machine_step = [](kiv_machine &, z80_cpu &) { ++passes; };
        machine.timing_tick = [](uint32_t) -> uint32_t { return timing_nothing; };
        machine.advance_sound = [](uint32_t) {};
        main_cpu = {};
        z80_install(
            main_cpu, [](uint16_t a, uint32_t *) { return memory[a]; },
            [](uint16_t a, uint8_t v, uint32_t *) { memory[a] = v; }, [](uint16_t) { return uint8_t{0xFF}; },
            [](uint16_t, uint8_t) {});
        load({});
        EXPECT_EQ(cpu->init(), 1);
    }
    ~Z80Thread() override {
        EXPECT_LT(longest, milliseconds(2500)) << "a lost wake-up waits for 5000 ms";
        std::printf("longest wait %.2f ms\n", duration<double, std::milli>(longest).count());
        cpu.reset();
        the_main_window = nullptr;
    }

    // NOPs all around, but for these bytes.
    void load(std::initializer_list<uint8_t> bytes, size_t at = 0) {
        cpu->reset_cpu();
        passes = 0;
        std::memset(memory, 0, sizeof memory);
        std::copy(bytes.begin(), bytes.end(), memory + at);
    }
    void start() {
        ASSERT_EQ(cpu->create_thread(1), 1);
        cpu->resume_thread();
    }
    void start_and_wait_until_it_runs() {
        start();
        while (passes == 0) std::this_thread::yield();
    }
    void wait_for_a_pass_after(uint32_t then) {
        while (passes == then) std::this_thread::yield();
    }
    template <class Call> auto timed(Call call) {
        const auto before = steady_clock::now();
        const auto result = call();
        longest = std::max(longest, steady_clock::now() - before);
        return result;
    }
    int pause() {
        return timed([this] { return cpu->pause(); });
    }
    void stop() {
        timed([this] { return cpu->stop(), 0; });
        EXPECT_EQ(cpu->is_running(), 0u);
    }

    platform::event sync, ack;
    posted_messages window;
    std::unique_ptr<z80_thread> cpu;
    steady_clock::duration longest{};
};

TEST_F(Z80Thread, ARunWithoutMemoryEndsAndAsksForTheClose) {
    machine.timing_tick = [](uint32_t) -> uint32_t { throw std::bad_alloc(); };
    start();
    while (cpu->is_running() || window.count == 0) std::this_thread::yield();
    EXPECT_EQ(window.id, platform::wm_close);
    EXPECT_EQ(pause(), 0);
    stop();
}

TEST_F(Z80Thread, ParkedMeansThatNothingMoves) {
    start_and_wait_until_it_runs();
    for (int n = 0; n < 3; ++n) {
        ASSERT_EQ(pause(), 1);
        EXPECT_EQ(cpu->is_suspended(), 1u);
        EXPECT_TRUE(ack.wait(0));
        const uint32_t then = passes;
        EXPECT_EQ(cpu->get_register(reg_pc), static_cast<uint16_t>(then));
        std::this_thread::sleep_for(milliseconds(40));
        EXPECT_EQ(passes, then);
        cpu->set_pc_sp(static_cast<uint16_t>(then), 0xC000);
        EXPECT_EQ(cpu->get_register(reg_sp), 0xC000);
        cpu->resume_run();
        wait_for_a_pass_after(then);
        EXPECT_EQ(cpu->is_suspended(), 0u);
    }
    ASSERT_EQ(pause(), 1);
    cpu->reset_cpu();
    EXPECT_EQ(cpu->get_register(reg_pc), 0);
    const uint32_t then = passes;
    cpu->request_stop(); // as the program ends
    cpu->resume_run();
    stop();
    EXPECT_EQ(passes, then);
    EXPECT_EQ(pause(), 0);
}

// A second must go by before the first instruction; requests are answered meanwhile.
TEST_F(Z80Thread, TheStartDelayIsKeptAndAnswers) {
    cpu.reset(new z80_thread);
    ASSERT_EQ(cpu->init(), 1);
    const auto before = steady_clock::now();
    start();
    int answered = 0;
    for (; answered < 50; ++answered) {
        ASSERT_EQ(pause(), 1);
        const uint32_t ran = passes;
        if (steady_clock::now() - before >= seconds(1)) break; // on a busy host
        EXPECT_EQ(ran, 0u);
        cpu->resume_run();
        while (cpu->is_suspended() != 0) std::this_thread::yield(); // it sleeps again
    }
    EXPECT_GT(answered, 1) << "the delay was waited out"; // the first may have come before it began
    cpu->resume_run();
    wait_for_a_pass_after(0);
    EXPECT_GE(steady_clock::now() - before, milliseconds(999));
}

// Neither while it runs nor after a pause, whose first slice alone is not waited for.
TEST_F(Z80Thread, RealTimeIsNeverOvertaken) {
    start_and_wait_until_it_runs();
    for (int n = 0; n < 3; ++n) {
        const auto before = steady_clock::now();
        const uint64_t earlier = cpu->take_elapsed_cycles();
        uint64_t taken = 0;
        for (int part = 0; part < 8; ++part) {
            std::this_thread::sleep_for(milliseconds(25));
            taken += cpu->take_elapsed_cycles();
        }
        const double real_seconds = duration<double>(steady_clock::now() - before).count();
        EXPECT_GT(taken, 0u);
        EXPECT_LE(static_cast<double>(taken), real_seconds * default_clock_hz + 3 * machine.cycles_per_slice);
        ASSERT_EQ(pause(), 1);
        const uint64_t all = earlier + taken + cpu->take_elapsed_cycles();
        EXPECT_EQ(cpu->take_executed_cycles() * 5ull, all * 4) << "the wait of an opcode fetch is the fifth";
        std::this_thread::sleep_for(milliseconds(200));
        EXPECT_EQ(cpu->take_elapsed_cycles(), 0u);
        cpu->resume_run();
    }
}

// So that what is struck meanwhile is seen by all of it.
TEST_F(Z80Thread, AStretchRunsAtItsEnd) {
    cpu->set_speed(25); // a quarter of a slice takes 20 ms
    const auto before = steady_clock::now();
    start_and_wait_until_it_runs();
    EXPECT_GE(steady_clock::now() - before, milliseconds(15));
}

// With the motor on and bytes taken; the chosen speed again when they come no more. That is a quarter of real
// time here, so that a busy host, too, has a pace of its own above it.
TEST_F(Z80Thread, ATapeThatIsReadIsNotWaitedFor) {
    static uint8_t tape[1];
    static std::atomic<bool> reading;
    machine.tape_image = tape;
    machine.machine_step = [](kiv_machine &, z80_cpu &) {
        if (++passes % 4096 == 0 && reading) machine.tape_position = machine.tape_position + 1;
    };
    cpu->set_speed(25);
    cpu->set_fast_tape(true);
    reading = true;
    // How many times faster than real time `slices` slices go.
    const auto pace = [&](uint32_t slices) {
        const auto before = steady_clock::now();
        cpu->take_elapsed_cycles();
        for (uint64_t taken = 0; taken < uint64_t{slices} * machine.cycles_per_slice;) {
            std::this_thread::sleep_for(milliseconds(1));
            taken += cpu->take_elapsed_cycles();
        }
        return slices * default_slice_ms / duration<double, std::milli>(steady_clock::now() - before).count();
    };
    start_and_wait_until_it_runs();
    pace(2);
    EXPECT_GT(pace(100), 0.4);
    machine.cassette_flags = cassette_motor_off;
    pace(2);
    EXPECT_LT(pace(10), 0.33);
    machine.cassette_flags = 0;
    pace(2);
    EXPECT_GT(pace(100), 0.4);
    reading = false;
    pace(100); // a pause between two blocks is passed over
    EXPECT_LT(pace(10), 0.33);
    stop();
    machine.tape_image = nullptr;
}

TEST_F(Z80Thread, AStopOfTheCpuIsPostedWithItsAddressAndReason) {
    const struct {
        std::initializer_list<uint8_t> bytes;
        uint64_t reason;
    } cases[] = {{{0x76}, stop_halt}, {{0xED, 0x00}, stop_undefined}, {{0xED, 0xB2}, stop_unimplemented}};
    int posted = 0;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.reason);
        load(c.bytes, 0x1234);
        start();
        while (window.count == posted) std::this_thread::yield();
        ++posted;
        EXPECT_EQ(window.address, 0x1234u);
        EXPECT_EQ(window.reason, c.reason);
        EXPECT_EQ(pause(), 0);
        stop();
    }
    EXPECT_EQ(window.count, 3);
}

TEST_F(Z80Thread, APauseRightAfterAResumeIsAnswered) {
    start_and_wait_until_it_runs();
    for (int n = 0; n < cycles_to_try(); ++n) {
        ASSERT_EQ(pause(), 1) << n;
        const uint32_t then = passes;
        EXPECT_EQ(pause(), 1) << "while parked, " << n;
        cpu->resume_run();
        ASSERT_EQ(pause(), 1) << n;
        const uint32_t parked_at = passes;
        if (n % 16 == 0) std::this_thread::sleep_for(milliseconds(1));
        ASSERT_EQ(passes, parked_at) << n;
        cpu->resume_run();
        if (n % 2 == 0) wait_for_a_pass_after(then);
    }
}

TEST_F(Z80Thread, ACpuStopThatRacesAPauseIsAnswered) {
    int answered[2] = {};
    for (int n = 0; n < cycles_to_try(); ++n) {
        // From at once to a few thousand passes, about as long as a pause takes.
        load({0x76}, static_cast<size_t>(1 + n * 7919 % 4001));
        start_and_wait_until_it_runs();
        for (std::atomic<int> spin{n % 100 * 50}; --spin > 0;) {
        }
        const int paused = pause();
        ++answered[paused];
        if (paused == 1) {
            cpu->resume_run();
            if (n % 2) pause();
        }
        stop();
    }
    std::printf("parked %d, ended %d\n", answered[1], answered[0]);
}

TEST_F(Z80Thread, StoppedInEveryState) {
    enum { suspended, asked_to_stop, parked, resumed };
    for (int n = 0; n < 200; ++n) {
        EXPECT_EQ(pause(), 0) << "no thread, " << n;
        cpu->resume_run();
        ASSERT_EQ(cpu->create_thread(1), 1);
        if (n % 4 != suspended) cpu->resume_thread();
        if (n % 4 == asked_to_stop) cpu->request_stop();
        EXPECT_EQ(pause(), n % 4 >= parked) << n;
        if (n % 4 == resumed) cpu->resume_run();
        stop();
    }
}

} // namespace
