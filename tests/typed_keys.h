// Text for the emulated keyboard, with names for keys that type no character.
#pragma once

#include "api/typing.h"
#include <gtest/gtest.h>
#include <string>

// Adds the keys of a text to what is typed: \l \r \u \d are the arrows, \b STOP, \e ESC, \f1 to \f5 the
// function keys, \p a pause of half a second.
inline void add_keys(typist &keys, const std::string &text) {
    constexpr char names[] = "lrudbe";
    constexpr uint8_t named[] = {0x25, 0x27, 0x26, 0x28, 0x08, 0x1B};
    for (const char *at = text.c_str(); uint32_t c = next_character(at);) {
        key_stroke stroke{0, false};
        if (c != '\\') {
            ASSERT_TRUE(stroke_of(c, stroke)) << text;
        } else if ((c = next_character(at)) == 'p') {
            keys.add_pause(28);
            continue;
        } else if (c == 'f') {
            stroke.virtual_key = static_cast<uint8_t>(0x6F + next_character(at) - '0');
        } else {
            const size_t name = std::string(names).find(static_cast<char>(c));
            ASSERT_NE(name, std::string::npos) << text;
            stroke.virtual_key = named[name];
        }
        keys.add(stroke);
    }
}
