// Every mask, threshold, pending word and answer of the CPU, against the rules put as sentences.
#include "machine_fixture.h"

namespace {

using Interrupts = Machine;

TEST_F(Interrupts, RequestsAndServiceFollowMaskAndThreshold) {
    static uint32_t answer;
    static std::vector<int> offered;
    z80_cpu cpu{};
    cpu.z80_interrupt = [](z80_cpu &, uint8_t level) { return offered.push_back(level), answer; };
    void (*const operations[4])(z80_cpu &) = {machine.interrupt_request_usart, machine.interrupt_request_vrtc,
                                              machine.interrupt_request_clock, machine.interrupt_service};
    constexpr int service = 3, mask_bits[3] = {0x04, 0x02, 0x01};
    for (int i = 0; i < 4 * 8 * 16 * 8 * 2; ++i) {
        const int operation = i % 4, pending = i / 4 % 8, threshold = i / 32 % 16, mask = i / 512 % 8;
        answer = static_cast<uint32_t>(i / 4096);             // 1: the CPU refuses
        out({{0xE6, mask | 0xF8}, {0xE4, threshold | 0xF0}}); // the upper bits mean nothing
        machine.interrupt_pending = static_cast<uint16_t>(pending);
        offered.clear();
        operations[operation](cpu);

        // Service looks at the lowest pending level only.
        const int level = operation != service ? operation : pending & 1 ? 0 : pending & 2 ? 1 : 2;
        const bool was = (pending >> level & 1) != 0, enabled = (mask & mask_bits[level]) != 0;
        const bool passes = enabled && (threshold >= 8 || level < threshold);
        // Retrace and clock are asked once at a time and wait only for a refusing CPU; the USART waits until
        // its byte is taken.
        const bool asked = passes && (operation == service ? was : level == 0 || !was);
        const bool stays = operation == service ? was && (asked ? answer != 0 : enabled || level == 0)
                                                : was || (asked ? answer != 0 : level == 0);
        const auto where = testing::Message()
                           << "operation " << operation << " mask " << mask << " threshold " << threshold
                           << " pending " << pending << " answer " << answer;
        EXPECT_EQ(machine.interrupt_pending, stays ? pending | 1 << level : pending & ~(1 << level)) << where;
        EXPECT_EQ(offered, asked ? std::vector<int>{level} : std::vector<int>{}) << where;
    }
}

} // namespace
