// Host keys to matrix rows, as port reads show them.
#include "machine_fixture.h"

#include <map>

namespace {

struct Keyboard : Machine {
    static void retraces(int count) {
        for (; count > 0; --count) keyboard_retrace();
    }
};

// Row and bit of every host key, row by row, bit 0 first; 0 where no host key stands for the machine's.
constexpr uint32_t matrix[key_rows][8] = {
    {0x60, 0x61, 0x62, 0x63, 0x64, 0x65, 0x66, 0x67}, // ten-key 0-7
    {0x68, 0x69, 0x6A, 0x6B, 0, 0, 0x6E, 0x0D},       // ten-key 8 9 * + . return
    {0xC0, 'A', 'B', 'C', 'D', 'E', 'F', 'G'},
    {'H', 'I', 'J', 'K', 'L', 'M', 'N', 'O'},
    {'P', 'Q', 'R', 'S', 'T', 'U', 'V', 'W'},
    {'X', 'Y', 'Z', 0xDB, 0xDC, 0xDD, 0xDE, 0xBD},
    {'0', '1', '2', '3', '4', '5', '6', '7'},
    {'8', '9', 0xBA, 0xBB, 0xBC, 0xBE, 0xBF, 0xE2},
    {0x24, 0x26, 0x27, 0x2D, 0x1D, 0x1C, 0x10, 0x11}, // home, up, right, ins, GRPH, kana, shift, control
    {0x08, 0x70, 0x71, 0x72, 0x73, 0x74, 0x20, 0x1B}, // STOP, F1-F5, space, escape
    {0x09, 0x28, 0x25, 0, 0, 0, 0, 0},                // tab, down, left
};

TEST_F(Keyboard, EveryKeyHasItsPlaceAndNoOtherHasOne) {
    std::map<uint32_t, int> places;
    for (int place = 0; place < 8 * key_rows; ++place)
        if (const uint32_t key = matrix[place / 8][place % 8]) places[key] = place;
    // Second keys of a position.
    places[0x2E] = places[0x2D], places[0xF0] = places[0x1C], places[0xA2] = places[0xA3] = places[0x11];
    constexpr int caps = 87;
    for (int place = 0; place < 88; ++place) places[0x100 + static_cast<uint32_t>(place)] = place;
    for (const int mapped : {-1, 1, 0}) { // as built in first
        const bool tenkeyless = mapped == 1;
        if (mapped != -1) map_cursor_keys(tenkeyless);
        auto expected = places; // left, up, right and down stand in for the ten-key 4, 8, 6 and 2
        for (uint32_t i = 0; tenkeyless && i < 4; ++i) expected[0x25 + i] = places["\x64\x68\x66\x62"[i]];
        for (uint32_t code = 0; code < 0x400; ++code) {
            if (code == 0x100 + caps) continue;
            const auto place = expected.find(code);
            key_press(code);
            key_press(code);
            for (int row = 0; row < 16; ++row) {
                const bool held = place != expected.end() && place->second / 8 == row;
                EXPECT_EQ(in(row), held ? 0xFF & ~(1 << place->second % 8) : 0xFF)
                    << "key 0x" << std::hex << code << " row " << row;
            }
            retraces(3);
            key_release(code);
            for (const auto &row : machine.key_matrix) EXPECT_EQ(row, 0xFF) << "key 0x" << std::hex << code;
        }
    }
    for (const int row : {0x7F, 0xFF}) { // a switch
        key_press(0x100 + caps);
        key_release(0x100 + caps);
        EXPECT_EQ(in(10), row);
    }
    for (const uint32_t key : {0x41u, 0x43u, 0x2Du, 0x2Eu}) key_press(key);
    retraces(3);
    key_release(0x41);
    EXPECT_EQ(in(2), 0xF7);
    key_release(0x2D);
    EXPECT_EQ(in(8), 0xFF) << "insert and delete are one key here";
    machine.reset_keyboard(machine);
    key_release(0x43); // comes late
    EXPECT_EQ(in(2), 0xFF);
}

// Changes as a host sends them, some within one frame; what the program sees at each retrace.
TEST_F(Keyboard, ATapLastsTwoRetracesAndReleasesFollowInOrder) {
    const struct {
        const char *what;
        std::vector<const char *>
            changes;       // before each retrace: a letter presses A or B, or '^' shift; small releases
        const char *downs; // after each: what is down, in hex: 1 A, 2 B, 4 shift
    } cases[] = {
        {"a tap", {"Aa"}, "1100"},
        {"across a retrace", {"A", "a"}, "1100"},
        {"held long", {"A", "", "", "", "a", ""}, "111100"}, // at once
        {"struck twice", {"AaAa"}, "110011000"},
        {"a repeat of what waits", {"AaAAa"}, "110011000"},
        {"struck while it waits", {"Aa", "A", "", "", "", "", "", "a"}, "1100111000"},
        {"two keys", {"AaBb"}, "11220"},
        {"the second a frame later", {"Aa", "Bb"}, "11220"},
        {"a long shift let go of right after a tap", {"^", "", "", "Aa_"}, "44455000"},
        {"shift and key let go of together", {"^Aa_"}, "55000"},
        {"a letter right behind them is no capital", {"^Aa_Bb"}, "55220"},
    };
    for (const auto &c : cases) {
        SetUp();
        std::string shown;
        for (size_t i = 0; c.downs[i] != 0; ++i) {
            for (const char *change = i < c.changes.size() ? c.changes[i] : ""; *change != 0; ++change) {
                const bool shift = *change == '^' || *change == '_';
                const uint32_t key = shift ? 0x10u : static_cast<uint32_t>(*change & ~0x20);
                *change >= 'A' && *change <= '^' ? key_press(key) : key_release(key);
            }
            retraces(1);
            shown +=
                static_cast<char>('0' + (in(2) & 2 ? 0 : 1) + (in(2) & 4 ? 0 : 2) + (in(8) & 0x40 ? 0 : 4));
        }
        EXPECT_EQ(shown, c.downs) << c.what;
    }
    for (int i = 0; i < 100; ++i) key_press('A'), key_release('A'); // more than can wait
    int presses = 0;
    for (int i = 0, before = 0xFF; i < 500; ++i, before = in(2)) {
        retraces(1);
        presses += in(2) != 0xFF && before == 0xFF;
    }
    EXPECT_EQ(presses, 33) << "the first, and those among the first 64 changes that waited";
    EXPECT_EQ(in(2), 0xFF);
}

} // namespace
