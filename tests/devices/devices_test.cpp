// BASIC's devices through BASIC: console, screen editor, keys, graphics, sound, glyphs, calendar.
#include "display/frame_composer.h"
#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/rom_loader.h"
#include "machine/run_block.h"
#include "resources/resources.h"
#include "tests/typed_keys.h"
#include "tools/kiv_run_outputs.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>
#include <vector>

namespace {

using tone = std::pair<int, int>; // channel, Hz; 0 Hz: silence

class Devices : public testing::Test {
  protected:
    static inline std::vector<tone> tones; // what changed, in order
    static inline int sounding[3], beeps;
    static inline bool beeping;
    static inline uint64_t frame;

    static void power_on(bool zun = true) {
        register_program_resources();
        calendar_fix_time({1982, 11, 9, 23, 59, 58});
        machine_init(
            machine, [] {}, [] {});
        host_callbacks_listen({[] { beeps += !std::exchange(beeping, true); }, [] { beeping = false; },
                               [](uint16_t frequency, uint32_t channel) {
                                   if (std::exchange(sounding[channel], frequency) != frequency)
                                       tones.emplace_back(channel, frequency);
                               },
                               [](uint32_t) {}, [] {}, [] {}});
        run_state.clock_counter = 0;
        ASSERT_EQ(load_rom_images(KIV_FIRMWARE_DIR), "");
        const auto font = platform::find_resource(platform::resource_type::font, font_resource_id);
        std::copy_n(font.data, font_size, machine.font_rom);
        std::copy_n(font.data, font_work_size, machine.font_work);
        machine.boot_rom = uint8_t{zun};
        map_cursor_keys(false);
        z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
        run(60);
        tones.clear();
        beeps = 0;
    }
    void TearDown() override { calendar_use_host_time(); }

    static void run(int frames) {
        for (uint32_t i = 0; frames > 0; ++i) {
            const pass_outcome outcome = machine_pass(i, true);
            ASSERT_NE(outcome, pass_outcome::stopped) << "at 0x" << std::hex << main_cpu.trace_pc;
            if (outcome == pass_outcome::frame) --frames, ++frame;
        }
    }
    // Types the text and runs on for some frames.
    static void type(const std::string &text, int then = 40) {
        typist keys;
        keys.at_frame(frame);
        add_keys(keys, text);
        while (keys.waiting() != 0) {
            keys.at_frame(frame);
            run(1);
        }
        run(then);
    }
    static std::vector<std::string> shown() {
        std::vector<std::string> rows;
        std::istringstream in(text_screen());
        for (std::string row; std::getline(in, row);)
            rows.push_back(row.substr(0, row.find_last_not_of(' ') + 1));
        return rows;
    }
    static void decode() {
        for (uint32_t row = 0; row < text_rows; ++row) { // rows hand attributes down
            machine.text_row_fetch(row);
            machine.text_row_decode(row);
            std::copy_n(text_work.row_chars, text_columns, chars[row]);
            std::copy_n(text_work.cell_attr, text_columns, cells[row]);
        }
    }
    static inline uint8_t chars[text_rows][text_columns], cells[text_rows][text_columns];

