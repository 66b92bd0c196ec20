// The ROM set on the real machine: title, demonstration, help, monitor, tape and the commands on program
// lines. The language itself has tests of its own.
#include "api/typing.h"
#include "display/text_screen.h"
#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/rom_loader.h"
#include "machine/run_block.h"
#include "resources/resources.h"
#include "tests/temporary_folder.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <vector>

namespace {

enum virtual_key : uint32_t { vk_return = 0x0D, vk_shift = 0x10, vk_home = 0x24, vk_down = 0x28 };

std::string text_screen() {
    std::string text(text_screen_utf8(nullptr, 0), '\0');
    text_screen_utf8(text.data(), text.size() + 1);
    return text;
}

struct setup {
    bool zun = true; // the switch
    bool standard_monitor = false;
    bool expansion = true;
};

class Firmware : public testing::Test {
  protected:
    static inline std::vector<std::pair<int, int>> tones; // Hz, 0 silent; channel
    static inline int beeps;                              // beginnings of a beep
    static inline bool beeping;

    static void power_on(const setup &s = {}) {
        register_program_resources();
        calendar_fix_time({2026, 11, 9, 23, 5, 47});
        machine_init(
            machine, [] {}, [] {});
        host_callbacks_listen(
            {[] { beeps += !std::exchange(beeping, true); }, [] { beeping = false; },
             [](uint16_t frequency, uint32_t channel) { tones.emplace_back(frequency, channel); },
             [](uint32_t) {}, [] {}, [] {}});
        run_state.clock_counter = 0;
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
    }
    // Powers on, types a text as kiv-run does and lets the machine finish.
    static void session(const std::string &text, int frames = 60, const setup &s = {}) {
        power_on(s);
        run(29);
        type(text);
        run(frames);
    }
    void TearDown() override { calendar_use_host_time(); }

