// The CRT controller's cursor (uPD3301-type) and the blinking of cursor and text.
//   port 0x51 W  command 0x80 cursor off, 0x81 cursor on; two parameters at port 0x50 follow: column, row
// Clock: one count = one frame. The blink rate comes with the second parameter of RESET, bits 6-7: by the
// chip's command set 16, 32, 48 or 64 frames a period, text at half the cursor's rate. Not sure: that
// blinking text is shown for three quarters of its period. Not emulated: the cursor's shape (always a block).
#pragma once

#include "support/shared.h"
#include <cstdint>

struct cursor_block {
    shared<uint8_t> cursor_x, cursor_y;   // as displayed
    uint8_t cursor_load_x, cursor_load_y; // as received
    shared<uint8_t> cursor_enabled;
    shared<uint8_t> cursor_phase;                    // 1 while the blinking cursor is visible
    shared<uint8_t> attr_blink_phase;                // 1 while blinking text is visible
    uint16_t cursor_blink_period, attr_blink_period; // frames
    uint16_t cursor_blink_on, attr_blink_on;         // frames at the start of each period
    void (*cursor_init)();
    void (*cursor_reset)();
    void (*cursor_on)();
    void (*cursor_off)();
    void (*cursor_update)();
    void (*cursor_blink_rate)(uint8_t rate); // 0-3
    void (*blink_tick)();                    // once a frame
};

void cursor_init();
