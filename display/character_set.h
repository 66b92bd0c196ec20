// The machine's character set in Unicode, as its font shows it.
#pragma once

#include <cstdint>

// The character of a code: ASCII with the yen sign at 0x5C, half-width katakana, frames and marks; a space
// where the font has none.
char16_t character_of(uint8_t code);

// The one to three bytes of a character in UTF-8, each handed to put(int byte).
template <class Put> void put_utf8(char16_t c, Put put) {
    if (c < 0x80) return put(c);
    if (c < 0x800) {
        put(0xC0 | c >> 6);
    } else {
        put(0xE0 | c >> 12);
        put(0x80 | (c >> 6 & 0x3F));
    }
    put(0x80 | (c & 0x3F));
}
