// The CRT controller, its cursor, the DMA controller and the raster, through their ports and ticks.
#include "display_machine.h"

#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

class display_devices : public testing::Test {
  protected:
    void SetUp() override { power_on(); }
};
using crt_controller = display_devices;
using crt_cursor = display_devices;
using dma_controller = display_devices;
using video_timing = display_devices;

int renderer_selections, decoder_selections, timing_resets;

void count_selections() {
    renderer_selections = decoder_selections = timing_resets = 0;
    machine.select_renderer = [](uint32_t) { ++renderer_selections; };
    machine.select_attr_decoder = [](uint32_t) { ++decoder_selections; };
    machine.timing_reset = [] { ++timing_resets; };
}

TEST_F(crt_controller, DecodesTheFiveResetParameters) {
    crtc(0x00, {0xCE, 0x58, 0xE9, 0x72, 0x53});
    EXPECT_EQ(machine.crtc_width, 80);
    EXPECT_EQ(machine.crtc_burst, 0);
    EXPECT_EQ(machine.crtc_lines, 25);
    EXPECT_EQ(machine.cursor_blink_period, 32);
    EXPECT_EQ(machine.crtc_raster, 10) << "bits 7-5 do not count";
    EXPECT_EQ(machine.crtc_vrl, 4);
    EXPECT_EQ(machine.crtc_hrc, 0x13);
    EXPECT_EQ(machine.crtc_line_size, 80 + 2 * 20);
    crtc(0x1F, {0x7F, 0xFF, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(machine.crtc_width, 129);
    EXPECT_EQ(machine.crtc_burst, 1);
    EXPECT_EQ(machine.crtc_lines, 64);
    EXPECT_EQ(machine.crtc_raster, 32);
    EXPECT_EQ(machine.crtc_vrl, 8);
    EXPECT_EQ(machine.crtc_hrc, 32);
    EXPECT_EQ(machine.crtc_line_size, 129) << "mode 7 has no attributes";
}

TEST_F(crt_controller, AttributeModesDecideTheFlagsAndTheRowSize) {
    struct {
        int mode;
        std::string flags; // on, mono, transparent, special
        int row_size;      // 80 characters, 3 pairs
    } const cases[] = {{0, "1111", 86}, {1, "0100", 80}, {2, "1011", 86}, {3, "0100", 80},
                       {4, "1101", 88}, {5, "1100", 86}, {6, "0100", 80}, {7, "0100", 80}};
    for (const auto &c : cases) {
        crtc(0x00, {0x4E, 0x18, 0x09, 0x00, c.mode << 5 | 2});
        std::string flags;
        for (const uint8_t flag : {machine.crtc_attr_on, machine.crtc_attr_mono,
                                   machine.crtc_attr_transparent, machine.crtc_attr_special})
            flags += static_cast<char>('0' + flag);
        EXPECT_EQ(flags, c.flags) << "attribute mode " << c.mode;
        EXPECT_EQ(machine.crtc_line_size, c.row_size) << "attribute mode " << c.mode;
    }
}

TEST_F(crt_controller, CommandsMoveTheParameterStateAndTheStatus) {
    crtc(0x20);
    EXPECT_EQ(machine.crtc_status, 0);
    machine.dma_stall = 7;
    machine.dma_remaining = 9;
    crtc(0x00);
    EXPECT_EQ(machine.crtc_state, 1);
    EXPECT_EQ(machine.crtc_status, crtc_stopped);
    EXPECT_EQ(machine.dma_stall + machine.dma_remaining, 0u);
    for (const int ignored : {0x40, 0x60, 0xA0, 0xC0, 0xFF}) {
        crtc(0x00, {0x4E});
        crtc(ignored, {0x00, 0x00});
        EXPECT_EQ(machine.crtc_state, 0) << "command " << std::hex << ignored;
        EXPECT_EQ(machine.crtc_param_index, 2) << "command " << std::hex << ignored;
        EXPECT_EQ(machine.crtc_width, 80) << "command " << std::hex << ignored;
    }
    out(0x53, {0xFF});
    crtc(0x21);
    EXPECT_EQ(machine.crtc_reverse, 1);
    EXPECT_EQ(machine.crtc_status, crtc_text_off);
    out(0x53, {0xFE});
    crtc(0x20);
    EXPECT_EQ(machine.crtc_reverse, 0);
    EXPECT_EQ(machine.crtc_status, 0);
}

TEST_F(crt_controller, RowCountSelectsRendererAndRestartsTheRasterOnlyWhenItChanges) {
    out(0x30, {0x01});
    machine.raster_line = 77;
    crtc(0x00, {0x4E, 0x18});
    EXPECT_EQ(machine.raster_line, 77u) << "25 after 25 rows";
    crtc(0x00, {0x4E, 0x13});
    EXPECT_EQ(machine.raster_line, 0u);
    EXPECT_EQ(machine.vblank_clocks, 6434u);
    EXPECT_EQ(machine.screen_mode, 2u);
    EXPECT_EQ(machine.renderer_table[renderer_text8].load(),
              machine.renderer_table[renderer_text8_modes + 2].load());
    EXPECT_EQ(machine.renderer_table[renderer_text32].load(),
              machine.renderer_table[renderer_text32_modes + 2].load());
    count_selections();
    crtc(0x00, {0x4E, 0xD3}); // 20 rows again, another blink rate
    EXPECT_EQ(renderer_selections + timing_resets, 0);
    EXPECT_EQ(machine.cursor_blink_period, 64);
}

TEST_F(crt_controller, Port30ActsOnChangedBitsOnly) {
    count_selections();
    out(0x30, {0x03, 0x03}); // 80 columns; monochrome as after reset
    EXPECT_EQ(renderer_selections, 1);
    EXPECT_EQ(decoder_selections, 0);
    EXPECT_EQ(machine.screen_mode, 3u);
    out(0x30, {0xFD, 0x01}); // colour
    EXPECT_EQ(renderer_selections, 1);
    EXPECT_EQ(decoder_selections, 1);
    EXPECT_EQ(machine.crtc_mono, 0);
}

TEST_F(crt_controller, TooManyParametersDoNothing) {
    for (const int command : {0x00, 0x40, 0x80}) {
        power_on();
        crtc(command, {0xCE, 0x18, 0x09, 0x00, 0x53});
        const auto before = std::make_unique<kiv_machine>(machine);
        for (int i = 5; i < 65537; ++i) io_out(0x50, 0x11);
        before->crtc_state = 0;
        before->crtc_param_index = 1;
        EXPECT_EQ(machine.crtc_param_index, 1) << "65,537 bytes after command " << std::hex << command;
        EXPECT_EQ(std::memcmp(&machine, before.get(), sizeof machine), 0)
            << "command " << std::hex << command;
    }
}

TEST_F(crt_controller, WritesItsStateToTheErrorStream) {
    const std::string expected =
        "DMA - burst:'C',\n"
        "CRTC - width:80, lines:25, Raster/Char: 8, VRL:3, HRC:31\n"
        "CRTC - attribute:en, transparent:en, color:color, sp:en, size:20, line-size:120\n";
    std::string got;
    // Other tests may have used up this second's lines.
    for (int attempt = 0; attempt < 4 && got.find(expected) == std::string::npos; ++attempt) {
        if (attempt > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        testing::internal::CaptureStderr();
        crtc(0x00, {0xCE, 0x98, 0x07, 0x5E, 0x53});
        got = testing::internal::GetCapturedStderr();
    }
    EXPECT_NE(got.find(expected), std::string::npos) << got;
}

TEST_F(crt_cursor, MovesAndShowsItself) {
    struct {
        const char *what;
        int command, x, y;
        int shown_x, shown_y, phase; // from 10, 5 and a dark phase
    } const cases[] = {
        {"off: moves, stays dark", 0x80, 40, 8, 40, 8, 0},
        {"on, another row", 0x81, 40, 8, 40, 8, 1},
        {"on, another column", 0x81, 40, 5, 40, 5, 1},
        {"on, the same place", 0x81, 10, 5, 10, 5, 0},
        {"on, high bits do not count", 0x81, 0x80 | 10, 0xC0 | 5, 10, 5, 0},
    };
    for (const auto &c : cases) {
        crtc(0x80, {10, 5});
        machine.cursor_phase = uint8_t{0};
        crtc(c.command, {c.x, c.y});
        EXPECT_EQ(machine.cursor_x, c.shown_x) << c.what;
        EXPECT_EQ(machine.cursor_y, c.shown_y) << c.what;
        EXPECT_EQ(machine.cursor_phase, c.phase) << c.what;
        EXPECT_EQ(machine.cursor_enabled, c.command & 1) << c.what;
        EXPECT_EQ(machine.crtc_state, 0) << c.what;
    }
}

TEST_F(dma_controller, TwoBytesMakeARegister) {
    out(0x68, {0x04});
    for (uint8_t channel = 0; channel < 4; ++channel) {
        const auto port = static_cast<uint8_t>(0x60 + 2 * channel);
        out(port, {0x34});
        EXPECT_EQ(machine.dma_channels[channel].address, 0) << "half an address, channel " << int{channel};
        out(port, {0x12});
        out(static_cast<uint8_t>(port + 1), {0xFF, 0xBF});
        const dma_channel &c = machine.dma_channels[channel];
        EXPECT_EQ(c.address, 0x1234) << int{channel};
        EXPECT_EQ(c.terminal_count, 0x4000) << int{channel};
        EXPECT_EQ(c.terminal_count_copy, 0x4000) << int{channel};
        EXPECT_EQ(c.transfer_mode, 2) << int{channel};
    }
    out(0x64, {0x56});
    out(0x68, {0x04}); // the flip-flops start again
    out(0x64, {0x78, 0x9A});
    EXPECT_EQ(machine.dma_channels[2].address, 0x9A78);
    EXPECT_EQ(machine.dma_channels[3].address, 0x1234) << "without autoload channel 3 keeps its own";
}

TEST_F(dma_controller, Channel2IsTheTextWindowAndAutoloadCopiesIt) {
    struct {
        int address, count_bytes;
        uint32_t start, end, size; // count_bytes < 0: only the address is written
    } const cases[] = {
        {0xF3C8, 0x8BB7, 0xF3C8, 0xFF80, 0xBB8},   {0x1000, -1, 0x1000, 0xFF80, 0xEF80},
        {0xFF80, -1, 0xFF80, 0xFF80, 0},           {0xFFFF, -1, 0xFFFF, 0xFF80, 0},
        {0xF000, 0xFFFF, 0xF000, 0x13000, 0x4000}, {0x0000, 0x0000, 0x0000, 0x0001, 1},
    };
    out(0x68, {0x84});
    for (const auto &c : cases) {
        out(0x64, {c.address & 0xFF, c.address >> 8});
        if (c.count_bytes >= 0) out(0x65, {c.count_bytes & 0xFF, c.count_bytes >> 8});
        EXPECT_EQ(machine.text_start, c.start) << std::hex << c.address;
        EXPECT_EQ(machine.text_end, c.end) << std::hex << c.address;
        EXPECT_EQ(machine.text_window_size, c.size) << std::hex << c.address;
        EXPECT_EQ(machine.dma_channels[3].address, c.start) << std::hex << c.address;
        EXPECT_EQ(machine.dma_channels[3].terminal_count, machine.dma_channels[2].terminal_count);
    }
}

TEST_F(dma_controller, ModeBit2SwitchesTheTextLayer) {
    crtc(0x20);
    machine.dma_stall = 99;
    out(0x68, {0x80});
    EXPECT_EQ(machine.crtc_status, crtc_dma_off);
    EXPECT_EQ(machine.dma_stall, 0u);
    EXPECT_EQ(machine.dma_autoload, 1);
    machine.dma_stall = 99;
    out(0x68, {0x44});
    EXPECT_EQ(machine.crtc_status, 0);
    EXPECT_EQ(machine.dma_stall, 99u);
    EXPECT_EQ(machine.dma_ch2_enable, 4);
    EXPECT_EQ(machine.dma_autoload, 0);
}

// Whatever the lengths of the ticks, an event comes with the first tick that reaches its time.
TEST_F(video_timing, FramesKeepTheirLengthOverAnyTicks) {
    struct {
        uint32_t standard;
        int rows;
        uint64_t shown, blank; // T-states
    } const cases[] = {{1, 25, 200 * 250, 13994},
                       {1, 20, 200 * 250, 14996},
                       {0, 25, 400 * 161, 7720},
                       {0, 20, 400 * 161, 6434}};
    random_numbers random{std::mt19937(5)};
    for (const auto &c : cases)
        for (const uint32_t longest : {1u, 4u, 23u, 160u}) {
            power_on();
            machine.crt_standard = c.standard;
            start_display(c.rows);
            machine.timing_reset();
            uint64_t now = 0, due = c.shown;
            for (int events = 0; events < 6;) {
                const uint32_t clocks = longest == 1 ? 1 : 1 + random() % longest;
                now += clocks;
                const uint32_t event = machine.timing_tick(clocks);
                const bool blank = events % 2 == 0; // that is due
                const uint32_t expected = now < due ? timing_nothing
                                          : blank   ? timing_vblank_begins
                                                    : timing_vblank_ends;
                ASSERT_EQ(event, expected)
                    << "standard " << c.standard << ", rows " << c.rows << ", ticks to " << longest
                    << ", T-state " << now << ", due " << due;
                if (now < due) continue;
                EXPECT_EQ(io_in(0x40) & 0x22, (blank ? 0x20 : 0) | (c.standard ? 0x02 : 0));
                ++events;
                due += blank ? c.blank : c.shown;
            }
            EXPECT_EQ(machine.frame_count, 3u);
        }
}

TEST_F(video_timing, TheDmaTakesItsClocksByteByByteOrInBursts) {
    struct {
        const char *what;
        int width_byte, pairs_byte;
        std::vector<uint32_t> steps; // stall after each of the first ticks
        uint32_t all, ticks;         // stall when the row is fetched, and after how many ticks
    } const cases[] = {
        {"character mode, 120 bytes", 0xCE, 0x53, {5, 11, 16, 22}, 660, 120},
        {"character mode, 3 bytes", 0x81, 0x20, {6, 11, 17}, 17, 3},
        {"burst mode, 120 bytes", 0x4E, 0x53, {660}, 660, 1},
        {"burst mode, 3 bytes", 0x01, 0x20, {11}, 11, 1},
    };
    for (const auto &c : cases) {
        power_on();
        crtc(0x00, {c.width_byte, 0x18, 0x07, 0x00, c.pairs_byte});
        out(0x68, {0x04});
        crtc(0x20);
        machine.timing_reset();
        for (size_t i = 0; i < c.steps.size(); ++i) {
            machine.timing_tick(1);
            EXPECT_EQ(machine.dma_stall, c.steps[i]) << c.what << ", tick " << i;
        }
        for (size_t i = c.steps.size(); i < c.ticks + 5; ++i) machine.timing_tick(1);
        EXPECT_EQ(machine.dma_stall, c.all) << c.what;
        machine.timing_reset();
        machine.timing_tick(1);
        out(0x68, {0x00});
        machine.timing_tick(1);
        EXPECT_EQ(machine.dma_stall + machine.dma_remaining, 0u) << c.what << ", channel 2 off";
    }
}

TEST_F(video_timing, ARowIsAskedForEveryRasterLinesOfACharacter) {
    start_display(25); // 8 raster lines a row
    machine.timing_reset();
    std::vector<uint32_t> asked;
    for (uint32_t line = 0; line < machine.display_lines; ++line) {
        machine.timing_tick(1);
        if (machine.dma_remaining != 0) asked.push_back(line);
        for (int i = 0; i < 160; ++i) machine.timing_tick(1);
    }
    ASSERT_EQ(asked.size(), 50u);
    for (size_t i = 0; i < asked.size(); ++i) EXPECT_EQ(asked[i], 8 * i);
    EXPECT_EQ(machine.vrtc, 1);
    EXPECT_EQ(machine.dma_stall, 0u) << "no debt is carried into the vertical blank";
}

TEST_F(video_timing, AnUnderrunIsReportedAndTheRowAskedForAgain) {
    crtc(0x00, {0xCE, 0x98, 0x00, 0x00, 0x53}); // one raster line a row
    out(0x68, {0x04});
    crtc(0x20);
    std::string got;
    for (int attempt = 0; attempt < 4 && got.empty(); ++attempt) {
        if (attempt > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1100));
        machine.timing_reset();
        testing::internal::CaptureStderr();
        machine.timing_tick(161); // fetches one byte of 120
        machine.timing_tick(1);
        got = testing::internal::GetCapturedStderr();
    }
    EXPECT_NE(got.find("DMA under-run occured!!!\n"), std::string::npos) << got;
    EXPECT_EQ(machine.dma_remaining, 119);
}

TEST_F(video_timing, BlinkPhasesFollowTheFrames) {
    for (int rate = 0; rate < 4; ++rate) {
        crtc(0x00, {0x4E, rate << 6 | 0x18});
        const uint32_t cycle = 16u * (static_cast<uint32_t>(rate) + 1);
        for (int frame = 0; frame < 300; ++frame) {
            machine.blink_tick();
            const uint32_t n = machine.frame_count;
            ASSERT_EQ(machine.cursor_phase, n % cycle < cycle / 2) << "rate " << rate << ", frame " << n;
            ASSERT_EQ(machine.attr_blink_phase, n % (2 * cycle) < cycle * 3 / 2)
                << "rate " << rate << ", frame " << n;
        }
    }
}

TEST_F(display_devices, ResetTwiceIsResetOnce) {
    random_numbers random{std::mt19937(7)};
    for (int i = 0; i < 20000; ++i) {
        constexpr uint8_t ports[] = {0x30, 0x50, 0x51, 0x53, 0x60, 0x61, 0x64, 0x65, 0x68};
        io_out(ports[random() % sizeof ports], random.byte());
        machine.timing_tick(random() % 24);
    }
    machine.machine_reset(machine);
    const auto once = std::make_unique<kiv_machine>(machine);
    machine.machine_reset(machine);
    EXPECT_EQ(std::memcmp(&machine, once.get(), sizeof machine), 0);
    EXPECT_EQ(machine.text_start, 0xF3C8u);
    EXPECT_EQ(machine.text_end, 0xFF80u);
    EXPECT_EQ(machine.crtc_raster, 10);
    EXPECT_EQ(machine.crtc_status, crtc_stopped);
    EXPECT_EQ(machine.cursor_blink_period, 48);
    EXPECT_EQ(machine.vblank_clocks, 7720u);
}

} // namespace
