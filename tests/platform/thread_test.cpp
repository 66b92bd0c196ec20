#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"
#include <atomic>
#include <gtest/gtest.h>
#include <sched.h>
#include <thread>

using namespace platform;

namespace {

// Ending a thread by force is nothing that a sanitizer can follow: its record of the thread's stack and locks
// stays as it was.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

template <class F> struct body {
    F f;
    static void entry(void *self) { static_cast<body *>(self)->f(); }
};

// Waits at most ten seconds for something that another thread brings about.
template <class F> bool soon(F holds) {
    for (int i = 0; i < 10'000; i++) {
        if (holds()) return true;
        sleep_ms(1);
    }
    return false;
}

} // namespace

TEST(Thread, StartsWhenTheLastSuspensionIsGone) {
    std::atomic<int> runs{0};
    body b{[&] { runs++; }};
    const thread_handle t = create_thread(b.entry, &b, true);
    ASSERT_NE(t, nullptr);
    EXPECT_NE(thread_id(t), 0u);
    EXPECT_NE(thread_id(t), current_thread_id());
    EXPECT_EQ(suspend_thread(t), 1u);
    EXPECT_EQ(resume_thread(t), 2u);
    EXPECT_FALSE(wait_thread(t, 20));
    EXPECT_EQ(runs, 0);
    EXPECT_EQ(resume_thread(t), 1u);
    EXPECT_TRUE(wait_thread(t, wait_forever));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(suspend_thread(t), suspend_failed);
    EXPECT_EQ(resume_thread(t), suspend_failed);
    EXPECT_TRUE(wait_thread(t, 0)) << "an ended thread counts as ended every time";
    EXPECT_EQ(thread_id(nullptr), 0u);
}

TEST(Thread, MessagesArriveInOrderAndCanBePickedById) {
    constexpr uint32_t frame = 0x402, quit = 0x401, ready = 0x500;
    event begun = event::create("");
    std::vector<uint64_t> frames;
    int left = 0;
    body b{[&] {
        begun.wait(wait_forever);
        for (message m; (m = get_message()).id != quit;) {
            if (m.id != frame) continue;
            frames.push_back(m.wparam);
            for (message more; peek_message(frame, more);) frames.push_back(more.wparam);
        }
        message m;
        while (peek_message(ready, m)) left++;
    }};
    const thread_handle t = create_thread(b.entry, &b, true);
    // A message to a thread that has not run yet waits for it.
    for (uint64_t i = 0; i < 1000; i++) {
        post_thread_message(thread_id(t), {frame, i, 0});
        if (i % 100 == 0) post_thread_message(thread_id(t), {ready, i, 0});
        if (i == 500) resume_thread(t);
    }
    post_thread_message(thread_id(t), {quit, 0, 0});
    for (uint64_t i = 0; i < 9; i++) post_thread_message(thread_id(t), {ready, i, 0});
    begun.signal();
    ASSERT_TRUE(wait_thread(t, wait_forever));
    ASSERT_EQ(frames.size(), 1000u);
    for (uint64_t i = 0; i < 1000; i++) EXPECT_EQ(frames[i], i);
    EXPECT_EQ(left, 9) << "picking frames passes over the others, and quit comes before what follows it";
    post_thread_message(thread_id(t), {frame, 0, 0}); // gone: nothing happens
}

TEST(Thread, EveryThreadHasAQueueOfItsOwn) {
    message m{};
    EXPECT_FALSE(peek_message(7, m));
    post_thread_message(current_thread_id(), {7, 8, 9});
    std::thread other([] {
        message none{};
        EXPECT_FALSE(peek_message(7, none));
    });
    other.join();
    m = get_message();
    EXPECT_EQ(m.id, 7u);
    EXPECT_EQ(m.wparam, 8u);
    EXPECT_EQ(m.lparam, 9u);
}

