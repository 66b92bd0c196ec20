// Keys by their place. What is held and let go is tested with the window.
#include "platform/desktop/key_map.h"

#include <gtest/gtest.h>
#include <set>

using namespace platform;

namespace {

// The rows of a Japanese keyboard as a person sees them, against the codes of the kernel. Every key of the
// machine is within reach of a keyboard without yen, ro, muhenkan, henkan and kana.
TEST(KeyMap, RowsOfAJapaneseKeyboardAndEveryKeyOfTheMachine) {
    struct {
        uint32_t first;
        std::vector<uint32_t> keys;
    } const rows[] = {
        {1, {0x1B, '1', '2', '3', '4', '5', '6', '7', '8', '9', '0', 0xBD, 0xDE}},   // Esc ... - ^
        {15, {0x09, 'Q', 'W', 'E', 'R', 'T', 'Y', 'U', 'I', 'O', 'P', 0xC0, 0xDB}},  // Tab ... @ [
        {28, {0x0D, 0x11, 'A', 'S', 'D', 'F', 'G', 'H', 'J', 'K', 'L', 0xBB, 0xBA}}, // Return Ctrl ... ; :
        {43, {0xDD, 'Z', 'X', 'C', 'V', 'B', 'N', 'M', 0xBC, 0xBE, 0xBF, 0x10, 0x6A}},
        {71, {0x67, 0x68, 0x69, 0x155, 0x64, 0x65, 0x66, 0x6B, 0x61, 0x62, 0x63, 0x60, 0x6E}}, // keypad
        {59, {0x70, 0x71, 0x72, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79}},
        {124, {0xDC}}, // yen
        {89, {0xE2}},  // ro
        {92, {0x1C}},  // henkan
        {94, {0x1D}},  // muhenkan
        {0, {0}},
        {128, {0}},
        {0xFFFFFFF8, {0}},
    };
    std::set<uint32_t> machine = {0xDC, 0xE2, 0x24, 0x26, 0x27, 0x2D, 0x2E, 0x1D, 0x1C,
                                  0x10, 0x08, 0x20, 0x28, 0x25, 0x13, 0x23, 0x7A, 0x7B};
    for (const auto &r : rows)
        for (uint32_t i = 0; i < r.keys.size(); ++i) {
            EXPECT_EQ(virtual_key_of_evdev(r.first + i), r.keys[i]) << std::hex << "evdev 0x" << r.first + i;
            machine.insert(r.keys[i]);
        }
    const std::set<uint32_t> japanese_only = {86, 89, 90, 91, 92, 93, 94, 95, 122, 123, 124};
    for (uint32_t code = 0; code < 256; ++code)
        if (!japanese_only.contains(code)) machine.erase(virtual_key_of_evdev(code));
    EXPECT_TRUE(machine.empty()) << std::hex << "no key for virtual key 0x" << *machine.begin();
}

} // namespace
