// The CRT controller, its cursor, the DMA controller and the raster, through their ports and ticks.
#include "display_machine.h"
#include "support/log.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

class DisplayDevices : public testing::Test {
  protected:
    void SetUp() override { power_on(); }
};
using CrtController = DisplayDevices;
using VideoTiming = DisplayDevices;

template <class... Numbers> std::string text_of(const char *format, Numbers... numbers) {
    char text[200];
    std::snprintf(text, sizeof text, format, numbers...);
    return text;
}

int renderers, decoders, rasters; // chosen, chosen, restarted

std::string crtc_state() { // parameters expected and received, crtc_status, ...
    return text_of("%d/%d, status %d, reverse %d, mode %u, chosen %d%d%d", machine.crtc_state,
                   machine.crtc_param_index, machine.crtc_status.load(), machine.crtc_reverse.load(),
                   machine.screen_mode, renderers, decoders, rasters);
}

std::string cursor_state() {
    return text_of("%d,%d, %s, phase %d, parameters %d", machine.cursor_x.load(), machine.cursor_y.load(),
                   machine.cursor_enabled == 1 ? "on" : "off", machine.cursor_phase.load(),
                   machine.crtc_state);
}

std::string dma_state() { // channels 2 and 3: address, terminal count; then the text window
    const dma_channel &two = machine.dma_channels[2], &three = machine.dma_channels[3];
    return text_of("%04X+%04X, %04X+%04X, %04X-%04X is %X", two.address, two.terminal_count, three.address,
                   three.terminal_count_copy, machine.text_start.load(), machine.text_end,
                   machine.text_window_size);
}

std::string dma_debt() {
    return text_of("status %d, enable %d, autoload %d, owed %u and %d", machine.crtc_status.load(),
                   machine.dma_ch2_enable, machine.dma_autoload, machine.dma_stall, machine.dma_remaining);
}

std::string state_after_reset() {
    machine.machine_reset(machine);
    return text_of("owed %u, reverse %d, phase %d, raster %d, row %d, burst %d, status %d, cursor %d, blink "
                   "%d/%d %d/%d, chosen %d%d%d",
                   machine.dma_stall, machine.crtc_reverse.load(), machine.cursor_phase.load(),
                   machine.crtc_raster, machine.crtc_line_size, machine.crtc_burst,
                   machine.crtc_status.load(), machine.cursor_enabled.load(), machine.cursor_blink_on,
                   machine.cursor_blink_period, machine.attr_blink_on, machine.attr_blink_period, renderers,
                   decoders, rasters);
}

