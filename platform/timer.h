// The waitable timer that paces the CPU thread.
#pragma once

#include <cstdint>
#include <memory>

namespace platform {

class waitable_timer {
  public:
    waitable_timer() = default;
    static waitable_timer create(); // closed handle on failure
    explicit operator bool() const { return static_cast<bool>(state); }
    // Arms the timer once, also when it is armed already, `due` in units of 100 ns from now (0 or negative:
    // at once). False on failure.
    bool arm(int64_t due);
    // Waits until the timer is due, at most `milliseconds`. True: due, and it stays so until it is armed
    // again. A timer that was never armed is not due.
    bool wait(uint32_t milliseconds);
    void close() { state.reset(); }

  private:
    struct timer_state;
    std::shared_ptr<timer_state> state;
};

} // namespace platform
