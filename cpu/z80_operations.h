// What the Z80's instructions do, one family each. Flags are computed, never looked up, and written once.
//
// With x = first operand ^ second operand ^ result, taken wide, bit n of x is the carry (or borrow) into
// bit n. Half carry is therefore bit 4 (bit 12 of words), and overflow, carry into the sign against carry
// out of it, is what adding the sign bit to x leaves in the bit above.
#pragma once

#include "cpu/z80_groups.h"

// The end of every instruction: PC, T-states and opcode fetches go into the record. False: the CPU runs on.
[[gnu::always_inline]] inline bool finish(z80_cpu &cpu, uint16_t pc, uint32_t cycles, uint32_t m1_count) {
    cpu.PC = pc;
    cpu.step_cycles = cycles;
    cpu.m1_count = m1_count;
    cpu.total_cycles += cycles;
    return false;
}

[[gnu::always_inline]] inline void set_stop_code(z80_cpu &cpu, z80_stop_flag code) {
    cpu.stop_flags = static_cast<uint8_t>((cpu.stop_flags & ~stop_code_mask) | code);
}

// The end of an instruction that stops the CPU.
[[gnu::cold]] inline bool stop(z80_cpu &cpu, uint16_t pc, z80_stop_reason reason, uint32_t cycles,
                               uint32_t m1_count) {
    constexpr uint32_t halt_cycles = 4;
    if (reason == stop_halt && z80_lenient.halt_waits.load(std::memory_order_relaxed))
        return finish(cpu, cpu.trace_pc, halt_cycles, m1_count);
    if (reason == stop_undefined && z80_lenient.undefined_runs.load(std::memory_order_relaxed))
        return finish(cpu, pc, cycles, m1_count);
    set_stop_code(cpu, stop_code_instruction);
    cpu.stop_reason = reason;
    finish(cpu, pc, cycles, m1_count);
    return true;
}

// A byte sequence that is no instruction costs this.
constexpr uint32_t undefined_cycles = 5;

// Flags.

constexpr unsigned flags_53 = flag_5 | flag_3;
constexpr unsigned flags_s53 = flag_s | flags_53;
constexpr unsigned flags_szp = flag_s | flag_z | flag_pv;

[[gnu::always_inline]] inline bool on(const z80_cpu &cpu, z80_flag flag) { return (lo(cpu.AF) & flag) != 0; }
[[gnu::always_inline]] inline unsigned carry_of(const z80_cpu &cpu) { return lo(cpu.AF) & flag_c; }
[[gnu::always_inline]] inline unsigned zero(unsigned result) { return result == 0 ? flag_z : 0; }
[[gnu::always_inline]] inline unsigned sz53(uint8_t result) { return (result & flags_s53) | zero(result); }
[[gnu::always_inline]] inline unsigned parity(uint8_t result) {
    return __builtin_parity(result) ? 0 : flag_pv;
}
[[gnu::always_inline]] inline unsigned sz53p(uint8_t result) { return sz53(result) | parity(result); }

[[gnu::always_inline]] inline void set_flags(z80_cpu &cpu, unsigned flags) {
    set_lo(cpu.AF, static_cast<uint8_t>(flags));
}
[[gnu::always_inline]] inline void set_af(z80_cpu &cpu, unsigned a, unsigned flags) {
    cpu.AF = word_of(a, flags);
}

// 8-bit arithmetic and logic on A.

// H, P/V and C of an addition or subtraction; `result` is wider than the operands and keeps the carry.
[[gnu::always_inline]] inline unsigned carries8(unsigned a, unsigned n, unsigned result) {
    const unsigned x = a ^ n ^ result;
    return (x & flag_h) | ((x + 0x80) >> 6 & flag_pv) | (result >> 8 & flag_c);
}

[[gnu::always_inline]] inline void add8(z80_cpu &cpu, unsigned n, unsigned carry = 0) {
    const unsigned a = hi(cpu.AF);
    const unsigned result = a + n + carry;
    set_af(cpu, result, sz53(static_cast<uint8_t>(result)) | carries8(a, n, result));
}

[[gnu::always_inline]] inline void adc8(z80_cpu &cpu, unsigned n) { add8(cpu, n, carry_of(cpu)); }

