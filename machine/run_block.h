// What a run of the machine keeps beside the record. With the record, the processor and the sound's record it
// is all that decides what happens next; a snapshot holds the four.
#pragma once

#include "machine/calendar_clock.h"
#include "support/shared.h"
#include <cstdint>

struct run_block {
    uint32_t pass_counter;  // passes since power-on, modulo 2^32: one of four runs an instruction while the
                            // DMA waits
    uint32_t clock_counter; // T-states since the last 1/600 s interrupt; goes on through resets
    uint32_t slice_cycles;  // T-states of the current sound slice
    shared<uint8_t> charge_waits; // 0: memory waits are not charged (a setting)
    uint8_t frame_due;            // 1: a frame has ended, and nobody has composed it or passed it over yet
    uint64_t cycles;              // T-states since power-on
    uint64_t frames;              // vertical blanks since power-on
    calendar_base calendar;       // where the calendar clock takes its time from
};

// Written by whoever drives the passes, on that thread.
extern run_block run_state;

// Power-on: everything at its start, memory waits charged. The calendar's base stays, as it is the host's.
void run_state_init();
