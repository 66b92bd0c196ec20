// Every opcode of every group against the second Z80: registers, T-states, opcode fetches, waits, stops and
// the bus, access by access.
#include "z80_reference.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

std::string hex(const std::vector<uint8_t> &code) {
    std::string all;
    for (const uint8_t byte : code) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X ", byte);
        all += digits;
    }
    return all;
}

// Bytes and words of a kind that instructions trip over, among plain random ones.
class odd_values {
  public:
    uint8_t byte() {
        static const uint8_t edges[] = {0x00, 0x01, 0x0F, 0x10, 0x7F, 0x80, 0x99, 0xFF};
        const auto n = static_cast<unsigned>(random());
        return static_cast<uint8_t>(n & 0x300 ? n : edges[n & 7]);
    }
    uint16_t word() { return static_cast<uint16_t>(byte() << 8 | byte()); }
    void fill(z80_cpu &cpu) {
        for (uint16_t *w : {&cpu.BC, &cpu.DE, &cpu.HL, &cpu.AF, &cpu.BC_alt, &cpu.DE_alt, &cpu.HL_alt,
                            &cpu.AF_alt, &cpu.IX, &cpu.IY, &cpu.PC, &cpu.SP})
            *w = word();
        if (random() % 4 == 0) cpu.BC = static_cast<uint16_t>(random() % 3); // ends of blocks
        cpu.I = byte();
        cpu.IM = static_cast<uint8_t>(random() % 3);
        cpu.IFF1 = random() & 1;
        cpu.IFF2 = random() & 1;
        cpu.r_counter = byte();
    }

  private:
    std::mt19937 random{2026};
};

} // namespace

TEST(Z80Groups, EveryOpcodeDoesWhatTheReferenceDoes) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    odd_values odd;
    std::vector<uint8_t> clean(0x10000);
    for (uint8_t &byte : clean) byte = odd.byte();
    std::copy(clean.begin(), clean.end(), z80_bench::memory);
    const auto undo = [&clean](const std::vector<bus_access> &log) {
        for (const bus_access &a : log)
            if (a.kind == 'W') z80_bench::memory[a.address] = clean[a.address];
    };
    const std::vector<uint8_t> prefixes[] = {{}, {0xCB}, {0xED}, {0xDD}, {0xFD}, {0xDD, 0xCB}, {0xFD, 0xCB}};
    constexpr int rounds = 400;
    for (int n = 0; n < int(std::size(prefixes)) * 256 * rounds; ++n) {
        std::vector<uint8_t> code = prefixes[n / rounds / 256];
        if (code.size() == 2) code.push_back(odd.byte()); // the displacement stands before the operation
        code.push_back(static_cast<uint8_t>(n / rounds));
        z80_reset(cpu);
        odd.fill(cpu);
        for (size_t i = 0; i < code.size(); ++i) {
            const auto address = static_cast<uint16_t>(cpu.PC + i);
            z80_bench::memory[address] = clean[address] = code[i];
        }

        const z80_cpu prepared = cpu;
        z80_bench::log.clear();
        z80_reference();
        const z80_cpu expected = std::exchange(cpu, prepared);
        const std::vector<bus_access> bus = z80_bench::log;
        undo(bus);
        // Nothing injected, but the step goes through the groups that ask the inject buffer.
        if (cpu.IM == 0) cpu.stop_flags = pending_interrupt;
        const bool stopped = z80_bench::step();
        undo(z80_bench::log);
        ASSERT_EQ(differences(cpu, expected), "") << hex(code) << "from" << differences(prepared, {});
        ASSERT_TRUE(z80_bench::log == bus) << hex(code) << text(z80_bench::log) << "\nexpected " << text(bus);
        ASSERT_EQ(stopped, cpu.stop_flags != 0) << hex(code);
        const bool ported = bus.back().kind == 'I' || bus.back().kind == 'O';
        ASSERT_EQ(ported ? z80_bench::port_pc : cpu.PC, cpu.PC) << hex(code);
    }
}

// The 8-bit operations over every operand and carry, those of A and F (DAA among them) over every A and F.
TEST(Z80Arithmetic, EveryOperandAndCarry) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    std::vector<std::vector<uint8_t>> codes = {{0x04}, {0x05}, {0xED, 0x44}}; // INC B, DEC B, NEG
    for (uint8_t field = 0; field < 0x40; field += 8) {
        codes.push_back({static_cast<uint8_t>(0x80 | field)}); // ADD A,B and on
        codes.push_back({static_cast<uint8_t>(0x07 | field)}); // RLCA and on
        codes.push_back({0xCB, field});                        // RLC B and on
    }
    for (const std::vector<uint8_t> &code : codes) {
        z80_bench::put(0, code);
        const bool of_a_and_f = code.size() == 1 && (code[0] & 0xC7) == 0x07;
        for (unsigned a = 0; a < 256; ++a) {
            for (unsigned other = 0; other < (of_a_and_f ? 256 : 512); ++other) {
                cpu.PC = 0;
                cpu.AF = static_cast<uint16_t>(a << 8 | (of_a_and_f ? other : other >> 8));
                cpu.BC = static_cast<uint16_t>(other << 8);
                const z80_cpu prepared = cpu;
                z80_reference();
                const z80_cpu expected = std::exchange(cpu, prepared);
                z80_bench::step();
                ASSERT_TRUE(cpu.AF == expected.AF && cpu.BC == expected.BC)
                    << hex(code) << "from" << differences(prepared, {}) << ":" << differences(cpu, expected);
            }
        }
    }
}
