// A second Z80 to check the first against: slow, decoded by the bit fields of the opcode where the
// interpreter has a case an opcode, arithmetic in wide signed integers where it folds bits.
// It runs one instruction from a record and a memory, and says what happened on the bus.
#pragma once

#include "z80_bench.h"

struct reference_result {
    z80_cpu after; // registers, step_cycles, m1_count, wait counters, stop state
    std::vector<bus_access> log;
};

// Executes the instruction at `before.PC`. Writes go into `memory`.
reference_result reference_step(const z80_cpu &before, uint8_t *memory);

// T-states by opcode, the longer count where there are two; 0: a prefix or no time stored, 5: undefined.
extern const uint8_t unprefixed_cycles[256];
extern const uint8_t ed_cycles[256];
extern const uint8_t index_cycles[256];
