// Gamepads by SDL. That part of SDL is started by the first object, and ends with it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

// Held around the start and the end of SDL's parts, which count without a lock.
std::mutex &sdl_start_mutex();

// Window thread.
class gamepads {
  public:
    gamepads();
    ~gamepads();
    gamepads(const gamepads &) = delete;
    gamepads &operator=(const gamepads &) = delete;

    // Asks the pads, takes new ones and drops those that are gone.
    void look();
    // A bit for each pad_input that is held on any of them.
    uint32_t held() const { return bits; }
    std::vector<std::string> names() const; // of those that are there

  private:
    struct pad;
    bool start();

    bool started = false;
    uint32_t bits = 0;
    std::map<int32_t, std::unique_ptr<pad>> pads; // by SDL's number of the instance
};

} // namespace platform
