// The ROM set on the real machine: every screen, every kind of interrupt and sound, and typing.
#include "firmware/firmware_machine.h"
#include "machine/kiv_machine.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

// Virtual-key codes of keys that are no letters or digits.
enum virtual_key : uint32_t {
    vk_back = 0x08,
    vk_return = 0x0D,
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
    vk_oem_1 = 0xBA,
    vk_oem_minus = 0xBD,
    vk_oem_2 = 0xBF,
    vk_oem_5 = 0xDC,
    vk_oem_7 = 0xDE,
};

constexpr int settled = 120; // frames after which the whole screen stands and the tune plays
constexpr int input_row = 22, input_column = 3, input_columns = 74;

#define ASSERT_RUNS(call) ASSERT_TRUE(call) << firmware_stop()

// Compares with tests/firmware/expected/NAME; KIV_WRITE_EXPECTED=1 writes the file instead. What differs
// from run to run is covered first.
void expect_screen(const std::string &name, const std::string &screen) {
    const std::string path = std::string(KIV_SOURCE_DIR "/tests/firmware/expected/") + name;
    if (std::getenv("KIV_WRITE_EXPECTED")) std::ofstream(path) << screen;
    std::ifstream in(path);
    const std::string expected{std::istreambuf_iterator<char>(in), {}};
    EXPECT_EQ(screen, expected) << "the screen differs from " << path;
}

// The screen with spaces where time passes.
std::string steady_screen(std::initializer_list<std::tuple<int, int, int>> moving) {
    const uint32_t start = machine.text_start;
    for (const auto &[row, column, columns] : moving)
        for (int c = column; c < column + columns; ++c)
            machine.ram[(start + text_row_bytes * static_cast<uint32_t>(row) + static_cast<uint32_t>(c)) &
                        0xFFFF] = ' ';
    return screen_text();
}

std::string zun_screen() { return steady_screen({{1, 62, 16}, {3, 60, 5}, {3, 73, 5}, {19, 40, 38}}); }

TEST(firmware, main_rom_shows_its_screen) {
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    EXPECT_EQ(machine.crtc_status, 0) << "the text layer is on";
    EXPECT_EQ(machine.crtc_line_size, 120);
    EXPECT_EQ(machine.crtc_raster, 16) << "400 lines in 25 rows";
    EXPECT_EQ(machine.text_start, 0xF3C8u);
    EXPECT_EQ(machine.text_end, 0xFF80u);
    EXPECT_EQ(machine.screen_mode, 3u) << "80 columns, 25 rows";
    EXPECT_NE(machine.port31 & port31_graphics_on, 0);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(machine.palette[i], i) << "palette entry " << i;
    expect_screen("zun.txt", zun_screen());
}

TEST(firmware, standard_monitor_takes_rows_of_eight_lines) {
    ASSERT_TRUE(firmware_power_on({.standard_monitor = true}));
    ASSERT_RUNS(firmware_run(settled));
    EXPECT_EQ(machine.crtc_raster, 8);
    EXPECT_EQ(screen_text(3, 25, 14), "15 kHz monitor");
}

TEST(firmware, attributes_are_what_they_say) {
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    const int host_colour[8] = {0, 1, 4, 5, 2, 3, 6, 7}; // of a G R B code
    for (int colour = 0; colour < 8; ++colour)
        EXPECT_EQ(screen_attribute(17, 12 + 3 * colour), cell_reverse | host_colour[colour])
            << "sample of colour " << colour;
    struct sample {
        int row;
        const char *text; // found in the row
        int attribute;    // with white
    };
    const sample samples[] = {
        {18, "reverse", cell_reverse | 7},  {18, "upper", cell_upper_line | 7},
        {18, "under", cell_under_line | 7}, {19, "secret", 7},
        {19, "hidden", cell_secret | 7},    {19, "both", cell_upper_line | cell_under_line | 7},
    };
    for (const sample &s : samples) {
        const size_t at = screen_text(s.row, 2, 34).find(s.text); // ASCII only
        ASSERT_NE(at, std::string::npos) << s.text;
        EXPECT_EQ(screen_attribute(s.row, 2 + static_cast<int>(at)), s.attribute) << s.text;
    }
    const size_t blink = screen_text(18, 2, 34).find("blink");
    ASSERT_NE(blink, std::string::npos);
    bool shown[2] = {};
    for (int frame = 0; frame < 64; ++frame) {
        ASSERT_RUNS(firmware_run(1));
        shown[(screen_attribute(18, 2 + static_cast<int>(blink)) & cell_secret) != 0] = true;
    }
    EXPECT_TRUE(shown[0] && shown[1]) << "it comes and goes within 64 frames";
}

