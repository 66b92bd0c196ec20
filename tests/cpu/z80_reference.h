// A second Z80 to check the first against: slow, decoded by the bit fields of the opcode where the
// interpreter has a case an opcode, arithmetic in wide signed integers where it folds bits. The DD and FD
// groups are the unprefixed instructions with the index register in the place of HL, where the interpreter
// writes every one of them out. Only the times are tables, typed from the data book.
#pragma once

#include "z80_bench.h"

#include <bit>
#include <utility>

// T-states of the outer quarters of the opcode map, the longer count where there are two; 0: a prefix.
// clang-format off
constexpr uint8_t unprefixed_cycles[2][64] = {{
     4, 10,  7,  6,  4,  4,  7,  4,    4, 11,  7,  6,  4,  4,  7,  4, // 0x00
    13, 10,  7,  6,  4,  4,  7,  4,   12, 11,  7,  6,  4,  4,  7,  4,
    12, 10, 16,  6,  4,  4,  7,  4,   12, 11, 16,  6,  4,  4,  7,  4,
    12, 10, 13,  6, 11, 11, 10,  4,   12, 11, 13,  6,  4,  4,  7,  4,
}, {
    11, 10, 10, 10, 17, 11,  7, 11,   11, 10, 10,  0, 17, 17,  7, 11, // 0xC0
    11, 10, 10, 11, 17, 11,  7, 11,   11,  4, 10, 11, 17,  0,  7, 11,
    11, 10, 10, 19, 17, 11,  7, 11,   11,  4, 10,  4, 17,  0,  7, 11,
    11, 10, 10,  4, 17, 11,  7, 11,   11,  6, 10,  4, 17,  0,  7, 11,
}};
// clang-format on

// Which bytes of a prefixed group are instructions: a word for every sixteen, bit 0 for the first.
constexpr uint16_t ed_defined[16] = {0, 0, 0,      0,      0xAFFF, 0xCFCF, 0x8F8F, 0x0F0C,
                                     0, 0, 0x0F0F, 0x0F0F, 0,      0,      0,      0};
constexpr uint16_t index_defined[16] = {0x0200, 0x0200, 0x7E7E, 0x0270, 0x7070, 0x7070, 0xFFFF, 0x70BF,
                                        0x7070, 0x7070, 0x7070, 0x7070, 0x0800, 0x0000, 0x022A, 0x0200};

// Executes the instruction at PC on the bench.
class z80_reference {
  public:
    z80_reference() {
        s.step_cycles = s.m1_count = s.wait_count = s.wait_count2 = 0;
        s.trace_pc = s.PC;
        s.r_counter = static_cast<uint8_t>(s.r_counter + 1);
        switch (const int op = opcode()) {
        case 0xCB: group_cb(); break;
        case 0xED: group_ed(); break;
        case 0xDD: group_index(s.IX); break;
        case 0xFD: group_index(s.IY); break;
        default: unprefixed(op); break;
        }
        s.AF = af();
        s.total_cycles += s.step_cycles;
    }

  private:
    enum { S = 0x80, Z = 0x40, H = 0x10, PV = 0x04, N = 0x02, C = 0x01, F53 = 0x28 };

    // Fields of an opcode byte: bits 7-6, 5-3, 2-0; y splits into p (bits 5-4) and q (bit 3).
    struct fields {
        int x, y, z, p, q;
        explicit fields(int op) : x(op >> 6), y(op >> 3 & 7), z(op & 7), p(op >> 4 & 3), q(op >> 3 & 1) {}
    };

    z80_cpu &s = z80_bench::cpu;
    int a = s.AF >> 8, f = s.AF & 0xFF;
    uint16_t *hl = &s.HL; // what the opcode calls HL
    int place = -1;       // address of the operand that it calls (HL), where that is not HL

    static uint16_t word(int v) { return static_cast<uint16_t>(v); }

    // Bus. Words count their second byte's waits apart.
    int read(int address) { return s.mem_read(word(address), &s.wait_count); }
    void write(int address, int value) {
        s.mem_write(word(address), static_cast<uint8_t>(value), &s.wait_count);
    }
    int read_word(int address) {
        const int low = read(address);
        return s.mem_read(word(address + 1), &s.wait_count2) << 8 | low;
    }
    void write_second(int address, int value) {
        s.mem_write(word(address), static_cast<uint8_t>(value), &s.wait_count2);
    }
    void write_word(int address, int value) {
        write(address, value);
        write_second(address + 1, value >> 8);
    }
    int opcode() {
        uint32_t free_of_charge = 0;
        ++s.m1_count;
        return s.mem_read(s.PC++, &free_of_charge);
    }
    int byte() { return read(s.PC++); }
    int operand() {
        s.PC = word(s.PC + 2);
        return read_word(s.PC - 2);
    }
    void push(int value) {
        write(--s.SP, value >> 8);
        write_second(--s.SP, value);
    }
    int pop() {
        s.SP = word(s.SP + 2);
        return read_word(s.SP - 2);
    }

