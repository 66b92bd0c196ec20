// The graphics layer: three planes of 640 x 200 become colours through the palette, every line twice.
//
// Portable: bits of colours stand in planes until text has been drawn into them; then a table of four pixels
// by four bits of each plane makes pixels of them, and holds for all frames, for the palette is behind it.
// (Colours as exclusive ors of products of the planes, for sixteen bytes of pixels at once, took twice as
// long, a table of pixel pairs four times.) With AVX2 the eight colours fit one register: 32 pixels of codes
// are made by comparing bits, and one permutation looks up eight 32-bit or thirty-two 8-bit pixels.
#include "display/picture_planes.h"
#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <array>
#include <bit>
#include <cstring>
#include <utility>

bool use_wide_vectors = true;

// The picture of one frame: the CPU may go on drawing while this copy is turned into pixels.
alignas(64) uint8_t picture_planes[3][plane_lines * line_bytes];

namespace {

constexpr uint32_t seen_bytes = plane_lines * line_bytes; // of each plane

// Host colours by the code of a pixel: plane 0 + 2 x plane 1 + 4 x plane 2.
std::array<uint8_t, 8> colours_by_code() {
    std::array<uint8_t, 8> colours;
    for (uint32_t code = 0; code < 8; ++code) colours[code] = machine.colour_perm[machine.palette[code] & 7];
    return colours;
}

// A bit of the colour as a function of the code: bit `code` is its value there.
uint8_t function_of_code(const std::array<uint8_t, 8> &colours, uint32_t bit) {
    uint32_t values = 0;
    for (uint32_t code = 0; code < 8; ++code) values |= (colours[code] >> bit & 1u) << code;
    return static_cast<uint8_t>(values);
}

// The same as an exclusive or of products of the planes: bit 0 the constant, then plane 0, plane 1, both, and
// the four again times plane 2.
uint32_t products_of(uint32_t values) {
    values ^= (values & 0x55) << 1;
    values ^= (values & 0x33) << 2;
    return values ^ (values & 0x0F) << 4;
}

// The plane that they are, or -1 where they are more than one.
int plane_of_products(uint32_t products) {
    return products == 0x02 ? 0 : products == 0x04 ? 1 : products == 0x10 ? 2 : -1;
}

// A step of making a bit's plane: a function of planes 0 and 1 by its four products, or what it is where
// plane 2 is set, which replaces or changes what a step before has left.
enum step : uint32_t { first_half, second_half_alone, second_half };
constexpr uint32_t steps = 3;

template <uint32_t products, step how> void make_half(uint32_t at, uint32_t end, uint8_t *to) {
    const auto &planes = machine.gvram;
    for (; at < end; at += sizeof(plane_bytes)) {
        const plane_bytes p0 = load_bytes(&planes[0][at]), p1 = load_bytes(&planes[1][at]);
        plane_bytes sum{};
        if constexpr (products & 1) sum = ~sum;
        if constexpr (products & 2) sum ^= p0;
        if constexpr (products & 4) sum ^= p1;
        if constexpr (products & 8) sum ^= p0 & p1;
        if constexpr (how != first_half) sum &= load_bytes(&planes[2][at]);
        if constexpr (how == second_half) sum ^= load_bytes(to + at);
        store_bytes(to + at, sum);
    }
}

using half_maker = void (*)(uint32_t at, uint32_t end, uint8_t *to);

template <uint32_t... index> constexpr auto half_makers_of(std::integer_sequence<uint32_t, index...>) {
    return std::array<half_maker, sizeof...(index)>{make_half<index / steps, step{index % steps}>...};
}
constexpr auto half_makers = half_makers_of(std::make_integer_sequence<uint32_t, 16 * steps>());

// The machine's planes as bits of colours, a few lines at a time, so that they stay in the first-level cache.
// (All products of a vector at once, masked by which of them take part, took the time of two of these steps
// for every palette.)
void draw_planes_portable() {
    const std::array<uint8_t, 8> colours = colours_by_code();
    uint32_t products[3];
    for (uint32_t bit = 0; bit < 3; ++bit) products[bit] = products_of(function_of_code(colours, bit));
    constexpr uint32_t few_lines = 40 * line_bytes;
    machine.video_lock();
    for (uint32_t at = 0; at < seen_bytes; at += few_lines)
        for (uint32_t bit = 0; bit < 3; ++bit) {
            const uint32_t low = products[bit] & 0x0F, high = products[bit] >> 4;
            const auto make = [&](uint32_t half, step how) {
                half_makers[half * steps + how](at, at + few_lines, picture_planes[bit]);
            };
            if (const int plane = plane_of_products(products[bit]); plane >= 0) {
                std::memcpy(picture_planes[bit] + at, machine.gvram[plane] + at, few_lines);
                continue;
            }
            if (low != 0 || high == 0) make(low, first_half);
            if (high != 0) make(high, low != 0 ? second_half : second_half_alone);
        }
    machine.video_unlock();
}

// Four pixels by the four bits of each plane: plane 0 in bits 0-3 of the index, plane 1 in 4-7, plane 2 in
// 8-11.
template <class Pixel> struct quad_table {
    const Pixel *made_of = nullptr;
    alignas(64) std::array<Pixel, 4> quad[4096];

    void make(const Pixel *colours) {
        if (made_of == colours) return;
        made_of = colours;
        for (uint32_t index = 0; index < 4096; ++index)
            for (uint32_t x = 0; x < 4; ++x) {
                const uint32_t bits = index >> (3 - x);
                quad[index][x] = colours[(bits & 1) | (bits >> 4 & 1) << 1 | (bits >> 8 & 1) << 2];
            }
    }
};

// Of the thread that composes.
template <class Pixel> quad_table<Pixel> even_quads;
template <class Pixel> quad_table<Pixel> odd_quads;

// The quads of a line by their indices: of the first four pixels of each byte, and of its last four.
struct line_quads {
    alignas(16) uint16_t first[line_bytes], last[line_bytes];
};

// Sixteen indices, put together from their low and high bytes.
void store_indices(uint16_t *to, plane_bytes low, plane_bytes high) {
    if constexpr (std::endian::native == std::endian::big) std::swap(low, high);
    const plane_bytes halves[2] = {
        __builtin_shufflevector(low, high, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23),
        __builtin_shufflevector(low, high, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31)};
    std::memcpy(to, halves, sizeof halves);
}

void find_quads(uint32_t offset, line_quads &quads) {
    for (uint32_t x = 0; x < line_bytes; x += sizeof(plane_bytes)) {
        plane_bytes p[3];
        for (uint32_t plane = 0; plane < 3; ++plane)
            p[plane] = load_bytes(&picture_planes[plane][offset + x]);
        store_indices(quads.first + x, p[0] >> 4 | (p[1] & 0xF0), p[2] >> 4);
        store_indices(quads.last + x, (p[0] & 0x0F) | p[1] << 4, p[2] & 0x0F);
    }
}

template <class Pixel> struct pixel_vector { typedef Pixel type __attribute__((vector_size(16))); };

template <class Vector> inline void store_both(void *even, void *odd, Vector pixels) {
    std::memcpy(even, &pixels, sizeof pixels);
    std::memcpy(odd, &pixels, sizeof pixels);
}

// The sixteen pixels of two bytes, into both lines.
inline void look_up(const uint16_t *first, const uint16_t *last, const quad_table<uint8_t> &table,
                    uint8_t *even, uint8_t *odd) {
    typedef uint32_t words __attribute__((vector_size(16)));
    const auto quad = [&](uint16_t index) { return std::bit_cast<uint32_t>(table.quad[index]); };
    store_both(even, odd, words{quad(first[0]), quad(last[0]), quad(first[1]), quad(last[1])});
}

inline void look_up(const uint16_t *first, const uint16_t *last, const quad_table<uint32_t> &table,
                    uint32_t *even, uint32_t *odd) {
    using four = pixel_vector<uint32_t>::type;
    for (int i = 0; i < 2; ++i, even += 8, odd += 8) {
        store_both(even, odd, std::bit_cast<four>(table.quad[first[i]]));
        store_both(even + 4, odd + 4, std::bit_cast<four>(table.quad[last[i]]));
    }
}

// Both lines may be one.
template <class Pixel>
void draw_line(const line_quads &quads, const quad_table<Pixel> &table, Pixel *even, Pixel *odd) {
    for (uint32_t x = 0; x < line_bytes; x += 8, even += 64, odd += 64)
        for (uint32_t i = 0; i < 8; i += 2)
            look_up(quads.first + x + i, quads.last + x + i, table, even + 8 * i, odd + 8 * i);
}

template <class Pixel> void make_pixels(const Pixel *even_host, const Pixel *odd_host, Pixel *even) {
    const bool same = even_host == odd_host;
    even_quads<Pixel>.make(even_host);
    if (!same) odd_quads<Pixel>.make(odd_host);
    for (uint32_t line = 0; line < plane_lines; ++line, even += 2 * geometry.frame_pitch) {
        line_quads quads;
        find_quads(line * line_bytes, quads);
        Pixel *const odd = even + geometry.frame_pitch;
        draw_line(quads, even_quads<Pixel>, even, same ? odd : even);
        if (!same) draw_line(quads, odd_quads<Pixel>, odd, odd);
    }
}

#if defined(__x86_64__)
void copy_planes() {
    machine.video_lock();
    for (uint32_t plane = 0; plane < 3; ++plane)
        std::memcpy(picture_planes[plane], machine.gvram[plane], seen_bytes);
    machine.video_unlock();
}

// What one frame draws with; the palette is read once, so that both lines of a pair agree.
template <class Pixel> struct frame_colours {
    alignas(32) std::array<Pixel, 8> even, odd; // by the code of a pixel

    frame_colours(const Pixel *even_host, const Pixel *odd_host) {
        const std::array<uint8_t, 8> colours = colours_by_code();
        for (uint32_t code = 0; code < 8; ++code) {
            even[code] = even_host[colours[code]];
            odd[code] = odd_host[colours[code]];
        }
    }
};

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
                _mm256_srlv_epi32(four_bytes(&picture_planes[plane][offset + x]), pixel_shift), low_bits);
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
            const __m256i bytes =
                _mm256_shuffle_epi8(four_bytes(&picture_planes[plane][offset + x]), byte_of_pixel);
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
#if defined(__x86_64__)
    if (have_wide_vectors()) {
        copy_planes();
        return draw_wide(frame_colours<Pixel>(even_host, odd_host), first_pixel<Pixel>());
    }
#else
    (void)even_host, (void)odd_host;
#endif
    draw_planes_portable();
}

void draw_graphics8(uint32_t) { draw_planes<uint8_t>(machine.even_index, machine.odd_index); }
void draw_graphics32(uint32_t) { draw_planes<uint32_t>(machine.even_rgb, machine.odd_rgb); }

template <class Pixel> void clear(uint32_t) {
    if (!have_wide_vectors()) {
        std::memset(picture_planes, 0, sizeof picture_planes);
        return;
    }
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

void finish_picture(uint32_t format) {
    if (have_wide_vectors()) return;
    if (format & 1)
        make_pixels<uint32_t>(machine.even_rgb, machine.odd_rgb, first_pixel<uint32_t>());
    else
        make_pixels<uint8_t>(machine.even_index, machine.odd_index, first_pixel<uint8_t>());
}
