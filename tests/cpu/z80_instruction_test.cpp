// Whole instructions by hand: what the data book, or this machine's own rules, say about the cases that are
// easy to get wrong. The second Z80 shares its author's reading; these do not depend on it.
#include "z80_bench.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

struct registers {
    uint16_t AF = 0, BC = 0, DE = 0, HL = 0, IX = 0, SP = 0;
    bool operator==(const registers &) const = default;
};

std::string text(const registers &r) {
    char line[80];
    std::snprintf(line, sizeof line, "AF %04X BC %04X DE %04X HL %04X IX %04X SP %04X", r.AF, r.BC, r.DE,
                  r.HL, r.IX, r.SP);
    return line;
}

struct instruction {
    const char *name;
    std::vector<uint8_t> code; // at 0x1000
    registers before, after;
    uint16_t pc;
    uint32_t cycles, m1_count;
    std::string bus; // data accesses: those after the code bytes, in order
    std::vector<std::pair<uint16_t, uint8_t>> memory = {};
};

constexpr uint16_t origin = 0x1000;

// clang-format off
const instruction instructions[] = {
    {"NOP", {0x00}, {}, {}, 0x1001, 4, 1, ""},
    {"LD A,A", {0x7F}, {.AF = 0x12FF}, {.AF = 0x12FF}, 0x1001, 4, 1, ""},
    {"INC BC", {0x03}, {.BC = 0xFFFF}, {}, 0x1001, 6, 1, ""},
    {"OUT (n),A", {0xD3, 0x34}, {.AF = 0x1200}, {.AF = 0x1200}, 0x1002, 11, 1, "R 1001 34 wait, O 1234 12"},
    {"CALL Z taken", {0xCC, 0x00, 0x20}, {.AF = 0x0040, .SP = 0x8000}, {.AF = 0x0040, .SP = 0x7FFE}, 0x2000, 17, 1,
     "R 1001 00 wait, R 1002 20 wait2, W 7FFF 10 wait, W 7FFE 03 wait2"},
    {"CALL Z not taken", {0xCC, 0x00, 0x20}, {.SP = 0x8000}, {.SP = 0x8000}, 0x1003, 10, 1,
     "R 1001 00 wait, R 1002 20 wait2"},
    {"RET NZ taken", {0xC0}, {.SP = 0x8000}, {.SP = 0x8002}, 0x3456, 11, 1, "R 8000 56 wait, R 8001 34 wait2",
     {{0x8000, 0x56}, {0x8001, 0x34}}},
    {"RET NZ not taken", {0xC0}, {.AF = 0x0040}, {.AF = 0x0040}, 0x1001, 5, 1, ""},
    {"DJNZ looping", {0x10, 0xFE}, {.BC = 0x0200}, {.BC = 0x0100}, 0x1000, 13, 1, "R 1001 FE wait"},
    {"DJNZ last", {0x10, 0xFE}, {.BC = 0x0100}, {.BC = 0x0000}, 0x1002, 8, 1, "R 1001 FE wait"},
    // Bits 5 and 3 of CP are the operand's.
    {"CP n", {0xFE, 0x28}, {.AF = 0x1000}, {.AF = 0x10BB}, 0x1002, 7, 1, "R 1001 28 wait"},
    {"DAA of 15 + 27", {0x27}, {.AF = 0x3C00}, {.AF = 0x4214}, 0x1001, 4, 1, ""},
    // A correction that is subtracted is the complement added, and H is the carry of that addition.
    {"DAA, N, low digit A", {0x27}, {.AF = 0x0A02}, {.AF = 0x0412}, 0x1001, 4, 1, ""},
    {"SCF", {0x37}, {.AF = 0xFF12}, {.AF = 0xFF29}, 0x1001, 4, 1, ""},
    {"CCF", {0x3F}, {.AF = 0x0001}, {.AF = 0x0010}, 0x1001, 4, 1, ""},
    {"PUSH around zero", {0xC5}, {.BC = 0x1234}, {.BC = 0x1234, .SP = 0xFFFE}, 0x1001, 11, 1,
     "W FFFF 12 wait, W FFFE 34 wait2"},
    {"POP AF, every flag", {0xF1}, {.SP = 0x8000}, {.AF = 0x12FF, .SP = 0x8002}, 0x1001, 10, 1,
     "R 8000 FF wait, R 8001 12 wait2", {{0x8000, 0xFF}, {0x8001, 0x12}}},
    {"EX (SP),HL", {0xE3}, {.HL = 0x1234, .SP = 0xFFFF}, {.HL = 0x5678, .SP = 0xFFFF}, 0x1001, 19, 1,
     "R FFFF 78 wait, R 0000 56 wait2, W FFFF 34 wait, W 0000 12 wait2", {{0xFFFF, 0x78}, {0x0000, 0x56}}},
    {"INC (HL)", {0x34}, {.AF = 0x0001, .HL = 0x9000}, {.AF = 0x0095, .HL = 0x9000}, 0x1001, 11, 1,
     "R 9000 7F wait, W 9000 80 wait", {{0x9000, 0x7F}}},
    {"ADD HL,HL", {0x29}, {.AF = 0x00C4, .HL = 0x8800}, {.AF = 0x00D5, .HL = 0x1000}, 0x1001, 11, 1, ""},
    {"SLL A", {0xCB, 0x37}, {.AF = 0x8000}, {.AF = 0x0101}, 0x1002, 8, 2, ""},
    {"BIT 7,(HL)", {0xCB, 0x7E}, {.HL = 0x9000}, {.AF = 0x0090, .HL = 0x9000}, 0x1002, 12, 2, "R 9000 80 wait",
     {{0x9000, 0x80}}},
    {"RES 0,(HL)", {0xCB, 0x86}, {.HL = 0x9000}, {.HL = 0x9000}, 0x1002, 15, 2, "R 9000 FF wait, W 9000 FE wait",
     {{0x9000, 0xFF}}},
    {"SBC HL,DE to zero", {0xED, 0x52}, {.DE = 0x1234, .HL = 0x1234}, {.AF = 0x0042, .DE = 0x1234}, 0x1002, 15, 2, ""},
    {"LDI", {0xED, 0xA0}, {.AF = 0x20C1, .BC = 1, .DE = 0x9000, .HL = 0xA000},
     {.AF = 0x20E9, .BC = 0, .DE = 0x9001, .HL = 0xA001}, 0x1002, 16, 2, "R A000 08 wait, W 9000 08 wait",
     {{0xA000, 0x08}}},
    {"CPIR, found", {0xED, 0xB1}, {.AF = 0x2000, .BC = 5, .HL = 0xA000}, {.AF = 0x2046, .BC = 4, .HL = 0xA001}, 0x1002,
     16, 2, "R A000 20 wait", {{0xA000, 0x20}}},
    {"CPIR, not found", {0xED, 0xB1}, {.AF = 0x2000, .BC = 5, .HL = 0xA000}, {.AF = 0x201E, .BC = 4, .HL = 0xA001},
     0x1000, 21, 2, "R A000 01 wait", {{0xA000, 0x01}}},
    {"LD (IX+5),n", {0xDD, 0x36, 0x05, 0x42}, {.IX = 0x9000}, {.IX = 0x9000}, 0x1004, 19, 2,
     "R 1002 05 wait, R 1003 42 wait, W 9005 42 wait"},
    {"LD (IX-1),n", {0xDD, 0x36, 0xFF, 0x42}, {.IX = 0x0000}, {}, 0x1004, 19, 2,
     "R 1002 FF wait, R 1003 42 wait, W FFFF 42 wait"},
    {"LD IXH,IXL", {0xDD, 0x65}, {.HL = 0x1234, .IX = 0x5678}, {.HL = 0x1234, .IX = 0x7878}, 0x1002, 8, 2, ""},
    {"LD IXL,IXH", {0xDD, 0x6C}, {.HL = 0x1234, .IX = 0x5678}, {.HL = 0x1234, .IX = 0x5656}, 0x1002, 8, 2, ""},
    {"LD H,(IX+1)", {0xDD, 0x66, 0x01}, {.IX = 0x9000}, {.HL = 0x7700, .IX = 0x9000}, 0x1003, 19, 2,
     "R 1002 01 wait, R 9001 77 wait", {{0x9001, 0x77}}},
    {"EX (SP),IX", {0xDD, 0xE3}, {.IX = 0x1234, .SP = 0x8000}, {.IX = 0x5678, .SP = 0x8000}, 0x1002, 23, 2,
     "R 8000 78 wait, R 8001 56 wait2, W 8000 34 wait, W 8001 12 wait2", {{0x8000, 0x78}, {0x8001, 0x56}}},
    {"RLC (IX+2)", {0xDD, 0xCB, 0x02, 0x06}, {.IX = 0x9000}, {.AF = 0x0001, .IX = 0x9000}, 0x1004, 23, 2,
     "R 1002 02 wait, R 9002 80 wait, R 1003 06 wait, W 9002 01 wait", {{0x9002, 0x80}}},
    {"RLC (IX+2),B", {0xDD, 0xCB, 0x02, 0x00}, {.IX = 0x9000}, {.AF = 0x0001, .BC = 0x0100, .IX = 0x9000}, 0x1004, 23,
     2, "R 1002 02 wait, R 9002 80 wait, R 1003 00 wait, W 9002 01 wait", {{0x9002, 0x80}}},
    {"RES 0,(IX+2) without a copy", {0xDD, 0xCB, 0x02, 0x80}, {.IX = 0x9000}, {.IX = 0x9000}, 0x1004, 23, 2,
     "R 1002 02 wait, R 9002 FF wait, R 1003 80 wait, W 9002 FE wait", {{0x9002, 0xFF}}},
    {"BIT 0,(IX+2)", {0xDD, 0xCB, 0x02, 0x46}, {.IX = 0x9000}, {.AF = 0x0054, .IX = 0x9000}, 0x1004, 20, 2,
     "R 1002 02 wait, R 9002 00 wait, R 1003 46 wait"},
};
// clang-format on

} // namespace

