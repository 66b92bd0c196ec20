#include "display/text_screen.h"

#include "display/character_set.h"
#include "machine/kiv_machine.h"

namespace {

// Bits 0-3 are the left column from the top, 4-7 the right one; Braille counts its dots 1 2 3 7, 4 5 6 8.
char16_t braille_of(uint8_t code) {
    constexpr uint8_t dots[] = {0x01, 0x02, 0x04, 0x40, 0x08, 0x10, 0x20, 0x80};
    char16_t pattern = 0x2800;
    for (int bit = 0; bit < 8; ++bit)
        if (code >> bit & 1) pattern = static_cast<char16_t>(pattern | dots[bit]);
    return pattern == 0x2800 ? u' ' : pattern;
}

// Text that is counted whole and kept as far as it fits.
struct bounded_text {
    char *buffer;
    size_t size, length;

    void add(int byte) {
        if (length + 1 < size) buffer[length] = static_cast<char>(byte);
        ++length;
    }
};

char16_t shown_in(uint8_t code, uint8_t attribute) {
    if (attribute & cell_secret) return u' ';
    return attribute & cell_semigraphic ? braille_of(code) : character_of(code);
}

void add_row(uint32_t row, bounded_text &text) {
    machine.text_row_fetch(row);
    machine.text_row_decode(row);
    int blanks = 0;
    for (int column = 0; column < text_columns; column += machine.crtc_wide ? 1 : 2) {
        const char16_t c = shown_in(text_work.row_chars[column], text_work.cell_attr[column]);
        if (c == u' ') {
            ++blanks;
            continue;
        }
        for (; blanks > 0; --blanks) text.add(' ');
        put_utf8(c, [&text](int byte) { text.add(byte); });
    }
    text.add('\n');
}

} // namespace

size_t text_screen_utf8(char *buffer, size_t size) {
    if (buffer == nullptr) size = 0;
    bounded_text text{buffer, size, 0};
    if (machine.crtc_status == 0) {
        // Decoding the last row leaves what the next frame would build on.
        const uint8_t colour = machine.carried_colour, attribute = machine.carried_attribute;
        const uint32_t rows = machine.crtc_rows25 ? 25 : 20;
        for (uint32_t row = 0; row < rows; ++row) add_row(row, text);
        machine.carried_colour = colour;
        machine.carried_attribute = attribute;
    }
    if (size != 0) buffer[text.length < size ? text.length : size - 1] = '\0';
    return text.length;
}
