// Memory dump files (.KIV): RAM 0x8000-0xFF3C, a small restore routine and the registers.
// Only while the CPU is parked.
#pragma once

#include <string>

struct z80_cpu;

// Writes the file aside and renames it: the path holds the old dump or the new one. True on success;
// false leaves an existing file as it was.
bool memory_dump_save(const std::string &path, const z80_cpu &cpu);

// Reads a dump through the current memory map and points the CPU at its restore routine, which no interrupt
// disturbs; after it interrupts are enabled. False, with
// memory untouched, when the file cannot be read or is shorter than 32576 bytes.
bool memory_dump_load(const std::string &path, z80_cpu &cpu);