    // Registers: BC DE HL SP, and B C D E H L (HL) A.
    uint16_t &pair(int i) { return i == 0 ? s.BC : i == 1 ? s.DE : i == 2 ? *hl : s.SP; }
    uint16_t af() const { return word(a << 8 | f); }
    void put_af(int v) { a = v >> 8, f = v & 0xFF; }
    int operand_place() const { return place < 0 ? *hl : place; }
    int get(int i) {
        if (i >= 6) return i == 6 ? read(operand_place()) : a;
        return i % 2 == 0 ? pair(i / 2) >> 8 : pair(i / 2) & 0xFF;
    }
    void put(int i, int v) {
        if (i == 6) return write(operand_place(), v);
        if (i == 7) return void(a = v);
        uint16_t &whole = pair(i / 2);
        whole = word(i % 2 == 0 ? (v & 0xFF) << 8 | (whole & 0xFF) : (whole & 0xFF00) | (v & 0xFF));
    }

    // Flags, each by its definition.
    static int sz53(int v) { return (v & (S | F53)) | (v == 0 ? Z : 0); }
    static int parity(int v) { return std::popcount(static_cast<unsigned>(v)) % 2 == 0 ? PV : 0; }
    static int sign(int v, int bits) { return v >= 1 << (bits - 1) ? v - (1 << bits) : v; }

    // m + n + c or m - n - c in `bits` bits; of the flags it sets H, P/V, N and C and clears the others.
    int sum(int m, int n, int c, int bits, bool subtract) {
        const int d = subtract ? -1 : 1;
        const int low = (1 << (bits - 4)) - 1;
        const int whole = m + d * (n + c);
        const int half = (m & low) + d * ((n & low) + c);
        const int value = sign(m, bits) + d * (sign(n, bits) + c);
        f = (half < 0 || half > low ? H : 0) | (subtract ? N : 0);
        if (value < -(1 << (bits - 1)) || value >= 1 << (bits - 1)) f |= PV;
        if (whole < 0 || whole >= 1 << bits) f |= C;
        return whole & ((1 << bits) - 1);
    }
    // ADD ADC SUB SBC AND XOR OR CP
    void alu(int kind, int n) {
        const int logic[] = {a & n, a ^ n, a | n};
        const bool logical = kind >= 4 && kind < 7, compares = kind == 7;
        const int carry = kind == 1 || kind == 3 ? f & C : 0;
        const int result = logical ? logic[kind - 4] : sum(a, n, carry, 8, kind >= 2);
        if (logical) f = parity(result) | (kind == 4 ? H : 0);
        if (!compares) a = result;
        f |= (sz53(result) & ~F53) | ((compares ? n : result) & F53);
    }
    int stepped(int v, bool down) {
        const int carry = f & C;
        const int result = sum(v, 1, 0, 8, down);
        f = sz53(result) | (f & ~C) | carry;
        return result;
    }
    // RLC RRC RL RR SLA SRA SLL SRL
    int shift(int kind, int v) {
        const int c = f & C;
        const int out = kind % 2 == 0 ? v / 128 : v % 2;
        const int doubled = v * 2 % 256, halved = v / 2;
        const int results[] = {doubled + out, halved + 128 * out, doubled + c, halved + 128 * c,
                               doubled,       halved + (v & 128), doubled + 1, halved};
        f = sz53(results[kind]) | parity(results[kind]) | out;
        return results[kind];
    }
    void daa() {
        const int high = a / 16, low = a % 16;
        int correction = 0;
        if ((f & H) || low > 9) correction += 0x06;
        const bool carry = (f & C) || high > 9 || (high == 9 && low > 9);
        if (carry) correction += 0x60;
        if (f & N) correction = (256 - correction) % 256;
        const bool half = a % 16 + correction % 16 > 15;
        a = (a + correction) % 256;
        f = sz53(a) | parity(a) | (half ? H : 0) | (f & N) | (carry ? C : 0);
    }
    // RLCA RRCA RLA RRA DAA CPL SCF CCF
    void accumulator(int y) {
        if (y == 4) return daa();
        int kept = f & (S | Z | PV);
        if (y < 4) {
            a = shift(y, a);
            kept |= f & C;
        } else if (y == 5) {
            a = 255 - a;
            kept |= (f & C) | H | N;
        } else {
            kept |= y == 6 || (f & C) == 0 ? C : H;
        }
        f = kept | (a & F53);
    }
    int add_word(int m, int n) {
        const int kept = f & (S | Z | PV);
        const int result = sum(m, n, 0, 16, false);
        f = kept | (result >> 8 & F53) | (f & (H | C));
        return result;
    }
    bool condition(int y) const {
        static const int flags[] = {Z, C, PV, S};
        return ((f & flags[y / 2]) != 0) == (y % 2 != 0);
    }
    void stopped(uint8_t reason, uint32_t cycles) {
        s.stop_flags = stop_code_instruction;
        s.stop_reason = reason;
        s.step_cycles = cycles;
    }
    static bool defined(const uint16_t *map, int op) { return (map[op / 16] >> op % 16 & 1) != 0; }
    void jump(int target) { s.PC = word(target); }

