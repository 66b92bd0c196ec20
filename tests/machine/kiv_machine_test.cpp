// Power-on, reset and the machine's own clock.
#include "machine_fixture.h"

#include "machine/machine_pass.h"

#include <random>

namespace {

class WholeMachine : public Machine {
  protected:
    // A machine that a wild program has been at. Ports of the tape output stay out: its file is not the
    // machine.
    static void disturb() {
        std::minstd_rand random(7);
        for (int i = 0; i < 20000; ++i) {
            const int port = static_cast<int>(random() >> 8) & 0xFF;
            if ((port & 0xF1) != 0x20 && port != 0x50) out(port, static_cast<int>(random() >> 8));
            uint32_t wait = 0;
            mem_write(static_cast<uint16_t>(random() >> 8), static_cast<uint8_t>(random() >> 8), &wait);
            main_cpu.step_cycles = static_cast<uint32_t>(random() % 40);
            machine.machine_step(machine, main_cpu);
            machine.timing_tick(main_cpu.step_cycles);
        }
        out(0x51, 0x80); // cursor off
        out(0x51, 0x20); // display started
        machine.timing_tick(5);
        machine.interrupt_pending = 7;
        key_press('A');
    }
};

TEST_F(WholeMachine, PowerOnClearsEverything) {
    const auto fresh = snapshot();
    disturb();
    ASSERT_TRUE(cassette_set_output(path("out.cmt")));
    ASSERT_TRUE(cassette_load_tape(write_file("tape.cmt", {1, 2, 3})));
    machine_init(machine, fresh->video_lock, fresh->video_unlock);
    EXPECT_EQ(std::memcmp(&machine, fresh.get(), sizeof machine), 0);
    EXPECT_EQ(machine.tape_out_path[0], '\0');
}

TEST_F(WholeMachine, ResetTwiceIsResetOnce) {
    disturb();
    machine.machine_reset(machine);
    const auto once = snapshot();
    machine.machine_reset(machine);
    EXPECT_EQ(std::memcmp(&machine, once.get(), sizeof machine), 0);
}

TEST_F(WholeMachine, ResetKeepsWhatIsNotItsOwn) {
    disturb();
    machine.interlace = 1;
    machine.usart_discard_next = 1;
    ASSERT_TRUE(cassette_set_output(path("out.cmt")));
    ASSERT_TRUE(cassette_load_tape(write_file("tape.cmt", {1, 2, 3})));
    in(0x20);
    const auto before = snapshot();
    machine.machine_reset(machine);
    const auto expect_kept = [&before](const char *name, const auto &field) {
        const auto offset = reinterpret_cast<const char *>(&field) - reinterpret_cast<const char *>(&machine);
        const char *old = reinterpret_cast<const char *>(before.get()) + offset;
        EXPECT_EQ(std::memcmp(&field, old, sizeof field), 0) << name;
    };
    expect_kept("graphic planes", machine.gvram);
    expect_kept("glyphs", machine.font_work);
    expect_kept("PCG-8100", static_cast<const pcg8100_block &>(machine));
    expect_kept("settings", static_cast<const settings_block &>(machine));
    expect_kept("output path", machine.tape_out_path);
    expect_kept("tape", machine.tape_image);
    expect_kept("tape position", machine.tape_position);
    expect_kept("discard", machine.usart_discard_next);
}

TEST_F(WholeMachine, ResetGoesBackToPowerOn) {
    const auto fresh = snapshot();
    disturb();
    machine.machine_reset(machine);
    const auto expect_fresh = []<class block>(const char *name, const block &now, const block &first) {
        EXPECT_EQ(std::memcmp(&now, &first, sizeof now), 0) << name;
    };
    // What a reset leaves as it was.
    machine.usart_discard_next = 0;
    machine.dma_autoload = 0;
    expect_fresh("RAM", machine.ram, fresh->ram);
    expect_fresh.operator()<key_matrix_block>("keys", machine, *fresh);
    expect_fresh.operator()<system_port_block>("system ports", machine, *fresh);
    expect_fresh.operator()<calendar_block>("calendar", machine, *fresh);
    expect_fresh.operator()<cassette_block>("cassette", machine, *fresh);
    expect_fresh.operator()<usart_block>("USART", machine, *fresh);
    expect_fresh.operator()<dma_controller_block>("DMA", machine, *fresh);
    expect_fresh.operator()<interrupt_block>("interrupts", machine, *fresh);
    EXPECT_EQ(machine.crtc_status, fresh->crtc_status);
    EXPECT_EQ(machine.cursor_enabled, fresh->cursor_enabled);
    EXPECT_EQ(machine.line_clock, fresh->line_clock);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(machine.palette[i], i);
}

TEST_F(WholeMachine, PortsAfterPowerOn) {
    for (int row = 0; row < key_rows; ++row) EXPECT_EQ(in(row), 0xFF);
    EXPECT_EQ(in(0x40) & ~(status_standard_monitor | status_vrtc), 0x0C);
    for (const int port : {0x5C, 0x70, 0xE4, 0xE6}) EXPECT_EQ(in(port), 0x00) << hex{unsigned(port)};
    EXPECT_EQ(in(0x71), 0xFF);
    EXPECT_EQ(machine.port31, 0x31);
    EXPECT_EQ(machine.port10 | machine.port21 | machine.port30 | machine.port40, 0);
    EXPECT_EQ(machine.cycles_per_slice, 79872u);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(machine.palette[i], 0);
}

TEST_F(WholeMachine, RamWakesUpWithItsPattern) {
    for (const int half : {0x0000, 0x8000}) {
        for (int i = 0; i < 0x8000; ++i) {
            const int expected = i < 0x2000   ? (i & 1 ? 0xFF : 0x00)
                                 : i < 0x4000 ? (i & 1 ? 0x00 : 0xFF)
                                              : (i & 0x40 ? 0x00 : 0xFF);
            ASSERT_EQ(machine.ram[half + i], expected) << hex{static_cast<uint64_t>(half + i)};
        }
    }
}

TEST_F(WholeMachine, ClockInterruptComesAfter6656TStatesAndDropsTheRest) {
    static int requests;
    requests = 0;
    machine.interrupt_request2 = [](z80_cpu &) { ++requests; };
    const auto step = [](uint32_t cycles) {
        main_cpu.step_cycles = cycles;
        machine.machine_step(machine, main_cpu);
        return requests;
    };
    EXPECT_EQ(step(6656), 0);
    EXPECT_EQ(step(20), 1); // 19 too many
    EXPECT_EQ(step(6656), 1);
    machine.machine_reset(machine); // a reset does not restart the divider
    machine.interrupt_request2 = [](z80_cpu &) { ++requests; };
    EXPECT_EQ(step(1), 2);
}

// A program in RAM takes a tape's bytes by interrupt, as the deck feeds them.
TEST_F(WholeMachine, ProgramReadsATapeByInterrupt) {
    const bytes program = {
        0x31, 0x00, 0xB0,       // LD SP,B000
        0x3E, 0x90, 0xED, 0x47, // LD A,90; LD I,A
        0xED, 0x5E,             // IM 2
        0x21, 0x00, 0xA0,       // LD HL,A000
        0x3E, 0x00, 0xD3, 0x21, // mode
        0x3E, 0x04, 0xD3, 0x21, // receiver on
        0x3E, 0x08, 0xD3, 0xE4, // every level
        0xD3, 0x30,             // motor on
        0x3E, 0x04, 0xD3, 0xE6, // receive interrupt
        0xFB,                   // EI
        0x18, 0xFE,             // JR $
    };
    const bytes handler = {0xDB, 0x20, 0x77, 0x23,
                           0xFB, 0xED, 0x4D}; // IN A,(20); LD (HL),A; INC HL; EI; RETI
    std::memcpy(machine.ram + 0x9100, program.data(), program.size());
    std::memcpy(machine.ram + 0x9200, handler.data(), handler.size());
    machine.ram[0x9000] = 0x00;
    machine.ram[0x9001] = 0x92;
    ASSERT_TRUE(cassette_load_tape(write_file("tape.cmt", {0x11, 0x22, 0x33})));
    machine.cassette_set_stopped(1);
    main_cpu.PC = 0x9100;
    std::vector<uint64_t> arrivals;
    uint64_t now = 0;
    for (uint32_t i = 0; arrivals.size() < 5 && i < 100000; ++i) {
        ASSERT_NE(machine_pass(i, true), pass_outcome::stopped);
        now += main_cpu.step_cycles;
        if (main_cpu.trace_pc == 0x9200) arrivals.push_back(now);
    }
    for (uint32_t i = 0; i < 20; ++i) machine_pass(i, true);
    EXPECT_EQ(bytes(machine.ram + 0xA000, machine.ram + 0xA005), (bytes{0x11, 0x22, 0x33, 0x11, 0x22}));
    ASSERT_EQ(arrivals.size(), 5u);
    // The handler keeps the next byte waiting no longer than its own run.
    for (size_t i = 1; i < arrivals.size(); ++i)
        EXPECT_NEAR(double(arrivals[i] - arrivals[i - 1]), 33280, 40);
}

} // namespace