[[gnu::always_inline]] inline void sub8(z80_cpu &cpu, unsigned n, unsigned carry = 0) {
    const unsigned a = hi(cpu.AF);
    const unsigned result = a - n - carry;
    set_af(cpu, result, sz53(static_cast<uint8_t>(result)) | carries8(a, n, result) | flag_n);
}

[[gnu::always_inline]] inline void sbc8(z80_cpu &cpu, unsigned n) { sub8(cpu, n, carry_of(cpu)); }

// Bits 5 and 3 come from the operand: the difference never reaches a register.
[[gnu::always_inline]] inline void cp8(z80_cpu &cpu, unsigned n) {
    const unsigned a = hi(cpu.AF);
    const unsigned result = a - n;
    const uint8_t r = static_cast<uint8_t>(result);
    set_flags(cpu, (r & flag_s) | zero(r) | (n & flags_53) | carries8(a, n, result) | flag_n);
}

[[gnu::always_inline]] inline void and8(z80_cpu &cpu, uint8_t n) {
    const uint8_t a = hi(cpu.AF) & n;
    set_af(cpu, a, sz53p(a) | flag_h);
}

[[gnu::always_inline]] inline void xor8(z80_cpu &cpu, uint8_t n) {
    const uint8_t a = hi(cpu.AF) ^ n;
    set_af(cpu, a, sz53p(a));
}

[[gnu::always_inline]] inline void or8(z80_cpu &cpu, uint8_t n) {
    const uint8_t a = hi(cpu.AF) | n;
    set_af(cpu, a, sz53p(a));
}

[[gnu::always_inline]] inline uint8_t inc8(z80_cpu &cpu, uint8_t n) {
    const uint8_t r = static_cast<uint8_t>(n + 1);
    set_flags(cpu, carry_of(cpu) | sz53(r) | ((n ^ r) & flag_h) | ((~n & r & 0x80) >> 5));
    return r;
}

[[gnu::always_inline]] inline uint8_t dec8(z80_cpu &cpu, uint8_t n) {
    const uint8_t r = static_cast<uint8_t>(n - 1);
    set_flags(cpu, carry_of(cpu) | sz53(r) | ((n ^ r) & flag_h) | ((n & ~r & 0x80) >> 5) | flag_n);
    return r;
}

[[gnu::always_inline]] inline void neg(z80_cpu &cpu) {
    const unsigned n = hi(cpu.AF);
    const unsigned result = 0u - n;
    set_af(cpu, result, sz53(static_cast<uint8_t>(result)) | carries8(0, n, result) | flag_n);
}

[[gnu::always_inline]] inline void cpl(z80_cpu &cpu) {
    const unsigned a = ~hi(cpu.AF) & 0xFFu;
    set_af(cpu, a, (lo(cpu.AF) & (flags_szp | flag_c)) | (a & flags_53) | flag_h | flag_n);
}

[[gnu::always_inline]] inline void scf(z80_cpu &cpu) {
    set_flags(cpu, (lo(cpu.AF) & flags_szp) | (hi(cpu.AF) & flags_53) | flag_c);
}

[[gnu::always_inline]] inline void ccf(z80_cpu &cpu) {
    const unsigned carry = carry_of(cpu);
    set_flags(cpu, (lo(cpu.AF) & flags_szp) | (hi(cpu.AF) & flags_53) | carry << 4 | (carry ^ flag_c));
}

// Subtracting is adding the two's complement, and H is the carry of that addition.
[[gnu::always_inline]] inline void daa(z80_cpu &cpu) {
    const unsigned a = hi(cpu.AF);
    const unsigned f = lo(cpu.AF);
    const unsigned low = (f & flag_h) || (a & 0x0F) > 9 ? 0x06 : 0;
    const unsigned high = (f & flag_c) || a > 0x99 ? 0x60 : 0;
    const unsigned correction = (f & flag_n ? 0u - (high | low) : high | low) & 0xFF;
    const unsigned result = (a + correction) & 0xFF;
    const unsigned carry = high != 0 ? flag_c : 0;
    set_af(cpu, result,
           sz53p(static_cast<uint8_t>(result)) | ((a ^ result ^ correction) & flag_h) | (f & flag_n) | carry);
}

