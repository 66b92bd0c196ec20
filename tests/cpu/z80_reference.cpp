#include "z80_reference.h"

#include <bit>
#include <utility>

// clang-format off
const uint8_t unprefixed_cycles[256] = {
     4, 10,  7,  6,  4,  4,  7,  4,    4, 11,  7,  6,  4,  4,  7,  4, // 0x00
    13, 10,  7,  6,  4,  4,  7,  4,   12, 11,  7,  6,  4,  4,  7,  4,
    12, 10, 16,  6,  4,  4,  7,  4,   12, 11, 16,  6,  4,  4,  7,  4,
    12, 10, 13,  6, 11, 11, 10,  4,   12, 11, 13,  6,  4,  4,  7,  4,
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4, // 0x40
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4,
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4,
     7,  7,  7,  7,  7,  7,  0,  7,    4,  4,  4,  4,  4,  4,  7,  4,
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4, // 0x80
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4,
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4,
     4,  4,  4,  4,  4,  4,  7,  4,    4,  4,  4,  4,  4,  4,  7,  4,
    11, 10, 10, 10, 17, 11,  7, 11,   11, 10, 10,  0, 17, 17,  7, 11, // 0xC0
    11, 10, 10, 11, 17, 11,  7, 11,   11,  4, 10, 11, 17,  0,  7, 11,
    11, 10, 10, 19, 17, 11,  7, 11,   11,  4, 10,  4, 17,  0,  7, 11,
    11, 10, 10,  4, 17, 11,  7, 11,   11,  6, 10,  4, 17,  0,  7, 11,
};
const uint8_t ed_cycles[256] = {
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5, // 0x00
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
    12, 12, 15, 20,  8, 14,  8,  9,   12, 12, 15, 20,  5, 14,  5,  9, // 0x40
    12, 12, 15, 20,  5,  5,  8,  9,   12, 12, 15, 20,  5,  5,  8,  9,
    12, 12, 15, 20,  5,  5,  5, 18,   12, 12, 15, 20,  5,  5,  5, 18,
     5,  5, 15, 20,  5,  5,  5,  5,   12, 12, 15, 20,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5, // 0x80
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
    16, 16,  0,  0,  5,  5,  5,  5,   16, 16,  0,  0,  5,  5,  5,  5,
    21, 21,  0,  0,  5,  5,  5,  5,   21, 21,  0,  0,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5, // 0xC0
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
};
const uint8_t index_cycles[256] = {
     5,  5,  5,  5,  5,  5,  5,  5,    5, 15,  5,  5,  5,  5,  5,  5, // 0x00
     5,  5,  5,  5,  5,  5,  5,  5,    5, 15,  5,  5,  5,  5,  5,  5,
     5, 14, 20, 10,  8,  8, 11,  5,    5, 15, 20, 10,  8,  8, 11,  5,
     5,  5,  5,  5, 23, 23, 19,  5,    5, 15,  5,  5,  5,  5,  5,  5,
     5,  5,  5,  5,  8,  8, 19,  5,    5,  5,  5,  5,  8,  8, 19,  5, // 0x40
     5,  5,  5,  5,  8,  8, 19,  5,    5,  5,  5,  5,  8,  8, 19,  5,
     8,  8,  8,  8,  8,  8, 19,  8,    8,  8,  8,  8,  8,  8, 19,  8,
    19, 19, 19, 19, 19, 19,  5, 19,    5,  5,  5,  5,  8,  8, 19,  5,
     5,  5,  5,  5,  8,  8, 19,  5,    5,  5,  5,  5,  8,  8, 19,  5, // 0x80
     5,  5,  5,  5,  8,  8, 19,  5,    5,  5,  5,  5,  8,  8, 19,  5,
     5,  5,  5,  5,  8,  8, 19,  5,    5,  5,  5,  5,  8,  8, 19,  5,
     5,  5,  5,  5,  8,  8, 19,  5,    5,  5,  5,  5,  8,  8, 19,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  0,  5,  5,  5,  5, // 0xC0
     5,  5,  5,  5,  5,  5,  5,  5,    5,  5,  5,  5,  5,  5,  5,  5,
     5, 14,  5, 23,  5, 15,  5,  5,    5,  8,  5,  5,  5,  5,  5,  5,
     5,  5,  5,  5,  5,  5,  5,  5,    5, 10,  5,  5,  5,  5,  5,  5,
};
// clang-format on

