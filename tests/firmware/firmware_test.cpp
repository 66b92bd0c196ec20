// The ROM set on the real machine: every screen, every kind of interrupt and sound, and typing.
#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/rom_loader.h"
#include "resources/resources.h"
#include "tests/temporary_folder.h"
#include "tools/kiv_run_outputs.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace {

// Virtual-key codes of keys that are no letters or digits; `shift` is added to a key.
enum virtual_key : uint32_t {
    vk_back = 0x08,
    vk_return = 0x0D,
    vk_shift = 0x10,
    vk_convert = 0x1C,
    vk_home = 0x24,
    vk_left = 0x25,
    vk_up = 0x26,
    vk_right = 0x27,
    vk_down = 0x28,
    vk_delete = 0x2E,
    vk_numpad7 = 0x67,
    vk_add = 0x6B,
    vk_f1 = 0x70,
    vk_f3 = 0x72,
    vk_f5 = 0x74,
    vk_colon = 0xBA,
    vk_minus = 0xBD,
    vk_slash = 0xBF,
    vk_yen = 0xDC,
    vk_caret = 0xDE,
    shift = 0x100,
};

struct setup {
    bool zun = true; // the switch
    bool standard_monitor = false;
    bool expansion = true;
};

class firmware : public testing::Test {
  protected:
    static inline std::vector<std::pair<int, int>> tones; // Hz, 0 silent; channel
    static inline int beeps;                              // beginnings of a beep
    static inline bool beeping;

    // Runs until the whole screen stands and the tune plays.
    static void power_on(const setup &s = {}) {
        register_program_resources();
        calendar_fix_time({2026, 11, 9, 23, 5, 47});
        machine_init(
            machine, [] {}, [] {});
        host_callbacks_listen(
            {[] { beeps += !std::exchange(beeping, true); }, [] { beeping = false; },
             [](uint16_t frequency, uint32_t channel) { tones.emplace_back(frequency, channel); },
             [](uint32_t) {}, [] {}, [] {}});
        machine_restart_clock_counter();
        ASSERT_EQ(load_rom_images(KIV_FIRMWARE_DIR), "");
        if (!s.expansion) std::memset(machine.ext_rom, 0, ext_rom_size);
        const auto font = platform::find_resource(platform::resource_type::font, font_resource_id);
        std::copy_n(font.data, font_size, machine.font_rom);
        for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = font.data[i];
        machine.boot_rom = uint8_t{s.zun};
        machine.crt_standard = s.standard_monitor;
        machine.timing_reset();
        map_cursor_keys(false);
        z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
        machine.beep_on(); // it sounds at power-on, until told not to
        run(1);
        EXPECT_FALSE(beeping);
        tones.clear();
        beeps = 0;
        run(119);
    }
    void TearDown() override { calendar_use_host_time(); }

    static void run(int frames) {
        for (uint32_t i = 0; frames > 0; ++i) {
            const pass_outcome outcome = machine_pass(i, true);
            ASSERT_NE(outcome, pass_outcome::stopped) << "at 0x" << std::hex << main_cpu.trace_pc;
            if (outcome == pass_outcome::frame) --frames;
        }
    }
    static void type(const std::vector<uint32_t> &keys) {
        for (const uint32_t key : keys) {
            if (key & shift) key_press(vk_shift);
            key_press(key & 0xFF);
            run(2);
            key_release(key & 0xFF);
            key_release(vk_shift);
            run(2);
        }
    }

    // A row of the typing area, without the spaces at its end.
    static std::string typed(int row) {
        std::istringstream screen(text_screen());
        std::string line;
        for (row += 22; row >= 0; --row) std::getline(screen, line);
        line = line.substr(5, line.rfind("│") - 5); // behind the frame and a space
        return line.substr(0, line.find_last_not_of(' ') + 1);
    }

    // The colour code of a dot of the graphic planes: bit 0 blue, 1 red, 2 green.
    static int dot(int x, int y) {
        int colour = 0;
        for (int plane = 0; plane < 3; ++plane)
            colour |= (machine.gvram[plane][80 * y + x / 8] >> (7 - x % 8) & 1) << plane;
        return colour;
    }