TEST_F(DisplayDevices, PortsMakeTheState) {
    const std::vector<int> too_many(65538, 0x50); // the port, and 65,537 bytes
    const struct {
        std::string (*state)();
        std::vector<std::vector<int>> writes; // each a port and the bytes for it
        std::string result;
    } cases[] = {
        {crtc_state, {{0x51, 0x20}}, "0/0, status 0, reverse 0, mode 0, chosen 000"},
        {crtc_state, {{0x51, 0x3F}, {0x53, 0xFF}}, "0/0, status 1, reverse 1, mode 0, chosen 000"},
        {crtc_state,
         {{0x51, 0x21, 0x20}, {0x53, 0xFF, 0xFE}},
         "0/0, status 0, reverse 0, mode 0, chosen 000"},
        {crtc_state, {{0x51, 0x20, 0x1F}, {0x50, 0x4E}}, "1/1, status 2, reverse 0, mode 0, chosen 000"},
        {crtc_state, {{0x51, 0x00, 0x40}, {0x50, 1, 1}}, "0/2, status 2, reverse 0, mode 0, chosen 000"},
        {crtc_state, {{0x51, 0x00}, too_many}, "0/1, status 2, reverse 0, mode 0, chosen 101"},
        {crtc_state, {{0x51, 0x80}, too_many}, "0/1, status 2, reverse 0, mode 0, chosen 000"},
        // 25 rows as after reset; 20 rows; 20 rows again, also with 80 columns.
        {crtc_state, {{0x51, 0x00}, {0x50, 0x4E, 0xD8}}, "1/2, status 2, reverse 0, mode 0, chosen 000"},
        {crtc_state, {{0x51, 0x00}, {0x50, 0x4E, 0x13}}, "1/2, status 2, reverse 0, mode 0, chosen 101"},
        {crtc_state,
         {{0x51, 0}, {0x50, 0, 0x13}, {0x51, 0}, {0x50, 0, 0xD3}},
         "1/2, status 2, reverse 0, mode 0, chosen 101"},
        {crtc_state, {{0x30, 3}, {0x51, 0}, {0x50, 0, 0x13}}, "1/2, status 2, reverse 0, mode 2, chosen 201"},
        {crtc_state,
         {{0x51, 0x00, 0x20}, {0x50, 0x4E, 0x13}},
         "0/2, status 0, reverse 0, mode 0, chosen 000"},
        // Columns and attributes: each acts when its bit changes.
        {crtc_state, {{0x30, 0x03, 0x03}}, "0/2, status 2, reverse 0, mode 3, chosen 100"},
        {crtc_state, {{0x30, 0x03, 0xFD, 0x01}}, "0/2, status 2, reverse 0, mode 3, chosen 110"},
        // From 10, 5, off, in the dark phase.
        {cursor_state, {{0x51, 0x80}, {0x50, 40, 8}}, "40,8, off, phase 0, parameters 0"},
        {cursor_state, {{0x51, 0x81}, {0x50, 40, 8}}, "40,8, on, phase 1, parameters 0"},
        {cursor_state, {{0x51, 0x81}, {0x50, 40, 5}}, "40,5, on, phase 1, parameters 0"},
        {cursor_state, {{0x51, 0x81}, {0x50, 100, 0x3F}}, "100,63, on, phase 1, parameters 0"},
        {cursor_state, {{0x51, 0x81}, {0x50, 10}}, "10,5, on, phase 0, parameters 5"},
        {cursor_state, {{0x51, 0x9F}, {0x50, 0x80 | 10, 0xC0 | 5}}, "10,5, on, phase 0, parameters 0"},
        // Low byte first; the mode starts the pairs again.
        {dma_state, {{0x64, 0x34}}, "0000+0000, 0000+0000, F3C8-FF80 is BB8"},
        {dma_state, {{0x64, 0x34}, {0x68, 4}, {0x64, 0x78, 0x9A}}, "9A78+0000, 0000+0000, 9A78-FF80 is 6508"},
        {dma_state,
         {{0x65, 0x34}, {0x68, 4}, {0x65, 0x78, 0x1A}},
         "0000+1A79, 0000+0000, F3C8-10E41 is 1A79"},
        {dma_state, {{0x66, 0x34, 0x12}, {0x67, 0xFF, 0xBF}}, "0000+0000, 1234+4000, F3C8-FF80 is BB8"},
        // Channel 2 is the text window, and autoload copies it to channel 3.
        {dma_state, {{0x64, 0xC8, 0xF3}, {0x65, 0xB7, 0x8B}}, "F3C8+0BB8, 0000+0000, F3C8-FF80 is BB8"},
        {dma_state,
         {{0x68, 0x84}, {0x64, 0, 0xF0}, {0x65, 0xFF, 0xFF}},
         "F000+4000, F000+4000, F000-13000 is 4000"},
        {dma_state, {{0x64, 0x00, 0x10}}, "1000+0000, 0000+0000, 1000-FF80 is EF80"},
        {dma_state, {{0x64, 0xFF, 0xFF}}, "FFFF+0000, 0000+0000, FFFF-FF80 is 0"},
        {dma_state, {{0x64, 0, 0}, {0x65, 0, 0}}, "0000+0001, 0000+0000, 0000-0001 is 1"},
        {dma_debt, {{0x68, 0x80}}, "status 6, enable 0, autoload 1, owed 0 and 99"},
        {dma_debt, {{0x68, 0x80, 0x44}}, "status 2, enable 4, autoload 0, owed 0 and 99"},
        {dma_debt, {{0x68, 0xFF}, {0x51, 0x20}}, "status 0, enable 4, autoload 1, owed 99 and 99"},
        {dma_debt, {{0x51, 0x00}}, "status 2, enable 0, autoload 0, owed 0 and 0"},
        {state_after_reset,
         {{0x53, 1}, {0x51, 0}, {0x50, 0x4E, 0xD3, 0x07, 0, 0x53}, {0x51, 0x21, 0x80}, {0x68, 0x44}},
         "owed 0, reverse 0, phase 1, raster 10, row 0, burst 0, status 2, cursor 1, blink 24/48 72/96, "
         "chosen 102"},
        {state_after_reset,
         {{0x68, 0x44}},
         "owed 0, reverse 0, phase 1, raster 10, row 0, burst 0, status 2, cursor 1, blink 24/48 72/96, "
         "chosen 001"},
    };
    for (const auto &c : cases) {
        power_on();
        crtc(0x80, {10, 5});
        machine.cursor_phase = uint8_t{0};
        machine.dma_stall = machine.dma_remaining = 99;
        renderers = decoders = rasters = 0;
        machine.select_renderer = [](uint32_t mode) { renderers += mode == machine.screen_mode; };
        machine.select_attr_decoder = [](uint32_t mono) { decoders += mono == machine.crtc_mono; };
        machine.timing_reset = [] { ++rasters; };
        for (const std::vector<int> &w : c.writes)
            for (size_t i = 1; i < w.size(); ++i) out(static_cast<uint8_t>(w[0]), {w[i]});
        EXPECT_EQ(c.state(), c.result) << "case " << &c - cases;
    }
}