namespace {

enum { S = 0x80, Z = 0x40, H = 0x10, PV = 0x04, N = 0x02, C = 0x01, F53 = 0x28 };

// Fields of an opcode byte: bits 7-6, 5-3, 2-0; y splits into p (bits 5-4) and q (bit 3).
struct fields {
    int x, y, z, p, q;
    explicit fields(int op) : x(op >> 6), y(op >> 3 & 7), z(op & 7), p(op >> 4 & 3), q(op >> 3 & 1) {}
};

class reference {
  public:
    reference(const z80_cpu &before, uint8_t *bytes) : s(before), memory(bytes) {
        const int words[] = {s.BC, s.DE, s.HL};
        for (int i = 0; i < 3; ++i) {
            r[2 * i] = words[i] >> 8;
            r[2 * i + 1] = words[i] & 0xFF;
        }
        r[7] = s.AF >> 8;
        f = s.AF & 0xFF;
        s.wait_count = s.wait_count2 = s.m1_count = s.step_cycles = 0;
        s.trace_pc = s.PC;
        s.r_counter = static_cast<uint8_t>(s.r_counter + 1);
    }

    reference_result run() {
        const int op = opcode();
        switch (op) {
        case 0xCB: group_cb(); break;
        case 0xED: group_ed(); break;
        case 0xDD: group_index(s.IX); break;
        case 0xFD: group_index(s.IY); break;
        default: unprefixed(op); break;
        }
        for (int i = 0; i < 3; ++i) put_pair(i, pair(i));
        s.AF = word(r[7] << 8 | f);
        s.total_cycles += s.step_cycles;
        return {s, log};
    }

  private:
    z80_cpu s;
    uint8_t *memory;
    std::vector<bus_access> log;
    int r[8]; // B C D E H L - A
    int f;

    static uint16_t word(int v) { return static_cast<uint16_t>(v); }

    // Bus.
    int read(int address, wait_to wait) {
        log.push_back({'R', word(address), memory[word(address)], wait});
        s.wait_count += wait == wait_to::first;
        s.wait_count2 += wait == wait_to::second;
        return memory[word(address)];
    }
    int read(int address) { return read(address, wait_to::first); }
    void write(int address, int value, wait_to wait = wait_to::first) {
        log.push_back({'W', word(address), static_cast<uint8_t>(value), wait});
        s.wait_count += wait == wait_to::first;
        s.wait_count2 += wait == wait_to::second;
        memory[word(address)] = static_cast<uint8_t>(value);
    }
    int read_word(int address) {
        const int low = read(address, wait_to::first);
        return read(address + 1, wait_to::second) << 8 | low;
    }
    void write_word(int address, int value) {
        write(address, value & 0xFF, wait_to::first);
        write(address + 1, value >> 8, wait_to::second);
    }
    int opcode() {
        ++s.m1_count;
        return read(s.PC++, wait_to::nothing);
    }
    int byte() { return read(s.PC++); }
    int operand() {
        s.PC = word(s.PC + 2);
        return read_word(s.PC - 2);
    }
    void push(int value) {
        write(--s.SP, value >> 8, wait_to::first);
        write(--s.SP, value & 0xFF, wait_to::second);
    }
    int pop() {
        s.SP = word(s.SP + 2);
        return read_word(s.SP - 2);
    }
    int in(int port) {
        log.push_back({'I', word(port), z80_bench::port_value(word(port)), wait_to::nothing});
        return log.back().value;
    }
    void out(int port, int value) {
        log.push_back({'O', word(port), static_cast<uint8_t>(value), wait_to::nothing});
    }

    // Registers.
    int hl() const { return r[4] << 8 | r[5]; }
    int bc() const { return r[0] << 8 | r[1]; }
    int get(int i) { return i == 6 ? read(hl()) : r[i]; }
    void put(int i, int v) { i == 6 ? write(hl(), v) : void(r[i] = v & 0xFF); }
    int pair(int i) const { return i == 3 ? s.SP : r[2 * i] << 8 | r[2 * i + 1]; }
    void put_pair(int i, int v) {
        if (i == 3) {
            s.SP = word(v);
            return;
        }
        r[2 * i] = v >> 8 & 0xFF;
        r[2 * i + 1] = v & 0xFF;
        (i == 0 ? s.BC : i == 1 ? s.DE : s.HL) = word(v);
    }

