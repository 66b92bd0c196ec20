// The PCG-8100 board: programmable glyphs for codes 0x80-0xFF and three square-wave tones (8253 counters).
//   port 0x00 W  glyph data          port 0x01 W  glyph address, low byte
//   port 0x02 W  bits 0-1 address high, 3 gate 0, 4 write, 5 from ROM, 6 gate 1, 7 gate 2
//   port 0x03 W  bit 3 glyphs on     ports 0x0C-0x0E W  counters 0-2     port 0x0F W  control word
// Not emulated: the counting modes (always frequency dividers), BCD, reading the counters back.
// The board has no reset of its own: glyphs and tones survive the machine's reset.
#pragma once

#include "support/shared.h"
#include <cstdint>

struct pcg_counter {
    uint16_t frequency; // Hz
    uint8_t high, low;  // divisor bytes
    uint8_t access;     // 0 none, 1 low, 2 high, 3 low then high
    uint8_t toggle;     // access 3: 2 before the low byte, 1 before the high one
    uint8_t gate;       // 1: sounds
};

struct pcg8100_block {
    uint8_t pcg_data;         // as last written to port 0x00
    uint8_t pcg_address_low;  // as last written to port 0x01
    uint8_t pcg_address_high; // 0-3, from port 0x02
    pcg_counter pcg_counters[3];
    void (*pcg_port)(uint8_t port, uint8_t value);
};

struct pcg_switch_block {
    shared<uint8_t> pcg_glyphs_on; // 1: glyphs come from font_work
};

// A write to ports 0x00-0x0F; the low four bits of the port count.
void pcg_port(uint8_t port, uint8_t value);
