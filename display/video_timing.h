// The raster: lines, vertical blank (VRTC), and the clocks that the text DMA steals from the CPU.
//   port 0x40 R  bit 5 VRTC, bit 1 a 15 kHz monitor
// Clock: T-states. 24 kHz: 400 lines of 161 and a blank of 6434 (7720 with 25 rows); 15 kHz: 200 lines of 250
// and a blank of 14996 (13994). Not emulated: horizontal retrace, the controller's own count of retrace lines
// (kept, not used), interlace. With 25 rows that makes 55.4 frames a second at 24 kHz and 62.4 at 15 kHz,
// with 20 rows 56.4 and 61.4. Not sure: the DMA's price of five or six T-states a byte in character mode and
// eleven a word in bursts, and that a burst is owed at its row's first line at once.
#pragma once

#include "support/shared.h"
#include <cstdint>

// What a tick brought.
enum timing_event : uint32_t {
    timing_nothing = 0,
    timing_vblank_begins = 1,
    timing_vblank_ends = 2,
};

struct video_timing_block {
    uint32_t raster_line;   // equal to display_lines during vertical blank
    uint32_t line_clock;    // T-states into the current raster line
    uint32_t vblank_clock;  // T-states into the vertical blank
    uint32_t line_clocks;   // T-states per raster line
    uint32_t vblank_clocks; // T-states of one vertical blank
    uint32_t display_lines; // raster lines before vertical blank: 200 or 400
    uint32_t frame_count;   // frames since power-on
    uint8_t new_line;       // 1: the next tick opens a raster line
    uint8_t vrtc;           // 1 during vertical blank
    uint16_t dma_remaining; // bytes of the current row still to fetch (character mode)
    uint32_t crt_standard;  // 1 = 15 kHz monitor, 0 = 24 kHz monitor
    void (*timing_init)();
    void (*timing_reset)();
    uint32_t (*timing_tick)(uint32_t clocks); // timing_event
    void (*sys_status_read)();                // refreshes VRTC and monitor bits of sys_status
};

void timing_init();

// What the slot holds.
uint32_t timing_tick(uint32_t clocks);

// T-states that may pass before a character row or the vertical blank begins or the blank ends, while no port
// is accessed; 0: it may be with the next tick.
uint32_t timing_room();
// T-states until the blank ends, this one or the next, while no port is accessed.
uint32_t timing_frame_left();
// Whether ticks within the room fetch a row's bytes: timing_fetch is then called for each of them.
bool timing_fetches();
void timing_fetch();
// As ticks of that many clocks within the room, the last of them of `last` clocks, but for the fetches.
void timing_skip(uint32_t clocks, uint32_t last);
