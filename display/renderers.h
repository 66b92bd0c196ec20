// What the renderers share: the host's colours, and how they get into the renderer table.
#pragma once

#include <cstdint>

// Host colours by index (bit 0 blue, bit 1 green, bit 2 red): palette indices and 0x00RRGGBB, full and half.
alignas(32) inline constexpr uint8_t index_full[8] = {0x00, 0xFC, 0xFA, 0xFE, 0xF9, 0xFD, 0xFB, 0xFF};
alignas(32) inline constexpr uint8_t index_half[8] = {0x00, 0x04, 0x02, 0x06, 0x01, 0x05, 0x03, 0xF8};
alignas(32) inline constexpr uint32_t rgb_full[8] = {0x000000, 0x0000FF, 0x00FF00, 0x00FFFF,
                                                     0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
alignas(32) inline constexpr uint32_t rgb_half[8] = {0x000000, 0x00007F, 0x007F00, 0x007F7F,
                                                     0x7F0000, 0x7F007F, 0x7F7F00, 0x7F7F7F};

void install_text_renderers();
void install_graphics_renderers();

// Whether the graphics layer may use the vector unit found at run time; tests switch it off to compare.
extern bool use_wide_vectors;