TEST(firmware, expansion_rom_draws_and_its_absence_is_told) {
    struct dot {
        int x, y, colour;
        const char *what;
    };
    const dot dots[] = {
        {472, 60, 6, "sun"},          {472, 90, 7, "horizon"},    {320, 90, 7, "its first dot"},
        {623, 90, 7, "its last dot"}, {319, 90, 0, "left of it"}, {624, 90, 0, "right of it"},
        {472, 119, 3, "plain"},       {330, 80, 0, "mountain"},   {400, 49, 0, "night"},
    };
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    for (const dot &d : dots) EXPECT_EQ(graphics_dot(d.x, d.y), d.colour) << d.what;

    ASSERT_TRUE(firmware_power_on({.expansion = false}));
    ASSERT_RUNS(firmware_run(settled));
    for (int y = 48; y < 120; ++y)
        for (int x = 320; x < 624; ++x) ASSERT_EQ(graphics_dot(x, y), 0) << "dot " << x << ", " << y;
    EXPECT_EQ(screen_text(10, 46, 28), "No expansion ROM, no picture");
    for (const tone &t : heard().tones) EXPECT_EQ(t.frequency, 0) << "there is no tune to play";
    ASSERT_RUNS(firmware_type(vk_f5));
    ASSERT_RUNS(firmware_type('A'));
    EXPECT_EQ(screen_text(input_row, input_column, 2), "a ") << "F5 does nothing";
}

TEST(firmware, switch_chooses_nbasic) {
    ASSERT_TRUE(firmware_power_on({.zun = false}));
    ASSERT_RUNS(firmware_run(settled));
    EXPECT_NE(machine.port31 & port31_nbasic, 0);
    ASSERT_RUNS(firmware_type('N'));
    ASSERT_RUNS(firmware_type('B', true));
    expect_screen("nbasic.txt", steady_screen({{7, 32, 16}}));
}

TEST(firmware, date_and_time_are_those_of_the_host) {
    const auto now = [] {
        const std::time_t seconds = std::time(nullptr);
        std::tm t{};
        localtime_r(&seconds, &t);
        return std::make_tuple(t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min, t.tm_sec);
    };
    const auto before = now();
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    const auto after = now();
    const std::string text = screen_text(1, 62, 16);
    int month, day, hour, minute, second;
    ASSERT_EQ(std::sscanf(text.c_str(), "%2d月%2d日 %2d時%2d分%2d秒", &month, &day, &hour, &minute, &second),
              5)
        << text;
    const auto shown = std::make_tuple(month, day, hour, minute, second);
    if (before <= after) { // not across the turn of the year
        EXPECT_LE(before, shown) << text;
        EXPECT_LE(shown, after) << text;
    }
}

TEST(firmware, interrupts_are_counted) {
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    const auto counts = [] {
        return std::make_pair(std::stoi(screen_text(3, 60, 5)), std::stoi(screen_text(3, 73, 5)));
    };
    const auto first = counts();
    ASSERT_RUNS(firmware_run(200));
    const auto second = counts();
    // Both are shown every fourth frame. A frame of the 24 kHz monitor is 400 x 161 + 7720 T-states.
    EXPECT_NEAR(second.first - first.first, 200, 4);
    EXPECT_NEAR(second.second - first.second, 200 * (400 * 161 + 7720) / 6656, 60);
}

