// The Z80's roads to the outside: instruction bytes, data bytes, words, the stack, ports. This is the only
// code that touches the wait counters.
//
// `pc` is the program counter of the running instruction. It lives in a register of the host from the
// opcode to the end of the instruction and goes back into the record once: three fetches that each load
// and store it would make the longest chain of dependent accesses of the whole step.
#pragma once

#include "cpu/z80_cpu.h"
#include <bit>

// The halves of a register word.
static_assert(std::endian::native == std::endian::little);

[[gnu::always_inline]] inline uint8_t lo(const uint16_t &word) {
    return reinterpret_cast<const uint8_t *>(&word)[0];
}
[[gnu::always_inline]] inline uint8_t hi(const uint16_t &word) {
    return reinterpret_cast<const uint8_t *>(&word)[1];
}
[[gnu::always_inline]] inline void set_lo(uint16_t &word, uint8_t value) {
    reinterpret_cast<uint8_t *>(&word)[0] = value;
}
[[gnu::always_inline]] inline void set_hi(uint16_t &word, uint8_t value) {
    reinterpret_cast<uint8_t *>(&word)[1] = value;
}

[[gnu::always_inline]] inline uint16_t word_of(unsigned high, unsigned low) {
    return static_cast<uint16_t>(high << 8 | low);
}

// Instruction bytes out of the inject buffer, which is taken from its end; see z80_cpu.cpp.
uint8_t z80_injected8(z80_cpu &cpu);
uint16_t z80_injected16(z80_cpu &cpu);

[[gnu::always_inline]] inline uint8_t read8(z80_cpu &cpu, uint16_t address) {
    return cpu.mem_read(address, &cpu.wait_count);
}

[[gnu::always_inline]] inline void write8(z80_cpu &cpu, uint16_t address, uint8_t value) {
    cpu.mem_write(address, value, &cpu.wait_count);
}

[[gnu::always_inline]] inline uint16_t read16(z80_cpu &cpu, uint16_t address) {
    const unsigned low = cpu.mem_read(address, &cpu.wait_count);
    const unsigned high = cpu.mem_read(static_cast<uint16_t>(address + 1), &cpu.wait_count2);
    return word_of(high, low);
}

[[gnu::always_inline]] inline void write16(z80_cpu &cpu, uint16_t address, uint16_t value) {
    cpu.mem_write(address, lo(value), &cpu.wait_count);
    cpu.mem_write(static_cast<uint16_t>(address + 1), hi(value), &cpu.wait_count2);
}

// The opcode, or the byte after a prefix. Every M1 cycle costs one wait, whatever the memory is: what the
// memory itself reports goes into a counter that nobody reads.
[[gnu::always_inline]] inline uint8_t fetch_opcode(z80_cpu &cpu, uint16_t &pc) {
    if (cpu.inject_active) [[unlikely]]
        return z80_injected8(cpu);
    return cpu.mem_read(pc++, &cpu.m1_memory_waits);
}

[[gnu::always_inline]] inline uint8_t fetch8(z80_cpu &cpu, uint16_t &pc) {
    if (cpu.inject_active) [[unlikely]]
        return z80_injected8(cpu);
    return read8(cpu, pc++);
}

[[gnu::always_inline]] inline uint16_t fetch16(z80_cpu &cpu, uint16_t &pc) {
    if (cpu.inject_active) [[unlikely]]
        return z80_injected16(cpu);
    const uint16_t value = read16(cpu, pc);
    pc = static_cast<uint16_t>(pc + 2);
    return value;
}

[[gnu::always_inline]] inline void push16(z80_cpu &cpu, uint16_t value) {
    cpu.SP = static_cast<uint16_t>(cpu.SP - 2);
    cpu.mem_write(static_cast<uint16_t>(cpu.SP + 1), hi(value), &cpu.wait_count);
    cpu.mem_write(cpu.SP, lo(value), &cpu.wait_count2);
}

[[gnu::always_inline]] inline uint16_t pop16(z80_cpu &cpu) {
    const uint16_t value = read16(cpu, cpu.SP);
    cpu.SP = static_cast<uint16_t>(cpu.SP + 2);
    return value;
}

// A device may look at the PC while it serves a port: it finds the address after the instruction.
[[gnu::always_inline]] inline uint8_t input(z80_cpu &cpu, uint16_t pc, uint16_t port) {
    cpu.PC = pc;
    return cpu.io_in(port);
}

[[gnu::always_inline]] inline void output(z80_cpu &cpu, uint16_t pc, uint16_t port, uint8_t value) {
    cpu.PC = pc;
    cpu.io_out(port, value);
}
