// The graphics layer: three planes of 640 x 200 become colours through the palette, every line twice.
//
// Portable: two pixels of three planes are six bits, so a table of 64 pixel pairs, made anew for every frame,
// does the palette. With AVX2 the eight colours fit one register: 32 pixels of codes are made by comparing
// bits, and one permutation looks up eight 32-bit or thirty-two 8-bit pixels.
#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <array>
#include <cstring>

bool use_wide_vectors = true;

namespace {

constexpr uint32_t plane_lines = 200;
constexpr uint32_t line_bytes = 80;
constexpr uint32_t seen_bytes = plane_lines * line_bytes; // of each plane

// The picture of one frame: the CPU may go on drawing while this copy is turned into pixels.
alignas(64) uint8_t planes[3][plane_size];

void copy_planes() {
    machine.video_lock();
    for (int plane = 0; plane < 3; ++plane) std::memcpy(planes[plane], machine.gvram[plane], seen_bytes);
    machine.video_unlock();
}

// Colours by the code of a pixel: plane 0 + 2 x plane 1 + 4 x plane 2.
template <class Pixel> using code_colours = std::array<Pixel, 8>;

// What one frame draws with; the palette is read once, so that both lines of a pair agree.
template <class Pixel> struct frame_colours {
    alignas(32) code_colours<Pixel> even, odd;

    frame_colours(const Pixel *even_host, const Pixel *odd_host) {
        for (uint32_t code = 0; code < 8; ++code) {
            const uint8_t index = machine.colour_perm[machine.palette[code] & 7];
            even[code] = even_host[index];
            odd[code] = odd_host[index];
        }
    }
};

template <class Pixel> struct pixel_pair { Pixel left, right; };

// By two codes whose bits lie as pair_bits leaves them: plane 0 in bits 0-1, plane 1 in 2-3, plane 2 in 4-5.
template <class Pixel> std::array<pixel_pair<Pixel>, 64> pair_table(const code_colours<Pixel> &colours) {
    std::array<pixel_pair<Pixel>, 64> pairs;
    for (uint32_t index = 0; index < 64; ++index) {
        const auto code = [index](uint32_t bit) {
            return (index >> bit & 1) | (index >> (bit + 2) & 1) << 1 | (index >> (bit + 4) & 1) << 2;
        };
        pairs[index] = {colours[code(1)], colours[code(0)]};
    }
    return pairs;
}

// The four bit pairs of a plane's byte, leftmost first, one a byte.
constexpr auto pair_bits = [] {
    std::array<std::array<uint8_t, 4>, 256> table{};
    for (uint32_t byte = 0; byte < 256; ++byte)
        for (uint32_t pair = 0; pair < 4; ++pair)
            table[byte][pair] = static_cast<uint8_t>(byte >> (6 - 2 * pair) & 3);
    return table;
}();

template <class Pixel>
void draw_line(uint32_t offset, Pixel *pixels, const std::array<pixel_pair<Pixel>, 64> &pairs) {
    for (uint32_t x = 0; x < line_bytes; ++x, pixels += 8) {
        const auto &p0 = pair_bits[planes[0][offset + x]];
        const auto &p1 = pair_bits[planes[1][offset + x]];
        const auto &p2 = pair_bits[planes[2][offset + x]];
        for (uint32_t pair = 0; pair < 4; ++pair) {
            const auto codes = static_cast<uint32_t>(p0[pair] | p1[pair] << 2 | p2[pair] << 4);
            std::memcpy(pixels + 2 * pair, &pairs[codes], 2 * sizeof(Pixel));
        }
    }
}

template <class Pixel> void draw_portable(const frame_colours<Pixel> &colours, Pixel *even) {
    const auto even_pairs = pair_table(colours.even), odd_pairs = pair_table(colours.odd);
    const bool same = colours.even == colours.odd;
    for (uint32_t line = 0; line < plane_lines; ++line, even += 2 * geometry.frame_pitch) {
        Pixel *const odd = even + geometry.frame_pitch;
        draw_line(line * line_bytes, even, even_pairs);
        if (same)
            std::memcpy(odd, even, frame_width * sizeof(Pixel));
        else
            draw_line(line * line_bytes, odd, odd_pairs);
    }
}

#if defined(__x86_64__)
WIDE_VECTORS inline void store(void *pixels, __m256i value) {
    _mm256_storeu_si256(static_cast<__m256i *>(pixels), value);
}

// 32-bit lane k gets pixel k of four groups of eight, one group a byte. The permutation looks at the low
// three bits of a lane only, so shifting by whole bytes brings one group after the other under it.
WIDE_VECTORS void draw_line_wide(uint32_t offset, uint32_t *even, uint32_t *odd,
                                 const frame_colours<uint32_t> &colours) {
    const __m256i evens = _mm256_load_si256(reinterpret_cast<const __m256i *>(colours.even.data()));
    const __m256i odds = _mm256_load_si256(reinterpret_cast<const __m256i *>(colours.odd.data()));
    const __m256i pixel_shift = _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0), low_bits = _mm256_set1_epi8(1);
    for (uint32_t x = 0; x < line_bytes; x += 4) {
        __m256i bits[3];
        for (uint32_t plane = 0; plane < 3; ++plane)
            bits[plane] = _mm256_and_si256(
                _mm256_srlv_epi32(four_bytes(&planes[plane][offset + x]), pixel_shift), low_bits);
        __m256i codes = _mm256_or_si256(_mm256_slli_epi32(bits[2], 2),
                                        _mm256_or_si256(_mm256_slli_epi32(bits[1], 1), bits[0]));
        for (int group = 0; group < 4; ++group, even += 8, odd += 8) {
            store(even, _mm256_permutevar8x32_epi32(evens, codes));
            store(odd, _mm256_permutevar8x32_epi32(odds, codes));
            codes = _mm256_srli_epi32(codes, 8);
        }
    }
}

