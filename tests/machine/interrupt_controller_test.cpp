// Every mask, threshold, pending word and answer of the CPU, against the rules put as sentences.
#include "machine_fixture.h"

namespace {

using Interrupts = Machine;

std::vector<int> offered;
uint32_t answer;

z80_cpu listening_cpu() {
    z80_cpu cpu{};
    cpu.z80_interrupt = [](z80_cpu &, uint8_t level) {
        offered.push_back(level);
        return answer;
    };
    return cpu;
}

constexpr int mask_bits[3] = {0x04, 0x02, 0x01};

TEST_F(Interrupts, RequestsAndServiceFollowMaskAndThreshold) {
    z80_cpu cpu = listening_cpu();
    for (int mask = 0; mask < 8; ++mask)
        for (int threshold = 0; threshold < 16; ++threshold)
            for (uint16_t pending = 0; pending < 8; ++pending)
                for (const uint32_t refused : {0u, 1u}) {
                    out(0xE6, mask | 0xF8); // the upper bits mean nothing
                    out(0xE4, threshold | 0xF0);
                    answer = refused;
                    const auto passes = [&](int level) { return threshold >= 8 || level < threshold; };
                    const auto enabled = [&](int level) { return (mask & mask_bits[level]) != 0; };
                    const auto check = [&](const char *what, int level, bool asked, bool stays) {
                        const int expected = stays ? pending | 1 << level : pending & ~(1 << level);
                        EXPECT_EQ(machine.interrupt_pending, expected)
                            << what << ' ' << level << " mask " << hex{unsigned(mask)} << " threshold "
                            << hex{unsigned(threshold)} << " pending " << hex{pending} << " refused "
                            << refused;
                        EXPECT_EQ(offered, asked ? std::vector<int>{level} : std::vector<int>{})
                            << what << ' ' << level << " mask " << hex{unsigned(mask)} << " threshold "
                            << hex{unsigned(threshold)} << " pending " << hex{pending};
                    };
                    void (*const requests[3])(z80_cpu &) = {
                        machine.interrupt_request0, machine.interrupt_request1, machine.interrupt_request2};
                    for (int level = 0; level < 3; ++level) {
                        offered.clear();
                        machine.interrupt_pending = pending;
                        requests[level](cpu);
                        const bool was = (pending >> level & 1) != 0;
                        // Retrace and clock are asked once at a time and wait only for a refusing CPU; the
                        // USART waits until its byte is taken.
                        const bool asked = enabled(level) && passes(level) && (level == 0 || !was);
                        check("request", level, asked, was || (asked ? refused != 0 : level == 0));
                    }
                    // Service looks at the lowest pending level only.
                    offered.clear();
                    machine.interrupt_pending = pending;
                    machine.interrupt_service(cpu);
                    if (pending == 0) {
                        check("service", 0, false, false);
                        continue;
                    }
                    const int level = pending & 1 ? 0 : pending & 2 ? 1 : 2;
                    const bool asked = enabled(level) && passes(level);
                    check("service", level, asked, asked ? refused != 0 : enabled(level) || level == 0);
                }
}

// With the real processor: a retrace that comes while interrupts are off is taken right after EI.
TEST_F(Interrupts, PendingRetraceIsEnteredAfterEi) {
    const bytes program = {0xED, 0x56, 0x00, 0xFB, 0x00}; // IM 1; NOP; EI; NOP
    std::memcpy(machine.ram + 0x9000, program.data(), program.size());
    out(0xE6, 0x02);
    out(0xE4, 0x08);
    main_cpu.PC = 0x9000;
    main_cpu.SP = 0xB000;
    const auto step = [] {
        main_cpu.z80_step(main_cpu);
        machine.machine_step(machine, main_cpu);
        return main_cpu.trace_pc;
    };
    machine.interrupt_request1(main_cpu);
    machine.interrupt_request1(main_cpu);
    for (const int expected : {0x9000, 0x9002, 0x9003, 0x0038}) EXPECT_EQ(step(), expected);
    EXPECT_EQ(machine.interrupt_pending, 0);
    EXPECT_EQ(machine.ram[0xAFFE] | machine.ram[0xAFFF] << 8, 0x9004);
}

} // namespace
