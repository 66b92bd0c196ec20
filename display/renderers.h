// What the renderers share: the host's colours, the choice of the vector unit, and how they get into the
// renderer table.
#pragma once

#include <cstdint>

#if defined(__x86_64__)
#include <cstring>
#include <immintrin.h>
#endif

// Host colours by index (bit 0 blue, bit 1 green, bit 2 red): palette indices and 0x00RRGGBB, full and half.
alignas(32) inline constexpr uint8_t index_full[8] = {0x00, 0xFC, 0xFA, 0xFE, 0xF9, 0xFD, 0xFB, 0xFF};
alignas(32) inline constexpr uint8_t index_half[8] = {0x00, 0x04, 0x02, 0x06, 0x01, 0x05, 0x03, 0xF8};
alignas(32) inline constexpr uint32_t rgb_full[8] = {0x000000, 0x0000FF, 0x00FF00, 0x00FFFF,
                                                     0xFF0000, 0xFF00FF, 0xFFFF00, 0xFFFFFF};
alignas(32) inline constexpr uint32_t rgb_half[8] = {0x000000, 0x00007F, 0x007F00, 0x007F7F,
                                                     0x7F0000, 0x7F007F, 0x7F7F00, 0x7F7F7F};

void install_text_renderers();
void install_graphics_renderers();

// Makes pixels of what graphics and text have left in planes; nothing is left to do where AVX2 is used.
void finish_picture(uint32_t format);

// Whether the renderers may use AVX2 where the processor has it; tests switch it off to compare.
extern bool use_wide_vectors;

#if defined(__x86_64__)
#define WIDE_VECTORS __attribute__((target("avx2")))
inline bool have_wide_vectors() { return use_wide_vectors && __builtin_cpu_supports("avx2"); }

// The same four bytes in every 32-bit lane.
WIDE_VECTORS inline __m256i four_bytes(const uint8_t *at) {
    int bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return _mm256_set1_epi32(bytes);
}
#else
inline bool have_wide_vectors() { return false; }
#endif
