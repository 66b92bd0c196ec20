// Requests, their acceptance between steps and their entry in the next; the inject buffer.
#include "z80_bench.h"

#include <gtest/gtest.h>

namespace {

class Z80Interrupt : public testing::Test {
  protected:
    // In a program of NOPs at 0x1000 with a stack below 0x8000.
    void SetUp() override {
        z80_bench::start();
        cpu.PC = 0x1000;
        cpu.SP = 0x8000;
        cpu.IFF1 = cpu.IFF2 = 1;
    }
    z80_cpu &cpu = z80_bench::cpu;
};

} // namespace

TEST_F(Z80Interrupt, Mode1EntersTheHandlerInTheNextStep) {
    cpu.IM = 1;
    z80_bench::memory[0x38] = 0x03; // INC BC, 6 T-states
    ASSERT_EQ(cpu.z80_interrupt(cpu, 2), 0u);
    EXPECT_EQ(cpu.IFF1 | cpu.IFF2, 0);
    EXPECT_EQ(cpu.PC, 0x1000) << "nothing happens at the request";
    EXPECT_EQ(cpu.z80_interrupt(cpu, 1), 1u) << "no second one";
    z80_bench::step();
    EXPECT_EQ(text(z80_bench::log), "W 7FFF 10 wait, W 7FFE 00 wait2, R 0038 03");
    EXPECT_EQ(cpu.step_cycles, 6u + 13u);
    EXPECT_EQ(cpu.total_cycles, 6u + 13u);
    EXPECT_EQ(cpu.m1_count, 1u);
    EXPECT_EQ(cpu.trace_pc, 0x38);
    EXPECT_EQ(cpu.PC, 0x39);
    EXPECT_EQ(cpu.accept_cycles, 0u);
    EXPECT_EQ(cpu.stop_flags, 0);
    z80_bench::step();
    EXPECT_EQ(cpu.step_cycles, 4u);
}

TEST_F(Z80Interrupt, Mode2ReadsItsVectorAtTheRequest) {
    cpu.IM = 2;
    cpu.I = 0x9A;
    z80_bench::put(0x9A02, {0x34, 0x12});
    z80_bench::log.clear();
    ASSERT_EQ(cpu.z80_interrupt(cpu, 1), 0u);
    EXPECT_EQ(text(z80_bench::log), "R 9A02 34 wait, R 9A03 12 wait2");
    z80_bench::step();
    EXPECT_EQ(cpu.trace_pc, 0x1234);
    EXPECT_EQ(cpu.step_cycles, 4u + 19u);
    EXPECT_EQ(cpu.wait_count, 1u) << "the vector's waits are not charged";
    EXPECT_EQ(cpu.wait_count2, 1u);
    // The table's last word may straddle the end of memory.
    cpu.I = 0xFF, cpu.IFF1 = 1;
    z80_bench::memory[0xFFFE + 1] = 0x20;
    cpu.z80_interrupt(cpu, 0x7F);
    z80_bench::step();
    EXPECT_EQ(cpu.trace_pc, 0x2000);
}

