// The port map and the small system ports: DIP switches, bank latches, palette, plane select, status.
#pragma once

#include "support/shared.h"
#include <cstdint>

// Port 0x31.
enum port31_bit : uint8_t {
    port31_ram_mode = 0x02,
    port31_nbasic = 0x04,
    port31_graphics_on = 0x08,
};

struct palette_block {
    shared<uint8_t> palette[8]; // ports 0x54-0x5B, 3-bit G R B codes
};

struct system_port_block {
    uint8_t sys_status;           // image of port 0x40 input
    shared<uint8_t> gvram_select; // 0xF9, 0xFA, 0xFC plane 0, 1, 2; else main RAM
    // The byte last written to each port.
    uint8_t port10, port21, port30;
    shared<uint8_t> port31;
    uint8_t port40, port70, port71, portE4, portE6;
};

// sys_status bits.
enum sys_status_bit : uint8_t {
    status_standard_monitor = 0x02,
    status_calendar_out = 0x10,
    status_vrtc = 0x20,
};

// The Z80's I/O; only the low eight bits of the port count.
uint8_t io_in(uint16_t port);
void io_out(uint16_t port, uint8_t value);

// The latches as after power-on: ROM mode, no expansion ROM, RAM at 0xC000. The palette stays.
void reset_system_ports(struct kiv_machine &m);