    void unprefixed(int op) {
        const auto [x, y, z, p, q] = fields(op);
        const bool outer = x == 0 || x == 3;
        s.step_cycles += outer ? unprefixed_cycles[x / 3][op & 0x3F] : z == 6 || op / 8 == 14 ? 7 : 4;
        if (op == 0x76)
            stopped(stop_halt, 0);
        else if (x == 1)
            put(y, get(z));
        else if (x == 2)
            alu(y, get(z));
        else
            x == 0 ? first_quarter(y, z, p, q) : last_quarter(y, z, p, q);
    }
    void first_quarter(int y, int z, int p, int q) {
        switch (z) {
        case 0:
            if (y == 1) put_af(std::exchange(s.AF_alt, af()));
            if (y == 2) put(0, get(0) - 1);
            if (y >= 2) relative(y == 2 ? get(0) != 0 : y == 3 || condition(y - 4), y == 2 ? 8 : 7);
            return;
        case 1: q == 0 ? void(pair(p) = word(operand())) : void(*hl = word(add_word(*hl, pair(p)))); return;
        case 2: {
            const int address = p < 2 ? pair(p) : operand();
            if (p == 2)
                q == 0 ? write_word(address, *hl) : void(*hl = word(read_word(address)));
            else
                q == 0 ? write(address, a) : void(a = read(address));
            return;
        }
        case 3: pair(p) = word(pair(p) + (q == 0 ? 1 : -1)); return;
        case 6: put(y, byte()); return;
        case 7: accumulator(y); return;
        default: put(y, stepped(get(y), z == 5)); return;
        }
    }
    void relative(bool taken, uint32_t not_taken_cycles) {
        const int d = sign(byte(), 8);
        taken ? jump(s.PC + d) : void(s.step_cycles = not_taken_cycles);
    }
    void last_quarter(int y, int z, int p, int q) {
        switch (z) {
        case 0: condition(y) ? jump(pop()) : void(s.step_cycles = 5); return;
        case 1:
            if (q == 0)
                p == 3 ? put_af(pop()) : void(pair(p) = word(pop()));
            else if (p == 1)
                std::swap(s.BC, s.BC_alt), std::swap(s.DE, s.DE_alt), std::swap(s.HL, s.HL_alt);
            else
                p == 0 ? jump(pop()) : p == 2 ? jump(*hl) : void(s.SP = *hl);
            return;
        case 2: {
            const int target = operand();
            if (condition(y)) jump(target);
            return;
        }
        case 3: one_of_a_kind(y); return;
        case 6: alu(y, byte()); return;
        case 7: call(8 * y); return;
        default:
            if (z == 5 && q == 0) return push(p == 3 ? af() : pair(p));
            const int target = operand();
            z == 5 || condition(y) ? call(target) : void(s.step_cycles = 10);
        }
    }
    // JP - OUT IN EX(SP) EX(DE) DI EI
    void one_of_a_kind(int y) {
        const uint16_t pushed = *hl;
        switch (y) {
        case 0: jump(operand()); return;
        case 2: s.io_out(word(a << 8 | byte()), static_cast<uint8_t>(a)); return;
        case 3: a = s.io_in(word(a << 8 | byte())); return;
        case 4:
            *hl = word(read_word(s.SP));
            write_word(s.SP, pushed);
            return;
        case 5: std::swap(s.DE, s.HL); return;
        default: s.IFF1 = s.IFF2 = y == 7; return;
        }
    }
    void call(int target) {
        push(s.PC);
        jump(target);
    }

