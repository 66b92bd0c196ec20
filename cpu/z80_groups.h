// The five opcode groups of the interpreter, one file a group. Each executes the rest of one instruction
// whose bytes stand at `pc`, stores the outcome into the record, and returns true when the CPU has stopped.
#pragma once

#include "cpu/z80_cpu.h"

bool z80_execute(z80_cpu &cpu);                                 // unprefixed, z80_main.cpp
bool exec_cb(z80_cpu &cpu, uint16_t pc);                        // CB, z80_cb.cpp
bool exec_ed(z80_cpu &cpu, uint16_t pc);                        // ED, z80_ed.cpp
bool exec_index(z80_cpu &cpu, uint16_t pc, uint16_t &index);    // DD and FD, z80_index.cpp
bool exec_index_cb(z80_cpu &cpu, uint16_t pc, uint16_t &index); // DDCB and FDCB, z80_index_cb.cpp
