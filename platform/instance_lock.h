// The guard that makes a second copy of the program end at once.
#pragma once

#include <string>

namespace platform {

// Held by the first copy while it runs, released by the end of the process whatever way it ends.
class instance_lock {
  public:
    instance_lock() = default;
    ~instance_lock() { release(); }
    instance_lock(const instance_lock &) = delete;
    instance_lock &operator=(const instance_lock &) = delete;
    enum class result { acquired, already_running, failed };
    result acquire(const std::string &name); // one lock per user and name
    void release();

    // Of the first copy: readable when a later one has called; -1 when it cannot be called. `take_call` makes
    // it wait for the next one.
    int call_descriptor() const { return calls; }
    void take_call();
    // Of a later copy: calls the first one. False when it does not listen.
    static bool call_first(const std::string &name);

  private:
    void listen(const std::string &path);

    int descriptor = -1, calls = -1;
    std::string calls_path;
};

} // namespace platform
