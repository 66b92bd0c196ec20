// One device-independent bitmap: an information header, a colour table, then the pixel rows, used in place
// where they lie: in a resource, in a copy of a bitmap file, or in a pixel buffer of the caller's.
//
// The header is always read as the 40-byte form. Everything that a header says is checked against the bytes
// that are there: a cut or hostile bitmap does not load. Results are 1 for success and 0 for failure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// As bitmaps are stored, at any address.
struct [[gnu::packed]] dib_header {
    uint32_t size;         // 40
    int32_t width, height; // pixels; a negative height: the top row is stored first
    uint16_t planes;       // 1
    uint16_t bit_count;    // bits a pixel
    uint32_t compression;  // 0; not looked at
    uint32_t image_size;
    int32_t x_per_metre, y_per_metre;
    uint32_t colours_used; // entries of the colour table; 0: as many as the bit count can tell apart
    uint32_t colours_important;
};
static_assert(sizeof(dib_header) == 40);

struct dib_colour {
    uint8_t blue, green, red, reserved;
};

struct dib_info {
    dib_header header;
    dib_colour colours[1]; // as many as there are
};

struct palette_entry {
    uint8_t red, green, blue;
    uint8_t flags; // 4: an entry of its own, not matched to another of the same colour
};

struct logical_palette {
    uint16_t version; // 0x300
    uint16_t count;
    palette_entry entries[1]; // `count`
};

class kel_dib {
  public:
    kel_dib();
    ~kel_dib();
    kel_dib(const kel_dib &) = delete;
    kel_dib &operator=(const kel_dib &) = delete;

    // A bitmap of the program's resources. 0 also while one is held; that one then stays.
    virtual int load_resource(uint16_t id);
    // A bitmap file, which must be writable although nothing is ever written to it.
    virtual int load_file(const std::string &file_name);
    virtual void unload();
    // An empty bitmap of 1, 4, 8 or 24 bits a pixel, top row first, for a pixel buffer that follows with
    // set_bits. Without a colour table (none and 0) the default colours. Null on failure.
    virtual const dib_info *create(int new_width, int new_height, int bit_count, const dib_colour *table,
                                   int count);
    // Only in a created bitmap of 1, 4 or 8 bits a pixel: the pixel's index.
    virtual int set_pixel(int x, int y, uint32_t value);
    // Only at 24 bits a pixel: 0x00BBGGRR; else 0.
    virtual uint32_t get_pixel(int x, int y);
    // Bytes of a row as width and bit count give them, a multiple of 4; 0 for a bit count other than 1, 4, 8
    // and 24.
    virtual uint32_t row_bytes();
    virtual void reset_fields();
    // The logical palette from the colour table.
    virtual int build_palette();

    // 0 or null while nothing is loaded.
    const dib_info *info() const { return reinterpret_cast<const dib_info *>(header); }
    const uint8_t *bits() const { return loaded ? pixel_bits : nullptr; }
    uint16_t bit_count() const { return loaded ? header->bit_count : uint16_t{0}; }
    int width() const { return loaded ? pixel_width : 0; }
    int height() const { return loaded ? pixel_height : 0; }
    int stride() const { return loaded ? stored_row_bytes : 0; }
    int colour_count() const { return loaded ? colours_held : 0; }
    bool is_top_down() const { return top_down != 0; }
    const logical_palette *palette() const { return loaded ? palette_block : nullptr; }
    const palette_entry *palette_entries() const { return loaded ? entries : nullptr; }
    // The pixel buffer of a created bitmap: height rows of stride bytes, the caller's.
    int set_bits(void *buffer);

  private:
    bool adopt_header(const uint8_t *data, size_t bytes);
    bool adopt_bits(const uint8_t *data, size_t bytes, size_t offset);
    bool read_file(const std::string &file_name);
    bool adopt_file(const std::string &file_name);
    uint64_t stored_row() const;
    size_t row_offset(int y) const;

    uint8_t *view; // the file's bytes
    size_t view_bytes;
    const dib_header *header;
    const dib_colour *colours;
    int colours_held;
    const uint8_t *pixel_bits; // first byte of the first stored row
    uint8_t *own_bits;         // the same, where pixels may be written
    logical_palette *palette_block;
    palette_entry *entries;
    int pixel_width, pixel_height;
    int stored_row_bytes;
    int top_down, loaded, read_only;
    void *created_block; // header and colour table
};