TEST_F(Z80Interrupt, Mode0ExecutesTheLevelAsAnInstruction) {
    const struct {
        uint8_t level;
        uint16_t pc;
        uint32_t cycles;
        const char *bus;
    } cases[] = {
        {0, 0x1000, 4 + 2, ""},                                 // NOP
        {1, 0x1002, 10 + 2, "R 1000 11 wait, R 1001 22 wait2"}, // LD BC,nn: nn at the interrupted PC
        {2, 0x1000, 7 + 2, "W 4567 89 wait"},                   // LD (BC),A
    };
    for (const auto &c : cases) {
        SetUp();
        z80_bench::put(0x1000, {0x11, 0x22});
        cpu.BC = 0x4567, cpu.AF = 0x8900;
        ASSERT_EQ(cpu.z80_interrupt(cpu, c.level), 0u);
        EXPECT_FALSE(z80_bench::step());
        EXPECT_EQ(text(z80_bench::log), c.bus) << int(c.level);
        EXPECT_EQ(cpu.PC, c.pc) << int(c.level);
        EXPECT_EQ(cpu.trace_pc, 0x1000);
        EXPECT_EQ(cpu.SP, 0x8000);
        EXPECT_EQ(cpu.step_cycles, c.cycles) << int(c.level);
        EXPECT_EQ(cpu.m1_count, 1u);
        EXPECT_EQ(cpu.stop_flags | cpu.inject_active, 0);
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

TEST_F(Z80Interrupt, EiTakesEffectAtOnceAndDiClearsBoth) {
    cpu.IM = 1;
    cpu.IFF1 = cpu.IFF2 = 0;
    z80_bench::put(0x1000, {0xFB, 0xF3});
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 1u);
    z80_bench::step();
    EXPECT_EQ(cpu.IFF1 & cpu.IFF2, 1);
    EXPECT_EQ(cpu.z80_interrupt(cpu, 0), 0u);
    z80_bench::step();
    EXPECT_EQ(cpu.trace_pc, 0x38) << "before the instruction after EI";
    EXPECT_EQ(z80_bench::memory[0x7FFE], 0x01);
    cpu.PC = 0x1001, cpu.IFF1 = cpu.IFF2 = 1;
    z80_bench::step();
    EXPECT_EQ(cpu.IFF1 | cpu.IFF2, 0);
}

TEST_F(Z80Interrupt, NmiKeepsIff1InIff2AndRetnBringsItBack) {
    cpu.IM = 0; // an NMI enters whatever the mode
    z80_bench::put(0x66, {0xED, 0x45});
    cpu.z80_nmi(cpu);
    EXPECT_EQ(cpu.IFF1, 0);
    EXPECT_EQ(cpu.IFF2, 1);
    z80_bench::step(); // RETN, in the step of the entry
    EXPECT_EQ(cpu.trace_pc, 0x66);
    EXPECT_EQ(cpu.step_cycles, 14u + 11u);
    EXPECT_EQ(cpu.PC, 0x1000);
    EXPECT_EQ(cpu.SP, 0x8000);
    EXPECT_EQ(cpu.IFF1, 1);
    // RETI leaves the flip-flops alone.
    z80_bench::put(0x66, {0xED, 0x4D});
    cpu.z80_nmi(cpu);
    z80_bench::step();
    EXPECT_EQ(cpu.IFF1, 0);
    EXPECT_EQ(cpu.IFF2, 1);
}

TEST_F(Z80Interrupt, InjectedBytesComeFromTheEndAndRunOutSafely) {
    const auto inject = [this](std::vector<uint8_t> bytes) {
        SetUp();
        cpu.inject_active = 1;
        cpu.inject_count = static_cast<int16_t>(bytes.size());
        for (size_t i = 0; i < bytes.size(); ++i) cpu.inject_bytes[i] = bytes[bytes.size() - 1 - i];
    };
    inject({0xCD, 0x34, 0x12}); // CALL 0x1234: the low byte comes first
    EXPECT_FALSE(z80_bench::step());
    EXPECT_EQ(text(z80_bench::log), "W 7FFF 10 wait, W 7FFE 00 wait2");
    EXPECT_EQ(cpu.PC, 0x1234);
    EXPECT_EQ(cpu.inject_active, 0);
    inject({0xDD, 0x36, 0x05, 0x42}); // LD (IX+5),n
    EXPECT_FALSE(z80_bench::step());
    EXPECT_EQ(text(z80_bench::log), "W 0005 42 wait");
    EXPECT_EQ(cpu.m1_count, 2u);
    inject({0x21, 0x34}); // LD HL,nn with half a word left
    cpu.HL = 0x5555;
    EXPECT_TRUE(z80_bench::step());
    EXPECT_EQ(cpu.stop_flags, stop_code_inject_empty);
    EXPECT_EQ(cpu.HL, 0);
    inject({}); // active, nothing in it: the opcode reads as NOP
    EXPECT_TRUE(z80_bench::step());
    EXPECT_EQ(cpu.stop_flags, stop_code_inject_empty);
    EXPECT_EQ(cpu.stop_reason, stop_none);
    EXPECT_EQ(cpu.PC, 0x1000);
}