TEST(Thread, ARunningThreadStopsWhileSuspended) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "ThreadSanitizer hands signals on late";
#endif
    std::atomic<uint32_t> count{0};
    std::atomic<bool> leave{false};
    body b{[&] {
        while (!leave) {
            count++;
            sleep_ms(0);
        }
    }};
    const thread_handle t = create_thread(b.entry, &b, false);
    ASSERT_TRUE(soon([&] { return count > 10; }));
    for (int i = 0; i < 20; i++) {
        EXPECT_EQ(suspend_thread(t), 0u);
        EXPECT_EQ(suspend_thread(t), 1u);
        const uint32_t stopped = count;
        sleep_ms(2);
        EXPECT_EQ(count, stopped);
        EXPECT_EQ(resume_thread(t), 2u);
        EXPECT_EQ(resume_thread(t), 1u);
        EXPECT_EQ(resume_thread(t), 0u);
        ASSERT_TRUE(soon([&] { return count > stopped; }));
    }
    leave = true;
    EXPECT_TRUE(wait_thread(t, wait_forever));
}

TEST(Thread, ForcedEnd) {
    std::atomic<int> runs{0};
    body never{[&] { runs++; }};
    const thread_handle waiting = create_thread(never.entry, &never, true);
    terminate_thread(waiting);
    EXPECT_TRUE(wait_thread(waiting, 0));
    EXPECT_EQ(runs, 0) << "terminated before it began";
    if (sanitized) GTEST_SKIP() << "the forced end of a running thread is not for sanitizers";

    event e = event::create("");
    std::atomic<bool> begun{false};
    body spins{[&] {
        begun = true;
        for (volatile int i = 0;;) i = i + 1;
    }};
    body waits{[&] {
        begun = true;
        e.wait(wait_forever);
    }};
    body reads{[&] {
        begun = true;
        get_message();
    }};
    body sleeps{[&] {
        begun = true;
        sleep_ms(100'000);
    }};
    const auto ends = [&](const char *label, auto &b) {
        SCOPED_TRACE(label);
        begun = false;
        const thread_handle t = create_thread(b.entry, &b, false);
        ASSERT_TRUE(soon([&] { return begun.load(); }));
        EXPECT_FALSE(wait_thread(t, 10));
        terminate_thread(t);
        EXPECT_TRUE(wait_thread(t, 0));
        post_thread_message(thread_id(t), {1, 2, 3});
        EXPECT_EQ(resume_thread(t), suspend_failed);
    };
    for (int i = 0; i < 20; i++) {
        ends("spins", spins);
        ends("waits for an event", waits);
        ends("waits for a message", reads);
        ends("sleeps", sleeps);
    }
    // What they waited for is not broken for the others.
    e.signal();
    EXPECT_TRUE(e.wait(0));
}

TEST(Thread, KeepsThePriorityItWasGiven) {
    event leave = event::create("");
    body b{[&] { leave.wait(wait_forever); }};
    const thread_handle t = create_thread(b.entry, &b, false);
    EXPECT_EQ(get_thread_priority(t), 0);
    for (const int priority : {-2, 1, 15}) {
        set_thread_priority(t, priority);
        EXPECT_EQ(get_thread_priority(t), priority);
    }
    leave.signal();
    EXPECT_TRUE(wait_thread(t, wait_forever));
}

TEST(Thread, AffinityWithoutAProcessorFailsAndChildrenAreNotPinned) {
    const uint64_t given = process_affinity();
    ASSERT_NE(given, 0u);
    const auto own_processors = [] {
        cpu_set_t set;
        EXPECT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
        return CPU_COUNT(&set);
    };
    const int all = own_processors();
    std::thread pinned([&] {
        EXPECT_FALSE(set_current_thread_affinity(0));
        EXPECT_FALSE(set_current_thread_affinity(~given));
        EXPECT_EQ(own_processors(), all) << "a refusal changes nothing";
        ASSERT_TRUE(set_current_thread_affinity(given & (~given + 1)));
        EXPECT_EQ(own_processors(), 1);
        EXPECT_EQ(process_affinity(), given);
        int of_child = 0;
        body b{[&] { of_child = own_processors(); }};
        EXPECT_TRUE(wait_thread(create_thread(b.entry, &b, false), wait_forever));
        EXPECT_EQ(of_child, all);
    });
    pinned.join();
}