TEST(Z80Instruction, RegistersTimeAndBus) {
    for (const instruction &i : instructions) {
        z80_bench::start();
        z80_cpu &cpu = z80_bench::cpu;
        z80_bench::put(origin, i.code);
        for (const auto &[address, value] : i.memory) z80_bench::memory[address] = value;
        cpu.AF = i.before.AF, cpu.BC = i.before.BC, cpu.DE = i.before.DE;
        cpu.HL = i.before.HL, cpu.IX = i.before.IX, cpu.SP = i.before.SP, cpu.PC = origin;
        EXPECT_FALSE(z80_bench::step()) << i.name;
        const registers got{cpu.AF, cpu.BC, cpu.DE, cpu.HL, cpu.IX, cpu.SP};
        EXPECT_EQ(text(got), text(i.after)) << i.name;
        EXPECT_EQ(text({{'P', cpu.PC, 0, wait_to::nothing}}), text({{'P', i.pc, 0, wait_to::nothing}}))
            << i.name;
        EXPECT_EQ(cpu.step_cycles, i.cycles) << i.name;
        EXPECT_EQ(cpu.m1_count, i.m1_count) << i.name;
        std::vector<bus_access> data(z80_bench::log.begin() + i.m1_count, z80_bench::log.end());
        EXPECT_EQ(text(data), i.bus) << i.name;
        uint32_t waits = 0, waits2 = 0;
        for (const bus_access &a : data) {
            waits += a.wait == wait_to::first;
            waits2 += a.wait == wait_to::second;
        }
        EXPECT_EQ(cpu.wait_count, waits) << i.name;
        EXPECT_EQ(cpu.wait_count2, waits2) << i.name;
    }
}