// What the devices say while `act` runs; `lines` when they are among it.
std::string printed(const std::string &lines, const std::function<void()> &act) {
    static std::string got;
    got.clear();
    set_log_sink([](log_kind, const char *text) { got += text; });
    act();
    set_log_sink(nullptr);
    return got.find(lines) == std::string::npos ? got : lines;
}

TEST_F(CrtController, TellsWhatItMadeOfTheResetParameters) {
    const struct {
        int bytes[5];
        std::string lines;
    } cases[] = {
        {{0xCE, 0x58, 0xE9, 0x72, 0x53},
         "DMA - burst:'C',\nCRTC - width:80, lines:25, Raster/Char: 10, VRL:4, HRC:19\n"
         "CRTC - attribute:en, transparent:en, color:color, sp:en, size:20, line-size:120\n"},
        {{0x7F, 0xFF, 0xFF, 0xFF, 0x9F},
         "DMA - burst:'B',\nCRTC - width:129, lines:64, Raster/Char: 32, VRL:8, HRC:32\n"
         "CRTC - attribute:en, transparent:dis, color:mono, sp:en, size:32, line-size:195\n"},
    };
    for (const auto &c : cases) {
        const int *const b = c.bytes;
        EXPECT_EQ(printed(c.lines, [b] { crtc(0x00, {b[0], b[1], b[2], b[3], b[4]}); }), c.lines);
    }
    std::string modes; // their flags, and a row of 80 characters with 3 pairs
    for (int mode = 0; mode < 8; ++mode) {
        crtc(0x00, {0x4E, 0x18, 0x09, 0x00, mode << 5 | 2});
        modes += text_of(" %d%d%d%d %d", machine.crtc_attr_on, machine.crtc_attr_mono,
                         machine.crtc_attr_transparent, machine.crtc_attr_special, machine.crtc_line_size);
    }
    EXPECT_EQ(modes, " 1111 86 0100 80 1011 86 0100 80 1101 88 1100 86 0100 80 0100 80");
}

// Whatever the lengths of the ticks, an event comes with the first tick that reaches its time.
TEST_F(VideoTiming, FramesKeepTheirLengthOverAnyTicks) {
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
            machine.timing_reset();
            start_display(c.rows);
            uint64_t now = 0, due = c.shown;
            for (uint32_t events = 0; events < 6;) {
                const uint32_t clocks = 1 + random() % longest;
                now += clocks;
                const uint32_t next = events % 2 == 0 ? timing_vblank_begins : timing_vblank_ends;
                ASSERT_EQ(machine.timing_tick(clocks), now < due ? timing_nothing : next)
                    << "standard " << c.standard << ", rows " << c.rows << ", T-state " << now;
                if (now < due) continue;
                EXPECT_EQ(io_in(0x40) & 0x22,
                          (next == timing_vblank_begins ? 0x20 : 0) | (c.standard ? 2 : 0));
                due += ++events % 2 == 0 ? c.shown : c.blank;
            }
            EXPECT_EQ(machine.frame_count, 3u);
        }
}

