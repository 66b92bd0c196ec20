// The eight text row renderers: one template, a function for each pixel size, column count and row count.
//
// A row is first brought into one shape: for every text line 80 bytes of bits, one for each group of eight
// pixels, and a colour for each group; 40-column cells fill two groups. Painting then goes line by line over
// whole groups: their bits are a mask that puts the colour over what the graphics layer left, in its planes
// or, with AVX2, in its pixels.
#include "display/picture_planes.h"
#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <array>
#include <bit>
#include <cstring>

namespace {

constexpr uint32_t groups = frame_width / 8;
constexpr uint32_t block_groups = 8; // groups that are looked at, and skipped when blank, at once
constexpr uint32_t most_lines = 10;
constexpr uint32_t semigraphic_glyphs = 0x800; // offset in font_rom

struct row_picture {
    alignas(32) uint8_t bits[most_lines][groups];
    alignas(32) uint8_t colour[groups];
};

// A glyph: the byte in memory order of line 0 to 7.
using glyph = uint64_t;
using glyph_lines = std::array<uint8_t, 8>;
typedef glyph glyph_in_bytes __attribute__((may_alias));

constexpr glyph top_line = std::bit_cast<glyph>(glyph_lines{0xFF, 0, 0, 0, 0, 0, 0, 0});
constexpr glyph bottom_line = std::bit_cast<glyph>(glyph_lines{0, 0, 0, 0, 0, 0, 0, 0xFF});
constexpr glyph every_line = ~glyph{0};

// What an attribute makes of a glyph: (glyph & keep) ^ flip. Rows of ten lines have a blank line above and
// below, which take the upper and the under line.
struct glyph_effect {
    glyph keep, flip;
    uint8_t above, below;
};

// By the attribute bits above the colour: cell_attr >> 3.
template <uint32_t lines>
constexpr auto effects = [] {
    std::array<glyph_effect, 32> table{};
    for (uint32_t i = 0; i < 32; ++i) {
        const uint32_t attribute = i << 3;
        const bool shown = (attribute & cell_secret) == 0;
        const bool upper = shown && (attribute & cell_upper_line),
                   under = shown && (attribute & cell_under_line);
        const glyph lit = lines == 8 ? (upper ? top_line : 0) | (under ? bottom_line : 0) : 0;
        const glyph reverse = attribute & cell_reverse ? every_line : 0;
        table[i].keep = shown ? ~lit : 0;
        table[i].flip = lit ^ reverse;
        table[i].above = static_cast<uint8_t>((upper ? 0xFF : 0) ^ (reverse & 0xFF));
        table[i].below = static_cast<uint8_t>((under ? 0xFF : 0) ^ (reverse & 0xFF));
    }
    return table;
}();

// Programmable glyphs may be redefined meanwhile.
inline glyph load_glyph(const uint8_t *lines) {
    return __atomic_load_n(reinterpret_cast<const glyph_in_bytes *>(lines), __ATOMIC_RELAXED);
}

// Each bit of the low nibbles twice.
constexpr glyph doubled(glyph nibbles) {
    nibbles &= 0x0F0F0F0F0F0F0F0F;
    nibbles = (nibbles | nibbles << 2) & 0x3333333333333333;
    nibbles = (nibbles | nibbles << 1) & 0x5555555555555555;
    return nibbles | nibbles << 1;
}

// Eight glyphs side by side become eight lines of eight groups. Interleaving the first half of the 64 bytes
// with the second turns the byte's number, (group, line), round by one bit; three times exchanges the two.
void store_lines(const glyph *cells, row_picture &row, uint32_t first_line, uint32_t group) {
    typedef uint8_t bytes __attribute__((vector_size(16)));
    bytes v[4];
    std::memcpy(v, cells, sizeof v);
    for (int turn = 0; turn < 3; ++turn) {
        const bytes a = v[0], b = v[1], c = v[2], d = v[3];
        v[0] = __builtin_shufflevector(a, c, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        v[1] = __builtin_shufflevector(a, c, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        v[2] = __builtin_shufflevector(b, d, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        v[3] = __builtin_shufflevector(b, d, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    }
    glyph lines[8];
    std::memcpy(lines, v, sizeof lines);
    for (uint32_t line = 0; line < 8; ++line)
        std::memcpy(&row.bits[first_line + line][group], &lines[line], sizeof lines[line]);
}

template <uint32_t columns, uint32_t lines> void make_row(row_picture &row) {
    constexpr uint32_t step = text_columns / columns; // groups of a cell
    const auto *programmable = reinterpret_cast<const uint8_t *>(machine.font_work);
    const uint8_t *const characters = machine.pcg_glyphs_on == 1 ? programmable : machine.font_rom;
    const uint8_t *const fonts[2] = {characters, machine.font_rom + semigraphic_glyphs};
    glyph cells[groups];
    for (uint32_t column = 0; column < text_columns; column += step) {
        const uint8_t attribute = text_work.cell_attr[column];
        const uint8_t *const font = fonts[(attribute & cell_semigraphic) != 0];
        const glyph_effect &effect = effects<lines>[attribute >> 3];
        const glyph bits = (load_glyph(font + 8u * text_work.row_chars[column]) & effect.keep) ^ effect.flip;
        if constexpr (step == 1) {
            cells[column] = bits;
        } else {
            cells[column] = doubled(bits >> 4);
            cells[column + 1] = doubled(bits);
        }
        for (uint32_t i = 0; i < step; ++i) {
            row.colour[column + i] = attribute & cell_colour;
            if constexpr (lines == 10) {
                row.bits[0][column + i] = effect.above;
                row.bits[9][column + i] = effect.below;
            }
        }
    }
    for (uint32_t group = 0; group < groups; group += block_groups)
        store_lines(cells + group, row, (lines - 8) / 2, group);
}

// Into the planes, whose lines from first_line on are the row's.
void paint_planes(const row_picture &row, uint32_t lines, uint32_t first_line) {
    plane_bytes colour[line_vectors][3]; // all ones where it has the bit
    for (uint32_t x = 0; x < line_vectors; ++x)
        for (uint32_t bit = 0; bit < 3; ++bit)
            colour[x][bit] =
                reinterpret_cast<plane_bytes>((load_bytes(row.colour + x * sizeof(plane_bytes)) &
                                               sixteen_of(static_cast<uint8_t>(1u << bit))) != 0);
    for (uint32_t line = 0; line < lines; ++line)
        for (uint32_t x = 0; x < line_vectors; ++x) {
            const plane_bytes mask = load_bytes(row.bits[line] + x * sizeof(plane_bytes));
            for (uint32_t bit = 0; bit < 3; ++bit) {
                uint8_t *const at =
                    &picture_planes[bit][(first_line + line) * line_bytes + x * sizeof(plane_bytes)];
                const plane_bytes under = load_bytes(at);
                store_bytes(at, under ^ ((under ^ colour[x][bit]) & mask));
            }
        }
}

#if defined(__x86_64__)
bool blank(const uint8_t *block_bits) {
    uint64_t all;
    std::memcpy(&all, block_bits, block_groups);
    return all == 0;
}

// The two lines of pixels that each text line becomes, and their colours.
template <class Pixel> struct canvas {
    Pixel *even;
    uint32_t pitch;
    const Pixel *even_colours, *odd_colours;
};

WIDE_VECTORS inline void blend_wide(void *pixels, __m256i colour, __m256i mask) {
    auto *const at = static_cast<__m256i *>(pixels);
    _mm256_storeu_si256(at, _mm256_blendv_epi8(_mm256_loadu_si256(at), colour, mask));
}

// 32-bit lane k is pixel k of a group. Four groups' bits are spread over all lanes at once, and a pattern for
// each of the four finds the bit of its group there.
WIDE_VECTORS void paint_wide(const row_picture &row, uint32_t lines, const canvas<uint32_t> &to) {
    const __m256i patterns[4] = {
        _mm256_setr_epi32(0x80, 0x40, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01),
        _mm256_slli_epi32(patterns[0], 8),
        _mm256_slli_epi32(patterns[0], 16),
        _mm256_slli_epi32(patterns[0], 24),
    };
    uint32_t even_colours[groups], odd_colours[groups];
    for (uint32_t group = 0; group < groups; ++group) {
        even_colours[group] = to.even_colours[row.colour[group]];
        odd_colours[group] = to.odd_colours[row.colour[group]];
    }
    uint32_t *even = to.even, *odd = even + to.pitch;
    for (uint32_t line = 0; line < lines; ++line, even += 2 * to.pitch, odd += 2 * to.pitch) {
        const uint8_t *const bits = row.bits[line];
        for (uint32_t block = 0; block < groups; block += block_groups) {
            if (blank(bits + block)) continue;
            for (uint32_t first = block; first < block + block_groups; first += 4) {
                const __m256i four = four_bytes(bits + first);
                for (uint32_t i = 0; i < 4; ++i) {
                    const uint32_t group = first + i;
                    const __m256i mask = _mm256_cmpeq_epi32(_mm256_and_si256(four, patterns[i]), patterns[i]);
                    blend_wide(even + 8 * group, _mm256_set1_epi32(static_cast<int>(even_colours[group])),
                               mask);
                    blend_wide(odd + 8 * group, _mm256_set1_epi32(static_cast<int>(odd_colours[group])),
                               mask);
                }
            }
        }
    }
}

WIDE_VECTORS inline __m256i eight_bytes(const uint8_t *at) {
    long long bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    return _mm256_set1_epi64x(bytes);
}

// Byte n is pixel n of four groups.
WIDE_VECTORS void paint_wide(const row_picture &row, uint32_t lines, const canvas<uint8_t> &to) {
    const __m256i pixel_bit = _mm256_set1_epi64x(0x0102040810204080);
    const __m256i group_of_pixel =
        _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
    const __m256i evens = eight_bytes(to.even_colours), odds = eight_bytes(to.odd_colours);
    __m256i even_colours[groups / 4], odd_colours[groups / 4];
    for (uint32_t i = 0; i < groups / 4; ++i) {
        const __m256i indices = _mm256_shuffle_epi8(four_bytes(row.colour + 4 * i), group_of_pixel);
        even_colours[i] = _mm256_shuffle_epi8(evens, indices);
        odd_colours[i] = _mm256_shuffle_epi8(odds, indices);
    }
    uint8_t *even = to.even, *odd = even + to.pitch;
    for (uint32_t line = 0; line < lines; ++line, even += 2 * to.pitch, odd += 2 * to.pitch) {
        const uint8_t *const bits = row.bits[line];
        for (uint32_t block = 0; block < groups; block += block_groups) {
            if (blank(bits + block)) continue;
            for (uint32_t first = block; first < block + block_groups; first += 4) {
                const __m256i spread = _mm256_shuffle_epi8(four_bytes(bits + first), group_of_pixel);
                const __m256i mask = _mm256_cmpeq_epi8(_mm256_and_si256(spread, pixel_bit), pixel_bit);
                blend_wide(even + 8 * first, even_colours[first / 4], mask);
                blend_wide(odd + 8 * first, odd_colours[first / 4], mask);
            }
        }
    }
}

canvas<uint8_t> canvas_at(uint32_t offset, const uint8_t *) {
    return {static_cast<uint8_t *>(geometry.frame_pixels) + offset, geometry.frame_pitch, machine.even_index,
            machine.odd_index};
}

canvas<uint32_t> canvas_at(uint32_t offset, const uint32_t *) {
    return {static_cast<uint32_t *>(geometry.frame_pixels) + offset, geometry.frame_pitch, machine.even_rgb,
            machine.odd_rgb};
}
#endif

template <class Pixel, uint32_t columns, uint32_t rows> void draw_row(uint32_t row) {
    if (row >= rows) return;
    constexpr uint32_t lines = frame_height / rows / 2;
    row_picture picture;
    make_row<columns, lines>(picture);
#if defined(__x86_64__)
    const uint32_t offset = rows == 20 ? geometry.row_offset20[row % 20] : geometry.row_offset25[row];
    if (have_wide_vectors())
        return paint_wide(picture, lines, canvas_at(offset, static_cast<const Pixel *>(nullptr)));
#endif
    paint_planes(picture, lines, row * lines);
}

template <class Pixel> void install(uint32_t first) {
    machine.renderer_table[first + 0] = draw_row<Pixel, 40, 20>;
    machine.renderer_table[first + 1] = draw_row<Pixel, 40, 25>;
    machine.renderer_table[first + 2] = draw_row<Pixel, 80, 20>;
    machine.renderer_table[first + 3] = draw_row<Pixel, 80, 25>;
}

} // namespace

void install_text_renderers() {
    install<uint8_t>(renderer_text8_modes);
    install<uint32_t>(renderer_text32_modes);
}