    static void run(int frames) {
        for (uint32_t i = 0; frames > 0; ++i) {
            const pass_outcome outcome = machine_pass(i, true);
            ASSERT_NE(outcome, pass_outcome::stopped) << "at 0x" << std::hex << main_cpu.trace_pc;
            if (outcome == pass_outcome::frame) --frames;
        }
    }
    // As kiv-run's --type, with \b, \p, \u, \d, \l, \r and \f1 to \f5.
    static void type(const std::string &text) {
        const std::string letters = "budlr";
        const uint32_t keys[] = {0x08, 0x26, 0x28, 0x25, 0x27};
        for (const char *at = text.c_str(); *at != 0;) {
            if (*at != '\\') {
                key_stroke stroke{};
                EXPECT_TRUE(stroke_of(next_character(at), stroke)) << text;
                press(stroke.virtual_key, stroke.shifted);
                continue;
            }
            const char escape = at[1];
            at += 2;
            if (escape == 'p')
                run(28);
            else if (escape == 'f')
                press(0x70 + static_cast<uint32_t>(*at++ - '1'));
            else
                press(keys[letters.find(escape)]);
        }
    }
    static void press(uint32_t key, bool shifted = false) {
        if (shifted) key_press(vk_shift);
        key_press(key);
        run(2);
        key_release(key);
        key_release(vk_shift);
        run(2);
    }
    // Small letters, digits, blanks and line ends.
    static void type_fast(const std::string &text) {
        for (const char c : text) {
            const uint32_t key = c == '\n' ? vk_return : static_cast<uint32_t>(std::toupper(c));
            press(key);
        }
    }
    static std::vector<std::string> rows() {
        std::vector<std::string> all;
        std::istringstream screen(text_screen());
        for (std::string row; std::getline(screen, row);) all.push_back(row);
        return all;
    }
    // What stands above the last prompt: the rows from the one that holds `from` on.
    static std::string shown(const std::string &from) {
        std::string text;
        bool seen = false;
        for (const std::string &row : rows()) {
            if (seen && !row.empty()) text += row + "\n";
            seen = seen || row.find(from) != std::string::npos;
        }
        return text;
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
        screen << std::regex_replace(text_screen(), std::regex("VRTC [0-9]{5}"), "VRTC #####")
               << "The attribute of each cell that differs from the one before it:" << std::hex;
        for (uint32_t row = 0; row < text_rows; ++row) { // rows hand attributes down
            machine.text_row_fetch(row);
            machine.text_row_decode(row);
            if (row == machine.cursor_y) // it blinks
                text_work.cell_attr[machine.cursor_x] = text_work.cell_attr[machine.cursor_x + 1];
            if (row == 19) continue; // where the demonstration's figure walks
            screen << "\nrow " << std::dec << row << ':';
            for (int column = 0; column < text_columns; ++column)
                if (column == 0 || text_work.cell_attr[column] != text_work.cell_attr[column - 1])
                    screen << ' ' << std::dec << column << '=' << std::hex
                           << int{text_work.cell_attr[column]};
        }
        screen << '\n';
        const std::string path = std::string(KIV_SOURCE_DIR "/tests/firmware/expected/") + name;
        if (std::getenv("KIV_WRITE_EXPECTED")) put_file(path, screen.str());
        EXPECT_EQ(screen.str(), get_file(path)) << "the screen differs from " << path;
    }
};

// Nothing half-written is ever seen: each picture on the way is empty or the whole title.
TEST_F(Firmware, TitleStandsWithinHalfASecondAndWithoutAFlash) {
    const struct {
        setup machine;
        const char *expected;
    } cases[] = {{{}, "title.txt"},
                 {{.standard_monitor = true}, "title.txt"},
                 {{.expansion = false}, "title-no-expansion.txt"},
                 {{.zun = false}, "title-nbasic.txt"}};
    for (const auto &c : cases) {
        power_on(c.machine);
        EXPECT_EQ(machine.crtc_raster, c.machine.standard_monitor ? 8 : 16);
        std::vector<std::string> pictures;
        for (int frame = 0; frame < 27; ++frame, run(1)) {
            const std::string text = text_screen();
            if (text.find_first_not_of('\n') == std::string::npos) continue;
            if (pictures.empty() || pictures.back() != text) pictures.push_back(text);
        }
        EXPECT_EQ(pictures.size(), 1u) << c.expected;
        expect_screen(c.expected);
    }
}

TEST_F(Firmware, DemonstrationShowsAllAndLeavesTheProgram) {
    session("10 REM kept\nPSET(5,199)\nDEMO\n", 150);
    while (text_screen().find("blink") == std::string::npos) run(1); // the phase of blinking
    expect_screen("demo.txt");
    const struct {
        int x, y, colour;
        const char *what;
    } dots[] = {
        {472, 60, 6, "sun"},
        {472, 90, 7, "horizon"},
        {320, 90, 7, "its first dot"},
        {623, 90, 7, "its last dot"},
        {319, 90, 0, "left of it"},
        {624, 90, 0, "right of it"},
        {472, 119, 3, "plain"},
        {330, 80, 0, "mountain"},
        {400, 49, 0, "night"},
        {5, 199, 0, "what was there"},
        {5, 37, 3, "edge below the title"},
    };
    for (const auto &d : dots) EXPECT_EQ(dot(d.x, d.y), d.colour) << d.what;
    EXPECT_NE(std::count(tones.begin(), tones.end(), std::pair(523, 0)), 0) << "the tune, C5";
    EXPECT_NE(std::count(tones.begin(), tones.end(), std::pair(262, 1)), 0) << "the other voice, C4";
    EXPECT_EQ(machine.pcg_glyphs_on, 1);
    EXPECT_NE(machine.font_work[8 * 0xF8 + 3], 0);

    const uint8_t *const row = machine.ram + machine.text_start + 19 * text_row_bytes, *before = nullptr;
    for (int step = 0; step < 100; ++step) { // to the edge and back
        run(8);
        const uint8_t *figure = std::find_if(row + 40, row + 78, [](uint8_t code) { return code >= 0xF8; });
        EXPECT_EQ(std::count(row + 40, row + 78, ' '), 36) << "step " << step;
        EXPECT_EQ(figure[1], figure[0] + 1) << "step " << step;
        EXPECT_TRUE(before == nullptr || figure == before + 1 || figure == before - 1) << "step " << step;
        before = figure;
    }
    type("ab\\f3");
    EXPECT_EQ(rows()[22].substr(0, 7), " │ ab");
    EXPECT_EQ(machine.crtc_reverse, 1);

    type("\\b");
    run(30);
    EXPECT_EQ(machine.crtc_reverse, 0);
    EXPECT_EQ(machine.pcg_glyphs_on, 0);
    EXPECT_EQ(dot(472, 60), 0);
    EXPECT_EQ(machine.font_work[8 * 0xF8 + 3], machine.font_rom[8 * 0xF8 + 3]);
    tones.clear();
    type("LIST\n\\f1");
    run(60);
    EXPECT_EQ(shown("LIST").substr(0, 11), "10 REM kept");
    EXPECT_TRUE(tones.empty()) << "the tune has ended";
}

// What is typed, from which row on the screen is looked at, and what stands there.
TEST_F(Firmware, SessionsShowWhatTheyShould) {
    const struct {
        const char *what, *typed, *from, *expected;
        setup machine = {};
    } cases[] = {
        {"HELP for a word", "HELP line\n", "HELP line",
         "LINE INPUT [\"text\";]a$\nLINE [(x,y)]-(x,y)[,colour][,B|BF]\nOk\n"},
        {"HELP for a function", "help Left$\n", "help", "LEFT$(a$,n)\nOk\n"},
        {"HELP for nothing known", "HELP xyz\n", "HELP xyz", "No such word. HELP lists them.\nOk\n"},
        {"no expansion ROM", "DEMO\n", "DEMO\n", "", {.expansion = false}},
        {"AUTO", "AUTO 100,5\nCLS\nEND\n\nLIST\n", "LIST", "100 CLS\n105 END\nOk\n"},
        {"AUTO keeps what is there", "20 CLS\nAUTO\nEND\n\nLIST\n", "LIST", "10 END\n20 CLS\nOk\n"},
        {"DELETE", "1 CLS\n2 CLS\n3 CLS\n4 CLS\nDELETE 2-3\nLIST\n", "LIST", "1 CLS\n4 CLS\nOk\n"},
        {"DELETE up to", "1 CLS\n2 CLS\n3 CLS\nDELETE -2\nLIST\n", "LIST", "3 CLS\nOk\n"},
        {"DELETE of nothing", "1 CLS\nDELETE 2\n", "DELETE", "Undefined line number\nOk\n"},
        {"EDIT", "10 CLS\nEDIT 10\nEND:\nLIST\n", "LIST", "10 END:\nOk\n"},
        {"RENUM", "5 GOTO 7\n7 ON X GOSUB 5,9,7\n9 IF X THEN 5 ELSE 7\nRENUM\nLIST\n", "LIST",
         "10 GOTO 20\n20 ON X GOSUB 10,30,20\n30 IF X THEN 10 ELSE 20\nOk\n"},
        {"RENUM of the rest", "1 GOTO 3\n2 REM\n3 GOTO 1\nRENUM 100,2,50\nLIST\n", "LIST",
         "1 GOTO 150\n100 REM\n150 GOTO 1\nOk\n"},
        {"RENUM after a run", "1 GOTO 3\n2 REM\n3 PRINT 7\nRUN\nRENUM 100\nRUN\n", "RENUM",
         "Ok\nRUN\n 7\nOk\n"},
        {"RENUM tells what is missing", "1 GOTO 3\nRENUM\n", "RENUM", "Undefined line 3 in 1\nOk\n"},
        {"RENUM out of order", "1 REM\n9 REM\nRENUM 1,9\n", "RENUM", "Illegal function call\nOk\n"},
        {"RENUM too high", "1 REM\n9 REM\nRENUM 65529\n", "RENUM", "Illegal function call\nOk\n"},
        {"GET@ of more than the array holds", "DIM A(3)\nGET@(0,0)-(15,9),A\n", "GET",
         "Illegal function call\nOk\n"},
        {"GET@ fills it to its last byte", "DIM A%(3)\nGET@(1,1)-(8,1),A%:GET@(0,1)-(7,1),A%(1)\n", "GET",
         "Illegal function call\nOk\n"},
        {"PUT@ of what was never got", "DIM A(9)\nPUT@(0,0),A\n", "PUT", "Illegal function call\nOk\n"},
        {"PUT@ over the edge", "DIM A(9)\nGET@(0,0)-(7,7),A\nPUT@(632,192),A:PUT@(633,192),A\n", "PUT",
         "Illegal function call\nOk\n"},
        {"GET@ into a string", "DIM A$(9)\nGET@(0,0)-(7,7),A$(0)\n", "GET", "Type mismatch\nOk\n"},
        {"dump, changed on the screen",
         "MON\n:9000 1 \"AB\"\nD 9000 900f\n\\u\\r\\r\\r\\r\\r7f\n\nD 9000 9000\n",
         "*D 9000 9000",
         ":9000 7F 41 42",
         {}},
        {"fill, move down, move up, search",
         "MON\nF 9000 9020 0\nF 9000 9004 1 2\nM 9000 9004 9002\nM 9002 9006 9001\nS 9000 9020 1 2 1\nD 9000 "
         "9000\n",
         "*S", "9001 9003\n"},
        {"one line of the assembler, and what it does",
         "MON\nA 9000\nld a,12\nadd a,34\nret\n\nG 9000\n",
         "*G",
         "Returned\nPC=",
         {}},
        {"a breakpoint", "MON\n:9000 3E 12 3C C9\nB 9002\nG 9000\n\\pX A\nX AF 4500\nG\n", "*X AF",
         "*G\nReturned\nPC="},
        {"a breakpoint, wherever",
         "MON\n:D000 3E 12 3C C9\nB D002\nG D000\n",
         "*G",
         "Breakpoint\nPC=D002",
         {}},
        {"the breakpoint is gone from memory", "MON\n:9000 3E 12 3C C9\nB 9002\nG 9000\n\\pL 9002 9002\n",
         "*L", ".9002 INC A           ;3C\n"},
        {"RST 38 in a program of one's own", "POKE &H9000,255\nDEF USR=&H9000\nA=USR(0)\n\\pQ\nPRINT 5\n",
         "*Q", "Ok\nPRINT 5\n 5\nOk\n"},
        {"nonsense", "MON\nfoo\nA 9000\nld b,hl\n", ".9000", "What? Type ? for the commands.\n"},
    };
    for (const auto &c : cases) {
        session(c.typed, 90, c.machine);
        EXPECT_EQ(shown(c.from).substr(0, std::strlen(c.expected)), c.expected) << c.what << "\n"
                                                                                << text_screen();
    }
}

// A disassembly on the screen is taken back by the assembler, a RETURN a line, and gives the same bytes: all
// opcodes, each with operands that show their order and sign.
TEST_F(Firmware, AssemblerTakesWhatTheDisassemblerWrites) {
    std::vector<uint8_t> code;
    const std::vector<std::vector<uint8_t>> prefixes = {
        {}, {0xCB}, {0xED}, {0xDD}, {0xFD}, {0xDD, 0xCB, 5}, {0xFD, 0xCB, 0xF0}};
    for (const auto &prefix : prefixes)
        for (int opcode = 0; opcode < 256; ++opcode) {
            if (prefix.empty() && (opcode == 0xCB || opcode == 0xED || opcode == 0xDD || opcode == 0xFD))
                continue;
            if (prefix == prefixes[2] && (opcode == 0x63 || opcode == 0x6B)) continue;     // LD (nn),HL twice
            if (!prefix.empty() && prefix[0] == 0xFD && (opcode & 0x30) != 0x30) continue; // as with DD
            code.insert(code.end(), prefix.begin(), prefix.end());
            code.push_back(static_cast<uint8_t>(opcode));
            if (prefix.size() == 3 || prefix == prefixes[1]) continue;
            code.insert(code.end(), {0x85, 0x47});
        }
    session("MON\n");
    uint16_t at = 0x9000;
    const uint16_t end = static_cast<uint16_t>(at + code.size());
    std::copy(code.begin(), code.end(), machine.ram + at);
    while (at < end) {
        char command[16];
        std::snprintf(command, sizeof command, "l %04x\n", at);
        press(vk_home, true); // clears
        type_fast(command);
        run(40);
        const std::vector<std::string> listed = rows();
        unsigned last = 0, first = 0;
        ASSERT_EQ(std::sscanf(listed.at(1).c_str(), ".%x", &first), 1);
        ASSERT_EQ(std::sscanf(listed.at(16).c_str(), ".%x", &last), 1);
        ASSERT_EQ(first, at);
        const std::string bytes = listed[16].substr(listed[16].find(';') + 1);
        const auto next = static_cast<uint16_t>(last + bytes.size() / 2);
        const std::vector<uint8_t> before(machine.ram + at, machine.ram + next);
        std::fill(machine.ram + at, machine.ram + next, uint8_t{});
        press(vk_home);
        press(vk_down);
        for (int row = 1; row <= 16; ++row) {
            press(vk_return);
            for (int wait = 0; wait < 300 && !(machine.cursor_y == row + 1 && machine.cursor_x == 6); ++wait)
                run(1);
        }
        EXPECT_EQ(std::vector<uint8_t>(machine.ram + at, machine.ram + next), before) << text_screen();
        at = next;
    }
}

} // namespace