TEST_F(VideoTiming, TheDmaTakesItsClocksByteByByteOrInBursts) {
    for (const int burst : {0, 1})
        for (const int bytes : {120, 3}) { // 80 characters with 20 pairs, 3 without
            power_on();
            crtc(0x00,
                 {(bytes == 3 ? 1 : 78) | (burst ? 0 : 0x80), 0x18, 0x07, 0x00, bytes == 3 ? 0x20 : 0x53});
            crtc(0x20);
            uint32_t owed = 0;
            for (int left = bytes - 1; left >= -5; --left) { // 5 ticks more than the row has bytes
                machine.timing_tick(1);
                if (left >= 0)
                    owed = burst ? static_cast<uint32_t>(bytes / 2 * 11) : owed + (left % 2 ? 5 : 6);
                ASSERT_EQ(machine.dma_stall, owed)
                    << "burst " << burst << ", of " << bytes << " left " << left;
            }
            machine.timing_reset();
            machine.timing_tick(1);
            out(0x68, {0x00});
            machine.timing_tick(1);
            EXPECT_EQ(machine.dma_stall + machine.dma_remaining, 0u) << "channel 2 off in mid-row";
        }
}

TEST_F(VideoTiming, ARowIsAskedForEveryRasterLinesOfACharacter) {
    start_display(25); // 8 raster lines a row
    for (uint32_t line = 0; line < 400; ++line) {
        machine.timing_tick(1);
        ASSERT_EQ(machine.dma_remaining, line % 8 == 0 ? 119 : 0) << "line " << line;
        for (int i = 0; i < 160; ++i) machine.timing_tick(1);
    }
    EXPECT_EQ(machine.vrtc, 1);
    EXPECT_EQ(machine.dma_stall, 0u) << "no debt is carried into the vertical blank";
    crtc(0x00, {0xCE, 0x98, 0x00, 0x00, 0x53}); // one raster line a row
    crtc(0x20);
    const auto begin_rows = [] {
        machine.timing_reset();
        machine.timing_tick(161); // fetches one byte of 120
        machine.timing_tick(1);
    };
    EXPECT_EQ(printed("DMA under-run occured!!!\n", begin_rows), "DMA under-run occured!!!\n");
    EXPECT_EQ(machine.dma_remaining, 119);
}

// A restart in mid-row and in the blank; a row's debt is not added to the last one's; text that port 0x53
// hides is fetched all the same.
TEST_F(VideoTiming, ARestartBeginsAFrameAndEachRowIsOwedAlone) {
    for (const int ticks : {1, 100, 161 * 400 + 50, 161 * 400 + 7719}) {
        start_display(25);
        machine.timing_reset();
        for (int i = 0; i < ticks; ++i) machine.timing_tick(1);
        machine.timing_reset();
        EXPECT_EQ(machine.vrtc, 0) << ticks;
        EXPECT_EQ(printed("DMA", [] { machine.timing_tick(1); }), "") << "nothing is owed to the last row";
        uint32_t until_blank = 2;
        while (machine.timing_tick(1) != timing_vblank_begins) ++until_blank;
        EXPECT_EQ(until_blank, 400u * 161) << ticks;
        uint32_t blank = 1;
        while (machine.timing_tick(1) != timing_vblank_ends) ++blank;
        EXPECT_EQ(blank, 7720u) << ticks;
    }
    for (const int columns : {0xCE, 0x4E}) // byte by byte, in bursts
        for (const int hidden : {0, 1}) {
            crtc(0x00, {columns, 0x98, 0x07, 0x00, 0x53});
            crtc(0x20);
            out(0x53, {hidden});
            machine.timing_reset();
            machine.dma_stall = 0;
            for (int i = 0; i < 161 * 9; ++i) machine.timing_tick(1); // into the second row
            EXPECT_EQ(machine.dma_stall, 60u * 5 + 60 * 6) << "hidden " << hidden << ", " << columns;
        }
}

TEST_F(VideoTiming, BlinkPhasesFollowTheFrames) {
    for (uint32_t rate = 0; rate < 4; ++rate) {
        crtc(0x00, {0x4E, static_cast<int>(rate << 6 | 0x18)});
        const uint32_t cycle = 16 * (rate + 1);
        for (int frame = 0; frame < 300; ++frame) {
            machine.blink_tick();
            const uint32_t n = machine.frame_count;
            ASSERT_EQ(machine.cursor_phase, n % cycle < cycle / 2) << "rate " << rate << ", frame " << n;
            ASSERT_EQ(machine.attr_blink_phase, n % (2 * cycle) < cycle * 3 / 2)
                << "rate " << rate << ", frame " << n;
        }
    }
}

} // namespace
