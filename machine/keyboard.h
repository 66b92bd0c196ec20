// The keyboard: a matrix of 12 rows of 8 keys, read through ports 0x00-0x0B; a 0 bit is a key held down.
//
// Host keys arrive as virtual-key codes (0-255), each of which stands for one key of the matrix or for none.
//
// Programs look at the matrix once a vertical retrace or less often: a tap of a few milliseconds, as
// on-screen keyboards and remote desktops send it, would fall between two looks. So a key stays down for two
// whole retraces at least, and what comes after its release waits for it: releases follow in their order, and
// a key that is struck twice is seen twice. A window thread presses and releases; the thread that runs the
// machine makes the changes that wait, at the start of a retrace.
#pragma once

#include "support/shared.h"
#include <cstdint>

constexpr int key_rows = 12;
constexpr uint32_t key_changes_size = 256; // a power of two

struct key_change {
    shared<uint32_t> due; // by key_retraces
    shared<uint8_t> key;  // row * 8 + bit
    shared<uint8_t> down;
};

struct key_matrix_block {
    shared<uint8_t> key_matrix[key_rows];          // ports 0x00-0x0B
    shared<uint32_t> key_retraces;                 // since the last reset
    shared<uint32_t> key_pressed_at[key_rows * 8]; // in key_retraces
    key_change key_changes[key_changes_size];      // those that wait, in their order; a ring
    shared<uint32_t> key_changes_made;             // of all that ever waited
    shared<uint32_t> key_changes_asked;
};

// Presses or releases the matrix key of a virtual-key code, or of vk_matrix + row * 8 + bit in rows 0-10;
// other codes do nothing. A press acts at once unless a release waits. CAPS is a switch: a press turns it on
// or off, and its release does nothing.
void key_press(uint32_t virtual_key);
void key_release(uint32_t virtual_key);
// As key_press, but not before the next retrace: for a key that goes with another one just pressed. A program
// that was in the midst of looking at the matrix would see the one without the other.
void key_press_later(uint32_t virtual_key);

// A vertical retrace begins.
void keyboard_retrace();
// The machine's thread: retraces go by without a change (true). Presses and releases come all the same.
void keyboard_hold(bool held);

// Maps the host's four arrow keys to the ten-key 4, 8, 6, 2 (true) or to the machine's cursor keys.
void map_cursor_keys(bool tenkeyless);

// Backspace is the machine's DEL (true) or its STOP.
void map_back_key(bool deletes);

// Whether a program sees the key held: row * 8 + bit.
bool is_key_held(uint32_t place);
// The matrix key, row * 8 + bit, that a virtual-key code stands for as things are; 0xFF: none.
uint8_t key_place(uint32_t virtual_key);

// Releases every key at once; nothing waits any more. Only while no other thread uses the machine.
void reset_keyboard(struct kiv_machine &m);