    static int dot(int x, int y) {
        int colour = 0;
        for (int plane = 0; plane < 3; ++plane)
            colour |= (machine.gvram[plane][80 * y + x / 8] >> (7 - x % 8) & 1) << plane;
        return colour;
    }
};

TEST_F(Devices, ScreenShowsWhatIsTypedAndPrinted) {
    const struct {
        const char *name, *typed;
        std::vector<std::string> rows; // in this order, others between them
    } cases[] = {
        {"a line of more than a row comes back as one",
         "10 REM "
         "345678901234567890123456789012345678901234567890123456789012345678901234567890XYZ\nCLS\nLIST\n",
         {"10 REM 3456789012345678901234567890123456789012345678901234567890123456789012345", "67890XYZ",
          "Ok"}},
        {"writing over, RETURN within the line", "PRINT 123\\l\\l9\n", {"PRINT 193", " 193"}},
        {"going up to an older line", "PRINT 5\n\\u\\u\\u\\r\\r\\r\\r\\r\\r7\n", {"PRINT 7", " 7"}},
        {"INPUT leaves its prompt out", "10 INPUT \"N\";A:PRINT A*2\nRUN\n21\n", {"N? 21", " 42"}},
        {"STOP leaves the line", "PRINT 1\\bPRINT 2\n", {"PRINT 1", "PRINT 2", " 2"}},
        {"function keys, one of them new", "KEY 1,\"PRINT 6*7\"+CHR$(13)\n\\f1", {"PRINT 6*7", " 42", "Ok"}},
        {"rows scroll inside the window only",
         "10 PRINT \"HEAD\":CONSOLE 2,5:LOCATE 0,2:FOR I=1 TO 30:PRINT I:NEXT\nCLS\nRUN\n",
         {"RUN", " 28", " 29", " 30", "Ok"}},
        {"places",
         "10 LOCATE 10,5:PRINT \"X\";:PRINT POS(0);CSRLIN;:LOCATE ,7:PRINT \"Y\"\nCLS\nRUN\n",
         {"          X 11  5", "                  Y"}},
        {"INKEY$ does not wait",
         "10 A$=INKEY$:IF A$=\"\" THEN 10\n20 PRINT ASC(A$)\nRUN\n\\pq",
         {"RUN", " 113"}},
        {"out of range",
         "LOCATE 80,0\nPSET(1,1),8\nKEY 11,\"\"\n",
         {"Illegal function call", "Illegal function call", "Illegal function call"}},
        {"time and date",
         "PRINT TIME$:TIME$=\"12:34:56\":PRINT TIME$:PRINT DATE$:DATE$=\"84/02/29\":PRINT DATE$\n",
         {"23:59:58", "12:34:56", "00/11/09", "84/02/29"}},
    };
    power_on();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        type("\\b\nCONSOLE 0,25:NEW\nCLS\n");
        type(c.typed, 80);
        const auto screen = shown();
        auto at = screen.begin();
        for (const std::string &row : c.rows) {
            at = std::find(at, screen.end(), row);
            if (at == screen.end()) {
                ADD_FAILURE() << "not shown, or not in its place: " << row << '\n' << text_screen();
                break;
            }
            ++at;
        }
    }
}

TEST_F(Devices, FortyColumnsAndTwentyRows) {
    power_on();
    type("WIDTH 40,20:FOR I=1 TO 45:PRINT \"*\";:NEXT:COLOR 2:LOCATE 5,10:PRINT \"END\";:COLOR 7\n");
    EXPECT_EQ(machine.screen_mode, 0u);
    EXPECT_EQ(machine.crtc_lines, 20);
    decode();
    EXPECT_EQ(chars[0][78], '*');
    EXPECT_EQ(chars[1][8], '*');
    EXPECT_EQ(chars[1][10], ' ');
}

// In no picture has a character another colour than it was printed in, however rows scroll meanwhile.
TEST_F(Devices, NoPictureOfHalfWrittenAttributes) {
    power_on();
    type("10 C=C MOD 7+1:COLOR C:FOR I=0 TO 2:PRINT C;C;:COLOR 8-C:PRINT 8-C;:COLOR C:NEXT:PRINT:GOTO "
         "10\nCLS\n");
    type("RUN\n", 0);
    int digits = 0;
    const uint8_t host[] = {0, 1, 4, 5, 2, 3, 6, 7}; // of the colours' order
    for (int picture = 0; picture < 150; ++picture) {
        run(1);
        decode();
        int wrong = 0;
        for (int row = 2; row < 24; ++row)
            for (int column = 0; column < 40; ++column)
                if (chars[row][column] >= '1' && chars[row][column] <= '7') {
                    ++digits;
                    wrong += (cells[row][column] & 7) != host[chars[row][column] - '0'];
                }
        ASSERT_EQ(wrong, 0) << "picture " << picture << '\n' << text_screen();
    }
    EXPECT_GT(digits, 20000);
}

