// The interrupt controller: three sources, each with a fixed level.
//   port 0xE4 R/W  bits 0-2 threshold (levels below it pass), bit 3 every level passes
//   port 0xE6 R/W  bit 0 clock, bit 1 VRTC, bit 2 USART receive enabled
// Levels: 0 USART receive, 1 vertical retrace (VRTC), 2 the 1/600 s clock.
#pragma once

#include <cstdint>

struct z80_cpu;

enum portE6_bit : uint8_t {
    mask_clock = 0x01,
    mask_vrtc = 0x02,
    mask_usart = 0x04,
};

struct interrupt_block {
    uint16_t interrupt_pending; // bit n: level n
    void (*interrupt_init)();
    void (*interrupt_reset)();
    void (*interrupt_service)(z80_cpu &cpu);       // offers the lowest pending level to the CPU
    void (*interrupt_request_usart)(z80_cpu &cpu); // USART receive: pending until the CPU takes it
    void (*interrupt_request_vrtc)(z80_cpu &cpu);  // VRTC: pending while the CPU refuses, lost while masked
    void (*interrupt_request_clock)(z80_cpu &cpu); // the 1/600 s clock, likewise
};

// Stores the slots, then resets; so do the inits of all devices.
void interrupt_init();

// What the slot holds.
void interrupt_service(z80_cpu &cpu);

// Whether interrupt_service finds nothing to do, and goes on finding nothing until the CPU enables its
// interrupts or a port is written.
bool interrupts_quiet(const z80_cpu &cpu);