    // What the operation byte of the CB groups makes of v. BIT leaves it alone.
    int bits(const fields &op, int v) {
        if (op.x == 0) return shift(op.y, v);
        const int bit = 1 << op.y;
        if (op.x == 1) f = (v & bit & (S | F53)) | ((v & bit) == 0 ? Z | PV : 0) | H | (f & C);
        return op.x == 1 ? v : op.x == 2 ? v & ~bit : v | bit;
    }
    void group_cb() {
        const fields op(opcode());
        s.step_cycles = op.z != 6 ? 8 : op.x == 1 ? 12 : 15;
        const int result = bits(op, get(op.z));
        if (op.x != 1) put(op.z, result);
    }
    void group_index_cb() {
        const int v = read(place);
        const fields op(byte());
        s.step_cycles = op.x == 1 ? 20 : 23;
        const int result = bits(op, v);
        if (op.x != 1) write(place, result);
        if (op.x == 0 && op.z != 6) put(op.z, result); // not (HL): the real H and L
    }
    void group_index(uint16_t &index) {
        const int op = opcode();
        const auto [x, y, z, p, q] = fields(op);
        if (!defined(index_defined, op)) return stopped(stop_undefined, 5);
        if (op == 0xCB || (x == 0 && y == 6 && z >= 4) || (x == 1 && (y == 6 || z == 6)) ||
            (x == 2 && z == 6)) {
            place = word(index + sign(byte(), 8)); // H and L are the real ones
            if (op == 0xCB) return group_index_cb();
            unprefixed(op);
            s.step_cycles += op == 0x36 ? 9 : 12;
            return;
        }
        hl = &index;
        unprefixed(op);
        s.step_cycles += 4;
    }

    void group_ed() {
        const int op = opcode();
        const auto [x, y, z, p, q] = fields(op);
        if (!defined(ed_defined, op)) return stopped(stop_undefined, 5);
        if (x == 2 && z >= 2) return stopped(stop_unimplemented, 0);
        if (x == 2) return block(z == 1, y % 2 == 1 ? -1 : 1, y >= 6);
        static const uint8_t cycles[] = {12, 12, 15, 20, 8, 14, 8, 9};
        s.step_cycles = z == 7 && y >= 4 ? 18 : cycles[z];
        switch (z) {
        case 0: {
            const int v = s.io_in(s.BC);
            f = sz53(v) | parity(v) | (f & C);
            return put(y, v);
        }
        case 1: s.io_out(s.BC, static_cast<uint8_t>(get(y))); return;
        case 2: {
            const int result = sum(s.HL, pair(p), f & C, 16, q == 0);
            f |= (result >> 8 & (S | F53)) | (result == 0 ? Z : 0);
            return void(s.HL = word(result));
        }
        case 3: q == 0 ? write_word(operand(), pair(p)) : void(pair(p) = word(read_word(operand()))); return;
        case 4: a = sum(0, a, 0, 8, true), f |= sz53(a); return;
        case 5:
            jump(pop());
            if (y == 0) s.IFF1 = s.IFF2;
            return;
        case 6: s.IM = static_cast<uint8_t>(y == 0 ? 0 : y - 1); return;
        default: break;
        }
        if (y == 0) s.I = static_cast<uint8_t>(a);
        if (y == 2 || y == 3) {
            a = y == 2 ? s.I : s.r_table[s.r_counter];
            f = sz53(a) | (s.IFF2 ? PV : 0) | (f & C);
        }
        if (y >= 4) {
            const int all = (a & 15) * 256 + read(s.HL); // three nibbles in a ring
            const int turned = y == 4 ? all % 16 * 256 + all / 16 : all * 16 % 4096 + all / 256;
            a = (a & 0xF0) + turned / 256;
            write(s.HL, turned % 256);
            f = sz53(a) | parity(a) | (f & C);
        }
    }
    void block(bool compare, int step, bool repeats) {
        const int v = read(s.HL), before = f;
        s.BC = word(s.BC - 1);
        s.HL = word(s.HL + step);
        const int left = s.BC != 0 ? PV : 0;
        bool again = left != 0;
        if (compare) {
            const int result = sum(a, v, 0, 8, true);
            const int shown = result - ((f & H) ? 1 : 0);
            f = (sz53(result) & ~F53) | (f & H) | (shown & F53) | left | N | (before & C);
            again = again && result != 0;
        } else {
            write(s.DE, v);
            s.DE = word(s.DE + step);
            f = (before & (S | Z | C)) | ((a + v) & F53) | left;
        }
        again = again && repeats;
        s.step_cycles = again ? 21 : 16;
        if (again) jump(s.PC - 2);
    }
};