TEST(Z80Instruction, PortsSeeThePcBehindTheInstruction) {
    for (const std::vector<uint8_t> &code :
         {std::vector<uint8_t>{0xDB, 0x10}, {0xD3, 0x10}, {0xED, 0x40}, {0xED, 0x41}}) {
        z80_bench::start();
        z80_bench::put(0, code);
        z80_bench::step();
        EXPECT_EQ(z80_bench::port_pc, 2) << std::hex << int(code[0]) << " " << int(code[1]);
        EXPECT_EQ(z80_bench::cpu.PC, 2);
    }
}

TEST(Z80Instruction, BlockMovesRunOnePassAStep) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    z80_bench::put(0x1000, {0xED, 0xB0});
    cpu.PC = 0x1000, cpu.HL = 0x2000, cpu.DE = 0x3000, cpu.BC = 3;
    std::string cycles;
    for (int i = 0; i < 3; ++i) {
        z80_bench::step();
        cycles += std::to_string(cpu.step_cycles) + " ";
    }
    EXPECT_EQ(cycles, "21 21 16 ");
    EXPECT_EQ(cpu.PC, 0x1002);
    // BC = 0 means 65536 bytes.
    z80_bench::put(0x1000, {0xED, 0xB0});
    cpu.PC = 0x1000, cpu.HL = cpu.DE = 0x2000, cpu.BC = 0;
    int passes = 0;
    do {
        z80_bench::step();
        ++passes;
    } while (cpu.PC == 0x1000);
    EXPECT_EQ(passes, 0x10000);
}

