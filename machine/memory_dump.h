// Memory dump files (.KIV): RAM 0x8000-0xFF3C, a small restore routine and the registers.
// Only while the CPU is parked.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct z80_cpu;

constexpr uint32_t dump_size = 32612;     // as written here
constexpr uint32_t dump_minimum = 0x7F40; // 32576, the shortest that is read
constexpr uint32_t dump_maximum = 0x8000; // what is read of a longer one

// The dump's bytes, dump_size of them.
void memory_dump_make(uint8_t *dump, const z80_cpu &cpu);

// Stores a dump through the current memory map and points the CPU at its restore routine, which no interrupt
// disturbs; after it interrupts are enabled. False, with memory untouched, when it is shorter than
// dump_minimum.
bool memory_dump_apply(const uint8_t *dump, size_t size, z80_cpu &cpu);

// The same with files (memory_dump_files.cpp). Writing: aside and renamed, so that the path holds the old
// dump or the new one; false leaves an existing file as it was. Reading: false, with memory untouched, also
// when the file cannot be read.
bool memory_dump_save(const std::string &path, const z80_cpu &cpu);
bool memory_dump_load(const std::string &path, z80_cpu &cpu);
