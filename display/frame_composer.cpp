// Row fetch, attribute decoding and the order of a frame. What paints the pixels stands in text_renderers and
// graphics_renderers.
#include "display/frame_composer.h"

#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <algorithm>
#include <cstring>
#include <iterator>

frame_geometry geometry;
text_row_work text_work;

namespace {

constexpr std::array<uint32_t, 256> palette_entries() {
    std::array<uint32_t, 256> entries{};
    constexpr uint32_t dark[] = {0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080};
    constexpr uint32_t bright[] = {0x808080, 0xFF0000, 0x00FF00, 0xFFFF00,
                                   0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};
    std::copy(std::begin(dark), std::end(dark), entries.begin());
    std::copy(std::begin(bright), std::end(bright), entries.begin() + 0xF8);
    return entries;
}

} // namespace

constinit const std::array<uint32_t, 256> host_palette = palette_entries();

namespace {

// Bits of an attribute as the emulated software writes it.
enum attribute_bit : uint8_t {
    attribute_secret = 0x01,
    attribute_blink = 0x02,
    attribute_reverse = 0x04,
    attribute_is_colour = 0x08,
    attribute_upper_line = 0x10,
    attribute_under_line = 0x20,
    attribute_colour_semigraphic = 0x10,
    attribute_mono_semigraphic = 0x80,
};

constexpr uint8_t colour_permutation[8] = {0, 1, 4, 5, 2, 3, 6, 7}; // G R B to R G B
constexpr uint8_t white = 7;

uint8_t attr_decode_colour(uint8_t attribute) {
    uint8_t cell = 0;
    if (attribute & attribute_secret) cell |= cell_secret;
    if (attribute & attribute_reverse) cell |= cell_reverse;
    if (attribute & attribute_upper_line) cell |= cell_upper_line;
    if (attribute & attribute_under_line) cell |= cell_under_line;
    return cell;
}

uint8_t attr_decode_mono(uint8_t attribute) {
    uint8_t cell = attr_decode_colour(attribute);
    if (attribute & attribute_mono_semigraphic) cell |= cell_semigraphic;
    return cell;
}

// The row's bytes stand within 16 aligned words, wherever it starts. The DMA's address has 16 bits, so what
// passes 0xFFFF goes on at 0x0000; the CPU thread may store meanwhile outside the text window.
struct row_words {
    uint64_t words[16];

    explicit row_words(uint32_t start) {
        typedef uint64_t word_in_bytes __attribute__((may_alias));
        for (uint32_t i = 0; i < 16; ++i) {
            const auto address = static_cast<uint16_t>((start & ~7u) + 8 * i);
            words[i] = __atomic_load_n(reinterpret_cast<const word_in_bytes *>(machine.ram + address),
                                       __ATOMIC_RELAXED);
        }
    }
};

// Keeps the pairs sorted by position; of equal positions the first stands. `count` pairs are stored.
void insert_pair(attr_pair pair, int &count) {
    attr_pair *const pairs = text_work.attr_pairs;
    int at = count;
    while (at > 0 && pairs[at - 1].position > pair.position) --at;
    if (at > 0 && pairs[at - 1].position == pair.position) return;
    std::move_backward(pairs + at, pairs + count, pairs + count + 1);
    pairs[at] = pair;
    ++count;
}

void text_row_fetch(uint32_t row) {
    const uint32_t start = machine.text_start + text_row_bytes * row;
    const row_words words(start);
    const uint8_t *const chars = reinterpret_cast<const uint8_t *>(words.words) + start % 8;
    std::memcpy(text_work.row_chars, chars, text_columns);
    const uint8_t *const pairs = chars + text_columns;
    for (attr_pair &pair : text_work.attr_pairs) pair = {text_columns, 0};
    int count = 0;
    for (int i = 0; i < attr_pair_count; ++i)
        insert_pair({static_cast<uint8_t>(pairs[2 * i] & 0x7F), pairs[2 * i + 1]}, count);
}

uint8_t colour_of(uint8_t attribute) {
    const int semigraphic = attribute & attribute_colour_semigraphic ? cell_semigraphic : 0;
    return static_cast<uint8_t>(colour_permutation[attribute >> 5] | semigraphic);
}

// Blinking text is hidden in its dark phase.
uint8_t shown_attribute(uint8_t (*decoder)(uint8_t), bool dark, uint8_t source) {
    return static_cast<uint8_t>(decoder(source) | (dark && source & attribute_blink ? cell_secret : 0));
}

// Each pair holds from its column on. What the row above ended with holds until the first pair, colour and
// character attribute each on its own.
void decode_cells(bool mono) {
    const bool dark = machine.attr_blink_phase == 0;
    uint8_t (*const decoder)(uint8_t) = machine.attr_decoder;
    const auto decode = [&](uint8_t source) { return shown_attribute(decoder, dark, source); };
    uint8_t colour = text_work.running_colour, attribute = text_work.running_attribute;
    uint32_t column = 0;
    const auto fill_to = [&](uint32_t end) {
        const int under = mono ? white : colour & (cell_colour | cell_semigraphic);
        std::memset(text_work.cell_attr + column, under | attribute, end - column);
        column = end;
    };
    for (const attr_pair &pair : text_work.attr_pairs) {
        if (pair.position >= text_columns) break;
        if (pair.position > column) fill_to(pair.position);
        if (!mono && (pair.attribute & attribute_is_colour))
            colour = colour_of(pair.attribute);
        else
            attribute = decode(pair.attribute);
    }
    fill_to(text_columns);
    text_work.running_colour = colour;
    text_work.running_attribute = attribute;
}

void reverse_and_cursor(uint32_t row) {
    if (machine.crtc_reverse == 1)
        for (uint8_t &cell : text_work.cell_attr) cell ^= cell_reverse;
    const uint8_t x = machine.cursor_x;
    if (machine.cursor_y != row || machine.cursor_phase != 1 || machine.cursor_enabled != 1) return;
    if (x >= text_columns) return;
    text_work.cell_attr[x] = static_cast<uint8_t>((text_work.cell_attr[x] ^ cell_reverse) | white);
}

void text_row_decode(uint32_t row) {
    if (row >= text_rows) return;
    text_work.running_colour = row == 0 ? machine.carried_colour.load() : text_work.row_colour_in[row];
    text_work.running_attribute = row == 0 ? machine.carried_attribute.load() : text_work.row_attr_in[row];
    decode_cells(machine.crtc_mono == 1);
    reverse_and_cursor(row);
    if (row + 1 < text_rows) {
        text_work.row_colour_in[row + 1] = text_work.running_colour;
        text_work.row_attr_in[row + 1] = text_work.running_attribute;
    } else {
        machine.carried_colour = text_work.running_colour;
        machine.carried_attribute = text_work.running_attribute;
    }
}

void select_attr_decoder(uint32_t mono) {
    machine.attr_decoder = mono ? attr_decode_mono : attr_decode_colour;
}

void draw_text_row(uint32_t row, uint32_t format) {
    machine.renderer_table[renderer_text8 + (format & 1)](row);
}

void clear_graphics(uint32_t format) { machine.renderer_table[renderer_clear8 + (format & 1)](0); }

void draw_graphics(uint32_t format) { machine.renderer_table[renderer_graphics8 + (format & 1)](0); }

void select_renderer(uint32_t index) {
    if (index > 3) return;
    machine.renderer_table[renderer_text8] = machine.renderer_table[renderer_text8_modes + index].load();
    machine.renderer_table[renderer_text32] = machine.renderer_table[renderer_text32_modes + index].load();
}

void select_scanline_colours(uint32_t interlace) {
    machine.odd_index = interlace ? index_half : index_full;
    machine.odd_rgb = interlace ? rgb_half : rgb_full;
}

} // namespace

