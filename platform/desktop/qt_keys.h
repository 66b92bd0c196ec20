// Virtual-key codes for key events that carry no scan code (remote desktops, input made by programs).
#pragma once

#include <cstdint>

namespace platform {

// `key`: a Qt::Key. By the sign that the key gives, as it stands on a Japanese keyboard; 0: none.
uint32_t virtual_key_of_qt(int key, bool keypad);

} // namespace platform
