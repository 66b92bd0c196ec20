// Faults on demand: which calls of the headless host fail, and how many times.
#pragma once

#include <array>
#include <mutex>

namespace platform {

enum class fault {
    create_window,
    framed, // host_window::set_framed is refused
    display_cooperative_level,
    display_mode, // any mode is refused
    primary,
    offscreen_video_memory,
    offscreen_system_memory,
    describe,
    lock_busy,
    lock_failed,
    copy_failed,
    vertical_blank,
    sound_primary,
    sound_stream,
    sound_lock,
    sound_position,
    count
};

// From any thread.
class fault_plan {
  public:
    static constexpr int always = -1;

    // The next `times` calls fail; 0: none any more.
    void set(fault f, int times = always) {
        const std::lock_guard lock(mutex);
        left[index(f)] = times;
    }
    // How many are still to fail.
    int pending(fault f) const {
        const std::lock_guard lock(mutex);
        return left[index(f)];
    }
    // True: this call fails. For the host itself.
    bool take(fault f) {
        const std::lock_guard lock(mutex);
        int &n = left[index(f)];
        if (n == 0) return false;
        if (n != always) n--;
        return true;
    }

  private:
    static size_t index(fault f) { return static_cast<size_t>(f); }

    mutable std::mutex mutex;
    std::array<int, static_cast<size_t>(fault::count)> left{};
};

} // namespace platform
