// One pass on the whole machine: what is charged, to the program and for the DMA.
#include "machine/machine_pass.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace {

void start_at(uint16_t pc, std::vector<uint8_t> program) {
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    machine_init(
        machine, [] {}, [] {});
    main_cpu.PC = pc;
    std::copy(program.begin(), program.end(), pc < 0x8000 ? machine.main_rom + pc : machine.ram + pc);
}

uint32_t charged_for_a_pass(uint32_t iteration, bool charge_waits) {
    EXPECT_EQ(machine_pass(iteration, charge_waits), pass_outcome::nothing);
    return main_cpu.step_cycles;
}

TEST(MachinePass, EveryOpcodeFetchWaitsOnceAndMemoryWhereItIsCharged) {
    const struct {
        const char *what;
        uint16_t pc;
        std::vector<uint8_t> program;
        uint32_t charged, without_waits;
    } cases[] = {
        {"NOP in RAM", 0x8400, {0x00}, 4 + 1, 4 + 1},
        {"NOP under a window that waits", 0x6000, {0x00}, 4 + 1, 4 + 1},
        {"LD A,n there", 0x6000, {0x3E, 0x01}, 7 + 1 + 1, 7 + 1},
        {"LD A,(nn) of a plane", 0x8400, {0x3A, 0x00, 0xC0}, 13 + 1 + 1, 13 + 1},
        {"LD HL,(nn) of a plane", 0x8400, {0x2A, 0x00, 0xC0}, 16 + 1 + 2, 16 + 1},
        {"RLC (IX+d): two fetches", 0x8400, {0xDD, 0xCB, 0x00, 0x06}, 23 + 2, 23 + 2},
    };
    for (const auto &c : cases) {
        for (const bool charge_waits : {true, false}) {
            start_at(c.pc, c.program);
            machine.port71 = 0xFF;
            machine.gvram_select = 1;
            EXPECT_EQ(charged_for_a_pass(0, charge_waits), charge_waits ? c.charged : c.without_waits)
                << c.what;
        }
    }
}

TEST(MachinePass, ADebtToTheDmaIsBurntInThreePassesOfFour) {
    start_at(0x8400, {0x03, 0x03, 0x76});                                      // INC BC; INC BC; HALT
    machine.timing_tick = [](uint32_t) -> uint32_t { return timing_nothing; }; // no more debts
    machine.dma_stall = 25;
    main_cpu.wait_count = main_cpu.wait_count2 = main_cpu.m1_count = 7; // of an instruction long ago
    std::vector<uint32_t> charged;
    for (uint32_t iteration = 2; iteration < 7; ++iteration)
        charged.push_back(charged_for_a_pass(iteration, true));
    EXPECT_EQ(charged, (std::vector<uint32_t>{10, 6 + 1, 10, 5, 6 + 1}));
    EXPECT_EQ(machine_pass(7, true), pass_outcome::stopped);
    EXPECT_EQ(main_cpu.trace_pc, 0x8402);
}

} // namespace
