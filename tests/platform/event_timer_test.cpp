#include "platform/clock.h"
#include "platform/event.h"
#include "platform/timer.h"
#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

using namespace platform;

TEST(Event, ASignalIsTakenByOneWaitAndDoesNotAddUp) {
    event e = event::create("");
    EXPECT_FALSE(e.wait(0));
    e.signal();
    e.signal();
    EXPECT_TRUE(e.wait(0));
    EXPECT_FALSE(e.wait(0));
    e.signal();
    e.reset();
    EXPECT_FALSE(e.wait(1));

    event closed;
    closed.signal();
    closed.reset();
    EXPECT_FALSE(closed.wait(wait_forever));
}

TEST(Event, NamesLiveWhileAHandleDoes) {
    EXPECT_FALSE(event::open("SYNC"));
    std::optional<event> first = event::create("SYNC");
    event opened = event::open("SYNC"), again = event::create("SYNC"), other = event::create("ACK");
    first->signal();
    first.reset();
    EXPECT_FALSE(other.wait(0));
    EXPECT_TRUE(again.wait(0)) << "the same event under its name";
    opened.signal();
    event copy = opened;
    opened.close();
    EXPECT_TRUE(copy.wait(0));
    again.close();
    EXPECT_TRUE(event::open("SYNC")) << "the copy still holds it";
    copy.close();
    EXPECT_FALSE(event::open("SYNC"));
    EXPECT_FALSE(event::create("SYNC").wait(0)) << "a new one, not signalled";
}

// Two threads hand a turn back and forth: a lost or doubled signal stops them or breaks the count.
TEST(Event, NoSignalBetweenTwoThreadsIsLost) {
    event ping = event::create(""), pong = event::create("");
    constexpr int turns = 2000;
    std::atomic<int> answered{0};
    std::thread other([&] {
        for (int i = 0; i < turns; i++) {
            if (!ping.wait(10'000)) return;
            answered++;
            pong.signal();
        }
    });
    for (int i = 0; i < turns; i++) {
        ping.signal();
        ASSERT_TRUE(pong.wait(10'000)) << "turn " << i;
        ASSERT_EQ(answered, i + 1);
        ASSERT_FALSE(pong.wait(0));
    }
    other.join();
}

TEST(Timer, IsDueNotBeforeItsTimeAndStaysDue) {
    waitable_timer closed;
    EXPECT_FALSE(closed.arm(1));
    EXPECT_FALSE(closed.wait(wait_forever));

    waitable_timer timer = waitable_timer::create();
    ASSERT_TRUE(timer);
    EXPECT_FALSE(timer.wait(1)) << "never armed";
    const int64_t start = performance_counter();
    const auto passed_ms = [&] { return (performance_counter() - start) * 1000 / performance_frequency(); };
    ASSERT_TRUE(timer.arm(300'000)); // 30 ms
    EXPECT_FALSE(timer.wait(5));
    EXPECT_TRUE(timer.wait(wait_forever));
    EXPECT_GE(passed_ms(), 30);
    EXPECT_TRUE(timer.wait(0));
    ASSERT_TRUE(timer.arm(INT64_MAX));
    EXPECT_FALSE(timer.wait(0)) << "armed anew";
    // A waiter follows when the timer is armed for sooner.
    std::thread waiter([&] { EXPECT_TRUE(timer.wait(60'000)); });
    sleep_ms(5);
    ASSERT_TRUE(timer.arm(-5));
    waiter.join();
    EXPECT_LT(passed_ms(), 50'000);
}
