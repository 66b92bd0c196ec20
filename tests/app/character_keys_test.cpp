// Keys by character, as a program sees them that looks at the matrix row by row.
#include "app/character_keys.h"

#include "machine/kiv_machine.h"
#include "support/host_keys.h"

#include <gtest/gtest.h>
#include <string>

namespace {

struct program_that_looks {
    std::string read;
    bool shifted = false;
    bool was_down[26] = {};

    void look_at_shift() { shifted = is_key_held(key_place(vk_shift)); }
    void look_at_letters() {
        for (uint32_t i = 0; i < 26; ++i) {
            const bool down = is_key_held(key_place('A' + i));
            if (down && !was_down[i]) read += static_cast<char>((shifted ? 'A' : 'a') + static_cast<char>(i));
            was_down[i] = down;
        }
    }
};

// However quickly the person types, and wherever in the program's look a key comes.
TEST(CharacterKeys, ALetterIsNeverSeenBeforeItsShift) {
    for (const std::string text : {"PRINT", "PrInT", "print", "aaAAaA"})
        for (const int retraces_between : {0, 1, 2, 7}) {
            SCOPED_TRACE(text + ", " + std::to_string(retraces_between));
            reset_keyboard(machine);
            character_keys keys;
            program_that_looks program;
            const auto retrace = [&] {
                keyboard_retrace();
                program.look_at_shift();
                program.look_at_letters();
            };
            retrace();
            for (const char c : text) {
                const uint32_t key = static_cast<uint32_t>(c) & ~0x20u;
                program.look_at_shift();
                keys.press(key, static_cast<uint32_t>(c));
                program.look_at_letters(); // the rest of the same look
                for (int i = 0; i < retraces_between; ++i) retrace();
                keys.release(key);
                for (int i = 0; i < retraces_between; ++i) retrace();
            }
            for (int i = 0; i < 100; ++i) retrace();
            EXPECT_EQ(program.read, text);
            EXPECT_FALSE(is_key_held(key_place(vk_shift)));
        }
}

} // namespace
