// Power-on, reset and the machine's own clock.
#include "machine_fixture.h"

#include "machine/machine_pass.h"

#include <random>
#include <typeinfo>

namespace {

using WholeMachine = Machine;

template <class... blocks> void expect_blocks(const kiv_machine &as_in) {
    const auto same = []<class block>(const block &now, const block &then) {
        EXPECT_EQ(std::memcmp(&now, &then, sizeof(block)), 0) << typeid(block).name();
    };
    (same.template operator()<blocks>(machine, as_in), ...);
}

TEST_F(WholeMachine, ResetAndPowerOnAfterAWildProgram) {
    for (int i = 0; i < 0x10000; ++i) {
        const bool odd = i & 1, bit6 = i & 0x40;
        const bool ones = i % 0x8000 < 0x2000 ? odd : i % 0x8000 < 0x4000 ? !odd : !bit6;
        ASSERT_EQ(machine.ram[i], ones ? 0xFF : 0x00) << std::hex << i;
    }
    EXPECT_EQ(in(0x40) & ~(status_standard_monitor | status_vrtc), 0x0C);
    EXPECT_EQ(machine.port31, 0x31);
    EXPECT_EQ(machine.cycles_per_slice, 79872u);
    const auto fresh = snapshot();

    ASSERT_TRUE(cassette_set_output(folder / "out"));
    insert_tape({1, 2, 3});
    std::memset(machine.ram, 0x5A, ram_size);
    std::memset(machine.gvram, 0x5A, sizeof machine.gvram);
    std::minstd_rand random(7);
    const auto number = [&random] { return static_cast<int>(random() >> 8); };
    for (int i = 0; i < 20000; ++i) {
        const int port = number();
        if ((port & 0xFF) != 0x50) out(port, number()); // parameters make the CRT controller talk
        pass(static_cast<uint32_t>(number() % 40));
        machine.timing_tick(main_cpu.step_cycles);
    }
    // Cursor off, display started, ROM mode, receiver on.
    out({{0x51, 0x80}, {0x51, 0x20}, {0x31, 0x39}, {0x21, 0x4E}, {0x21, 0x04}, {0x21, 0x04}});
    machine.timing_tick(5);
    machine.interrupt_pending = 7;
    machine.interlace = machine.usart_discard_next = 1;
    key_press('A');
    const auto before = snapshot();

    machine.machine_reset(machine);
    expect_blocks<pcg8100_block, pcg_switch_block, settings_block, tape_output_block>(*before);
    EXPECT_EQ(std::memcmp(machine.gvram, before->gvram, sizeof machine.gvram), 0);
    EXPECT_EQ(std::memcmp(machine.font_work, before->font_work, sizeof machine.font_work), 0);
    const auto expected = std::make_unique<kiv_machine>(*fresh);
    expected->tape_image = before->tape_image;
    expected->tape_size = before->tape_size;
    expected->tape_position = before->tape_position;
    expected->usart_discard_next = 1;
    expected->dma_autoload = before->dma_autoload;
    expect_blocks<key_matrix_block, system_port_block, calendar_block, cassette_block, usart_block,
                  dma_controller_block, interrupt_block>(*expected);
    EXPECT_EQ(std::memcmp(machine.ram, fresh->ram, ram_size), 0);
    EXPECT_EQ(machine.crtc_status, fresh->crtc_status);
    EXPECT_EQ(machine.cursor_enabled, fresh->cursor_enabled);
    EXPECT_EQ(machine.line_clock, fresh->line_clock);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(machine.palette[i], i);
    const auto once = snapshot();
    machine.machine_reset(machine);
    EXPECT_EQ(std::memcmp(&machine, once.get(), sizeof machine), 0) << "a second reset changes something";

    machine_init(machine, see, see);
    EXPECT_EQ(std::memcmp(&machine, fresh.get(), sizeof machine), 0) << "power-on leaves something";
}

TEST_F(WholeMachine, ClockInterruptComesAfter6656TStatesAndDropsTheRest) {
    static int requests;
    requests = 0;
    const auto after = [](uint32_t cycles) {
        machine.interrupt_request_clock = [](z80_cpu &) { ++requests; };
        pass(cycles);
        return requests;
    };
    EXPECT_EQ(after(6656), 0);
    EXPECT_EQ(after(20), 1); // 19 too many
    EXPECT_EQ(after(6656), 1);
    machine.machine_reset(machine);
    EXPECT_EQ(after(1), 2) << "a reset restarted the divider";
}

// A program takes a tape's bytes by interrupt, as the deck feeds them.
TEST_F(WholeMachine, ProgramReadsATapeByInterrupt) {
    const bytes loop = {0xFB, 0x18, 0xFE};                      // EI; JR $
    const bytes handler = {0xDB, 0x20, 0x77, 0x23, 0xFB, 0xC9}; // IN A,(20); LD (HL),A; INC HL; EI; RET
    std::memcpy(machine.ram + 0x9100, loop.data(), loop.size());
    std::memcpy(machine.ram + 0x9200, handler.data(), handler.size());
    machine.ram[0x9000] = 0x00;
    machine.ram[0x9001] = 0x92;
    main_cpu.PC = 0x9100, main_cpu.SP = 0xB000, main_cpu.HL = 0xA000, main_cpu.IM = 2, main_cpu.I = 0x90;
    insert_tape({0x11, 0x22, 0x33});
    machine.cassette_set_stopped(1);
    out({{0xE4, 0x08}, {0xE6, 0x04}, {0x30, 0x08}});
    uint32_t now = 0;
    for (uint32_t i = 0; machine.ram[0xA004] != 0x22 && i < 100000; ++i) {
        ASSERT_NE(machine_pass(i, true), pass_outcome::stopped);
        now += main_cpu.step_cycles;
    }
    EXPECT_EQ(bytes(machine.ram + 0xA000, machine.ram + 0xA005), (bytes{0x11, 0x22, 0x33, 0x11, 0x22}));
    EXPECT_NEAR(now, 5 * 33280, 500); // the handler takes its time
}

} // namespace
