#include "platform/clock.h"
#include "platform/event.h"
#include "platform/timer.h"
#include <gtest/gtest.h>
#include <thread>

using namespace platform;

TEST(Event, ASignalIsTakenByOneWaitAndANameLivesWhileAHandleDoes) {
    EXPECT_FALSE(event::open("SYNC"));
    event e = event::create("SYNC"), again = event::create("SYNC"), other = event::create("ACK");
    EXPECT_FALSE(e.wait(0));
    e.signal();
    e.signal();
    e.close();
    EXPECT_FALSE(other.wait(0));
    EXPECT_TRUE(again.wait(0)) << "the same event under its name";
    EXPECT_FALSE(again.wait(1)) << "signals do not add up";
    again.signal();
    again.reset();
    EXPECT_FALSE(event::open("SYNC").wait(0));
    again.close();
    EXPECT_FALSE(event::open("SYNC"));
    again.signal();
    again.reset();
    EXPECT_FALSE(again.wait(wait_forever)) << "closed";
}

// Two threads hand a turn back and forth: a lost signal stops them, a doubled one shows.
TEST(Event, NoSignalBetweenTwoThreadsIsLost) {
    event ping = event::create(""), pong = event::create("");
    constexpr int turns = 2000;
    std::thread other([&] {
        for (int i = 0; i < turns && ping.wait(wait_forever); i++) pong.signal();
    });
    for (int i = 0; i < turns; i++) {
        ping.signal();
        ASSERT_TRUE(pong.wait(wait_forever)) << "turn " << i;
        ASSERT_FALSE(pong.wait(0));
    }
    other.join();
}

TEST(Timer, IsDueNotBeforeItsTimeAndStaysDue) {
    waitable_timer closed;
    EXPECT_FALSE(closed.arm(1));
    EXPECT_FALSE(closed.wait(wait_forever));

    waitable_timer timer = waitable_timer::create();
    EXPECT_FALSE(timer.wait(1)) << "never armed";
    const int64_t start = performance_counter();
    ASSERT_TRUE(timer.arm(300'000)); // 30 ms
    EXPECT_FALSE(timer.wait(5));
    EXPECT_TRUE(timer.wait(wait_forever));
    EXPECT_GE((performance_counter() - start) * 1000 / performance_frequency(), 30);
    EXPECT_TRUE(timer.wait(0));
    ASSERT_TRUE(timer.arm(INT64_MAX));
    EXPECT_FALSE(timer.wait(0)) << "armed anew";
    // A waiter follows when the timer is armed for sooner.
    std::thread waiter([&] { EXPECT_TRUE(timer.wait(wait_forever)); });
    sleep_ms(5);
    ASSERT_TRUE(timer.arm(-5));
    waiter.join();
}