    // Compares text and attributes with tests/firmware/expected/NAME; KIV_WRITE_EXPECTED=1 writes the file.
    static void expect_screen(const std::string &name) {
        std::ostringstream screen;
        screen << text_screen()
               << "The attribute of each cell that differs from the one before it:" << std::hex;
        for (uint32_t row = 0; row < text_rows; ++row) { // rows hand attributes down
            machine.text_row_fetch(row);
            machine.text_row_decode(row);
            screen << "\nrow " << std::dec << row << ':';
            for (int column = 0; column < text_columns; ++column)
                if (column == 0 || text_work.cell_attr[column] != text_work.cell_attr[column - 1])
                    screen << ' ' << std::dec << column << '=' << std::hex << int{text_work.cell_attr[column]};
        }
        screen << '\n';
        const std::string path = std::string(KIV_SOURCE_DIR "/tests/firmware/expected/") + name;
        if (std::getenv("KIV_WRITE_EXPECTED")) put_file(path, screen.str());
        EXPECT_EQ(screen.str(), get_file(path)) << "the screen differs from " << path;
    }
};

// Text, attributes, date and time, and how many interrupts of each kind came in 120 frames.
TEST_F(firmware, main_rom_shows_its_screen) {
    power_on();
    EXPECT_EQ(machine.screen_mode, 3u) << "80 columns, 25 rows";
    EXPECT_EQ(machine.crtc_raster, 16) << "lines a row";
    EXPECT_NE(machine.port31 & port31_graphics_on, 0);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(machine.palette[i], i) << "palette entry " << i;
    expect_screen("zun.txt");

    // Reset leaves planes, glyphs and tones as they were; the ROM comes up the same over them.
    type({vk_f3, 'Q'});
    EXPECT_EQ(machine.crtc_reverse, 1);
    std::memset(machine.gvram, 0x5A, sizeof machine.gvram);
    machine.font_work[8 * 0xB1] = uint8_t{0x55};
    machine_restart_clock_counter();
    machine.machine_reset(machine);
    z80_reset(main_cpu);
    run(120);
    EXPECT_EQ(dot(0, 199), 0);
    EXPECT_EQ(machine.font_work[8 * 0xB1], machine.font_rom[8 * 0xB1]);
    expect_screen("zun.txt");
}

TEST_F(firmware, standard_monitor_takes_rows_of_eight_lines) {
    power_on({.standard_monitor = true});
    EXPECT_EQ(machine.crtc_raster, 8);
    EXPECT_NE(text_screen().find("15 kHz monitor"), std::string::npos);
}

TEST_F(firmware, switch_chooses_nbasic) {
    power_on({.zun = false});
    EXPECT_NE(machine.port31 & port31_nbasic, 0);
    type({'N', shift | 'B'});
    expect_screen("nbasic.txt");
}

TEST_F(firmware, expansion_rom_draws_and_its_absence_is_told) {
    const struct {
        int x, y, colour;
        const char *what;
    } dots[] = {
        {472, 60, 6, "sun"},          {472, 90, 7, "horizon"},    {320, 90, 7, "its first dot"},
        {623, 90, 7, "its last dot"}, {319, 90, 0, "left of it"}, {624, 90, 0, "right of it"},
        {472, 119, 3, "plain"},       {330, 80, 0, "mountain"},   {400, 49, 0, "night"},
    };
    power_on();
    for (const auto &d : dots) EXPECT_EQ(dot(d.x, d.y), d.colour) << d.what;

    power_on({.expansion = false});
    for (int i = 0; i < 72 * 304; ++i) ASSERT_EQ(dot(320 + i % 304, 48 + i / 304), 0);
    EXPECT_NE(text_screen().find("No expansion ROM, no picture"), std::string::npos);
    for (const auto &[frequency, channel] : tones) EXPECT_EQ(frequency, 0) << "there is no tune to play";
    type({vk_f5, 'A'});
    EXPECT_EQ(typed(0), "a") << "F5 does nothing";
}

