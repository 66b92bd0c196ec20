// Requests, their acceptance between steps and their entry in the next; the inject buffer.
#include "z80_bench.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

class Z80Interrupt : public testing::Test {
  protected:
    // Between two NOPs at 0x1000, with a stack below 0x8000.
    void SetUp() override {
        z80_bench::start();
        cpu.PC = 0x1000;
        cpu.SP = 0x8000;
        cpu.IFF1 = cpu.IFF2 = 1;
    }
    z80_cpu &cpu = z80_bench::cpu;
};

constexpr int nmi = -1;

// As a person may want it: the program goes on behind the HALT once the handler is done, and what is no
// instruction does nothing.
TEST_F(Z80Interrupt, HaltMayWaitAndUndefinedInstructionsMayBeSteppedOver) {
    z80_lenient.halt_waits = z80_lenient.undefined_runs = true;
    z80_bench::memory[0x1000] = 0x76;
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(z80_bench::step());
        EXPECT_EQ(cpu.PC, 0x1000);
        EXPECT_EQ(cpu.step_cycles, 4u);
    }
    cpu.IM = 1;
    cpu.IFF1 = cpu.IFF2 = 1;
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 0u);
    z80_bench::memory[0x0038] = 0xC9; // RET
    z80_bench::step();
    EXPECT_EQ(cpu.PC, 0x1001) << "behind it";
    z80_bench::memory[0x1002] = 0x76;
    z80_bench::step();
    cpu.IFF1 = 1;
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 0u);
    z80_bench::step();
    EXPECT_EQ(cpu.PC, 0x1002) << "a HALT that was not reached yet still waits";
    cpu.PC = 0x1001;
    z80_bench::memory[0x1001] = 0xED;
    z80_bench::memory[0x1002] = 0x00;
    EXPECT_FALSE(z80_bench::step());
    EXPECT_EQ(cpu.PC, 0x1003);
    z80_lenient.halt_waits = z80_lenient.undefined_runs = false;
    z80_bench::memory[0x1003] = 0x76;
    EXPECT_TRUE(z80_bench::step());
    EXPECT_EQ(cpu.stop_reason, stop_halt);
}

} // namespace

// The request changes the flip-flops alone; the next step enters, and executes the first instruction there.
TEST_F(Z80Interrupt, EntryComesWithTheNextStep) {
    const struct {
        int im, level; // or nmi
        std::string request_bus, step_bus;
        uint16_t trace_pc, pc;
        uint32_t cycles;
    } cases[] = {
        // The level is the instruction; what it fetches besides stands at the interrupted PC.
        {0, 0, "", "", 0x1000, 0x1000, 4 + 2},
        {0, 1, "", "R 1000 00 wait, R 1001 00 wait2", 0x1000, 0x1002, 10 + 2},
        {0, 2, "", "W 4567 89 wait", 0x1000, 0x1000, 7 + 2},
        {1, 2, "", "W 7FFF 10 wait, W 7FFE 00 wait2, R 0038 03", 0x38, 0x39, 6 + 13},
        {2, 1, "R FF02 34 wait, R FF03 12 wait2", "W 7FFF 10 wait, W 7FFE 00 wait2, R 1234 03", 0x1234,
         0x1235, 6 + 19},
        {2, 0x90, "R 0020 ED wait, R 0021 00 wait2", "W 7FFF 10 wait, W 7FFE 00 wait2, R 00ED 03", 0xED, 0xEE,
         6 + 19},
        {0, nmi, "", "W 7FFF 10 wait, W 7FFE 00 wait2, R 0066 03", 0x66, 0x67, 6 + 11},
        {2, nmi, "", "W 7FFF 10 wait, W 7FFE 00 wait2, R 0066 03", 0x66, 0x67, 6 + 11},
    };
    for (const auto &c : cases) {
        const std::string name = "IM " + std::to_string(c.im) + " level " + std::to_string(c.level);
        SetUp();
        for (int at : {0x38, 0x66, 0xED, 0x1234}) z80_bench::memory[at] = 0x03; // INC BC
        z80_bench::put(0xFF02, {0x34, 0x12});
        z80_bench::memory[0x0020] = 0xED; // behind the end of memory comes its beginning
        cpu.IM = static_cast<uint8_t>(c.im), cpu.I = 0xFF, cpu.BC = 0x4567, cpu.AF = 0x8900;
        cpu.IFF2 = c.level != nmi;
        if (c.level == nmi) cpu.z80_nmi(cpu);
        const uint32_t refused = c.level != nmi && cpu.z80_interrupt(cpu, static_cast<uint8_t>(c.level));
        EXPECT_EQ(refused, 0u) << name;
        EXPECT_EQ(text(z80_bench::log), c.request_bus) << name;
        EXPECT_EQ(cpu.PC, 0x1000) << name;
        EXPECT_EQ(cpu.IFF1, 0) << name;
        EXPECT_EQ(cpu.IFF2, c.level == nmi) << name;
        EXPECT_EQ(cpu.z80_interrupt(cpu, 1), 1u) << name << ": no second one";

        EXPECT_FALSE(z80_bench::step()) << name;
        EXPECT_EQ(text(z80_bench::log), c.step_bus) << name;
        EXPECT_EQ(cpu.trace_pc, c.trace_pc) << name;
        EXPECT_EQ(cpu.PC, c.pc) << name;
        EXPECT_EQ(cpu.step_cycles, c.cycles) << name;
        EXPECT_EQ(cpu.total_cycles, c.cycles) << name;
        EXPECT_EQ(cpu.m1_count, 1u) << name;
        EXPECT_EQ(cpu.wait_count, z80_bench::waits(1)) << name << ": the vector's waits are not charged";
        EXPECT_EQ(cpu.wait_count2, z80_bench::waits(2)) << name;
        EXPECT_EQ(cpu.stop_flags | cpu.inject_active | int(cpu.accept_cycles), 0) << name;
        z80_bench::memory[cpu.PC] = 0;
        z80_bench::step();
        EXPECT_EQ(cpu.step_cycles, 4u) << name << ": entered once";
    }
}

