// The host's keys as virtual-key codes, by their place on a Japanese keyboard, whatever layout is set.
#pragma once

#include "support/host_keys.h"
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace platform {

// The virtual-key code of an evdev key code (the kernel's numbers, linux/input-event-codes.h); 0: none.
uint32_t virtual_key_of_evdev(uint32_t code);

// The same with the left Alt key: keys of the machine that most keyboards lack. 0: none.
uint32_t virtual_key_with_alt(uint32_t code);

// What is held down, so that a release names the same key as its press did, and so that nothing stays pressed
// when the keyboard goes elsewhere. A key is identified by a number of the host's (its scan code).
class key_tracker {
  public:
    // `is_command`: whether the release of a virtual key is a command of the program. Losing the keyboard
    // gives no command.
    explicit key_tracker(std::function<bool(uint32_t)> is_command_key)
        : is_command(std::move(is_command_key)) {}
    // Notes that key `id` is held, as `virtual_key`. False when it was held already (a repeat).
    bool press(uint32_t id, uint32_t virtual_key);
    // The virtual key to release for `id`: 0 when it was not held, or while another key of the same virtual
    // code (the other Shift, Return and Enter) is still down.
    uint32_t release(uint32_t id);
    // Lets go of every key for good and returns the virtual keys to release, each once, without
    // the command keys.
    std::vector<uint32_t> release_all();
    // For keys that the host cannot tell apart: lets go of every key with an id from `first_id` on, except
    // Shift, Ctrl and command keys, and returns the virtual keys to release.
    std::vector<uint32_t> release_from(uint32_t first_id);
    bool is_held(uint32_t virtual_key) const;
    bool is_id_held(uint32_t id) const { return held.count(id) != 0; }

  private:
    std::function<bool(uint32_t)> is_command;
    std::map<uint32_t, uint32_t> held; // id -> virtual key
};

} // namespace platform
