// Auto-reset events and the critical section.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace platform {

constexpr uint32_t wait_forever = 0xFFFFFFFF;

// A handle to an auto-reset event: a signal releases one waiter and is then gone; signals do not add up.
// Named events live while a handle to them exists; opening needs an existing one. A default-made handle is
// closed: waits on it fail at once, signals and resets do nothing.
class event {
  public:
    event() = default;
    static event create(const std::string &name); // empty name: unnamed; an existing name is opened
    static event open(const std::string &name);   // closed handle when there is none of that name
    explicit operator bool() const { return static_cast<bool>(state); }
    void signal();
    void reset();
    bool wait(uint32_t milliseconds); // true: signalled
    void close() { state.reset(); }

  private:
    struct shared_state;
    static std::shared_ptr<shared_state> named_state(const std::string &name, bool make);

    std::shared_ptr<shared_state> state;
};

// Mutual exclusion between threads of the process; the same thread may enter again.
class critical_section {
  public:
    void enter() { mutex.lock(); }
    void leave() { mutex.unlock(); }

  private:
    std::recursive_mutex mutex;
};

} // namespace platform