// 16-bit arithmetic.

[[gnu::always_inline]] inline void add16(z80_cpu &cpu, uint16_t &target, unsigned n) {
    const unsigned a = target;
    const unsigned result = a + n;
    target = static_cast<uint16_t>(result);
    set_flags(cpu, (lo(cpu.AF) & flags_szp) | (result >> 8 & flags_53) | ((a ^ n ^ result) >> 8 & flag_h) |
                       result >> 16);
}

// The flags that ADC HL and SBC HL share; N is added by the caller.
[[gnu::always_inline]] inline unsigned flags16(unsigned a, unsigned n, unsigned result) {
    const unsigned x = a ^ n ^ result;
    return (result >> 8 & flags_s53) | zero(result & 0xFFFF) | (x >> 8 & flag_h) |
           ((x + 0x8000) >> 14 & flag_pv) | (result >> 16 & flag_c);
}

[[gnu::always_inline]] inline void adc16(z80_cpu &cpu, unsigned n) {
    const unsigned a = cpu.HL;
    const unsigned result = a + n + carry_of(cpu);
    cpu.HL = static_cast<uint16_t>(result);
    set_flags(cpu, flags16(a, n, result));
}

[[gnu::always_inline]] inline void sbc16(z80_cpu &cpu, unsigned n) {
    const unsigned a = cpu.HL;
    const unsigned result = a - n - carry_of(cpu);
    cpu.HL = static_cast<uint16_t>(result);
    set_flags(cpu, flags16(a, n, result) | flag_n);
}

[[gnu::always_inline]] inline void inc16(uint16_t &word) { word = static_cast<uint16_t>(word + 1); }
[[gnu::always_inline]] inline void dec16(uint16_t &word) { word = static_cast<uint16_t>(word - 1); }

// Rotates of A: S, Z and P/V stay.

[[gnu::always_inline]] inline void rotated_a(z80_cpu &cpu, unsigned a, unsigned carry) {
    set_af(cpu, a, (lo(cpu.AF) & flags_szp) | (a & flags_53) | carry);
}

[[gnu::always_inline]] inline void rlca(z80_cpu &cpu) {
    const unsigned a = hi(cpu.AF);
    rotated_a(cpu, (a << 1 | a >> 7) & 0xFF, a >> 7);
}

[[gnu::always_inline]] inline void rrca(z80_cpu &cpu) {
    const unsigned a = hi(cpu.AF);
    rotated_a(cpu, (a >> 1 | a << 7) & 0xFF, a & 1);
}

[[gnu::always_inline]] inline void rla(z80_cpu &cpu) {
    const unsigned a = hi(cpu.AF);
    rotated_a(cpu, (a << 1 | carry_of(cpu)) & 0xFF, a >> 7);
}

[[gnu::always_inline]] inline void rra(z80_cpu &cpu) {
    const unsigned a = hi(cpu.AF);
    rotated_a(cpu, a >> 1 | carry_of(cpu) << 7, a & 1);
}

// Rotates and shifts of any byte.

[[gnu::always_inline]] inline uint8_t shifted(z80_cpu &cpu, unsigned result, unsigned carry) {
    const uint8_t r = static_cast<uint8_t>(result);
    set_flags(cpu, sz53p(r) | carry);
    return r;
}

[[gnu::always_inline]] inline uint8_t rlc(z80_cpu &cpu, unsigned n) {
    return shifted(cpu, n << 1 | n >> 7, n >> 7);
}
[[gnu::always_inline]] inline uint8_t rrc(z80_cpu &cpu, unsigned n) {
    return shifted(cpu, n >> 1 | n << 7, n & 1);
}
[[gnu::always_inline]] inline uint8_t rl(z80_cpu &cpu, unsigned n) {
    return shifted(cpu, n << 1 | carry_of(cpu), n >> 7);
}
[[gnu::always_inline]] inline uint8_t rr(z80_cpu &cpu, unsigned n) {
    return shifted(cpu, n >> 1 | carry_of(cpu) << 7, n & 1);
}
[[gnu::always_inline]] inline uint8_t sla(z80_cpu &cpu, unsigned n) { return shifted(cpu, n << 1, n >> 7); }
[[gnu::always_inline]] inline uint8_t sra(z80_cpu &cpu, unsigned n) {
    return shifted(cpu, n >> 1 | (n & 0x80), n & 1);
}
[[gnu::always_inline]] inline uint8_t sll(z80_cpu &cpu, unsigned n) {
    return shifted(cpu, n << 1 | 1, n >> 7);
}
[[gnu::always_inline]] inline uint8_t srl(z80_cpu &cpu, unsigned n) { return shifted(cpu, n >> 1, n & 1); }

