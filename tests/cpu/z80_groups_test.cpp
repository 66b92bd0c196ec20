// Every opcode of every group against the second Z80: registers, T-states, opcode fetches, waits, stops and
// the bus, access by access.
#include "z80_reference.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

std::string hex(unsigned value, int digits) {
    char line[16];
    std::snprintf(line, sizeof line, "%0*X", digits, value);
    return line;
}

// The fields in which two records differ, each as "name got expected".
std::string differences(const z80_cpu &got, const z80_cpu &expected) {
    static const char *const names[] = {"BC",  "DE",  "HL", "AF", "BC'", "DE'",
                                        "HL'", "AF'", "IX", "IY", "PC",  "SP"};
    std::string all;
    const auto compare = [&all](const char *name, unsigned a, unsigned b) {
        if (a != b)
            all.append(" ")
                .append(name)
                .append(" got ")
                .append(hex(a, 4))
                .append(" expected ")
                .append(hex(b, 4));
    };
    for (int i = 0; i < register_words; ++i)
        compare(names[i], z80_register(got, i), z80_register(expected, i));
    compare("step_cycles", got.step_cycles, expected.step_cycles);
    compare("m1_count", got.m1_count, expected.m1_count);
    compare("wait_count", got.wait_count, expected.wait_count);
    compare("wait_count2", got.wait_count2, expected.wait_count2);
    compare("I", got.I, expected.I);
    compare("IM", got.IM, expected.IM);
    compare("IFF1", got.IFF1, expected.IFF1);
    compare("IFF2", got.IFF2, expected.IFF2);
    compare("stop_reason", got.stop_reason, expected.stop_reason);
    compare("stop_flags", got.stop_flags, expected.stop_flags);
    compare("trace_pc", got.trace_pc, expected.trace_pc);
    compare("r_counter", got.r_counter, expected.r_counter);
    compare("total_cycles", got.total_cycles, expected.total_cycles);
    return all;
}

// Bytes and words of a kind that instructions trip over, among plain random ones.
class odd_values {
  public:
    explicit odd_values(unsigned seed) : random(seed) {}
    uint8_t byte() {
        static const uint8_t edges[] = {0x00, 0x01, 0x0F, 0x10, 0x7F, 0x80, 0x99, 0xFF};
        const unsigned n = static_cast<unsigned>(random());
        return static_cast<uint8_t>(n & 0x300 ? n : edges[n & 7]);
    }
    uint16_t word() {
        const unsigned high = byte();
        return static_cast<uint16_t>(high << 8 | byte());
    }
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
    std::mt19937 random;
};

struct group {
    const char *name;
    std::vector<uint8_t> prefix;
    bool displacement; // stands between the prefix and the operation byte
};

void undo(const std::vector<bus_access> &log, const std::vector<uint8_t> &clean) {
    for (const bus_access &a : log)
        if (a.kind == 'W') z80_bench::memory[a.address] = clean[a.address];
}

class Z80Groups : public testing::TestWithParam<group> {};

} // namespace

