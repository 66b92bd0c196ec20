// The picture that show_picture shows: neighbours differ, so any scaling that is not exact can be seen.
#pragma once

#include <cstdint>

inline uint32_t known_index(int x, int y) { return static_cast<uint32_t>((x + y * 3) & 0xFF); }
inline uint32_t known_colour(uint32_t n) { return (n % 7 * 40) << 16 | (n % 5 * 60) << 8 | n % 3 * 120; }