TEST(Z80Instruction, StopsSayWhyAndWhere) {
    const struct {
        std::vector<uint8_t> code;
        uint8_t reason;
        uint32_t cycles;
    } cases[] = {
        {{0x76}, stop_halt, 0},
        {{0xED, 0x70}, stop_undefined, 5},
        {{0xED, 0x71}, stop_undefined, 5},
        {{0xED, 0x4C}, stop_undefined, 5},
        {{0xED, 0x00}, stop_undefined, 5},
        {{0xED, 0xB2}, stop_unimplemented, 0},
        {{0xDD, 0x00}, stop_undefined, 5},
        {{0xFD, 0x76}, stop_undefined, 5},
        {{0xDD, 0xFD}, stop_undefined, 5},
    };
    for (const auto &c : cases) {
        z80_bench::start();
        z80_cpu &cpu = z80_bench::cpu;
        z80_bench::put(0x1234, c.code);
        cpu.PC = 0x1234;
        EXPECT_TRUE(z80_bench::step());
        EXPECT_EQ(cpu.stop_reason, c.reason) << std::hex << int(c.code.back());
        EXPECT_EQ(cpu.stop_flags, stop_code_instruction);
        EXPECT_EQ(cpu.trace_pc, 0x1234);
        EXPECT_EQ(cpu.PC, 0x1234 + c.code.size());
        EXPECT_EQ(cpu.step_cycles, c.cycles) << std::hex << int(c.code.back());
        EXPECT_TRUE(z80_bench::step()) << "a stop stays until reset";
        z80_reset(cpu);
        EXPECT_FALSE(z80_bench::step()) << "NOP at 0";
    }
}

TEST(Z80Instruction, LoadAFromRTakesTheTableInTurn) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    z80_bench::put(0, {0xED, 0x5F, 0xED, 0x5F, 0xED, 0x4F, 0xED, 0x5F});
    cpu.r_counter = 0xFE;
    cpu.IFF2 = 1;
    for (unsigned index : {0xFFu, 0x00u}) {
        z80_bench::step();
        EXPECT_EQ(cpu.AF >> 8, cpu.r_table[index]);
        EXPECT_EQ(cpu.AF & flag_pv, flag_pv);
    }
    z80_bench::step(); // LD R,A
    z80_bench::step();
    EXPECT_EQ(cpu.AF >> 8, cpu.r_table[2]);
}

TEST(Z80Instruction, ResetClearsRegistersAndKeepsTheRest) {
    z80_bench::start();
    z80_cpu &cpu = z80_bench::cpu;
    for (int i = 0; i < 3; ++i) z80_bench::step();
    z80_nmi(cpu);
    cpu.SP = 0x1234, cpu.IY = 0x55, cpu.IM = 2, cpu.I = 3, cpu.IFF1 = cpu.IFF2 = 1, cpu.stop_reason = 2;
    cpu.inject_active = 1, cpu.inject_count = 4;
    z80_fix_seed(1);
    z80_reset(cpu);
    for (int i = 0; i < register_words; ++i) EXPECT_EQ(z80_register(cpu, i), 0) << i;
    EXPECT_EQ(cpu.IM | cpu.I | cpu.IFF1 | cpu.IFF2 | cpu.stop_flags | cpu.stop_reason | cpu.inject_active, 0);
    EXPECT_EQ(cpu.r_counter | cpu.inject_count | int(cpu.accept_cycles) | cpu.vector_pc, 0);
    EXPECT_EQ(z80_take_total_cycles(cpu), 12u);
    EXPECT_EQ(z80_take_total_cycles(cpu), 0u);
    const std::vector<uint8_t> first(cpu.r_table, cpu.r_table + 256);
    z80_reset(cpu);
    EXPECT_EQ(first, std::vector<uint8_t>(cpu.r_table, cpu.r_table + 256)) << "the same seed";
    z80_fix_seed(2);
    z80_reset(cpu);
    EXPECT_NE(first, std::vector<uint8_t>(cpu.r_table, cpu.r_table + 256)) << "another seed";
}

// The speed figure is taken by another thread while the CPU runs: nothing is lost or counted twice.
TEST(Z80Instruction, TotalCyclesAreTakenFromAnotherThread) {
    static uint8_t jump_to_itself[] = {0x18, 0xFE};
    z80_cpu cpu{};
    z80_install(
        cpu, [](uint16_t address, uint32_t *) { return jump_to_itself[address & 1]; },
        [](uint16_t, uint8_t, uint32_t *) {}, [](uint16_t) { return uint8_t{}; }, [](uint16_t, uint8_t) {});
    constexpr uint32_t steps = 100'000;
    std::thread runner([&cpu] {
        for (uint32_t i = 0; i < steps; ++i) cpu.z80_step(cpu);
    });
    uint64_t taken = 0;
    for (int i = 0; i < 1000; ++i) taken += z80_take_total_cycles(cpu);
    runner.join();
    taken += z80_take_total_cycles(cpu);
    EXPECT_EQ(taken, uint64_t{12} * steps);
}