TEST_F(Devices, AttributesOfCells) {
    const struct {
        const char *typed;
        std::vector<std::pair<int, int>> cells; // column of row 2, attribute
    } cases[] = {
        {"COLOR 2,4:PRINT \"HI\":COLOR 7,0\n", {{0, 4}, {1, 4 | 0x20}, {2, 4}}},
        {"PRINT \"A \";:COLOR 2,4:PRINT \"HI\";:COLOR 7,0:PRINT \" B\"\n",
         {{0, 7}, {2, 4 | 0x20}, {3, 4 | 0x20}, {6, 7}}},
        {"PRINT \"A\";:COLOR ,8:PRINT \"UN\";:COLOR ,0:PRINT \"B\"\n", {{0, 7}, {1, 7 | 0x80}, {3, 7}}},
    };
    power_on();
    for (const auto &c : cases) {
        type("CLS\n");
        type(c.typed);
        decode();
        for (const auto &[column, attribute] : c.cells)
            EXPECT_EQ(cells[2][column], attribute) << c.typed << " column " << column;
    }
    EXPECT_EQ(cells[3][0], 7) << "nothing flows on";
}

uint32_t hash(const void *data, size_t size) { // FNV
    uint32_t h = 2166136261u;
    for (size_t i = 0; i < size; ++i) h = (h ^ static_cast<const uint8_t *>(data)[i]) * 16777619u;
    return h;
}

// Pictures that were looked at: their hash, and a few dots that tell what is wrong when it changes.
TEST_F(Devices, PicturesOnPlanes) {
    const struct {
        const char *name, *typed;
        uint32_t hash;
        std::vector<std::array<int, 3>> dots;
    } cases[] = {
        {"lines of all slopes, cut at the edges",
         "FOR I=-50 TO 700 STEP 50:LINE(320,100)-(I,-20),I/50 AND 7:LINE(320,100)-(I,250),7:NEXT\n",
         1831315039u,
         {{320, 100, 7}}},
        {"boxes",
         "LINE(10,10)-(100,50),5,B:LINE(630,190)-(700,300),3,BF:LINE(20,20)-(20,20),2,BF\n",
         3480437925u,
         {{10, 10, 5}, {100, 50, 5}, {11, 11, 0}, {630, 190, 3}, {639, 199, 3}, {20, 20, 2}, {21, 20, 0}}},
        {"the last point",
         "PSET(5,5),1:LINE-(15,5),2:LINE STEP(1,1)-STEP(3,0),4:PSET STEP(2,2),6\n",
         1380698739u,
         {{5, 5, 2}, {16, 6, 4}, {19, 6, 4}, {21, 8, 6}}},
        {"circle, arc, pie and ellipse",
         "CIRCLE(100,100),80,3:CIRCLE(300,100),80,5,0,3.1416:CIRCLE(450,100),60,2,-1,-5:CIRCLE(560,100),60,4,"
         ",,2\n",
         1020882579u,
         {{180, 100, 3}, {100, 60, 3}, {300, 60, 5}, {300, 140, 0}, {450, 100, 2}, {590, 100, 4}}},
        {"painting around and into corners",
         "CIRCLE(320,100),150,7:CIRCLE(320,100),60,7:PAINT(200,100),5,7:PAINT(0,0),1,7\n",
         1022048724u,
         {{200, 100, 5}, {440, 100, 5}, {320, 100, 0}, {320, 30, 5}, {0, 199, 1}, {639, 0, 1}}},
        {"painting over its own colour ends",
         "LINE(0,0)-(99,99),2,BF:PAINT(5,5),2\n",
         521239381u,
         {{99, 99, 2}}},
        {"DRAW",
         "DRAW \"BM100,100C4E20F20G20H20BM300,100C2NU20ND20NL40NR40S8C6R20D10L20U10\"\n",
         442744770u,
         {{100, 100, 4}, {120, 80, 4}, {340, 100, 6}, {260, 100, 2}, {340, 120, 6}}},
        {"dots",
         "PSET(0,0):PSET(639,199,3):PSET(640,0):PSET(-1,5):PSET(9,9):PRESET(9,9)\n",
         2184748101u,
         {{0, 0, 7}, {639, 199, 3}, {9, 9, 0}}},
    };
    power_on();
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        type("CLS 3\n");
        type(c.typed, 400);
        for (const auto &[x, y, colour] : c.dots) EXPECT_EQ(dot(x, y), colour) << x << ',' << y;
        EXPECT_EQ(hash(machine.gvram, sizeof machine.gvram), c.hash);
    }
    type("CLS 3:COLOR=(1,6):PSET(9,9),3:PRINT POINT(9,9);POINT(700,0)\n");
    EXPECT_EQ(machine.palette[1], 6);
    EXPECT_NE(text_screen().find(" 3 -1"), std::string::npos);
}

