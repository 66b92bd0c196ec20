// Which machine key a key of the front end's keyboard, or a button of its pad, stands for.
#pragma once

#include <cstdint>

constexpr uint32_t no_virtual_key = 0;

// The virtual-key code that kiv_key takes, for a RETROK_ code; no_virtual_key where the machine has none.
uint32_t virtual_key_of(unsigned retro_key);

// The virtual-key code of a button (RETRO_DEVICE_ID_JOYPAD_) of the pad; no_virtual_key for those that do
// nothing.
uint32_t virtual_key_of_button(unsigned button);
constexpr unsigned pad_buttons = 16;
