// The frame composer: from the machine's video state to 640 x 400 pixels, 8-bit indexed or 32-bit RGB.
//
// Per frame: the graphics layer (three planes, 640 x 200, lines doubled) or black, then 25 text rows on
// top. Each row is fetched from RAM, decoded to one attribute byte a column, and drawn by one of eight
// renderers (40/80 columns, 20/25 rows, 8/32 bits). Runs on the render thread.
#pragma once

#include "support/shared.h"
#include <array>
#include <cstdint>

constexpr int frame_width = 640;
constexpr int frame_height = 400;
constexpr int text_rows = 25;
constexpr int text_columns = 80;
constexpr int attr_pair_count = 20;
constexpr uint32_t text_row_bytes = 120; // 80 characters, 20 attribute pairs

enum pixel_size : uint32_t {
    pixels_indexed8 = 0,
    pixels_rgb32 = 1, // 0x00RRGGBB
};

struct attr_pair {
    uint8_t position; // column; 80 and above: nothing
    uint8_t attribute;
};

// cell_attr bits.
enum cell_bit : uint8_t {
    cell_colour = 0x07, // host order: bit 0 blue, bit 1 green, bit 2 red
    cell_upper_line = 0x08,
    cell_semigraphic = 0x10,
    cell_reverse = 0x20,
    cell_secret = 0x40,
    cell_under_line = 0x80,
};

// The row being drawn, and what flows from row to row: the composer's own, and only while it draws.
struct text_row_work {
    uint8_t row_chars[text_columns];
    attr_pair attr_pairs[attr_pair_count];
    uint8_t cell_attr[text_columns];
    uint8_t row_colour_in[text_rows];
    uint8_t row_attr_in[text_rows];
    uint8_t running_colour, running_attribute;
};
extern text_row_work text_work;

struct display_block {
    // What the last row of a frame ended with: the first row of the next one begins with it.
    shared<uint8_t> carried_colour, carried_attribute;
    shared<uint8_t (*)(uint8_t attribute)> attr_decoder;
    const uint8_t *colour_perm; // G R B code to host index
    void (*display_init)();
    void (*text_row_fetch)(uint32_t row); // under the video lock
    void (*text_row_decode)(uint32_t row);
    void (*select_attr_decoder)(uint32_t mono);
};

using row_renderer = void (*)(uint32_t row);

// renderer_table entries.
enum renderer_entry {
    renderer_text8 = 0, // current text renderers
    renderer_text32 = 1,
    renderer_text8_modes = 2, // + screen_mode 0-3
    renderer_text32_modes = 6,
    renderer_clear8 = 10,
    renderer_clear32 = 11,
    renderer_graphics8 = 12,
    renderer_graphics32 = 13,
    renderer_entries = 14
};

struct renderer_block {
    shared<row_renderer> renderer_table[renderer_entries];
    shared<const uint8_t *> even_index, odd_index; // colours of even and odd host lines, 8-bit
    shared<const uint32_t *> even_rgb, odd_rgb;    // the same, 32-bit
    void (*renderer_init)();
    void (*draw_text_row)(uint32_t row, uint32_t format);
    void (*clear_graphics)(uint32_t format);
    void (*draw_graphics)(uint32_t format);
    void (*select_renderer)(uint32_t index);
    void (*select_scanline_colours)(uint32_t interlace);
};

// The locked frame buffer that the renderers write to; offsets count pixels.
struct frame_geometry {
    void *frame_pixels;   // first pixel of the surface, set at every lock; fastest at 32-byte addresses
    uint32_t frame_pitch; // pixels per surface line
    int32_t frame_top, frame_left; // where the 640 x 400 picture sits in the surface
    uint32_t row_offset20[20];
    uint32_t row_offset25[25];
};

extern frame_geometry geometry;

// Computes the geometry of a surface of width x height pixels (at least 640 x 400) and `pitch` pixels a line.
void set_frame_geometry(int32_t width, int32_t height, uint32_t pitch);

// Composes one frame into geometry.frame_pixels: graphics or black, then the text when it is on.
// Returns the text rows drawn: 25, or 0 when the text layer is off.
uint32_t compose_frame(uint32_t format);

// What composing a frame leaves for the next one, without its picture: a frame that nobody looks at is passed
// over, and the pictures after it stay the same.
void pass_frame_over();

// The 256 palette entries of an 8-bit surface as 0x00RRGGBB; the renderers use 0-6 and 0xF8-0xFF.
extern const std::array<uint32_t, 256> host_palette;

void display_init();
void renderer_init();
