#include "support/kel_dib.h"

#include "platform/resources.h"
#include "support/kel_fstream.h"
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t header_bytes = sizeof(dib_header);
constexpr size_t file_header_bytes = 14;
constexpr size_t pixel_offset_at = 10; // in the file header
constexpr uint16_t palette_version = 0x300;
constexpr uint8_t no_collapse = 4;
constexpr int largest_palette = 0xFFFF; // its count is 16 bits

constexpr dib_colour sixteen_colours[16] = {
    {0, 0, 0, 0},       {0, 0, 128, 0},   {0, 128, 0, 0},   {0, 128, 128, 0},
    {128, 0, 0, 0},     {128, 0, 128, 0}, {128, 128, 0, 0}, {128, 128, 128, 0},
    {192, 192, 192, 0}, {0, 0, 255, 0},   {0, 255, 0, 0},   {0, 255, 255, 0},
    {255, 0, 0, 0},     {255, 0, 255, 0}, {255, 255, 0, 0}, {255, 255, 255, 0},
};

// The sixteen colours, a cube of 6 x 6 x 6 colours, and 24 greys between black and white.
dib_colour default_colour_of_256(int index) {
    if (index < 16) return sixteen_colours[index];
    if (index >= 16 + 216) {
        const auto grey = static_cast<uint8_t>(8 + (index - 232) * 10);
        return {grey, grey, grey, 0};
    }
    const int n = index - 16;
    const auto level = [](int step) { return static_cast<uint8_t>(step * 51); };
    return {level(n % 6), level(n / 6 % 6), level(n / 36), 0};
}

dib_colour default_colour(int bit_count, int index) {
    if (bit_count == 1) return sixteen_colours[index == 0 ? 0 : 15];
    return bit_count == 4 ? sixteen_colours[index] : default_colour_of_256(index);
}

// Colours that a pixel of so many bits can tell apart; 0 for true colour, -1 for a bit count without a table.
int colours_of(int bit_count) {
    switch (bit_count) {
    case 1: return 2;
    case 4: return 16;
    case 8: return 256;
    case 24: return 0;
    default: return -1;
    }
}

} // namespace

kel_dib::kel_dib() { kel_dib::reset_fields(); }

kel_dib::~kel_dib() { kel_dib::unload(); }

void kel_dib::reset_fields() {
    view = nullptr;
    view_bytes = 0;
    header = nullptr;
    colours = nullptr;
    colours_held = 0;
    pixel_bits = nullptr;
    own_bits = nullptr;
    palette_block = nullptr;
    entries = nullptr;
    pixel_width = pixel_height = 0;
    stored_row_bytes = 0;
    top_down = loaded = 0;
    read_only = 1;
    created_block = nullptr;
}

void kel_dib::unload() {
    std::free(view);
    std::free(created_block);
    std::free(palette_block);
    reset_fields();
}

// Of a row as it is stored, whatever the bit count.
uint64_t kel_dib::stored_row() const {
    const uint64_t bits = header == nullptr ? 0 : header->bit_count;
    return (static_cast<uint64_t>(pixel_width) * bits + 31) / 32 * 4;
}

uint32_t kel_dib::row_bytes() {
    const bool known = header != nullptr && colours_of(header->bit_count) >= 0;
    return known ? static_cast<uint32_t>(stored_row()) : 0;
}

// ---- loading -----------------------------------------------------------------------------------------

// Takes over the header and the colour table from `data`, as far as they lie within its `bytes`.
bool kel_dib::adopt_header(const uint8_t *data, size_t bytes) {
    if (bytes < header_bytes) return false;
    header = reinterpret_cast<const dib_header *>(data);
    if (header->width <= 0 || header->height == 0 || header->height == INT_MIN) return false;
    pixel_width = header->width;
    top_down = header->height < 0;
    pixel_height = std::abs(header->height);
    const bool deep = header->bit_count == 16 || header->bit_count == 32; // only with a colour table
    if ((colours_of(header->bit_count) < 0 && !deep) || stored_row() > INT_MAX) return false;
    stored_row_bytes = static_cast<int>(row_bytes());

    const uint32_t used = header->colours_used;
    if (used > largest_palette) return false;
    colours_held = used != 0 ? static_cast<int>(used) : colours_of(header->bit_count);
    if (colours_held < 0) return false;
    colours = reinterpret_cast<const dib_colour *>(data + header_bytes);
    return static_cast<size_t>(colours_held) * sizeof(dib_colour) <= bytes - header_bytes;
}

// The pixel rows at `offset`, as far as all of them lie within the `bytes`.
bool kel_dib::adopt_bits(const uint8_t *data, size_t bytes, size_t offset) {
    const uint64_t needed = stored_row() * static_cast<uint64_t>(pixel_height);
    if (offset > bytes || needed > bytes - offset) return false;
    pixel_bits = data + offset;
    return true;
}

int kel_dib::load_resource(uint16_t id) {
    if (loaded) return 0;
    const platform::resource found = platform::find_resource(platform::resource_type::bitmap, id);
    const bool good = found.data != nullptr && adopt_header(found.data, found.size) &&
                      adopt_bits(found.data, found.size,
                                 header_bytes + static_cast<size_t>(colours_held) * sizeof(dib_colour)) &&
                      build_palette();
    if (!good) {
        unload();
        return 0;
    }
    loaded = 1;
    return 1;
}

