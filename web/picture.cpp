// The picture as a canvas takes it: red, green, blue, opaque; and which of its lines have changed since the
// last look, so that a page that nothing moves on has nothing to hand on.
#include "api/kiv.h"

#include <cstdint>

namespace {

constexpr uint32_t width = 640, height = 400;
alignas(64) uint32_t shown[width * height];
uint32_t first = 0, end = 0;

// A line of 0x00RRGGBB; whether it differs from what was shown.
bool convert(const uint32_t *from, uint32_t *to) {
    uint32_t different = 0;
    for (uint32_t x = 0; x < width; ++x) {
        const uint32_t c = from[x];
        const uint32_t colour = 0xFF000000 | (c & 0xFF) << 16 | (c & 0xFF00) | (c >> 16 & 0xFF);
        different |= colour ^ to[x];
        to[x] = colour;
    }
    return different != 0;
}

} // namespace

// Composes the machine's picture; returns its first byte.
extern "C" const uint32_t *page_picture() {
    const uint32_t *const pixels = kiv_pixels();
    first = end = 0;
    for (uint32_t y = 0; y < height; ++y) {
        if (!convert(pixels + y * width, shown + y * width)) continue;
        if (end == 0) first = y;
        end = y + 1;
    }
    return shown;
}

// The lines that have changed: from the first one on, as far as the end; both 0 when none has.
extern "C" uint32_t page_first_line() { return first; }
extern "C" uint32_t page_end_line() { return end; }
