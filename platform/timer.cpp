#include "platform/timer.h"

#include "platform/event.h"
#include "platform/thread.h"
#include <algorithm>
#include <chrono>
#include <condition_variable>

namespace platform {

namespace {

using clock = std::chrono::steady_clock;
using hundred_ns = std::chrono::duration<int64_t, std::ratio<1, 10'000'000>>;

constexpr int64_t longest_due = 100LL * 365 * 24 * 3600 * 10'000'000; // a century, far from overflow

} // namespace

struct waitable_timer::timer_state {
    std::mutex mutex;
    std::condition_variable changed;
    clock::time_point due = clock::time_point::max(); // max: not armed
};

waitable_timer waitable_timer::create() {
    waitable_timer timer;
    timer.state = std::make_shared<timer_state>();
    return timer;
}

bool waitable_timer::arm(int64_t due) {
    if (!state) return false;
    forced_end_deferral deferral;
    const auto when = clock::now() + hundred_ns(std::clamp<int64_t>(due, 0, longest_due));
    std::lock_guard lock(state->mutex);
    state->due = when;
    state->changed.notify_all();
    return true;
}

// Each wait of the host is until an absolute moment: relative ones add up their lateness, and this library's
// timed semaphores poll (2.8 ms late at 16 ms).
bool waitable_timer::wait(uint32_t milliseconds) {
    const std::shared_ptr<timer_state> waited = state;
    if (!waited) return false;
    forced_end_deferral deferral;
    const auto give_up = milliseconds == wait_forever
                             ? clock::time_point::max()
                             : clock::now() + std::chrono::milliseconds(milliseconds);
    std::unique_lock lock(waited->mutex);
    for (;;) {
        const auto now = clock::now();
        if (waited->due <= now) return true;
        if (give_up <= now) return false;
        const auto until = std::min(waited->due, give_up);
        if (until == clock::time_point::max())
            waited->changed.wait(lock);
        else
            waited->changed.wait_until(lock, until);
    }
}

} // namespace platform