TEST_F(firmware, figure_walks_in_glyphs_of_its_own) {
    power_on();
    EXPECT_EQ(machine.pcg_glyphs_on, 1);
    EXPECT_NE(machine.font_work[8 * 0xF8 + 3], 0);
    EXPECT_TRUE(std::equal(machine.font_rom + 0x400, machine.font_rom + 8 * 0xF8, machine.font_work + 0x400));
    const uint8_t *const row = machine.ram + machine.text_start + 19 * text_row_bytes, *before = nullptr;
    for (int step = 0; step < 100; ++step) { // to the edge and back
        run(8);
        const uint8_t *figure = std::find_if(row + 40, row + 78, [](uint8_t code) { return code >= 0xF8; });
        EXPECT_EQ(std::count(row + 40, row + 78, ' '), 36) << "step " << step;
        EXPECT_EQ(figure[1], figure[0] + 1) << "step " << step;
        EXPECT_TRUE(before == nullptr || figure == before + 1 || figure == before - 1) << "step " << step;
        before = figure;
    }
    EXPECT_EQ(row[39], 0x96) << "the frame is whole";
    EXPECT_EQ(row[78], 0x96);
}

TEST_F(firmware, tune_and_beeps_sound_and_end) {
    power_on();
    EXPECT_EQ(beeps, 1) << "at the start";
    EXPECT_FALSE(beeping);
    run(360);
    ASSERT_GE(tones.size(), 3u);
    for (size_t i = tones.size() - 3; i < tones.size(); ++i) EXPECT_EQ(tones[i].first, 0) << "the end";
    tones.clear();
    run(60);
    EXPECT_TRUE(tones.empty()) << "nothing more to play";
    type({vk_f1});
    run(30);
    const auto first = [](int frequency) {
        return std::find(tones.begin(), tones.end(), std::pair(frequency, 0)) - tones.begin();
    };
    EXPECT_LT(first(523), first(0)) << "F1 plays it again, from C5";
    EXPECT_LT(first(0), first(659)) << "silence before E5";
    EXPECT_NE(std::count(tones.begin(), tones.end(), std::pair(262, 1)), 0) << "the other voice";
    type({vk_left});
    EXPECT_EQ(beeps, 2) << "nothing lies left of the first column";
    run(10);
    EXPECT_FALSE(beeping);
}

TEST_F(firmware, typed_keys_echo) {
    const struct {
        const char *what;
        std::vector<uint32_t> keys;
        const char *line_1, *line_2;
        int cursor_row, cursor_column; // within the area
    } cases[] = {
        {"letters and digits",
         {shift | 'K', 'I', 'V', '1', shift | '1', shift | '2', '0'},
         "Kiv1!\"0",
         "",
         0,
         7},
        {"marks", {vk_minus, vk_colon, vk_yen, vk_caret}, "-:¥^", "", 0, 4},
        {"their shifts",
         {shift | vk_minus, shift | vk_colon, shift | vk_yen, shift | vk_slash},
         "=*|?",
         "",
         0,
         4},
        {"ten-key", {vk_numpad7, vk_add}, "7+", "", 0, 2},
        {"return and scroll", {'A', vk_return, 'B', vk_return, 'C'}, "b", "c", 1, 1},
        {"delete", {vk_delete, 'A', 'B', 'C', vk_left, vk_delete}, "ac", "", 0, 1},
        {"insert", {'A', 'C', vk_left, shift | vk_delete, 'B'}, "abc", "", 0, 2},
        {"cursor keys", {'A', vk_down, 'B', vk_up, vk_left, 'C', vk_right, 'D'}, "ac d", " b", 0, 4},
        {"home clears", {'A', vk_return, 'B', vk_home, 'C'}, "c", "", 0, 1},
        {"kana", {vk_convert, 'T', shift | 'Z', shift | '3', vk_convert, 'A'}, "ｶｯｧa", "", 0, 4},
        {"stop is no text", {'A', vk_back, 'B'}, "ab", "", 0, 2},
    };
    power_on();
    for (const auto &c : cases) {
        type({vk_home});
        type(c.keys);
        EXPECT_EQ(typed(0), c.line_1) << c.what;
        EXPECT_EQ(typed(1), c.line_2) << c.what;
        EXPECT_EQ(machine.cursor_y, 22 + c.cursor_row) << c.what;
        EXPECT_EQ(machine.cursor_x, 3 + c.cursor_column) << c.what;
    }
    type({vk_home});
    for (uint32_t i = 0; i < 2 * 74 + 3; ++i) type({'0' + i % 10});
    EXPECT_EQ(typed(0).substr(0, 4) + typed(1), "4567890") << "full lines scroll";
    type({vk_home});
    key_press('X');
    run(24 + 9 + 2);
    key_release('X');
    run(30);
    EXPECT_EQ(typed(0), "xxxxx") << "a held key repeats";
}

} // namespace
