#include "platform/clock.h"

#include <cerrno>
#include <chrono>
#include <ctime>

namespace platform {

namespace {

int64_t monotonic_ns() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

int64_t performance_counter() { return monotonic_ns(); }

int64_t performance_frequency() { return 1'000'000'000; }

uint32_t millisecond_clock() { return static_cast<uint32_t>(monotonic_ns() / 1'000'000); }

// An absolute deadline: a signal in between (a thread suspended by one) does not start the time anew.
void sleep_ms(uint32_t milliseconds) {
    const int64_t due = monotonic_ns() + static_cast<int64_t>(milliseconds) * 1'000'000;
    timespec deadline;
    deadline.tv_sec = static_cast<time_t>(due / 1'000'000'000);
    deadline.tv_nsec = static_cast<long>(due % 1'000'000'000);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
}

local_time current_local_time() {
    const time_t now = time(nullptr);
    tm t{};
    localtime_r(&now, &t);
    return {t.tm_year + 1900, t.tm_mon + 1, t.tm_wday, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec};
}

} // namespace platform
