#include "picture_oracle.h"

#include "machine/kiv_machine.h"

#include <map>

namespace {

uint8_t ram_at(uint32_t address) { return machine.ram[address % 0x10000]; }

// G R B codes as host colours: bit 0 blue, bit 1 green, bit 2 red.
int host_colour(int grb) { return (grb & 1) | (grb & 4) >> 1 | (grb & 2) << 1; }

uint32_t host_pixel(int colour, bool rgb, bool half) {
    constexpr uint8_t full_index[8] = {0x00, 0xFC, 0xFA, 0xFE, 0xF9, 0xFD, 0xFB, 0xFF};
    constexpr uint8_t half_index[8] = {0x00, 0x04, 0x02, 0x06, 0x01, 0x05, 0x03, 0xF8};
    if (!rgb) return half ? half_index[colour] : full_index[colour];
    const uint32_t level = half ? 0x7F : 0xFF;
    return (colour & 1 ? level : 0) | (colour & 2 ? level << 8 : 0) | (colour & 4 ? level << 16 : 0);
}

} // namespace

std::array<picture_oracle::cell, 80> picture_oracle::cells(int row) {
    const uint32_t start = machine.text_start + 120u * static_cast<uint32_t>(row);
    std::map<int, uint8_t> pairs; // sorted; the first of equal positions stands
    for (uint32_t i = 0; i < 20; ++i)
        pairs.emplace(ram_at(start + 80 + 2 * i) & 0x7F, ram_at(start + 80 + 2 * i + 1));
    const bool mono = machine.crtc_mono == 1;
    holding now = carried[static_cast<size_t>(row)];
    std::array<cell, 80> result;
    for (int x = 0; x < 80; ++x) {
        if (const auto pair = pairs.find(x); pair != pairs.end()) {
            if (!mono && (pair->second & 0x08)) {
                now.colour = pair->second;
            } else {
                now.character = pair->second;
                now.character_mono = mono;
                now.hidden = (pair->second & 0x03) == 0x02 && machine.attr_blink_phase == 0;
            }
        }
        cell &c = result[static_cast<size_t>(x)];
        c.code = ram_at(start + static_cast<uint32_t>(x));
        c.colour = mono ? 7 : host_colour(now.colour >> 5);
        c.semigraphic = (now.character_mono && (now.character & 0x80)) || (!mono && (now.colour & 0x10));
        c.upper = now.character & 0x10;
        c.under = now.character & 0x20;
        c.reverse = ((now.character & 0x04) != 0) != (machine.crtc_reverse == 1);
        c.secret = (now.character & 0x01) || now.hidden;
        if (machine.cursor_enabled == 1 && machine.cursor_phase == 1 && machine.cursor_x == x &&
            machine.cursor_y == row) {
            c.reverse = !c.reverse;
            c.colour = 7;
        }
    }
    carried[static_cast<size_t>((row + 1) % 25)] = now;
    return result;
}

// Whether bit 7 - `bit` of text line `line` shows.
bool picture_oracle::lit(const cell &c, int line, int bit, bool rows25) {
    const int last = rows25 ? 7 : 9, glyph_line = rows25 ? line : line - 1;
    bool on = false;
    if (glyph_line >= 0 && glyph_line < 8) {
        const size_t at = 8u * c.code + static_cast<size_t>(glyph_line);
        const uint8_t bits = c.semigraphic                ? machine.font_rom[0x800 + at]
                             : machine.pcg_glyphs_on == 1 ? machine.font_work[at].load()
                                                          : machine.font_rom[at];
        on = bits >> (7 - bit) & 1;
    }
    if ((c.upper && line == 0) || (c.under && line == last)) on = true;
    if (c.secret) on = false;
    return on != c.reverse;
}

std::vector<uint32_t> picture_oracle::picture(bool rgb, bool interlace) {
    std::vector<uint32_t> pixels(640 * 400, 0);
    const auto set = [&](int x, int y, int colour) {
        pixels[static_cast<size_t>(y * 640 + x)] = host_pixel(colour, rgb, interlace && y % 2 == 1);
    };
    if (machine.port31 & 0x08)
        for (int y = 0; y < 400; ++y)
            for (int x = 0; x < 640; ++x) {
                int code = 0;
                for (int plane = 0; plane < 3; ++plane)
                    code |= (machine.gvram[plane][y / 2 * 80 + x / 8] >> (7 - x % 8) & 1) << plane;
                set(x, y, host_colour(machine.palette[code]));
            }
    if (machine.crtc_status != 0) return pixels;
    const bool rows25 = machine.crtc_rows25 == 1, wide = machine.crtc_wide == 1;
    const int rows = rows25 ? 25 : 20, row_height = 400 / rows;
    for (int row = 0; row < 25; ++row) {
        const std::array<cell, 80> row_cells = cells(row); // all 25: what flows on does not mind the mode
        if (row >= rows) continue;
        for (int y = 0; y < row_height; ++y)
            for (int x = 0; x < 640; ++x) {
                const cell &c = row_cells[static_cast<size_t>(wide ? x / 8 : x / 16 * 2)];
                if (lit(c, y / 2, wide ? x % 8 : x % 16 / 2, rows25)) set(x, row * row_height + y, c.colour);
            }
    }
    return pixels;
}
