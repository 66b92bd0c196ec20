// The host's keys as virtual-key codes, by their place on a Japanese keyboard, whatever layout is set.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace platform {

// Virtual-key codes that the code speaks of by name.
constexpr uint32_t vk_shift = 0x10, vk_control = 0x11, vk_menu = 0x12, vk_pause = 0x13, vk_end = 0x23,
                   vk_f4 = 0x73, vk_f6 = 0x75, vk_f10 = 0x79, vk_f12 = 0x7B;

// The virtual-key code of an evdev key code (the kernel's numbers, linux/input-event-codes.h); 0: none.
uint32_t virtual_key_of_evdev(uint32_t code);

// True for keys whose release is a command of the program (F6 to F12, Pause, End).
bool is_command_key(uint32_t virtual_key);

// What is held down, so that a release names the same key as its press did, and so that nothing stays pressed
// when the keyboard goes elsewhere. A key is identified by a number of the host's (its scan code).
class key_tracker {
  public:
    // Notes that key `id` is held, as `virtual_key`. False when it was held already (a repeat).
    bool press(uint32_t id, uint32_t virtual_key);
    // The virtual key to release for `id`: 0 when it was not held, or while another key of the same virtual
    // code (the other Shift, Return and Enter) is still down.
    uint32_t release(uint32_t id);
    // Lets go of every key for good and returns the virtual keys to release, each once. Command keys are not
    // among them: losing the keyboard gives no command.
    std::vector<uint32_t> release_all();
    // For keys that the host cannot tell apart: lets go of every key with an id from `first_id` on, except
    // Shift, Ctrl and command keys, and returns the virtual keys to release.
    std::vector<uint32_t> release_from(uint32_t first_id);
    bool is_held(uint32_t virtual_key) const;
    bool is_id_held(uint32_t id) const { return held.count(id) != 0; }

  private:
    std::map<uint32_t, uint32_t> held; // id -> virtual key
};

} // namespace platform
