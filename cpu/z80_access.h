// The Z80's roads to the outside: instruction bytes, data bytes, words, the stack, ports. This is the only
// code that touches the wait counters.
#pragma once

#include "cpu/z80_cpu.h"
#include <bit>

// The halves of a register word, where this host keeps them.
constexpr int low_half = std::endian::native == std::endian::little ? 0 : 1, high_half = 1 - low_half;

[[gnu::always_inline]] inline uint8_t lo(const uint16_t &word) {
    return reinterpret_cast<const uint8_t *>(&word)[low_half];
}
[[gnu::always_inline]] inline uint8_t hi(const uint16_t &word) {
    return reinterpret_cast<const uint8_t *>(&word)[high_half];
}
[[gnu::always_inline]] inline void set_lo(uint16_t &word, uint8_t value) {
    reinterpret_cast<uint8_t *>(&word)[low_half] = value;
}
[[gnu::always_inline]] inline void set_hi(uint16_t &word, uint8_t value) {
    reinterpret_cast<uint8_t *>(&word)[high_half] = value;
}

[[gnu::always_inline]] inline uint16_t word_of(unsigned high, unsigned low) {
    return static_cast<uint16_t>(high << 8 | low);
}

// Where the bytes of the running instruction come from: memory at PC, or the inject buffer as long as that
// is active. The buffer is in use for one step in thousands, so every group is compiled for either place and
// the ordinary step never asks.
//
// PC stays at the first byte until the instruction ends; the count of bytes taken is known to the compiler in
// every line of an opcode group. So PC is loaded and stored once an instruction. Fetches that each load and
// store it would make the longest chain of dependent accesses of the whole step, and carrying it in a
// register across the calls would cost every step the saving of that register.
template <bool injecting> struct program_counter {
    z80_cpu &cpu;
    int taken; // bytes, since PC

    static constexpr bool may_inject = injecting;
    [[gnu::always_inline]] operator uint16_t() const { return static_cast<uint16_t>(cpu.PC + taken); }
    [[gnu::always_inline]] program_counter &operator=(uint16_t target) {
        cpu.PC = target;
        taken = 0;
        return *this;
    }
    // The same place where the compiler shall know it: after that many prefix bytes, unless some of them were
    // injected.
    [[gnu::always_inline]] program_counter behind(int prefix_bytes) const {
        return {cpu, injecting ? taken : prefix_bytes};
    }
    [[gnu::always_inline]] uint16_t advance(int bytes) {
        const uint16_t from = *this;
        taken += bytes;
        return from;
    }
};

using memory_pc = program_counter<false>;
using injecting_pc = program_counter<true>;

// Bytes out of the inject buffer, which is taken from its end; see z80_cpu.cpp.
uint8_t z80_injected8(z80_cpu &cpu);
uint16_t z80_injected16(z80_cpu &cpu);

// Memory is read and written through the pages where there are some. The rest of each access is a function of
// its own, so that what the instructions are compiled to stays short.
uint8_t z80_ask_opcode(z80_cpu &cpu, uint16_t address);
uint8_t z80_ask8(z80_cpu &cpu, uint16_t address);
void z80_tell8(z80_cpu &cpu, uint16_t address, uint8_t value);
uint16_t z80_ask16(z80_cpu &cpu, uint16_t address);
void z80_tell16(z80_cpu &cpu, uint16_t address, uint16_t value);
void z80_tell_push(z80_cpu &cpu, uint16_t value);

[[gnu::always_inline]] inline void store(uint8_t *page, uint16_t address, uint8_t value) {
    __atomic_store_n(page + address % z80_page_size, value, __ATOMIC_RELAXED);
}

// A page that is to be fetched from and not to be read costs a wait a byte.
[[gnu::always_inline]] inline uint8_t read_memory(z80_cpu &cpu, uint16_t address, uint32_t *wait) {
    const uint8_t *const page = cpu.pages->fetch[address / z80_page_size];
    if (page == nullptr) return cpu.mem_read(address, wait);
    *wait += cpu.pages->read[address / z80_page_size] == nullptr;
    return page[address % z80_page_size];
}

