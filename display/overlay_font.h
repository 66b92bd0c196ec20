// The speed line's letters: a fixed-pitch font of 6 x 12 pixels for printable ASCII, the same pixels on every
// host, drawn straight into a locked surface. Render thread.
#pragma once

#include <cstdint>

constexpr int overlay_glyph_width = 6;
constexpr int overlay_glyph_height = 12;

// A locked surface of 8-bit palette indices or of 0x00RRGGBB pixels.
struct overlay_surface {
    void *pixels;
    int pitch;         // pixels a line
    int width, height; // nothing is drawn outside
    bool indexed8;
};

// Black on white from the top left corner; other characters are drawn as blanks.
void overlay_text(const overlay_surface &surface, const char *text);

// Blackens width x height pixels in the top left corner.
void overlay_blacken(const overlay_surface &surface, int width, int height);