TEST_F(Z80Interrupt, RefusedWhileDisabledAndInNoMode) {
    cpu.IFF1 = 0;
    cpu.IM = 1;
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 1u);
    EXPECT_EQ(cpu.IFF2, 1);
    EXPECT_EQ(cpu.stop_flags, 0);
    cpu.IFF1 = 1;
    cpu.IM = 3;
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 1u);
    EXPECT_EQ(cpu.IFF1 | cpu.IFF2, 0);
    EXPECT_EQ(cpu.stop_flags, stop_code_interrupt_mode);
    EXPECT_TRUE(z80_bench::step());
    EXPECT_EQ(cpu.stop_reason, stop_none);
}

// No step of grace: the handler comes before the instruction after EI.
TEST_F(Z80Interrupt, EiTakesEffectAtOnce) {
    cpu.IM = 1;
    cpu.IFF1 = cpu.IFF2 = 0;
    z80_bench::memory[0x1000] = 0xFB;
    z80_bench::step();
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 0u);
    z80_bench::step();
    EXPECT_EQ(text(z80_bench::log), "W 7FFF 10 wait, W 7FFE 01 wait2, R 0038 00");
}

TEST_F(Z80Interrupt, InjectedBytesComeFromTheEndAndRunOutSafely) {
    const struct {
        std::vector<uint8_t> bytes;
        std::string bus;
        uint16_t pc, hl;
        uint32_t m1_count;
        uint8_t stop_flags;
    } cases[] = {
        // CALL 0x1234: the low byte comes first.
        {{0xCD, 0x34, 0x12}, "W 7FFF 10 wait, W 7FFE 00 wait2", 0x1234, 0x5555, 1, 0},
        {{0xDD, 0x36, 0x05, 0x42}, "W 0005 42 wait", 0x1000, 0x5555, 2, 0}, // LD (IX+5),n
        {{0x3E}, "R 1000 00 wait", 0x1001, 0x5555, 1, 0},                   // LD A,n: n out of memory
        // LD HL,nn with half a word left; and nothing at all, which reads as NOP.
        {{0x21, 0x34}, "", 0x1000, 0, 1, stop_code_inject_empty},
        {{}, "", 0x1000, 0x5555, 1, stop_code_inject_empty},
    };
    for (const auto &c : cases) {
        SetUp();
        cpu.HL = 0x5555;
        cpu.inject_active = 1;
        cpu.inject_count = static_cast<int16_t>(c.bytes.size());
        std::copy(c.bytes.rbegin(), c.bytes.rend(), cpu.inject_bytes);
        EXPECT_EQ(z80_bench::step(), c.stop_flags != 0);
        EXPECT_EQ(text(z80_bench::log), c.bus);
        EXPECT_EQ(cpu.PC, c.pc) << c.bus;
        EXPECT_EQ(cpu.HL, c.hl) << c.bus;
        EXPECT_EQ(cpu.m1_count, c.m1_count) << c.bus;
        EXPECT_EQ(cpu.stop_flags, c.stop_flags) << c.bus;
        EXPECT_EQ(cpu.stop_reason, stop_none);
    }
}