[[gnu::always_inline]] inline void write_memory(z80_cpu &cpu, uint16_t address, uint8_t value,
                                                uint32_t *wait) {
    uint8_t *const page = cpu.pages->write[address / z80_page_size];
    if (page != nullptr)
        store(page, address, value);
    else
        cpu.mem_write(address, value, wait);
}

[[gnu::always_inline]] inline uint8_t read8(z80_cpu &cpu, uint16_t address) {
    const uint8_t *const page = cpu.pages->read[address / z80_page_size];
    return page != nullptr ? page[address % z80_page_size] : z80_ask8(cpu, address);
}

[[gnu::always_inline]] inline void write8(z80_cpu &cpu, uint16_t address, uint8_t value) {
    uint8_t *const page = cpu.pages->write[address / z80_page_size];
    if (page != nullptr)
        store(page, address, value);
    else
        z80_tell8(cpu, address, value);
}

// A word that lies in two pages is not worth a case of its own.
[[gnu::always_inline]] inline bool in_one_page(uint16_t address) {
    return address % z80_page_size != z80_page_size - 1;
}

[[gnu::always_inline]] inline uint16_t read16(z80_cpu &cpu, uint16_t address) {
    const uint8_t *page = cpu.pages->read[address / z80_page_size];
    if (page == nullptr || !in_one_page(address)) [[unlikely]]
        return z80_ask16(cpu, address);
    page += address % z80_page_size;
    return word_of(page[1], page[0]);
}

[[gnu::always_inline]] inline void write16(z80_cpu &cpu, uint16_t address, uint16_t value) {
    uint8_t *const page = cpu.pages->write[address / z80_page_size];
    if (page == nullptr || !in_one_page(address)) [[unlikely]]
        return z80_tell16(cpu, address, value);
    store(page, address, lo(value));
    store(page, static_cast<uint16_t>(address + 1), hi(value));
}

// The opcode, or the byte after a prefix. Every M1 cycle costs one wait, whatever the memory is: what the
// memory itself reports is not charged.
[[gnu::always_inline]] inline uint8_t fetch_opcode(z80_cpu &cpu, auto &pc) {
    if (pc.may_inject && cpu.inject_active) return z80_injected8(cpu);
    const uint16_t address = pc.advance(1);
    const uint8_t *const page = cpu.pages->fetch[address / z80_page_size];
    return page != nullptr ? page[address % z80_page_size] : z80_ask_opcode(cpu, address);
}

[[gnu::always_inline]] inline uint8_t fetch8(z80_cpu &cpu, auto &pc) {
    if (pc.may_inject && cpu.inject_active) return z80_injected8(cpu);
    return read8(cpu, pc.advance(1));
}

[[gnu::always_inline]] inline uint16_t fetch16(z80_cpu &cpu, auto &pc) {
    if (pc.may_inject && cpu.inject_active) return z80_injected16(cpu);
    return read16(cpu, pc.advance(2));
}

[[gnu::always_inline]] inline void push16(z80_cpu &cpu, uint16_t value) {
    const auto address = static_cast<uint16_t>(cpu.SP - 2);
    cpu.SP = address;
    uint8_t *const page = cpu.pages->write[address / z80_page_size];
    if (page == nullptr || !in_one_page(address)) [[unlikely]]
        return z80_tell_push(cpu, value);
    store(page, static_cast<uint16_t>(address + 1), hi(value));
    store(page, address, lo(value));
}

[[gnu::always_inline]] inline uint16_t pop16(z80_cpu &cpu) {
    const uint16_t value = read16(cpu, cpu.SP);
    cpu.SP = static_cast<uint16_t>(cpu.SP + 2);
    return value;
}

// A device may look at PC while it serves a port: it finds the address after the instruction.
[[gnu::always_inline]] inline uint8_t input(z80_cpu &cpu, auto &pc, uint16_t port) {
    pc = static_cast<uint16_t>(pc);
    return cpu.io_in(port);
}

[[gnu::always_inline]] inline void output(z80_cpu &cpu, auto &pc, uint16_t port, uint8_t value) {
    pc = static_cast<uint16_t>(pc);
    cpu.io_out(port, value);
}