TEST_P(Z80Groups, EveryOpcodeDoesWhatTheReferenceDoes) {
    const group &g = GetParam();
    z80_bench::start();
    odd_values odd(2026);
    std::vector<uint8_t> clean(0x10000);
    for (uint8_t &byte : clean) byte = odd.byte();
    std::copy(clean.begin(), clean.end(), z80_bench::memory);
    z80_cpu &cpu = z80_bench::cpu;

    for (int op = 0; op < 256; ++op) {
        const bool prefix_byte = op == 0xCB || op == 0xDD || op == 0xED || op == 0xFD;
        if (g.prefix.empty() && prefix_byte) continue;
        if (g.prefix.size() == 1 && (g.prefix[0] & 0xDF) == 0xDD && op == 0xCB) continue;
        for (int round = 0; round < 400; ++round) {
            z80_reset(cpu);
            odd.fill(cpu);
            std::vector<uint8_t> code = g.prefix;
            if (g.displacement) code.push_back(odd.byte());
            code.push_back(static_cast<uint8_t>(op));
            for (size_t i = 0; i < code.size(); ++i) {
                const uint16_t address = static_cast<uint16_t>(cpu.PC + i);
                z80_bench::memory[address] = clean[address] = code[i];
            }

            const z80_cpu prepared = cpu;
            const reference_result expected = reference_step(prepared, z80_bench::memory);
            undo(expected.log, clean);
            const bool stopped = z80_bench::step();
            undo(z80_bench::log, clean);

            const std::string wrong = differences(cpu, expected.after);
            ASSERT_TRUE(wrong.empty() && z80_bench::log == expected.log)
                << g.name << " " << hex(static_cast<unsigned>(op), 2) << " with AF " << hex(prepared.AF, 4)
                << " BC " << hex(prepared.BC, 4) << " HL " << hex(prepared.HL, 4) << ":" << wrong
                << "\n  got      " << text(z80_bench::log) << "\n  expected " << text(expected.log);
            ASSERT_EQ(stopped, expected.after.stop_flags != 0)
                << g.name << " " << hex(static_cast<unsigned>(op), 2);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, Z80Groups,
                         testing::Values(group{"unprefixed", {}, false}, group{"CB", {0xCB}, false},
                                         group{"ED", {0xED}, false}, group{"DD", {0xDD}, false},
                                         group{"FD", {0xFD}, false}, group{"DDCB", {0xDD, 0xCB}, true},
                                         group{"FDCB", {0xFD, 0xCB}, true}),
                         [](const auto &test) { return std::string(test.param.name); });

// The 8-bit operations over every operand and carry, DAA over every A and F.
TEST(Z80Arithmetic, EveryOperandAndCarry) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    // ALU A,B; CPL-like operations of A; INC and DEC B; rotates and shifts of B; NEG.
    std::vector<std::vector<uint8_t>> codes;
    for (int y = 0; y < 8; ++y) {
        const unsigned field = static_cast<unsigned>(y) << 3;
        codes.push_back({static_cast<uint8_t>(0x80 | field)});
        codes.push_back({static_cast<uint8_t>(0x07 | field)});
        codes.push_back({0xCB, static_cast<uint8_t>(field)});
    }
    codes.insert(codes.end(), {{0x04}, {0x05}, {0xED, 0x44}});
    for (const std::vector<uint8_t> &code : codes) {
        z80_bench::put(0, code);
        const bool of_a_and_f = code.size() == 1 && (code[0] & 0xC7) == 0x07;
        for (unsigned a = 0; a < 256; ++a) {
            for (unsigned other = 0; other < 512; ++other) {
                // B and carry, or every F where the operation reads A and F alone.
                if (of_a_and_f && other >= 256) break;
                cpu.PC = 0;
                cpu.AF = static_cast<uint16_t>(a << 8 | (of_a_and_f ? other : other >> 8));
                cpu.BC = static_cast<uint16_t>(other << 8);
                const z80_cpu prepared = cpu;
                z80_bench::step();
                const reference_result expected = reference_step(prepared, z80_bench::memory);
                ASSERT_TRUE(cpu.AF == expected.after.AF && cpu.BC == expected.after.BC)
                    << "code " << hex(code[0], 2) << " " << hex(code.back(), 2) << " AF "
                    << hex(prepared.AF, 4) << " BC " << hex(prepared.BC, 4) << ":"
                    << differences(cpu, expected.after);
            }
        }
    }
}

// Programs of random bytes, interrupts at random moments: nothing leaves its array, T-states stay in bounds.
TEST(Z80Random, MillionsOfInstructionsRunClean) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    std::mt19937 random(7);
    for (uint8_t &byte : z80_bench::memory) byte = static_cast<uint8_t>(random());
    uint32_t total = 0;
    for (int i = 0; i < 3'000'000; ++i) {
        const unsigned n = static_cast<unsigned>(random());
        if (n % 64 == 0) cpu.IFF1 = 1, cpu.z80_interrupt(cpu, static_cast<uint8_t>(n >> 8 & 7));
        if (n % 1024 == 1) cpu.z80_nmi(cpu);
        if (n % 1024 == 2) {
            cpu.inject_active = 1;
            cpu.inject_count = static_cast<int16_t>(n >> 16 & 3);
        }
        if (z80_bench::step()) { // go on elsewhere
            ASSERT_LE(cpu.stop_reason, stop_unimplemented);
            z80_reset(cpu);
            cpu.PC = static_cast<uint16_t>(n >> 16);
            cpu.SP = static_cast<uint16_t>(n >> 12);
            cpu.IM = static_cast<uint8_t>(n >> 6 & 3);
            z80_bench::memory[cpu.PC] = static_cast<uint8_t>(n >> 4);
        }
        ASSERT_LE(cpu.step_cycles, 23u + 19u) << hex(cpu.trace_pc, 4);
        total += cpu.step_cycles;
    }
    EXPECT_GT(total, 0u);
}