    // Flags, each by its definition.
    static int sz53(int v) { return (v & (S | F53)) | (v == 0 ? Z : 0); }
    static int parity(int v) { return std::popcount(static_cast<unsigned>(v)) % 2 == 0 ? PV : 0; }
    static int sign(int v, int bits) { return v >= 1 << (bits - 1) ? v - (1 << bits) : v; }

    // a + n + c or a - n - c in `bits` bits: the result, and H, P/V, N, C into `carries`.
    static int sum(int a, int n, int c, int bits, bool subtract, int &carries) {
        const int d = subtract ? -1 : 1;
        const int low = (1 << (bits - 4)) - 1;
        const int whole = a + d * (n + c);
        const int half = (a & low) + d * ((n & low) + c);
        const int value = sign(a, bits) + d * (sign(n, bits) + c);
        carries = (half < 0 || half > low ? H : 0) | (subtract ? N : 0);
        if (value < -(1 << (bits - 1)) || value >= 1 << (bits - 1)) carries |= PV;
        if (whole < 0 || whole >= 1 << bits) carries |= C;
        return whole & ((1 << bits) - 1);
    }

    void alu(int kind, int n) {
        int &a = r[7];
        const int c = f & C;
        int carries;
        switch (kind) {
        case 0: a = sum(a, n, 0, 8, false, carries); break;
        case 1: a = sum(a, n, c, 8, false, carries); break;
        case 2: a = sum(a, n, 0, 8, true, carries); break;
        case 3: a = sum(a, n, c, 8, true, carries); break;
        case 4: a &= n, carries = H | parity(a); break;
        case 5: a ^= n, carries = parity(a); break;
        case 6: a |= n, carries = parity(a); break;
        default: {
            const int difference = sum(a, n, 0, 8, true, carries);
            f = (sz53(difference) & ~F53) | (n & F53) | carries;
            return;
        }
        }
        f = sz53(a) | carries;
    }
    int stepped(int v, bool down) {
        int carries;
        const int result = sum(v, 1, 0, 8, down, carries);
        f = sz53(result) | (carries & ~C) | (f & C);
        return result;
    }
    int shift(int kind, int v) {
        const int c = f & C;
        const int out = kind % 2 == 0 ? v / 128 : v % 2;
        const int doubled = v * 2 % 256, halved = v / 2;
        const int results[] = {doubled + out, halved + 128 * out, doubled + c, halved + 128 * c,
                               doubled,       halved + (v & 128), doubled + 1, halved};
        f = sz53(results[kind]) | parity(results[kind]) | out;
        return results[kind];
    }
    void bit(int number, int v) {
        const int t = v & 1 << number;
        f = (t & (S | F53)) | (t == 0 ? Z | PV : 0) | H | (f & C);
    }
    void daa() {
        int &a = r[7];
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
    void accumulator(int y) {
        int &a = r[7];
        const int kept = f & (S | Z | PV);
        if (y < 4) {
            a = shift(y, a);
            f = kept | (a & F53) | (f & C);
        } else if (y == 4) {
            daa();
        } else if (y == 5) {
            a = 255 - a;
            f = kept | (f & C) | H | N | (a & F53);
        } else if (y == 6) {
            f = kept | C | (a & F53);
        } else {
            f = kept | ((f & C) ? H : C) | (a & F53);
        }
    }
    int add_word(int a, int n) {
        int carries;
        const int result = sum(a, n, 0, 16, false, carries);
        f = (f & (S | Z | PV)) | (result >> 8 & F53) | (carries & (H | C));
        return result;
    }
    bool condition(int y) const {
        static const int flags[] = {Z, C, PV, S};
        return ((f & flags[y / 2]) != 0) == (y % 2 != 0);
    }
    void stopped(int reason, uint32_t cycles) {
        s.stop_flags = 1;
        s.stop_reason = static_cast<uint8_t>(reason);
        s.step_cycles = cycles;
    }

    void unprefixed(int op) {
        const auto [x, y, z, p, q] = fields(op);
        s.step_cycles = unprefixed_cycles[op];
        if (op == 0x76) return stopped(1, 0);
        if (x == 1) return put(y, get(z));
        if (x == 2) return alu(y, get(z));
        if (x == 0) return first_quarter(y, z, p, q);
        last_quarter(y, z, p, q);
    }
    void relative(bool taken, uint32_t not_taken_cycles) {
        const int d = sign(byte(), 8);
        if (taken)
            s.PC = word(s.PC + d);
        else
            s.step_cycles = not_taken_cycles;
    }
    void first_quarter(int y, int z, int p, int q) {
        switch (z) {
        case 0:
            if (y == 1)
                std::swap(s.AF_alt, s.AF), s.AF_alt = word(r[7] << 8 | f), r[7] = s.AF >> 8, f = s.AF & 255;
            else if (y == 2)
                r[0] = (r[0] + 255) % 256, relative(r[0] != 0, 8);
            else if (y == 3)
                relative(true, 0);
            else if (y >= 4)
                relative(condition(y - 4), 7);
            return;
        case 1: q == 0 ? put_pair(p, operand()) : put_pair(2, add_word(hl(), pair(p))); return;
        case 2: {
            const int address = p < 2 ? pair(p) : operand();
            if (p == 2)
                q == 0 ? write_word(address, hl()) : put_pair(2, read_word(address));
            else
                q == 0 ? write(address, r[7]) : void(r[7] = read(address));
            return;
        }
        case 3: put_pair(p, pair(p) + (q == 0 ? 1 : -1)); return;
        case 4: put(y, stepped(get(y), false)); return;
        case 5: put(y, stepped(get(y), true)); return;
        case 6: put(y, byte()); return;
        default: accumulator(y); return;
        }
    }
    void last_quarter(int y, int z, int p, int q) {
        switch (z) {
        case 0: condition(y) ? void(s.PC = word(pop())) : void(s.step_cycles = 5); return;
        case 1:
            if (q == 0) {
                const int v = pop();
                if (p == 3)
                    r[7] = v >> 8, f = v & 0xFF;
                else
                    put_pair(p, v);
            } else if (p == 0) {
                s.PC = word(pop());
            } else if (p == 1) {
                const int words[] = {s.BC_alt, s.DE_alt, s.HL_alt};
                s.BC_alt = word(pair(0)), s.DE_alt = word(pair(1)), s.HL_alt = word(pair(2));
                for (int i = 0; i < 3; ++i) put_pair(i, words[i]);
            } else if (p == 2) {
                s.PC = word(hl());
            } else {
                s.SP = word(hl());
            }
            return;
        case 2: {
            const int target = operand();
            if (condition(y)) s.PC = word(target);
            return;
        }
        case 3:
            if (y == 0)
                s.PC = word(operand());
            else if (y == 2)
                out(r[7] << 8 | byte(), r[7]);
            else if (y == 3)
                r[7] = in(r[7] << 8 | byte());
            else if (y == 4)
                put_pair(2, swap_stack(hl()));
            else if (y == 5) {
                const int de = pair(1);
                put_pair(1, hl());
                put_pair(2, de);
            } else
                s.IFF1 = s.IFF2 = y == 7;
            return;
        case 4:
        case 5: {
            if (z == 5 && q == 0) return push(p == 3 ? r[7] << 8 | f : pair(p));
            const int target = operand();
            if (z == 4 && !condition(y))
                s.step_cycles = 10;
            else
                push(s.PC), s.PC = word(target);
            return;
        }
        case 6: alu(y, byte()); return;
        default: push(s.PC), s.PC = word(8 * y); return;
        }
    }
    int swap_stack(int v) {
        const int popped = read_word(s.SP);
        write_word(s.SP, v);
        return popped;
    }

    void group_cb() {
        const auto [x, y, z, p, q] = fields(opcode());
        s.step_cycles = z != 6 ? 8 : x == 1 ? 12 : 15;
        const int v = get(z);
        if (x == 1)
            bit(y, v);
        else
            put(z, x == 0 ? shift(y, v) : x == 2 ? v & ~(1 << y) : v | 1 << y);
    }

    void group_ed() {
        const int op = opcode();
        const auto [x, y, z, p, q] = fields(op);
        s.step_cycles = ed_cycles[op];
        if (s.step_cycles == 5) return stopped(2, 5);
        if (s.step_cycles == 0) return stopped(3, 0);
        if (x == 2) return block(z == 1, y % 2 == 1 ? -1 : 1, y >= 6);
        int carries;
        switch (z) {
        case 0: r[y] = in(bc()), f = sz53(r[y]) | parity(r[y]) | (f & C); return;
        case 1: out(bc(), r[y]); return;
        case 2: {
            const int result = sum(hl(), pair(p), f & C, 16, q == 0, carries);
            f = (result >> 8 & (S | F53)) | (result == 0 ? Z : 0) | carries;
            put_pair(2, result);
            return;
        }
        case 3: q == 0 ? write_word(operand(), pair(p)) : put_pair(p, read_word(operand())); return;
        case 4: r[7] = sum(0, r[7], 0, 8, true, carries), f = sz53(r[7]) | carries; return;
        case 5:
            s.PC = word(pop());
            if (y == 0) s.IFF1 = s.IFF2;
            return;
        case 6: s.IM = static_cast<uint8_t>(y == 0 ? 0 : y - 1); return;
        default: break;
        }
        if (y == 0)
            s.I = static_cast<uint8_t>(r[7]);
        else if (y == 2 || y == 3) {
            r[7] = y == 2 ? s.I : s.r_table[s.r_counter];
            f = sz53(r[7]) | (s.IFF2 ? PV : 0) | (f & C);
        } else if (y >= 4) {
            const int v = read(hl());
            const int all = (r[7] & 15) * 256 + v; // three nibbles in a ring
            const int turned = y == 4 ? all % 16 * 256 + all / 16 : all * 16 % 4096 + all / 256;
            r[7] = (r[7] & 0xF0) + turned / 256;
            write(hl(), turned % 256);
            f = sz53(r[7]) | parity(r[7]) | (f & C);
        }
    }
    void block(bool compare, int step, bool repeats) {
        const int v = read(hl());
        bool again;
        put_pair(0, bc() - 1);
        if (compare) {
            int carries;
            const int result = sum(r[7], v, 0, 8, true, carries);
            const int shown = result - ((carries & H) ? 1 : 0);
            f = (sz53(result) & ~F53) | (carries & H) | (shown & F53) | (bc() != 0 ? PV : 0) | N | (f & C);
            again = bc() != 0 && result != 0;
        } else {
            write(pair(1), v);
            put_pair(1, pair(1) + step);
            f = (f & (S | Z | C)) | ((r[7] + v) & F53) | (bc() != 0 ? PV : 0);
            again = bc() != 0;
        }
        put_pair(2, hl() + step);
        if (!repeats) return;
        if (again)
            s.PC = word(s.PC - 2);
        else
            s.step_cycles = 16;
    }

    void group_index(uint16_t &index) {
        const int op = opcode();
        const auto [x, y, z, p, q] = fields(op);
        s.step_cycles = index_cycles[op];
        if (s.step_cycles == 5) return stopped(2, 5);
        if (op == 0xCB) return group_index_cb(index);
        const auto half = [&](int i) { return i == 4 ? index >> 8 : i == 5 ? index & 0xFF : r[i]; };
        const auto put_half = [&](int i, int v) {
            if (i == 4)
                index = word((v & 0xFF) << 8 | (index & 0xFF));
            else if (i == 5)
                index = word((index & 0xFF00) | (v & 0xFF));
            else
                r[i] = v;
        };
        const auto place = [&] { return index + sign(byte(), 8); };
        if (x == 1) {
            if (z == 6)
                r[y] = read(place());
            else if (y == 6)
                write(place(), r[z]);
            else
                put_half(y, half(z));
        } else if (x == 2) {
            alu(y, z == 6 ? read(place()) : half(z));
        } else if (x == 3) {
            if (op == 0xE1)
                index = word(pop());
            else if (op == 0xE5)
                push(index);
            else if (op == 0xE3)
                index = word(swap_stack(index));
            else if (op == 0xE9)
                s.PC = index;
            else
                s.SP = index;
        } else if (z == 1) {
            index = word(q == 0 ? operand() : add_word(index, p == 2 ? index : pair(p)));
        } else if (z == 2) {
            q == 0 ? write_word(operand(), index) : void(index = word(read_word(operand())));
        } else if (z == 3) {
            index = word(index + (q == 0 ? 1 : -1));
        } else if (y != 6) {
            put_half(y, z == 6 ? byte() : stepped(half(y), z == 5));
        } else {
            const int address = place();
            write(address, z == 6 ? byte() : stepped(read(address), z == 5));
        }
    }
    void group_index_cb(int index) {
        const int address = index + sign(byte(), 8);
        const int v = read(address);
        const auto [x, y, z, p, q] = fields(byte());
        s.step_cycles = x == 1 ? 20 : 23;
        if (x == 1) return bit(y, v);
        const int result = x == 0 ? shift(y, v) : x == 2 ? v & ~(1 << y) : v | 1 << y;
        write(address, result);
        if (x == 0 && z != 6) r[z] = result;
    }
};

} // namespace

reference_result reference_step(const z80_cpu &before, uint8_t *memory) {
    return reference(before, memory).run();
}
