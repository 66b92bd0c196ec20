// Host keys to matrix rows, as port reads show them.
#include "machine_fixture.h"

#include <map>

namespace {

class Keyboard : public Machine {
  protected:
    void TearDown() override {
        map_cursor_keys(false);
        Machine::TearDown();
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
// Second keys of a position.
constexpr uint32_t doubles[][2] = {{0x2E, 0x2D}, {0xF0, 0x1C}, {0xA2, 0x11}, {0xA3, 0x11}};

TEST_F(Keyboard, EveryKeyHasItsPlaceAndNoOtherHasOne) {
    std::map<uint32_t, int> places;
    for (int row = 0; row < key_rows; ++row)
        for (int bit = 0; bit < 8; ++bit)
            if (matrix[row][bit] != 0) places[matrix[row][bit]] = row * 8 + bit;
    for (const auto &[second, first] : doubles) places[second] = places.at(first);
    EXPECT_EQ(places.size(), 85u);
    for (uint32_t code = 0; code < 0x400; ++code) {
        const auto place = places.find(code);
        key_press(code);
        key_press(code);
        for (int row = 0; row < 16; ++row) {
            const bool held = place != places.end() && place->second / 8 == row;
            EXPECT_EQ(in(row), held ? 0xFF & ~(1 << place->second % 8) : 0xFF)
                << "key " << hex{code} << " row " << row;
        }
        key_release(code);
        for (int row = 0; row < key_rows; ++row)
            EXPECT_EQ(in(row), 0xFF) << "key " << hex{code} << " row " << row;
    }
}

TEST_F(Keyboard, KeysOfOneRowAndOfOnePlace) {
    key_press('A');
    key_press('C');
    EXPECT_EQ(in(2), 0xF5);
    key_release('A');
    EXPECT_EQ(in(2), 0xF7);
    key_press(0x2D);
    key_press(0x2E);
    key_release(0x2D); // insert and delete are one key here
    EXPECT_EQ(in(8), 0xFF);
    machine.reset_keyboard(machine);
    key_release('C'); // its release comes late
    EXPECT_EQ(in(2), 0xFF);
}

TEST_F(Keyboard, ArrowsStandInForTheTenKey) {
    const struct {
        uint32_t code;
        int row, bit, tenkey_row, tenkey_bit;
    } arrows[] = {{0x25, 10, 2, 0, 4}, {0x26, 8, 1, 1, 0}, {0x27, 8, 2, 0, 6}, {0x28, 10, 1, 0, 2}};
    for (const bool tenkeyless : {true, false, true}) {
        map_cursor_keys(tenkeyless);
        for (const auto &arrow : arrows) {
            key_press(arrow.code);
            const int row = tenkeyless ? arrow.tenkey_row : arrow.row,
                      bit = tenkeyless ? arrow.tenkey_bit : arrow.bit;
            for (int r = 0; r < key_rows; ++r)
                EXPECT_EQ(in(r), r == row ? 0xFF & ~(1 << bit) : 0xFF)
                    << "key " << hex{arrow.code} << " row " << r;
            key_release(arrow.code);
        }
    }
}

} // namespace
