#include "machine/kiv_machine.h"

#include <array>

namespace {

constexpr uint8_t no_key = 0xFF;

constexpr uint8_t key(int row, int bit) { return static_cast<uint8_t>(row * 8 + bit); }

// The matrix ends within row 11: what lies behind is no key, no_key included.
constexpr uint8_t matrix_keys = key(11, 2);

constexpr std::array<uint8_t, 256> standard_keys() {
    std::array<uint8_t, 256> index{};
    const auto run = [&index](size_t first, size_t count, uint8_t first_key) {
        for (size_t i = 0; i < count; ++i) index[first + i] = static_cast<uint8_t>(first_key + i);
    };
    index.fill(no_key);
    run(0x60, 10, key(0, 0));                            // ten-key 0-9
    index[0x6A] = key(1, 2);                             // ten-key *
    index[0x6B] = key(1, 3);                             // ten-key +
    index[0x6E] = key(1, 6);                             // ten-key .
    index[0x0D] = key(1, 7);                             // return
    index[0xC0] = key(2, 0);                             // @
    run(0x41, 26, key(2, 1));                            // A-Z
    run(0xDB, 4, key(5, 3));                             // [ yen ] ^
    index[0xBD] = key(5, 7);                             // -
    run(0x30, 10, key(6, 0));                            // 0-9
    run(0xBA, 3, key(7, 2));                             // : ; ,
    run(0xBE, 2, key(7, 5));                             // . /
    index[0xE2] = key(7, 7);                             // _
    index[0x24] = key(8, 0);                             // HOME CLR
    index[0x26] = key(8, 1);                             // up
    index[0x27] = key(8, 2);                             // right
    index[0x2D] = index[0x2E] = key(8, 3);               // INS DEL
    index[0x1D] = key(8, 4);                             // GRPH
    index[0x1C] = index[0xF0] = key(8, 5);               // kana
    index[0x10] = key(8, 6);                             // SHIFT
    index[0x11] = index[0xA2] = index[0xA3] = key(8, 7); // CTRL
    index[0x08] = key(9, 0);                             // STOP
    run(0x70, 5, key(9, 1));                             // F1-F5
    index[0x20] = key(9, 6);                             // space
    index[0x1B] = key(9, 7);                             // ESC
    index[0x09] = key(10, 0);                            // TAB
    index[0x28] = key(10, 1);                            // down
    index[0x25] = key(10, 2);                            // left
    return index;
}

// Virtual-key code to key index, or no_key. Four entries follow map_cursor_keys.
std::array<uint8_t, 256> virtual_keys = standard_keys();

uint8_t key_of(uint32_t virtual_key) {
    return virtual_key < virtual_keys.size() ? virtual_keys[virtual_key] : no_key;
}

} // namespace

void key_press(uint32_t virtual_key) {
    const uint8_t index = key_of(virtual_key);
    if (index < matrix_keys) machine.key_matrix[index / 8] &= static_cast<uint8_t>(~(1u << index % 8));
}

void key_release(uint32_t virtual_key) {
    const uint8_t index = key_of(virtual_key);
    if (index < matrix_keys) machine.key_matrix[index / 8] |= static_cast<uint8_t>(1u << index % 8);
}

void map_cursor_keys(bool tenkeyless) {
    virtual_keys[0x25] = tenkeyless ? key(0, 4) : key(10, 2);
    virtual_keys[0x26] = tenkeyless ? key(1, 0) : key(8, 1);
    virtual_keys[0x27] = tenkeyless ? key(0, 6) : key(8, 2);
    virtual_keys[0x28] = tenkeyless ? key(0, 2) : key(10, 1);
}

void reset_keyboard(kiv_machine &m) {
    for (auto &row : m.key_matrix) row = uint8_t{0xFF};
}
