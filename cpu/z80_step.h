// z80_step for loops that call nothing else: inlined, it saves each step a call.
#pragma once

#include "cpu/z80_groups.h"
#include <array>

// The opcode map, a function for every opcode; z80_main.cpp.
using z80_instruction = bool (*)(z80_cpu &cpu);
extern const std::array<z80_instruction, 128> z80_lower_half, z80_upper_half;

[[gnu::always_inline]] inline bool z80_dispatch(z80_cpu &cpu, uint8_t opcode) {
    // Two jumps rather than one: the measured hosts predict a jump's target from the outcomes of the branches
    // before it, not from earlier targets, so a branch on the opcode tells the predictor where it is.
    return opcode < 0x80 ? z80_lower_half[opcode](cpu) : z80_upper_half[opcode & 0x7F](cpu);
}

[[gnu::always_inline]] inline bool z80_step_inlined(z80_cpu &cpu) {
    cpu.wait_count = 0;
    cpu.wait_count2 = 0;
    cpu.trace_pc = cpu.PC;
    cpu.r_counter = static_cast<uint8_t>(cpu.r_counter + 1);
    if (cpu.stop_flags | cpu.inject_active) [[unlikely]]
        return z80_step_entering(cpu);
    const uint8_t *const page = cpu.pages->fetch[cpu.PC / z80_page_size];
    // Not asked for here: a call would cost this function a stack frame.
    if (page == nullptr) [[unlikely]]
        return z80_step_asking(cpu);
    return z80_dispatch(cpu, page[cpu.PC % z80_page_size]);
}