// The worst that PAINT can be asked for: it ends, whole or with an error, and the machine goes on.
TEST_F(Devices, PaintOfManyCellsStaysInItsQueue) {
    power_on();
    type("FOR Y=0 TO 199 STEP 2:LINE(0,Y)-(639,Y):NEXT:FOR X=0 TO 639 STEP 4:LINE(X,0)-(X,199):NEXT\n", 400);
    type("FOR Y=0 TO 198 STEP 2:FOR X=4 TO 639 STEP 8:PSET(X,Y+1),0:PSET(X-2,Y+2),0:NEXT:NEXT\n", 3000);
    type("CLS\nPAINT(1,1),4,7\nPRINT 1+1\n", 2000);
    const auto rows = shown();
    EXPECT_NE(std::find(rows.begin(), rows.end(), " 2"), rows.end()) << text_screen();
    EXPECT_EQ(dot(1, 1), 4);
}

TEST_F(Devices, SemigraphicsWithoutPlanes) {
    power_on(false);
    type("CLS\n");
    type("LINE(0,20)-(159,20),4:LINE(10,30)-(20,40),2,BF:PSET(10,30),0:PRINT "
         "POINT(11,30);POINT(10,30);POINT(160,0)\n");
    EXPECT_EQ(shown()[3], " 2  0 -1");
    decode();
    EXPECT_EQ(chars[5][79], 0x11);
    EXPECT_EQ(cells[5][79], 0x10 | 2); // green, in the host's order
    EXPECT_EQ(chars[8][6], 0xFF);
    EXPECT_EQ(cells[8][6], 0x10 | 4);
    type("CLS\n");
    type("LINE(0,0)-(159,99),4:LOCATE 0,3:PRINT 1\nPRINT 6*7\n");
    EXPECT_NE(text_screen().find(" 42"), std::string::npos) << "dots are no text to the editor";
    type("CLS:CIRCLE(80,50),30,7:PAINT(80,50),1,7\n", 1500);
    decode();
    EXPECT_EQ(chars[12][40], 0xFF);
    EXPECT_EQ(chars[2][2], ' ');
}

TEST_F(Devices, MelodiesPlayWhileTheProgramGoesOn) {
    power_on();
    type("PLAY \"T150O4L4CE>C\",\"O3L2CG\":PRINT \"ON\"\n", 10);
    EXPECT_NE(text_screen().find("\nON"), std::string::npos);
    EXPECT_EQ(machine.portE6 & 1, 1) << "the clock runs";
    run(120);
    const std::vector<tone> want{{0, 262}, {1, 131}, {0, 0},   {0, 330}, {0, 0},
                                 {1, 0},   {0, 523}, {1, 196}, {0, 0},   {1, 0}};
    for (int channel = 0; channel < 3; ++channel) {
        const auto of = [channel](const std::vector<tone> &all) {
            std::vector<int> hertz;
            for (const tone &t : all)
                if (t.first == channel) hertz.push_back(t.second);
            return hertz;
        };
        EXPECT_EQ(of(tones), of(want)) << "channel " << channel;
    }
    EXPECT_EQ(machine.portE6 & 1, 0) << "and stops when all is said";

    tones.clear();
    type("SOUND 2,1000,30:BEEP\n", 120);
    EXPECT_EQ(tones, (std::vector<tone>{{1, 1000}, {1, 0}}));
    EXPECT_EQ(beeps, 1);
    EXPECT_FALSE(beeping);
    type("SOUND 1,440:BEEP 1\n\\b", 10);
    EXPECT_EQ(sounding[0], 0) << "STOP silences";
    EXPECT_FALSE(beeping);
}

TEST_F(Devices, GlyphsOfOnesOwn) {
    power_on();
    type("PCG 200,\"3C42A581A599423C\"\n");
    const uint8_t face[] = {0x3C, 0x42, 0xA5, 0x81, 0xA5, 0x99, 0x42, 0x3C};
    EXPECT_EQ(std::memcmp(machine.font_work + 8 * 200, face, 8), 0);
    EXPECT_EQ(machine.pcg_glyphs_on, 1);
    type("PCG:PCG OFF\n");
    EXPECT_EQ(std::memcmp(machine.font_work + 8 * 200, machine.font_rom + 8 * 200, 8), 0);
    EXPECT_EQ(machine.pcg_glyphs_on, 0);
}

} // namespace
