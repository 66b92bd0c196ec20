#include "platform/clock.h"
#include "platform/event.h"
#include "support/kel_thread.h"
#include <gtest/gtest.h>
#include <new>
#include <thread>

namespace {

constexpr uint32_t quit = 0x401, frame = 0x402, other = 0x500;

// Runs until it is told to quit; notes the frames that it is sent, taking all that wait at once.
class worker : public kel_thread {
  public:
    ~worker() override { stop(); }
    void run() override {
        for (platform::message m; (m = platform::get_message()).id != quit;) {
            if (m.id == frame) frames.push_back(m.wparam);
            while (platform::peek_message(frame, m)) frames.push_back(m.wparam);
        }
        for (platform::message m; platform::peek_message(other, m);) others++;
    }
    std::vector<uint64_t> frames;
    int others = 0;
};

class brief_worker : public kel_thread {
  public:
    ~brief_worker() override { stop(); }
    void run() override { runs++; }
    std::atomic<int> runs{0};
};

class failing_worker : public kel_thread {
  public:
    ~failing_worker() override { stop(); }
    void run() override { throw std::bad_alloc(); }
    void failed(const char *) override { failures++; }
    std::atomic<int> failures{0};
};

class deaf_worker : public kel_thread {
  public:
    deaf_worker() { grace_ms = 50; }
    void run() override { platform::event::create("").wait(platform::wait_forever); }
};

void expect_no_thread(kel_thread &t) {
    EXPECT_EQ(t.is_running(), 0u);
    EXPECT_FALSE(t.has_thread());
    EXPECT_EQ(t.id(), 0u);
}

} // namespace

TEST(ThreadBase, ASuspendedStartRunsNothingAndItsMessagesWaitInOrder) {
    worker w;
    w.stop();
    w.post_message(1, 2, 3);
    EXPECT_EQ(w.suspend(), platform::suspend_failed) << "no thread";
    EXPECT_EQ(w.resume_thread(), platform::suspend_failed);
    expect_no_thread(w);
    ASSERT_EQ(w.create_thread(1), 1);
    EXPECT_EQ(w.create_thread(0), 0) << "there is one already";
    w.set_priority(-1);
    EXPECT_EQ(w.get_priority(), -1);
    platform::sleep_ms(20);
    EXPECT_EQ(w.is_running(), 0u);
    EXPECT_TRUE(w.has_thread());
    EXPECT_NE(w.id(), 0u);
    for (uint64_t i = 0; i < 1000; i++) w.post_message(frame, i, 0);
    w.post_message(quit, 0, 0);
    for (int i = 0; i < 9; i++) w.post_message(other, 0, 0);
    EXPECT_EQ(w.resume_thread(), 1u);
    w.stop();
    ASSERT_EQ(w.frames.size(), 1000u);
    for (uint64_t i = 0; i < 1000; i++) EXPECT_EQ(w.frames[i], i);
    EXPECT_EQ(w.others, 9) << "taking the frames passes over the others";
    expect_no_thread(w);
}

// The body's own end and a stop meet in every order; whoever comes second finds the handle released.
TEST(ThreadBase, StartAndStopManyTimes) {
    brief_worker w;
    for (int i = 0; i < 200; i++) {
        ASSERT_EQ(w.create_thread(i & 1), 1);
        if (i & 1) w.resume_thread();
        std::thread second([&] {
            if (i % 3 == 0) w.stop();
        });
        if (i % 4 == 0) platform::sleep_ms(1);
        w.stop();
        second.join();
        ASSERT_EQ(w.runs, i + 1);
        expect_no_thread(w);
    }
    for (int i = 0; i < 200; i++) {
        // The thread gives its handle up by itself and another follows.
        ASSERT_EQ(w.create_thread(0), 1);
        while (w.has_thread()) std::this_thread::yield();
        expect_no_thread(w);
        // Destroyed while its thread is just ending.
        brief_worker brief;
        ASSERT_EQ(brief.create_thread(0), 1);
        while ((i & 1) && brief.has_thread()) std::this_thread::yield();
    }
    EXPECT_EQ(w.runs, 400);
}

TEST(ThreadBase, ABodyThatFailsIsToldAndOverAndCanBeStartedAgain) {
    failing_worker w;
    for (int i = 1; i <= 2; i++) {
        ASSERT_EQ(w.create_thread(0), 1);
        while (w.has_thread()) std::this_thread::yield();
        EXPECT_EQ(w.failures, i);
        expect_no_thread(w);
    }
}

TEST(ThreadBase, ABodyThatDoesNotEndIsEndedByForceAfterTheGracePeriod) {
    deaf_worker w;
    ASSERT_EQ(w.create_thread(1), 1);
    const uint32_t start = platform::millisecond_clock();
    w.stop();
    EXPECT_GE(platform::millisecond_clock() - start, 50u);
    expect_no_thread(w);
#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__) // they cannot follow a forced end
    ASSERT_EQ(w.create_thread(0), 1);
    while (!w.is_running()) std::this_thread::yield();
    w.stop();
    expect_no_thread(w);
#endif
}
