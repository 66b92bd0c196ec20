// The arrays that the build makes from the text art of this folder.
#pragma once

#include <cstddef>
#include <cstdint>

namespace embedded {

extern const uint8_t font[]; // 256 character glyphs, then 256 semigraphic glyphs
extern const size_t font_size;
extern const uint8_t pause_picture[]; // a packed bitmap
extern const size_t pause_picture_size;
extern const uint8_t icon[]; // the layout is told in README.md
extern const size_t icon_size;

} // namespace embedded
