// The graphics layer: three planes of 640 x 200 become colours through the palette, every line twice.
//
// Portable: each bit of a colour is some function of three plane bits, which exclusive ors of their products
// make, for sixteen bytes of pixels at once. (A table of pixel pairs by six plane bits took four times as
// long at 8 bits.) With AVX2 the eight colours fit one register: 32 pixels of codes are made by comparing
// bits, and one permutation looks up eight 32-bit or thirty-two 8-bit pixels.
#include "display/pixel_vectors.h"
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

constexpr uint32_t quads = 2 * line_bytes; // four pixels each, in a line

// Four pixels by the four bits of each plane: plane 0 in bits 0-3 of the index, plane 1 in 4-7, plane 2 in
// 8-11.
template <class Pixel> struct quad_table {
    code_colours<Pixel> made_of; // all 0 at first, as the table
    alignas(64) std::array<Pixel, 4> quad[4096];

    void make(const code_colours<Pixel> &colours) {
        if (made_of == colours) return;
        made_of = colours;
        std::array<Pixel, 2> pairs[64]; // likewise by two bits of each plane
        for (uint32_t bits = 0; bits < 64; ++bits) {
            const auto code = [bits](uint32_t bit) {
                return (bits >> bit & 1) | (bits >> (bit + 2) & 1) << 1 | (bits >> (bit + 4) & 1) << 2;
            };
            pairs[bits] = {colours[code(1)], colours[code(0)]};
        }
        for (uint32_t index = 0; index < 4096; ++index) {
            const auto bits = [index](uint32_t low) {
                return (index >> low & 3) | (index >> (low + 4) & 3) << 2 | (index >> (low + 8) & 3) << 4;
            };
            std::memcpy(&quad[index][0], &pairs[bits(2)], sizeof pairs[0]);
            std::memcpy(&quad[index][2], &pairs[bits(0)], sizeof pairs[0]);
        }
    }
};

// What was made for the frame before, as a rule for this one, too. Of the thread that composes.
template <class Pixel> quad_table<Pixel> even_quads;
template <class Pixel> quad_table<Pixel> odd_quads;

// A line's quads by their indices; a loop that compilers turn into vectors.
void find_quads(uint32_t offset, uint16_t *index) {
    const uint8_t *const p0 = planes[0] + offset, *const p1 = planes[1] + offset,
                         *const p2 = planes[2] + offset;
    for (uint32_t x = 0; x < line_bytes; ++x) {
        index[2 * x] = static_cast<uint16_t>(p0[x] >> 4 | (p1[x] & 0xF0) | (p2[x] & 0xF0) << 4);
        index[2 * x + 1] = static_cast<uint16_t>((p0[x] & 0x0F) | (p1[x] & 0x0F) << 4 | (p2[x] & 0x0F) << 8);
    }
}

// The quads that fill one vector.
template <class Pixel>
typename pixel_vector<Pixel>::type look_up(const uint16_t *index, const quad_table<Pixel> &table) {
    if constexpr (sizeof(Pixel) == 1) {
        typedef uint32_t four_quads __attribute__((vector_size(16)));
        const auto quad = [&](int i) { return std::bit_cast<uint32_t>(table.quad[index[i]]); };
        return reinterpret_cast<typename pixel_vector<Pixel>::type>(
            four_quads{quad(0), quad(1), quad(2), quad(3)});
    } else {
        return load_pixels(table.quad[*index].data());
    }
}

template <bool same, class Pixel> void draw_lines(Pixel *even) {
    constexpr uint32_t lanes = pixel_vector<Pixel>::lanes;
    for (uint32_t line = 0; line < plane_lines; ++line, even += 2 * geometry.frame_pitch) {
        alignas(16) uint16_t index[quads];
        find_quads(line * line_bytes, index);
        Pixel *const odd = even + geometry.frame_pitch;
        for (uint32_t x = 0; x < frame_width; x += lanes) {
            const auto pixels = look_up(index + x / 4, even_quads<Pixel>);
            store_pixels(even + x, pixels);
            store_pixels(odd + x, same ? pixels : look_up(index + x / 4, odd_quads<Pixel>));
        }
    }
}

template <class Pixel> void draw_portable(const frame_colours<Pixel> &colours, Pixel *even) {
    even_quads<Pixel>.make(colours.even);
    if (colours.even == colours.odd) return draw_lines<true>(even);
    odd_quads<Pixel>.make(colours.odd);
    draw_lines<false>(even);
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