// Single bits, named by their number.

[[gnu::always_inline]] inline void bit(z80_cpu &cpu, unsigned number, uint8_t n) {
    const unsigned t = n & 1u << number;
    set_flags(cpu, (t & flags_s53) | (t == 0 ? flag_z | flag_pv : 0) | flag_h | carry_of(cpu));
}

[[gnu::always_inline]] inline uint8_t res(unsigned number, uint8_t n) {
    return static_cast<uint8_t>(n & ~(1u << number));
}

[[gnu::always_inline]] inline uint8_t set(unsigned number, uint8_t n) {
    return static_cast<uint8_t>(n | 1u << number);
}

// Exchanges.

[[gnu::always_inline]] inline void exchange(uint16_t &one, uint16_t &other) {
    const uint16_t word = one;
    one = other;
    other = word;
}

[[gnu::always_inline]] inline void exchange_sets(z80_cpu &cpu) {
    exchange(cpu.BC, cpu.BC_alt);
    exchange(cpu.DE, cpu.DE_alt);
    exchange(cpu.HL, cpu.HL_alt);
}

[[gnu::always_inline]] inline void exchange_stack(z80_cpu &cpu, uint16_t &word) {
    const uint16_t popped = read16(cpu, cpu.SP);
    write16(cpu, cpu.SP, word);
    word = popped;
}

// Jumps, calls and returns. The conditional ones whose time depends on the outcome return their T-states.

[[gnu::always_inline]] inline uint16_t displaced(uint16_t address, uint8_t displacement) {
    return static_cast<uint16_t>(address + static_cast<int8_t>(displacement));
}

[[gnu::always_inline]] inline void jump_if(z80_cpu &cpu, auto &pc, bool condition) {
    const uint16_t target = fetch16(cpu, pc);
    if (condition) pc = target;
}

[[gnu::always_inline]] inline uint32_t jump_relative_if(z80_cpu &cpu, auto &pc, bool condition) {
    const uint8_t displacement = fetch8(cpu, pc);
    if (!condition) return 7;
    pc = displaced(pc, displacement);
    return 12;
}

[[gnu::always_inline]] inline uint32_t djnz(z80_cpu &cpu, auto &pc) {
    const uint8_t displacement = fetch8(cpu, pc);
    const uint8_t b = static_cast<uint8_t>(hi(cpu.BC) - 1);
    set_hi(cpu.BC, b);
    if (b == 0) return 8;
    pc = displaced(pc, displacement);
    return 13;
}

[[gnu::always_inline]] inline void call_to(z80_cpu &cpu, auto &pc, uint16_t target) {
    push16(cpu, pc);
    pc = target;
}

[[gnu::always_inline]] inline uint32_t call_if(z80_cpu &cpu, auto &pc, bool condition) {
    const uint16_t target = fetch16(cpu, pc);
    if (!condition) return 10;
    call_to(cpu, pc, target);
    return 17;
}

[[gnu::always_inline]] inline uint32_t return_if(z80_cpu &cpu, auto &pc, bool condition) {
    if (!condition) return 5;
    pc = pop16(cpu);
    return 11;
}

// Interrupt control.

[[gnu::always_inline]] inline void enable_interrupts(z80_cpu &cpu, uint8_t enabled) {
    cpu.IFF1 = enabled;
    cpu.IFF2 = enabled;
}

[[gnu::always_inline]] inline void retn(z80_cpu &cpu, auto &pc) {
    pc = pop16(cpu);
    cpu.IFF1 = cpu.IFF2;
}

// LD A,I and LD A,R.
[[gnu::always_inline]] inline void load_a_special(z80_cpu &cpu, uint8_t value) {
    set_af(cpu, value, sz53(value) | (cpu.IFF2 ? flag_pv : 0) | carry_of(cpu));
}

