// Keys by their place, what is held, and what is let go when the keyboard goes elsewhere.
#include "platform/desktop/key_map.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

using namespace platform;

namespace {

// The rows of a Japanese keyboard as a person sees them, against the codes of the kernel.
TEST(KeyMap, RowsOfAJapaneseKeyboard) {
    struct row {
        uint32_t first;
        std::vector<uint32_t> keys;
    };
    const row rows[] = {
        {1, {0x1B, '1', '2', '3', '4', '5', '6', '7', '8', '9', '0', 0xBD, 0xDE}}, // Esc ... - ^
        {15,
         {0x09, 'Q', 'W', 'E', 'R', 'T', 'Y', 'U', 'I', 'O', 'P', 0xC0, 0xDB, 0x0D}}, // Tab ... @ [ Return
        {30, {'A', 'S', 'D', 'F', 'G', 'H', 'J', 'K', 'L', 0xBB, 0xBA}},              // ... ; :
        {43, {0xDD, 'Z', 'X', 'C', 'V', 'B', 'N', 'M', 0xBC, 0xBE, 0xBF}},            // ] ... , . /
        {71, {0x67, 0x68, 0x69, 0x6D, 0x64, 0x65, 0x66, 0x6B, 0x61, 0x62, 0x63, 0x60, 0x6E}}, // keypad
        {59, {0x70, 0x71, 0x72, 0x73, 0x74, 0x75, 0x76, 0x77, 0x78, 0x79}},
        {124, {0xDC}}, // yen
        {89, {0xE2}},  // ro
        {92, {0x1C}},  // henkan
        {94, {0x1D}},  // muhenkan
        {0, {0}},
        {128, {0}},
        {0xFFFFFFF8, {0}},
    };
    for (const row &r : rows)
        for (uint32_t i = 0; i < r.keys.size(); ++i)
            EXPECT_EQ(virtual_key_of_evdev(r.first + i), r.keys[i]) << std::hex << "evdev 0x" << r.first + i;
}

// Every key of the machine's table, also on a keyboard without yen, ro, muhenkan, henkan and kana.
TEST(KeyMap, EveryKeyOfTheMachineIsReachable) {
    std::set<uint32_t> machine = {0x6A, 0x6B, 0x6E, 0x0D, 0xC0, 0xDB, 0xDC, 0xDD, 0xDE, 0xBD, 0xBA,
                                  0xBB, 0xBC, 0xBE, 0xBF, 0xE2, 0x24, 0x26, 0x27, 0x2D, 0x2E, 0x1D,
                                  0x1C, 0x10, 0x11, 0x08, 0x20, 0x1B, 0x09, 0x28, 0x25};
    for (uint32_t k = 0x60; k <= 0x69; ++k) machine.insert(k);
    for (uint32_t k = 'A'; k <= 'Z'; ++k) machine.insert(k);
    for (uint32_t k = '0'; k <= '9'; ++k) machine.insert(k);
    for (uint32_t k = 0x70; k <= 0x7B; ++k) machine.insert(k); // with the command keys
    machine.insert({0x13, 0x23});
    const std::set<uint32_t> japanese_only = {89, 90, 91, 92, 93, 94, 95, 122, 123, 124, 86};
    std::set<uint32_t> reachable;
    for (uint32_t code = 0; code < 256; ++code)
        if (japanese_only.count(code) == 0) reachable.insert(virtual_key_of_evdev(code));
    for (const uint32_t key : machine)
        EXPECT_EQ(reachable.count(key), 1u) << std::hex << "virtual key 0x" << key;
}

TEST(KeyTracker, OneReleaseAKeyAndTheSameOne) {
    key_tracker t;
    EXPECT_TRUE(t.press(1, 'A'));
    EXPECT_FALSE(t.press(1, 'A')) << "a repeat";
    EXPECT_EQ(t.release(1), uint32_t{'A'});
    EXPECT_EQ(t.release(1), 0u) << "never pressed here";
    // Both Shift keys: up when the last one is.
    t.press(2, vk_shift);
    t.press(3, vk_shift);
    EXPECT_EQ(t.release(2), 0u);
    EXPECT_TRUE(t.is_held(vk_shift));
    EXPECT_EQ(t.release(3), vk_shift);
}

TEST(KeyTracker, LosingTheKeyboardReleasesKeysAndGivesNoCommand) {
    key_tracker t;
    uint32_t id = 0;
    for (const uint32_t key :
         {uint32_t{'A'}, vk_shift, vk_shift, vk_pause, vk_end, vk_f6, vk_f12, uint32_t{0x70}})
        t.press(++id, key);
    std::vector<uint32_t> released = t.release_all();
    std::sort(released.begin(), released.end());
    EXPECT_EQ(released, (std::vector<uint32_t>{vk_shift, 'A', 0x70}));
    for (uint32_t i = 1; i <= id; ++i)
        EXPECT_EQ(t.release(i), 0u) << "the release that comes later, of key " << i;
}

TEST(KeyTracker, KeysWithoutAScanCodeDoNotStick) {
    key_tracker t;
    t.press(5, 'Q');
    t.press(0x10010, vk_shift);
    t.press(0x100C0, 0xC0); // "@", let go as "2" after Shift
    EXPECT_EQ(t.release_from(0x10000), std::vector<uint32_t>{0xC0});
    EXPECT_TRUE(t.is_held('Q'));
    EXPECT_TRUE(t.is_held(vk_shift));
}

} // namespace
