// The ROM's routines for numbers, called one by one on a processor with flat memory, by the names of the
// symbol file. An error of BASIC and a character put out are caught where the ROM would report and show them.
#pragma once

#include "cpu/z80_cpu.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>

using real = long double;

struct rom_routines {
    static constexpr uint16_t left = 0xA000, text = 0xB000, stack = 0x8D00, done = 0xBFFF;

    rom_routines() {
        std::ifstream rom(KIV_FIRMWARE_DIR "/8801-zun.rom", std::ios::binary);
        rom.read(reinterpret_cast<char *>(memory), 0x8000);
        std::ifstream symbols(KIV_FIRMWARE_DIR "/8801-zun.rom.sym");
        for (std::string name, equ, value; symbols >> name >> equ >> value;)
            addresses[name] = static_cast<uint16_t>(std::strtoul(value.c_str(), nullptr, 16));
        z80_install(
            cpu, [](uint16_t a, uint32_t *) { return memory[a]; },
            [](uint16_t a, uint8_t v, uint32_t *) {
                if (a < 0x8000) throw std::runtime_error("a write to the ROM");
                memory[a] = v;
            },
            [](uint16_t) { return uint8_t{0xFF}; }, [](uint16_t, uint8_t) {});
    }

    uint16_t at(const std::string &name) const { return addresses.at(name); }

    // Calls `name` with HL, until it returns: 0; or raises an error: its number. What it puts out is in
    // `output`.
    int call(const std::string &name, uint16_t hl = left) {
        const uint16_t error = at("error"), console_out = at("console_out");
        output.clear();
        cpu.PC = at(name);
        cpu.HL = hl;
        cpu.SP = stack;
        push(done);
        for (int steps = 0; cpu.PC != done; ++steps) {
            if (cpu.PC == error) return cpu.DE & 0xFF;
            if (cpu.PC == console_out) {
                output += static_cast<char>(cpu.AF >> 8);
                cpu.PC = static_cast<uint16_t>(memory[cpu.SP] | memory[cpu.SP + 1] << 8);
                cpu.SP += 2;
                cpu.AF = 0xE0FF; // it keeps BC, DE and HL only
            } else if (cpu.z80_step(cpu) || steps > 200000) {
                throw std::runtime_error(name + " does not return");
            }
        }
        if (cpu.SP != stack) throw std::runtime_error(name + " leaves the stack in disorder");
        return 0;
    }

    void push(uint16_t word) {
        cpu.SP -= 2;
        memory[cpu.SP] = static_cast<uint8_t>(word);
        memory[cpu.SP + 1] = static_cast<uint8_t>(word >> 8);
    }

    uint8_t *fac() { return memory + at("FAC"); }
    bool carry() const { return cpu.AF & flag_c; }
    std::string text_at_hl() const { return reinterpret_cast<const char *>(memory + cpu.HL); }
    void put_text(uint16_t address, const std::string &s) {
        std::memcpy(memory + address, s.c_str(), s.size() + 1);
    }

    // The value of the five bytes at p.
    static real value(const uint8_t *p) {
        if (p[0] == 0) return static_cast<int16_t>(p[1] | p[2] << 8);
        const uint32_t mantissa = p[1] | p[2] << 8 | p[3] << 16 | (p[4] | 0x80u) << 24;
        return std::ldexp(p[4] & 0x80 ? -static_cast<real>(mantissa) : mantissa, p[0] - 160);
    }
    real result() { return value(fac()); }

    // The nearest value to v: an integer where it is one of 16 bits, else a float.
    static void put(uint8_t *p, real v) {
        if (v == std::rint(v) && v >= -32768 && v <= 32767) {
            const int integer = static_cast<int>(v);
            p[0] = 0;
            p[1] = static_cast<uint8_t>(integer);
            p[2] = static_cast<uint8_t>(integer >> 8);
            return;
        }
        put_float(p, v);
    }
    static void put_float(uint8_t *p, real v) {
        int exponent;
        const real fraction = std::frexp(std::fabs(v), &exponent);
        auto mantissa = static_cast<uint64_t>(std::floor(std::ldexp(fraction, 32) + 0.5L));
        if (mantissa >> 32) mantissa >>= 1, ++exponent;
        p[0] = static_cast<uint8_t>(exponent + 128);
        for (int i = 0; i < 4; ++i) p[1 + i] = static_cast<uint8_t>(mantissa >> 8 * i);
        p[4] = static_cast<uint8_t>((p[4] & 0x7F) | (v < 0 ? 0x80 : 0));
    }
    static real nearest(real v) {
        uint8_t p[5];
        put(p, v);
        return value(p);
    }

    static inline uint8_t memory[0x10000];
    z80_cpu cpu{};
    std::map<std::string, uint16_t> addresses;
    std::string output;
};

// The weight of the last of a float's 32 bits.
inline real last_bit(real v) {
    int exponent;
    std::frexp(v, &exponent);
    return std::ldexp(1.0L, exponent - 32);
}

// Operands of many kinds: integers small and large, halves and eighths, any mantissa with a near or far
// exponent.
struct operands {
    std::mt19937 next{1};
    int below(int n) { return static_cast<int>(next() % static_cast<unsigned>(n)); }
    void operator()(uint8_t *p, int far) {
        switch (below(6)) {
        case 0: return rom_routines::put(p, static_cast<int16_t>(next()));
        case 1: return rom_routines::put(p, below(21) - 10);
        case 2: return rom_routines::put(p, (below(20001) - 10000) / 8.0L);
        case 3: return any(p, 2, 0);
        case 4: return any(p, far, 2);
        default: return any(p, far, 0);
        }
    }
    void any(uint8_t *p, int far, int zeros) {
        p[0] = static_cast<uint8_t>(128 + below(2 * far + 1) - far);
        for (int i = 1; i < 5; ++i) p[i] = i <= zeros ? uint8_t{0} : static_cast<uint8_t>(next());
    }
};
