// The graphics layer: three planes of 640 x 200 become colours through the palette, every line twice.
//
// Eight pixels at a time. Portable: two pixels of three planes are six bits, so a table of 64 pixel pairs,
// made anew for every frame, does the palette. With AVX2 and 32-bit pixels the eight colours fit one register
// and a permutation looks all eight pixels up at once.
#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

bool use_wide_vectors = true;

namespace {

constexpr int plane_lines = 200;
constexpr int line_bytes = 80;

alignas(64) uint8_t planes[3][plane_size];

void copy_planes() {
    machine.video_lock();
    std::memcpy(planes, machine.gvram, sizeof planes);
    machine.video_unlock();
}

template <class Pixel> struct line_colours {
    alignas(32) Pixel of_code[8]; // by the code of a pixel: plane 0 + 2 x plane 1 + 4 x plane 2
    struct pair {
        Pixel left, right;
    };
    alignas(64) pair pairs[64]; // by two codes, interleaved as pair_bits leaves them

    explicit line_colours(const Pixel *host_colours) {
        for (uint32_t code = 0; code < 8; ++code)
            of_code[code] = host_colours[machine.colour_perm[machine.palette[code] & 7]];
        for (uint32_t index = 0; index < 64; ++index) {
            const auto code = [index](uint32_t bit) {
                return (index >> bit & 1) | (index >> (bit + 2) & 1) << 1 | (index >> (bit + 4) & 1) << 2;
            };
            pairs[index] = {of_code[code(1)], of_code[code(0)]};
        }
    }
};

// The four bit pairs of a plane's byte, leftmost first, one a byte.
constexpr auto pair_bits = [] {
    std::array<std::array<uint8_t, 4>, 256> table{};
    for (uint32_t byte = 0; byte < 256; ++byte)
        for (uint32_t pair = 0; pair < 4; ++pair)
            table[byte][pair] = static_cast<uint8_t>(byte >> (6 - 2 * pair) & 3);
    return table;
}();

template <class Pixel>
void draw_line(const uint8_t *plane0, Pixel *pixels, const line_colours<Pixel> &colours) {
    for (int x = 0; x < line_bytes; ++x, pixels += 8) {
        const auto &p0 = pair_bits[plane0[x]];
        const auto &p1 = pair_bits[plane0[x + plane_size]];
        const auto &p2 = pair_bits[plane0[x + 2 * plane_size]];
        for (size_t pair = 0; pair < 4; ++pair)
            std::memcpy(pixels + 2 * pair, &colours.pairs[p0[pair] | p1[pair] << 2 | p2[pair] << 4],
                        2 * sizeof(Pixel));
    }
}

#if defined(__x86_64__)
// The bits of a plane's byte, leftmost first, one a byte.
constexpr auto single_bits = [] {
    std::array<uint64_t, 256> table{};
    for (uint32_t byte = 0; byte < 256; ++byte)
        for (uint32_t x = 0; x < 8; ++x) table[byte] |= static_cast<uint64_t>(byte >> (7 - x) & 1) << 8 * x;
    return table;
}();

__attribute__((target("avx2"))) void draw_line_wide(const uint8_t *plane0, uint32_t *even, uint32_t *odd,
                                                    const line_colours<uint32_t> &evens,
                                                    const line_colours<uint32_t> &odds) {
    const __m256i even_colours = _mm256_load_si256(reinterpret_cast<const __m256i *>(evens.of_code));
    const __m256i odd_colours = _mm256_load_si256(reinterpret_cast<const __m256i *>(odds.of_code));
    for (int x = 0; x < line_bytes; ++x, even += 8, odd += 8) {
        const uint64_t codes = single_bits[plane0[x]] | single_bits[plane0[x + plane_size]] << 1 |
                               single_bits[plane0[x + 2 * plane_size]] << 2;
        const __m256i indices = _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(codes)));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(even),
                            _mm256_permutevar8x32_epi32(even_colours, indices));
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(odd),
                            _mm256_permutevar8x32_epi32(odd_colours, indices));
    }
}
#endif

bool have_wide_vectors() {
#if defined(__x86_64__)
    static const bool found = __builtin_cpu_supports("avx2");
    return found && use_wide_vectors;
#else
    return false;
#endif
}

template <class Pixel> Pixel *first_pixel() {
    return static_cast<Pixel *>(geometry.frame_pixels) + geometry.row_offset20[0];
}

template <class Pixel> void draw_planes(const Pixel *even_host, const Pixel *odd_host) {
    copy_planes();
    const line_colours<Pixel> evens(even_host), odds(odd_host);
    const bool same = std::memcmp(evens.of_code, odds.of_code, sizeof evens.of_code) == 0;
    Pixel *even = first_pixel<Pixel>();
    for (int line = 0; line < plane_lines; ++line, even += 2 * geometry.frame_pitch) {
        const uint8_t *plane0 = planes[0] + line * line_bytes;
        Pixel *odd = even + geometry.frame_pitch;
#if defined(__x86_64__)
        if constexpr (sizeof(Pixel) == 4) {
            if (have_wide_vectors()) {
                draw_line_wide(plane0, even, odd, evens, odds);
                continue;
            }
        }
#endif
        draw_line(plane0, even, evens);
        if (same)
            std::memcpy(odd, even, frame_width * sizeof(Pixel));
        else
            draw_line(plane0, odd, odds);
    }
}

void draw_graphics8(uint32_t) { draw_planes<uint8_t>(machine.even_index, machine.odd_index); }
void draw_graphics32(uint32_t) { draw_planes<uint32_t>(machine.even_rgb, machine.odd_rgb); }

template <class Pixel> void clear(uint32_t) {
    Pixel *line = first_pixel<Pixel>();
    for (int y = 0; y < frame_height; ++y, line += geometry.frame_pitch)
        std::memset(line, 0, frame_width * sizeof(Pixel));
}

} // namespace

void install_graphics_renderers() {
    machine.renderer_table[renderer_clear8] = clear<uint8_t>;
    machine.renderer_table[renderer_clear32] = clear<uint32_t>;
    machine.renderer_table[renderer_graphics8] = draw_graphics8;
    machine.renderer_table[renderer_graphics32] = draw_graphics32;
}