TEST(firmware, figure_walks_in_glyphs_of_its_own) {
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    EXPECT_EQ(machine.pcg_glyphs_on, 1);
    for (int code = 0x80; code < 0xF8; ++code)
        for (int row = 0; row < 8; ++row) {
            const int at = 8 * code + row;
            ASSERT_EQ(machine.font_work[at], machine.font_rom[at]) << "code " << code;
        }
    EXPECT_NE(machine.font_work[8 * 0xF8 + 3], 0);
    std::string before = screen_text(19, 40, 38);
    EXPECT_NE(before.find("□□"), std::string::npos) << before;
    for (int step = 0; step < 100; ++step) { // to the edge and back
        ASSERT_RUNS(firmware_run(8));
        const std::string after = screen_text(19, 40, 38);
        ASSERT_NE(after, before);
        ASSERT_NE(after.find("□□"), std::string::npos) << after;
        ASSERT_EQ(after.size(), 36u + 2 * 3) << after;
        before = after;
    }
    EXPECT_EQ(screen_text(19, 39, 1) + screen_text(19, 78, 1), "││") << "the frame is whole";
}

TEST(firmware, tune_and_beeps_sound_and_end) {
    ASSERT_TRUE(firmware_power_on({}));
    machine.beep_on(); // it sounds at power-on, until told not to
    ASSERT_RUNS(firmware_run(1));
    EXPECT_FALSE(heard().beeping);
    heard() = {};
    ASSERT_RUNS(firmware_run(settled));
    EXPECT_EQ(heard().beeps, 1) << "at the start";
    EXPECT_FALSE(heard().beeping);
    bool first_notes[2] = {};
    for (const tone &t : heard().tones) {
        if (t.channel == 0 && t.frequency == 523) first_notes[0] = true; // C5
        if (t.channel == 1 && t.frequency == 262) first_notes[1] = true; // C4
    }
    EXPECT_TRUE(first_notes[0] && first_notes[1]);

    ASSERT_RUNS(firmware_run(360));
    const auto last = [](uint32_t channel) {
        for (size_t i = heard().tones.size(); i-- > 0;)
            if (heard().tones[i].channel == channel) return heard().tones[i].frequency;
        return uint16_t{0xFFFF};
    };
    for (uint32_t channel = 0; channel < 3; ++channel) EXPECT_EQ(last(channel), 0) << "channel " << channel;
    const size_t heard_before = heard().tones.size();
    ASSERT_RUNS(firmware_run(60));
    EXPECT_EQ(heard().tones.size(), heard_before) << "nothing more to play";

    ASSERT_RUNS(firmware_type(vk_f1));
    ASSERT_RUNS(firmware_run(30));
    EXPECT_GT(heard().tones.size(), heard_before) << "F1 plays it again";
    ASSERT_RUNS(firmware_type(vk_left));
    EXPECT_EQ(heard().beeps, 2) << "nothing lies left of the first column";
    ASSERT_RUNS(firmware_run(10));
    EXPECT_FALSE(heard().beeping);
}

struct key {
    uint32_t code;
    bool shift = false;
};
struct typing {
    const char *what;
    std::vector<key> keys;
    const char *line_1, *line_2;   // without the spaces at their ends
    int cursor_row, cursor_column; // within the area
};

