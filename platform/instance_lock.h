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

  private:
    int descriptor = -1;
};

} // namespace platform