void display_init() {
    machine.text_row_fetch = text_row_fetch;
    machine.text_row_decode = text_row_decode;
    machine.select_attr_decoder = select_attr_decoder;
    machine.colour_perm = colour_permutation;
    select_attr_decoder(1);
}

void renderer_init() {
    machine.draw_text_row = draw_text_row;
    machine.clear_graphics = clear_graphics;
    machine.draw_graphics = draw_graphics;
    machine.select_renderer = select_renderer;
    machine.select_scanline_colours = select_scanline_colours;
    machine.even_index = index_full;
    machine.even_rgb = rgb_full;
    select_scanline_colours(0);
    install_text_renderers();
    install_graphics_renderers();
    select_renderer(0);
}

void set_frame_geometry(int32_t width, int32_t height, uint32_t pitch) {
    geometry.frame_pitch = pitch;
    geometry.frame_top = (height - frame_height) / 2;
    geometry.frame_left = (width - frame_width) / 2;
    const auto top = static_cast<uint32_t>(geometry.frame_top),
               left = static_cast<uint32_t>(geometry.frame_left);
    for (uint32_t k = 0; k < 20; ++k) geometry.row_offset20[k] = (top + 20 * k) * pitch + left;
    for (uint32_t k = 0; k < 25; ++k) geometry.row_offset25[k] = (top + 16 * k) * pitch + left;
}

uint32_t compose_frame(uint32_t format) {
    if (machine.port31 & port31_graphics_on)
        machine.draw_graphics(format);
    else
        machine.clear_graphics(format);
    const uint32_t rows = machine.crtc_status != 0 ? 0 : text_rows;
    for (uint32_t row = 0; row < rows; ++row) {
        machine.video_lock();
        machine.text_row_fetch(row);
        machine.video_unlock();
        machine.text_row_decode(row);
        machine.draw_text_row(row, format);
    }
    finish_picture(format);
    return rows;
}

// Rows are looked at from the last one up, until one has said the colour and one the attribute.
void pass_frame_over() {
    if (machine.crtc_status != 0) return;
    const bool mono = machine.crtc_mono == 1, dark = machine.attr_blink_phase == 0;
    bool colour_known = mono, attribute_known = false;
    for (uint32_t row = text_rows; row-- > 0 && !(colour_known && attribute_known);) {
        machine.text_row_fetch(row);
        for (int i = attr_pair_count; i-- > 0;) {
            const attr_pair pair = text_work.attr_pairs[i];
            if (pair.position >= text_columns) continue;
            const bool is_colour = !mono && (pair.attribute & attribute_is_colour) != 0;
            if (is_colour && !colour_known) machine.carried_colour = colour_of(pair.attribute);
            if (!is_colour && !attribute_known)
                machine.carried_attribute = shown_attribute(machine.attr_decoder, dark, pair.attribute);
            (is_colour ? colour_known : attribute_known) = true;
        }
    }
}