// IN A,(n) and OUT (n),A: A is the high byte of the port.
[[gnu::always_inline]] inline void input_n(z80_cpu &cpu, auto &pc) {
    const uint16_t port = word_of(hi(cpu.AF), fetch8(cpu, pc));
    set_hi(cpu.AF, input(cpu, pc, port));
}

[[gnu::always_inline]] inline void output_n(z80_cpu &cpu, auto &pc) {
    const uint16_t port = word_of(hi(cpu.AF), fetch8(cpu, pc));
    output(cpu, pc, port, hi(cpu.AF));
}

// IN r,(C).
[[gnu::always_inline]] inline uint8_t input_bc(z80_cpu &cpu, auto &pc) {
    const uint8_t value = input(cpu, pc, cpu.BC);
    set_flags(cpu, sz53p(value) | carry_of(cpu));
    return value;
}

// Nibbles between A and (HL).

[[gnu::always_inline]] inline void rld(z80_cpu &cpu) {
    const unsigned n = read8(cpu, cpu.HL);
    const unsigned a = hi(cpu.AF);
    const uint8_t new_a = static_cast<uint8_t>((a & 0xF0) | n >> 4);
    set_af(cpu, new_a, sz53p(new_a) | carry_of(cpu));
    write8(cpu, cpu.HL, static_cast<uint8_t>(n << 4 | (a & 0x0F)));
}

[[gnu::always_inline]] inline void rrd(z80_cpu &cpu) {
    const unsigned n = read8(cpu, cpu.HL);
    const unsigned a = hi(cpu.AF);
    const uint8_t new_a = static_cast<uint8_t>((a & 0xF0) | (n & 0x0F));
    set_af(cpu, new_a, sz53p(new_a) | carry_of(cpu));
    write8(cpu, cpu.HL, static_cast<uint8_t>(n >> 4 | a << 4));
}

// Block transfer and compare; `step` is +1 or -1. The repeating forms run one pass an instruction and go
// back to their ED byte for the next, so that interrupts come between passes.

constexpr uint32_t block_cycles = 16;
constexpr uint32_t block_repeat_cycles = 21;

[[gnu::always_inline]] inline void block_load(z80_cpu &cpu, int step) {
    const uint8_t n = read8(cpu, cpu.HL);
    write8(cpu, cpu.DE, n);
    cpu.HL = static_cast<uint16_t>(cpu.HL + step);
    cpu.DE = static_cast<uint16_t>(cpu.DE + step);
    cpu.BC = static_cast<uint16_t>(cpu.BC - 1);
    set_flags(cpu, (lo(cpu.AF) & (flag_s | flag_z | flag_c)) | (cpu.BC != 0 ? flag_pv : 0) |
                       ((hi(cpu.AF) + n) & flags_53));
}

[[gnu::always_inline]] inline void block_compare(z80_cpu &cpu, int step) {
    const unsigned n = read8(cpu, cpu.HL);
    const unsigned a = hi(cpu.AF);
    const unsigned r = (a - n) & 0xFF;
    const unsigned half = (a ^ n ^ r) & flag_h;
    cpu.HL = static_cast<uint16_t>(cpu.HL + step);
    cpu.BC = static_cast<uint16_t>(cpu.BC - 1);
    set_flags(cpu, (r & flag_s) | zero(r) | half | ((r - (half >> 4)) & flags_53) |
                       (cpu.BC != 0 ? flag_pv : 0) | flag_n | carry_of(cpu));
}

[[gnu::always_inline]] inline uint32_t repeat_if(auto &pc, bool condition) {
    if (!condition) return block_cycles;
    pc.advance(-2);
    return block_repeat_cycles;
}

[[gnu::always_inline]] inline uint32_t block_load_repeat(z80_cpu &cpu, auto &pc, int step) {
    block_load(cpu, step);
    return repeat_if(pc, cpu.BC != 0);
}

[[gnu::always_inline]] inline uint32_t block_compare_repeat(z80_cpu &cpu, auto &pc, int step) {
    block_compare(cpu, step);
    return repeat_if(pc, cpu.BC != 0 && !on(cpu, flag_z));
}