TEST(firmware, typed_keys_echo) {
    const typing cases[] = {
        {"letters", {{'K', true}, {'I'}, {'V'}}, "Kiv", "", 0, 3},
        {"digits and their shifts",
         {{'1'}, {'1', true}, {'2', true}, {'9', true}, {'0'}, {'5', true}},
         "1!\")0%",
         "",
         0,
         6},
        {"marks",
         {{vk_oem_minus},
          {vk_oem_minus, true},
          {vk_oem_1},
          {vk_oem_1, true},
          {vk_oem_5},
          {vk_oem_5, true},
          {vk_oem_7},
          {vk_oem_7, true},
          {vk_oem_2, true}},
         "-=:*¥|^~?",
         "",
         0,
         9},
        {"ten-key", {{vk_numpad7}, {vk_add}}, "7+", "", 0, 2},
        {"return", {{'A'}, {vk_return}, {'B'}}, "a", "b", 1, 1},
        {"scroll", {{'A'}, {vk_return}, {'B'}, {vk_return}, {'C'}}, "b", "c", 1, 1},
        {"delete", {{'A'}, {'B'}, {'C'}, {vk_left}, {vk_delete}}, "ac", "", 0, 1},
        {"delete at the start", {{vk_delete}, {'A'}}, "a", "", 0, 1},
        {"insert", {{'A'}, {'C'}, {vk_left}, {vk_delete, true}, {'B'}}, "abc", "", 0, 2},
        {"cursor keys",
         {{'A'}, {vk_down}, {'B'}, {vk_up}, {vk_left}, {'C'}, {vk_right}, {'D'}},
         "ac d",
         " b",
         0,
         4},
        {"home clears", {{'A'}, {vk_return}, {'B'}, {vk_home}, {'C'}}, "c", "", 0, 1},
        {"kana",
         {{vk_convert}, {'T'}, {'Q'}, {'T'}, {'S', true}, {'3', true}, {vk_convert}, {'A'}},
         "ｶﾀｶﾄｧa",
         "",
         0,
         6},
        {"stop is no text", {{'A'}, {vk_back}, {'B'}}, "ab", "", 0, 2},
    };
    ASSERT_TRUE(firmware_power_on({}));
    map_cursor_keys(false);
    ASSERT_RUNS(firmware_run(settled));
    const auto line = [](int row) {
        std::string text = screen_text(row, input_column, input_columns);
        return text.erase(text.find_last_not_of(' ') + 1);
    };
    for (const typing &t : cases) {
        SCOPED_TRACE(t.what);
        ASSERT_RUNS(firmware_type(vk_home));
        for (const key &k : t.keys) ASSERT_RUNS(firmware_type(k.code, k.shift));
        EXPECT_EQ(line(input_row), t.line_1);
        EXPECT_EQ(line(input_row + 1), t.line_2);
        EXPECT_EQ(machine.cursor_y, input_row + t.cursor_row);
        EXPECT_EQ(machine.cursor_x, input_column + t.cursor_column);
    }
    ASSERT_RUNS(firmware_type(vk_home));
    for (int i = 0; i < 2 * input_columns + 3; ++i) ASSERT_RUNS(firmware_type("0123456789"[i % 10]));
    EXPECT_EQ(line(input_row).substr(0, 4) + line(input_row + 1), "4567890") << "full lines scroll";
}

TEST(firmware, held_key_repeats) {
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    key_press('X');
    ASSERT_RUNS(firmware_run(24 + 9 + 2));
    key_release('X');
    ASSERT_RUNS(firmware_run(30));
    const std::string text = screen_text(input_row, input_column, 10);
    EXPECT_EQ(text.substr(0, text.find(' ')).size(), 5u) << text;
}

// Reset leaves planes, glyphs and tones as they were; the ROM must come up the same over them.
TEST(firmware, reset_brings_the_same_screen) {
    ASSERT_TRUE(firmware_power_on({}));
    ASSERT_RUNS(firmware_run(settled));
    ASSERT_RUNS(firmware_type(vk_f3));
    EXPECT_EQ(machine.crtc_reverse, 1);
    ASSERT_RUNS(firmware_type('Q'));
    for (auto &plane : machine.gvram)
        for (uint8_t &byte : plane) byte = 0x5A;
    machine.font_work[8 * 0xB1] = uint8_t{0x55};
    machine.machine_reset(machine);
    z80_reset(main_cpu);
    ASSERT_RUNS(firmware_run(settled));
    EXPECT_EQ(machine.crtc_reverse, 0);
    EXPECT_EQ(graphics_dot(0, 199), 0);
    EXPECT_EQ(machine.font_work[8 * 0xB1], machine.font_rom[8 * 0xB1]);
    expect_screen("zun.txt", zun_screen());
}

} // namespace
