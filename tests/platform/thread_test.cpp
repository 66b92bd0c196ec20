#include "platform/clock.h"
#include "platform/event.h"
#include "platform/thread.h"
#include <atomic>
#include <functional>
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

thread_handle start(const std::function<void()> &body, bool suspended = false) {
    return create_thread([](void *f) { (*static_cast<const std::function<void()> *>(f))(); },
                         const_cast<std::function<void()> *>(&body), suspended);
}

template <class F> void wait_until(F holds) {
    while (!holds()) sleep_ms(1);
}

} // namespace

TEST(Thread, SuspensionsAddUpBeforeTheStartAndWhileItRuns) {
    std::atomic<uint32_t> count{0};
    std::atomic<bool> leave{false};
    const std::function<void()> body = [&] {
        for (; !leave; sleep_ms(0)) count++;
    };
    const thread_handle t = start(body, true);
    EXPECT_NE(thread_id(t), current_thread_id());
    EXPECT_EQ(suspend_thread(t), 1u);
    for (int i = 0; i < 20; i++) {
        const uint32_t stopped = count;
        EXPECT_FALSE(wait_thread(t, 2));
        EXPECT_EQ(count, stopped);
        EXPECT_EQ(resume_thread(t), 2u);
        EXPECT_EQ(resume_thread(t), 1u);
        EXPECT_EQ(resume_thread(t), 0u);
        wait_until([&] { return count > stopped; });
#ifdef __SANITIZE_THREAD__
        break; // it hands signals on late
#endif
        EXPECT_EQ(suspend_thread(t), 0u);
        EXPECT_EQ(suspend_thread(t), 1u);
    }
    leave = true;
    resume_thread(t), resume_thread(t);
    EXPECT_TRUE(wait_thread(t, wait_forever));
    EXPECT_EQ(suspend_thread(t), suspend_failed);
    EXPECT_EQ(resume_thread(t), suspend_failed);
    EXPECT_TRUE(wait_thread(t, 0)) << "an ended thread counts as ended every time";
}

TEST(Thread, ForcedEndLeavesNothingBrokenForTheOthers) {
    event e = event::create("");
    std::atomic<int> begun{0};
    volatile int spun = 0;
    const std::function<void()> bodies[] = {
        [&] {
            for (begun++;;) spun = spun + 1;
        },
        [&] { begun++, e.wait(wait_forever); },
        [&] { begun++, get_message(); },
        [&] { begun++, sleep_ms(100'000); },
    };
    const thread_handle waiting = start(bodies[0], true);
    terminate_thread(waiting);
    EXPECT_TRUE(wait_thread(waiting, 0));
    EXPECT_EQ(begun, 0) << "terminated before it began";
    if (sanitized) GTEST_SKIP() << "the forced end of a running thread is not for sanitizers";
    for (int i = 0; i < 20; i++) {
        for (const auto &body : bodies) {
            begun = 0;
            const thread_handle t = start(body);
            wait_until([&] { return begun == 1; });
            EXPECT_FALSE(wait_thread(t, 10));
            terminate_thread(t);
            EXPECT_TRUE(wait_thread(t, 0)) << "body " << &body - bodies;
            post_thread_message(thread_id(t), {1, 2, 3});
            EXPECT_EQ(resume_thread(t), suspend_failed);
        }
    }
    e.signal();
    EXPECT_TRUE(e.wait(0));
}

TEST(Thread, PrioritiesAreKeptAndChildrenAreNotPinned) {
    const uint64_t given = process_affinity();
    ASSERT_NE(given, 0u);
    const auto own_processors = [] {
        cpu_set_t set;
        EXPECT_EQ(sched_getaffinity(0, sizeof set, &set), 0);
        return CPU_COUNT(&set);
    };
    const int all = own_processors();
    std::thread([&] {
        EXPECT_FALSE(set_current_thread_affinity(0));
        EXPECT_FALSE(set_current_thread_affinity(~given));
        EXPECT_EQ(own_processors(), all) << "a refusal changes nothing";
        ASSERT_TRUE(set_current_thread_affinity(given & (~given + 1)));
        EXPECT_EQ(own_processors(), 1);
        int of_child = 0;
        const std::function<void()> body = [&] { of_child = own_processors(); };
        const thread_handle t = start(body, true);
        for (const int priority : {-2, 1, 15}) {
            set_thread_priority(t, priority);
            EXPECT_EQ(get_thread_priority(t), priority);
        }
        resume_thread(t);
        EXPECT_TRUE(wait_thread(t, wait_forever));
        EXPECT_EQ(of_child, all);
    }).join();
}
