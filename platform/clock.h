// Clocks of the host.
#pragma once

#include <cstdint>

namespace platform {

// Monotonic counter for pacing, in ticks, and its ticks per second (constant while the process runs).
int64_t performance_counter();
int64_t performance_frequency();

// Monotonic milliseconds; wraps every 49.7 days, so only differences mean anything.
uint32_t millisecond_clock();

void sleep_ms(uint32_t milliseconds);

struct local_time {
    int year, month, day_of_week, day, hour, minute, second; // month 1-12, day of week 0 = Sunday
};
local_time current_local_time();

} // namespace platform
