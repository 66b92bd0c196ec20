// The picture as three planes of bits, one for each bit of a host colour: blue, green, red. Where AVX2 is not
// to be had, palette and text work here, for 128 pixels at a time in the compiler's own vectors (SSE2, NEON,
// WebAssembly's simd128, or plain words), and pixels are made once, when all is drawn.
#pragma once

#include <cstdint>
#include <cstring>

constexpr uint32_t plane_lines = 200;
constexpr uint32_t line_bytes = 80;

typedef uint8_t plane_bytes __attribute__((vector_size(16)));
constexpr uint32_t line_vectors = line_bytes / sizeof(plane_bytes);

// With AVX2 the machine's own planes, before the palette.
alignas(64) extern uint8_t picture_planes[3][plane_lines * line_bytes];

inline plane_bytes load_bytes(const uint8_t *from) {
    plane_bytes bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return bytes;
}

inline void store_bytes(uint8_t *to, plane_bytes bytes) { std::memcpy(to, &bytes, sizeof bytes); }

inline plane_bytes sixteen_of(uint8_t byte) {
    plane_bytes bytes;
    std::memset(&bytes, byte, sizeof bytes);
    return bytes;
}