// Byte n gets pixel n of 32.
WIDE_VECTORS void draw_line_wide(uint32_t offset, uint8_t *even, uint8_t *odd,
                                 const frame_colours<uint8_t> &colours) {
    long long eight_colours;
    std::memcpy(&eight_colours, colours.even.data(), sizeof eight_colours);
    const __m256i evens = _mm256_set1_epi64x(eight_colours);
    std::memcpy(&eight_colours, colours.odd.data(), sizeof eight_colours);
    const __m256i odds = _mm256_set1_epi64x(eight_colours);
    const __m256i pixel_bit = _mm256_set1_epi64x(0x0102040810204080);
    const __m256i byte_of_pixel =
        _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
    for (uint32_t x = 0; x < line_bytes; x += 4, even += 32, odd += 32) {
        __m256i codes = _mm256_setzero_si256();
        for (uint32_t plane = 0; plane < 3; ++plane) {
            const __m256i bytes = _mm256_shuffle_epi8(four_bytes(&planes[plane][offset + x]), byte_of_pixel);
            const __m256i set = _mm256_cmpeq_epi8(_mm256_and_si256(bytes, pixel_bit), pixel_bit);
            codes = _mm256_or_si256(codes,
                                    _mm256_and_si256(set, _mm256_set1_epi8(static_cast<char>(1 << plane))));
        }
        store(even, _mm256_shuffle_epi8(evens, codes));
        store(odd, _mm256_shuffle_epi8(odds, codes));
    }
}

template <class Pixel> void draw_wide(const frame_colours<Pixel> &colours, Pixel *even) {
    for (uint32_t line = 0; line < plane_lines; ++line, even += 2 * geometry.frame_pitch)
        draw_line_wide(line * line_bytes, even, even + geometry.frame_pitch, colours);
}
#endif

template <class Pixel> Pixel *first_pixel() {
    return static_cast<Pixel *>(geometry.frame_pixels) + geometry.row_offset20[0];
}

template <class Pixel> void draw_planes(const Pixel *even_host, const Pixel *odd_host) {
    copy_planes();
    const frame_colours<Pixel> colours(even_host, odd_host);
#if defined(__x86_64__)
    if (have_wide_vectors()) return draw_wide(colours, first_pixel<Pixel>());
#endif
    draw_portable(colours, first_pixel<Pixel>());
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
