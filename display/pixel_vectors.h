// Sixteen bytes of pixels at a time, in the compiler's own vectors: SSE2, NEON, WebAssembly's simd128, or
// plain words where a processor has none. What the renderers use where AVX2 is not to be had.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

template <class Pixel> struct pixel_vector {
    typedef Pixel type __attribute__((vector_size(16)));
    // A step takes whole bytes of bits and fills whole vectors.
    static constexpr uint32_t bytes_a_step = sizeof(Pixel) == 1 ? 2 : 1;
    static constexpr uint32_t vectors_a_step = sizeof(Pixel) == 1 ? 1 : 2;
    static constexpr uint32_t lanes = 16 / sizeof(Pixel);
};

// For each byte of bits eight pixels, all ones where the bit is set; bit 7 is the leftmost.
template <class Pixel>
alignas(64) inline constexpr auto pixel_masks = [] {
    std::array<std::array<Pixel, 8>, 256> table{};
    for (uint32_t bits = 0; bits < 256; ++bits)
        for (uint32_t x = 0; x < 8; ++x)
            table[bits][x] = (bits >> (7 - x) & 1) ? static_cast<Pixel>(~Pixel{0}) : Pixel{0};
    return table;
}();

template <class Pixel> inline typename pixel_vector<Pixel>::type load_pixels(const Pixel *from) {
    typename pixel_vector<Pixel>::type pixels;
    std::memcpy(&pixels, from, sizeof pixels);
    return pixels;
}

template <class Pixel> inline void store_pixels(Pixel *to, typename pixel_vector<Pixel>::type pixels) {
    std::memcpy(to, &pixels, sizeof pixels);
}

// The masks of vector `index` of a step, from the step's bytes of bits.
template <class Pixel>
inline typename pixel_vector<Pixel>::type masks_of(const uint8_t *bits, uint32_t index) {
    if constexpr (sizeof(Pixel) == 1) {
        typedef uint64_t halves __attribute__((vector_size(16)));
        const halves both = {std::bit_cast<uint64_t>(pixel_masks<Pixel>[bits[0]]),
                             std::bit_cast<uint64_t>(pixel_masks<Pixel>[bits[1]])};
        return reinterpret_cast<typename pixel_vector<Pixel>::type>(both);
    } else {
        return load_pixels(pixel_masks<Pixel>[bits[0]].data() + index * pixel_vector<Pixel>::lanes);
    }
}