// The whole file into memory of our own. A view of the file itself would end the process when somebody else
// makes the file shorter.
bool kel_dib::read_file(const std::string &file_name) {
    kel_fstream file;
    if (!file.open(file_name, 0, 0)) return false;
    view_bytes = file.size();
    view = static_cast<uint8_t *>(std::malloc(view_bytes));
    try {
        return view != nullptr && file.read(view, 1, static_cast<uint32_t>(view_bytes)) == view_bytes;
    } catch (const kel_exception &) {
        return false;
    }
}

bool kel_dib::adopt_file(const std::string &file_name) {
    if (!read_file(file_name) || view_bytes < file_header_bytes) return false;
    if (view[0] != 'B' || view[1] != 'M') return false;
    if (!adopt_header(view + file_header_bytes, view_bytes - file_header_bytes)) return false;
    size_t offset = 0;
    for (size_t i = 4; i-- > 0;) offset = offset << 8 | view[pixel_offset_at + i];
    return adopt_bits(view, view_bytes, offset);
}

int kel_dib::load_file(const std::string &file_name) {
    if (loaded) return 0;
    if (!adopt_file(file_name) || !build_palette()) {
        unload();
        return 0;
    }
    loaded = 1;
    return 1;
}

// ---- creating ----------------------------------------------------------------------------------------

const dib_info *kel_dib::create(int new_width, int new_height, int bit_count, const dib_colour *table,
                                int count) {
    if (loaded || (table == nullptr) != (count == 0) || count < 0) return nullptr;
    if (new_width <= 0 || new_height <= 0) return nullptr;
    int table_size = colours_of(bit_count);
    if (table_size < 0 || count > (table_size == 0 ? largest_palette : table_size)) return nullptr;
    if (bit_count == 24) table_size = count;

    created_block = std::calloc(1, header_bytes + static_cast<size_t>(table_size) * sizeof(dib_colour));
    if (created_block == nullptr) return nullptr;
    auto *new_header = static_cast<dib_header *>(created_block);
    auto *new_colours = reinterpret_cast<dib_colour *>(new_header + 1);
    new_header->size = header_bytes;
    new_header->width = new_width;
    new_header->height = -new_height;
    new_header->planes = 1;
    new_header->bit_count = static_cast<uint16_t>(bit_count);
    if (bit_count == 24) new_header->colours_used = static_cast<uint32_t>(count);
    if (table != nullptr)
        std::memcpy(new_colours, table, static_cast<size_t>(count) * sizeof(dib_colour));
    else
        for (int i = 0; i < table_size; i++) new_colours[i] = default_colour(bit_count, i);

    header = new_header;
    colours = new_colours;
    colours_held = table_size;
    pixel_width = new_width;
    pixel_height = new_height;
    stored_row_bytes = static_cast<int>(row_bytes());
    loaded = top_down = 1;
    read_only = 0;
    if (stored_row() > INT_MAX || !build_palette()) {
        unload();
        return nullptr;
    }
    return info();
}

int kel_dib::set_bits(void *buffer) {
    if (read_only) return 0; // not a created one
    pixel_bits = own_bits = static_cast<uint8_t *>(buffer);
    return 1;
}

int kel_dib::build_palette() {
    if (colours_held == 0) return 1;
    std::free(palette_block);
    entries = nullptr;
    palette_block = static_cast<logical_palette *>(
        std::calloc(1, 4 + static_cast<size_t>(colours_held) * sizeof(palette_entry)));
    if (palette_block == nullptr) return 0;
    palette_block->version = palette_version;
    palette_block->count = static_cast<uint16_t>(colours_held);
    entries = palette_block->entries;
    for (int i = 0; i < colours_held; i++)
        entries[i] = {colours[i].red, colours[i].green, colours[i].blue, no_collapse};
    return 1;
}

// ---- pixels ------------------------------------------------------------------------------------------

size_t kel_dib::row_offset(int y) const {
    const int stored = top_down ? y : pixel_height - 1 - y;
    return static_cast<size_t>(stored) * static_cast<size_t>(stored_row_bytes);
}

int kel_dib::set_pixel(int x, int y, uint32_t value) {
    if (!loaded || read_only || own_bits == nullptr) return 0;
    if (x < 0 || x >= pixel_width || y < 0 || y >= pixel_height) return 0;
    uint8_t *row = own_bits + row_offset(y);
    const auto put = [](uint8_t &byte, uint32_t mask, uint32_t bits) {
        byte = static_cast<uint8_t>((byte & ~mask) | bits);
    };
    switch (header->bit_count) {
    case 1: put(row[x / 8], 0x80u >> x % 8, (value & 1) << (7 - x % 8)); return 1;
    case 4: put(row[x / 2], x % 2 ? 0x0F : 0xF0, (value & 0x0F) << (x % 2 ? 0 : 4)); return 1;
    case 8: row[x] = static_cast<uint8_t>(value); return 1;
    case 24: return 0;
    default: return 1;
    }
}

uint32_t kel_dib::get_pixel(int x, int y) {
    if (!loaded || pixel_bits == nullptr || header->bit_count != 24) return 0;
    if (x < 0 || x >= pixel_width || y < 0 || y >= pixel_height) return 0;
    const uint8_t *pixel = pixel_bits + row_offset(y) + static_cast<size_t>(x) * 3;
    return static_cast<uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
}
