// The picture that a machine state stands for, one pixel at a time and straight from the rules.
#pragma once

#include "machine/kiv_machine.h"

#include <array>
#include <map>
#include <vector>

class picture_oracle {
    struct cell {
        int colour = 7; // G R B
        bool upper = false, under = false, semigraphic = false, reverse = false, secret = false;
        uint8_t code = 0;
    };
    // What holds at a place of a row: the last colour and the last character attribute.
    struct holding {
        uint8_t colour = 0; // the attribute byte it came from, 0 at power-on
        uint8_t character = 0;
        bool character_mono = true; // decoded as monochrome
        bool hidden = false;        // blinking, in the dark phase
    };
    std::array<holding, 25> carried{};

    std::array<cell, 80> cells(uint32_t row) {
        const auto ram_at = [&](uint32_t at) {
            return machine.ram[(machine.text_start + 120 * row + at) % 0x10000];
        };
        std::map<uint32_t, uint8_t> pairs; // sorted; the first of equal positions stands
        for (uint32_t i = 80; i < 120; i += 2) pairs.emplace(ram_at(i) & 0x7F, ram_at(i + 1));
        const bool mono = machine.crtc_mono == 1;
        holding now = carried[row];
        std::array<cell, 80> result;
        for (uint32_t x = 0; x < 80; ++x) {
            if (const auto pair = pairs.find(x); pair != pairs.end()) {
                const uint8_t attribute = pair->second;
                if (!mono && (attribute & 0x08))
                    now.colour = attribute;
                else
                    now = {now.colour, attribute, mono,
                           (attribute & 0x03) == 0x02 && machine.attr_blink_phase == 0};
            }
            cell &c = result[x];
            c.code = ram_at(x);
            c.colour = mono ? 7 : now.colour >> 5;
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
        carried[(row + 1) % 25] = now;
        return result;
    }

    // Whether bit 7 - `bit` of text line `line` shows.
    static bool lit(const cell &c, int line, int bit, bool rows25) {
        const int last = rows25 ? 7 : 9, glyph_line = rows25 ? line : line - 1;
        bool on = (c.upper && line == 0) || (c.under && line == last);
        if (glyph_line >= 0 && glyph_line < 8) {
            const size_t at = 8u * c.code + static_cast<size_t>(glyph_line);
            const uint8_t bits = c.semigraphic                ? machine.font_rom[0x800 + at]
                                 : machine.pcg_glyphs_on == 1 ? machine.font_work[at].load()
                                                              : machine.font_rom[at];
            on = on || (bits >> (7 - bit) & 1);
        }
        return (on && !c.secret) != c.reverse;
    }

  public:
    // 640 x 400 pixels 0x00RRGGBB of the machine as it stands, in frame order; the colours of odd lines have
    // the given level. Like the machine, the oracle keeps what flows from row to row and frame to frame.
    std::vector<uint32_t> picture(uint32_t odd_level) {
        std::vector<uint32_t> pixels(640 * 400, 0);
        const auto set = [&](int x, int y, int grb) {
            const uint32_t level = y % 2 == 1 ? odd_level : 0xFF;
            pixels[static_cast<size_t>(y * 640 + x)] =
                (grb & 1 ? level : 0) | (grb & 2 ? level << 16 : 0) | (grb & 4 ? level << 8 : 0);
        };
        for (int y = 0; y < 400 && (machine.port31 & 0x08); ++y)
            for (int x = 0; x < 640; ++x) {
                int code = 0;
                for (int plane = 0; plane < 3; ++plane)
                    code |= (machine.gvram[plane][y / 2 * 80 + x / 8] >> (7 - x % 8) & 1) << plane;
                set(x, y, machine.palette[code]);
            }
        const bool rows25 = machine.crtc_rows25 == 1, wide = machine.crtc_wide == 1;
        const int rows = rows25 ? 25 : 20, row_height = 400 / rows;
        for (int row = 0; row < 25 && machine.crtc_status == 0; ++row) {
            const std::array<cell, 80> row_cells =
                cells(static_cast<uint32_t>(row)); // in every mode: they flow on
            for (int y = 0; y < row_height && row < rows; ++y)
                for (int x = 0; x < 640; ++x) {
                    const cell &c = row_cells[static_cast<size_t>(wide ? x / 8 : x / 16 * 2)];
                    if (lit(c, y / 2, wide ? x % 8 : x % 16 / 2, rows25))
                        set(x, row * row_height + y, c.colour);
                }
        }
        return pixels;
    }
};
