// Whose turn it is on a surface: while it is locked only the thread that locked it may touch it, and others
// wait. Both hosts' off-screen surfaces are drawn by the render thread and filled or copied by others.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace platform {

class surface_turn {
  public:
    // Locks for the calling thread; false, at once, while the surface is locked.
    bool try_lock() {
        const std::lock_guard guard(mutex);
        if (locked) return false;
        locked = true;
        owner = std::this_thread::get_id();
        return true;
    }

    // Does nothing unless the calling thread holds the lock.
    void unlock() {
        const std::lock_guard guard(mutex);
        if (!locked || owner != std::this_thread::get_id()) return;
        locked = false;
        unlocked.notify_all();
    }

    // Waits until nobody else has the surface locked; it stays the caller's while the result lives.
    std::unique_lock<std::mutex> wait() {
        std::unique_lock guard(mutex);
        unlocked.wait(guard, [this] { return !locked || owner == std::this_thread::get_id(); });
        return guard;
    }

    // Before the pixels go: lets whoever still draws finish, for a second at most.
    void let_finish() {
        std::unique_lock guard(mutex);
        unlocked.wait_for(guard, std::chrono::seconds(1), [this] { return !locked; });
    }

  private:
    std::mutex mutex;
    std::condition_variable unlocked;
    bool locked = false;
    std::thread::id owner;
};

} // namespace platform
