// The keyboard: a matrix of 12 rows of 8 keys, read through ports 0x00-0x0B; a 0 bit is a key held down.
//
// Host keys arrive as virtual-key codes (0-255), each of which stands for one key of the matrix or for none.
// The window thread alone writes the matrix while the machine runs.
#pragma once

#include "support/shared.h"
#include <cstdint>

constexpr int key_rows = 12;

struct key_matrix_block {
    shared<uint8_t> key_matrix[key_rows]; // ports 0x00-0x0B
};

// Presses or releases the matrix key of a virtual-key code; codes above 255 and unmapped keys do nothing.
void key_press(uint32_t virtual_key);
void key_release(uint32_t virtual_key);

// Maps the host's four arrow keys to the ten-key 4, 8, 6, 2 (true) or to the machine's cursor keys.
void map_cursor_keys(bool tenkeyless);

// Releases every key.
void reset_keyboard(struct kiv_machine &m);
