// The eight text row renderers: one template, a function for each pixel size, column count and row count.
//
// A row is first brought into one shape, 80 groups of eight pixels with their bits and colour for each text
// line; 40-column rows double every bit. Painting then takes whole groups: the bits select eight pixels by a
// mask, and a group without a set bit costs nothing.
#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <array>
#include <cstring>

namespace {

constexpr int groups = frame_width / 8;
constexpr int most_lines = 10;
constexpr uint32_t semigraphic_glyphs = 0x800; // offset in font_rom

// Eight pixels.
template <class Pixel> struct pixel_group {
    typedef Pixel vector __attribute__((vector_size(8 * sizeof(Pixel))));
};

// For each glyph byte eight pixels, all ones where the bit is set; bit 7 is the leftmost.
template <class Pixel> constexpr auto make_masks() {
    std::array<std::array<Pixel, 8>, 256> masks{};
    for (uint32_t bits = 0; bits < 256; ++bits)
        for (uint32_t x = 0; x < 8; ++x)
            masks[bits][x] = (bits >> (7 - x) & 1) ? static_cast<Pixel>(~Pixel{0}) : Pixel{0};
    return masks;
}
template <class Pixel> alignas(64) constexpr auto masks = make_masks<Pixel>();

// Each bit of a nibble twice.
constexpr auto doubled = [] {
    std::array<uint8_t, 16> table{};
    for (uint32_t nibble = 0; nibble < 16; ++nibble)
        for (uint32_t bit = 0; bit < 4; ++bit)
            if (nibble >> bit & 1) table[nibble] = static_cast<uint8_t>(table[nibble] | 3u << 2 * bit);
    return table;
}();

struct row_picture {
    uint8_t bits[most_lines][groups];
    uint8_t colour[groups];
};

// The eight lines of a cell's glyph. Programmable glyphs may be redefined meanwhile.
void read_glyph(uint8_t code, uint8_t attribute, bool programmable, uint8_t *lines) {
    if (attribute & cell_semigraphic) {
        std::memcpy(lines, machine.font_rom + semigraphic_glyphs + 8u * code, 8);
    } else if (programmable) {
        for (uint32_t line = 0; line < 8; ++line) lines[line] = machine.font_work[8u * code + line];
    } else {
        std::memcpy(lines, machine.font_rom + 8u * code, 8);
    }
}

// The bits of a cell on every text line. Rows of ten lines have a blank line above and below the glyph.
template <int lines> void cell_bits(uint8_t code, uint8_t attribute, bool programmable, uint8_t *bits) {
    constexpr int above = (lines - 8) / 2;
    bits[0] = bits[lines - 1] = 0;
    read_glyph(code, attribute, programmable, bits + above);
    if (attribute & cell_upper_line) bits[0] = 0xFF;
    if (attribute & cell_under_line) bits[lines - 1] = 0xFF;
    if (attribute & cell_secret) std::memset(bits, 0, lines);
    if (attribute & cell_reverse)
        for (int line = 0; line < lines; ++line) bits[line] = static_cast<uint8_t>(~bits[line]);
}

template <int columns, int lines> void make_row(row_picture &row) {
    const bool programmable = machine.pcg_glyphs_on == 1;
    constexpr int step = text_columns / columns;
    for (int column = 0; column < text_columns; column += step) {
        const uint8_t attribute = machine.cell_attr[column];
        uint8_t bits[most_lines];
        cell_bits<lines>(machine.row_chars[column], attribute, programmable, bits);
        for (int line = 0; line < lines; ++line) {
            if constexpr (columns == 80) {
                row.bits[line][column] = bits[line];
            } else {
                row.bits[line][column] = doubled[bits[line] >> 4];
                row.bits[line][column + 1] = doubled[bits[line] & 0x0F];
            }
        }
        for (int i = 0; i < step; ++i) row.colour[column + i] = attribute & cell_colour;
    }
}

template <class Pixel> inline void blend(Pixel *pixels, const Pixel *mask_pixels, Pixel colour) {
    using vector = typename pixel_group<Pixel>::vector;
    vector mask, under;
    std::memcpy(&mask, mask_pixels, sizeof mask);
    std::memcpy(&under, pixels, sizeof under);
    under = (under & ~mask) | (mask & colour);
    std::memcpy(pixels, &under, sizeof under);
}

template <class Pixel>
void paint_line(Pixel *even, Pixel *odd, const uint8_t *bits, const uint8_t *colour,
                const Pixel *even_colours, const Pixel *odd_colours) {
    for (int group = 0; group < groups; ++group, even += 8, odd += 8) {
        if (bits[group] == 0) continue;
        const Pixel *mask = masks<Pixel>[bits[group]].data();
        blend(even, mask, even_colours[colour[group]]);
        blend(odd, mask, odd_colours[colour[group]]);
    }
}

template <class Pixel> const Pixel *even_colours();
template <> const uint8_t *even_colours<uint8_t>() { return machine.even_index; }
template <> const uint32_t *even_colours<uint32_t>() { return machine.even_rgb; }
template <class Pixel> const Pixel *odd_colours();
template <> const uint8_t *odd_colours<uint8_t>() { return machine.odd_index; }
template <> const uint32_t *odd_colours<uint32_t>() { return machine.odd_rgb; }

template <class Pixel, int columns, int rows> void draw_row(uint32_t row) {
    if (row >= rows) return;
    constexpr int lines = frame_height / rows / 2;
    row_picture picture;
    make_row<columns, lines>(picture);
    const uint32_t offset = rows == 20 ? geometry.row_offset20[row % 20] : geometry.row_offset25[row];
    Pixel *even = static_cast<Pixel *>(geometry.frame_pixels) + offset;
    const Pixel *const evens = even_colours<Pixel>(), *const odds = odd_colours<Pixel>();
    for (int line = 0; line < lines; ++line, even += 2 * geometry.frame_pitch)
        paint_line(even, even + geometry.frame_pitch, picture.bits[line], picture.colour, evens, odds);
}

template <class Pixel> void install(int first) {
    machine.renderer_table[first + 0] = draw_row<Pixel, 40, 20>;
    machine.renderer_table[first + 1] = draw_row<Pixel, 40, 25>;
    machine.renderer_table[first + 2] = draw_row<Pixel, 80, 20>;
    machine.renderer_table[first + 3] = draw_row<Pixel, 80, 25>;
}

} // namespace

void install_text_renderers() {
    install<uint8_t>(renderer_text8_modes);
    install<uint32_t>(renderer_text32_modes);
}
