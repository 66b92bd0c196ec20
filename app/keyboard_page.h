// The page that shows the machine's keyboard.
#pragma once

#include "platform/host.h"
#include <string>
#include <vector>

// The keys as they lie on the machine. `by_character`: the host's keys of signs are where they are printed.
platform::keyboard_page make_keyboard_page(bool by_character, bool tenkeyless, bool back_deletes);

// Names of the machine's keys for a list to choose from, and their virtual-key codes; the first is none, 0.
struct named_key {
    std::string name;
    uint32_t code;
};
std::vector<named_key> names_of_keys();
