// The five opcode groups of the interpreter, one file a group. Each executes the rest of one instruction
// whose bytes stand at `pc`, stores the outcome into the record, and returns true when it stopped the CPU.
#pragma once

#include "cpu/z80_access.h"

template <class code> bool exec_cb(z80_cpu &cpu, code pc);                        // CB, z80_cb.cpp
template <class code> bool exec_ed(z80_cpu &cpu, code pc);                        // ED, z80_ed.cpp
template <class code> bool exec_index(z80_cpu &cpu, code pc, uint16_t &index);    // DD and FD, z80_index.cpp
template <class code> bool exec_index_cb(z80_cpu &cpu, code pc, uint16_t &index); // DDCB and FDCB

// The unprefixed group with bytes that may come out of the inject buffer, z80_main.cpp.
bool z80_execute_injecting(z80_cpu &cpu);

// The step whose opcode comes from the machine's function, z80_main.cpp.
bool z80_step_asking(z80_cpu &cpu);

// The step that starts with anything in stop_flags or in the inject buffer, z80_cpu.cpp.
bool z80_step_entering(z80_cpu &cpu);
