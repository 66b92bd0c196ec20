#include "platform/resources.h"
#include "support/kel_dib.h"
#include "tests/temporary_folder.h"
#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr uint16_t test_id = 900;

// A packed bitmap as a resource holds it; each pixel byte is its offset, so that rows can be told apart.
struct packed_bitmap {
    int width = 4, height = 3, bits = 24;
    uint32_t colours_used = 0, table = 0, pixel_bytes = 36;

    std::vector<uint8_t> bytes() const {
        dib_header h{};
        h.size = 40;
        h.width = width;
        h.height = height;
        h.planes = 1;
        h.bit_count = static_cast<uint16_t>(bits);
        h.colours_used = colours_used;
        std::vector<uint8_t> data(40 + 4 * table + pixel_bytes);
        std::memcpy(data.data(), &h, 40);
        for (uint32_t i = 0; i < table; i++) data[40 + 4 * i + i % 3] = static_cast<uint8_t>(i + 1);
        for (uint32_t i = 0; i < pixel_bytes; i++) data[40 + 4 * table + i] = static_cast<uint8_t>(i);
        return data;
    }
    std::string file(uint32_t offset) const {
        const std::vector<uint8_t> data = bytes();
        std::string f("BM");
        f.resize(14);
        for (size_t i = 0; i < 4; i++) f[10 + i] = static_cast<char>(offset >> 8 * i & 0xFF);
        return f + std::string(data.begin(), data.end());
    }
};

// Registers a copy of exactly these bytes, so that a read past their end is caught.
int load(kel_dib &dib, const std::vector<uint8_t> &bytes) {
    platform::register_resource(platform::resource_type::bitmap, test_id, {bytes.data(), bytes.size()});
    return dib.load_resource(test_id);
}

// Everything that a user may look at.
uint32_t look_at_all(kel_dib &dib) {
    uint32_t sum = 0;
    for (int y = -1; y <= dib.height(); y++)
        for (int x = -1; x <= dib.width(); x++) sum += dib.get_pixel(x, y);
    for (int i = 0; i < dib.stride() * dib.height(); i++) sum += dib.bits()[i];
    for (int i = 0; i < dib.colour_count(); i++) sum += dib.palette_entries()[i].red;
    return sum;
}

class Bitmap : public testing::Test {
  protected:
    ~Bitmap() override { platform::register_resource(platform::resource_type::bitmap, test_id, {}); }
};

} // namespace

TEST_F(Bitmap, FourBitsWithEightColoursBottomUp) {
    kel_dib dib;
    EXPECT_EQ(dib.palette_entries(), nullptr);
    const auto bytes = packed_bitmap{128, 128, 4, 8, 8, 128 * 64}.bytes();
    ASSERT_EQ(load(dib, bytes), 1);
    EXPECT_EQ(dib.width(), 128);
    EXPECT_EQ(dib.height(), 128);
    EXPECT_EQ(dib.bit_count(), 4);
    EXPECT_EQ(dib.stride(), 64);
    EXPECT_EQ(dib.row_bytes(), 64u);
    EXPECT_FALSE(dib.is_top_down());
    EXPECT_EQ(dib.bits(), bytes.data() + 40 + 32) << "used in place";
    ASSERT_EQ(dib.palette()->count, 8);
    EXPECT_EQ(dib.palette()->version, 0x300);
    EXPECT_EQ(dib.palette_entries()[0].blue, 1) << "stored blue first";
    EXPECT_EQ(dib.palette_entries()[2].red, 3);
    EXPECT_EQ(dib.palette_entries()[7].flags, 4);
    EXPECT_EQ(dib.set_pixel(0, 0, 1), 0) << "read-only";
    EXPECT_EQ(dib.set_bits(nullptr), 0);
    EXPECT_EQ(dib.load_resource(test_id), 0) << "one is held";
    EXPECT_EQ(dib.create(8, 8, 8, nullptr, 0), nullptr);
    EXPECT_EQ(dib.width(), 128);
    dib.unload();
    EXPECT_EQ(dib.width() + dib.height() + dib.stride() + dib.bit_count(), 0);
    EXPECT_EQ(dib.info(), nullptr);
    EXPECT_EQ(load(dib, bytes), 1) << "reusable";
}

TEST_F(Bitmap, HeadersThatDoNotFitTheirBytesDoNotLoad) {
    struct {
        const char *label;
        packed_bitmap bitmap;
        int loads;
    } const cases[] = {
        {"true colour", {4, 3, 24, 0, 0, 36}, 1},
        {"true colour with a table", {4, 3, 24, 5, 5, 36}, 1},
        {"one pixel byte missing", {4, 3, 24, 0, 0, 35}, 0},
        {"rows padded to four bytes", {5, 3, 24, 0, 0, 48}, 1},
        {"padding missing", {5, 3, 24, 0, 0, 47}, 0},
        {"one bit", {9, 2, 1, 0, 2, 8}, 1},
        {"table missing", {9, 2, 1, 0, 0, 8}, 0},
        {"table larger than the bytes", {4, 3, 8, 300, 20, 12}, 0},
        {"huge table", {4, 3, 8, 0xFFFFFFFF, 1, 12}, 0},
        {"table past the palette's count", {1, 1, 24, 65536, 65536, 4}, 0},
        {"8 bits", {4, 3, 8, 0, 256, 12}, 1},
        {"16 bits", {4, 3, 16, 0, 0, 36}, 0},
        {"16 bits with a table", {4, 3, 16, 2, 2, 24}, 1},
        {"2 bits with a table", {4, 3, 2, 4, 4, 36}, 0},
        {"32 bits", {4, 3, 32, 0, 0, 48}, 0},
        {"no bits", {4, 3, 0, 0, 0, 48}, 0},
        {"no width", {0, 3, 24, 0, 0, 36}, 0},
        {"negative width", {-4, 3, 24, 0, 0, 36}, 0},
        {"no height", {4, 0, 24, 0, 0, 36}, 0},
        {"height without a positive", {4, INT32_MIN, 24, 0, 0, 36}, 0},
        {"width whose row wraps", {0x60000000, 1, 24, 0, 0, 36}, 0},
        {"size that wraps", {0x10000, 0x10000, 24, 0, 0, 36}, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        kel_dib dib;
        const auto bytes = c.bitmap.bytes();
        EXPECT_EQ(load(dib, bytes), c.loads);
        EXPECT_EQ(dib.bits() != nullptr, c.loads == 1);
        look_at_all(dib);
        // Cut anywhere, it does not load.
        for (size_t size = 0; size < bytes.size() && bytes.size() < 4096; size++) {
            kel_dib cut;
            ASSERT_EQ(load(cut, {bytes.begin(), bytes.begin() + static_cast<long>(size)}), 0)
                << "cut to " << size;
        }
    }
    kel_dib dib;
    platform::register_resource(platform::resource_type::bitmap, test_id, {});
    EXPECT_EQ(dib.load_resource(test_id), 0);
}

TEST_F(Bitmap, FilesAreViewedInPlaceAndNeverWritten) {
    temporary_folder folder;
    const std::string path = folder / "絵.bmp";
    put_file(path, packed_bitmap{3, -10, 24, 0, 0, 120}.file(54));
    {
        kel_dib dib;
        ASSERT_EQ(dib.load_file(path), 1);
        EXPECT_EQ(dib.height(), 10);
        EXPECT_TRUE(dib.is_top_down());
        EXPECT_EQ(dib.stride(), 12);
        EXPECT_EQ(dib.get_pixel(0, 0), 0x000102u) << "the first stored row";
        EXPECT_EQ(dib.get_pixel(2, 9), 0x727374u);
        EXPECT_EQ(dib.get_pixel(3, 0) + dib.get_pixel(0, 10) + dib.get_pixel(-1, 0), 0u);
        EXPECT_EQ(dib.palette(), nullptr);
        EXPECT_EQ(dib.load_file(path), 0);
    }
    put_file(path, packed_bitmap{3, 10, 24, 0, 0, 130}.file(64));
    kel_dib dib;
    ASSERT_EQ(dib.load_file(path), 1) << "a gap before the pixels";
    EXPECT_EQ(dib.get_pixel(0, 9), 0x0A0B0Cu) << "bottom up";
    dib.unload();

    const std::string good = packed_bitmap{3, 10, 24, 0, 0, 120}.file(54);
    struct {
        const char *label;
        std::string contents;
    } const bad[] = {
        {"empty", ""},
        {"signature only", "BM"},
        {"other signature", "MB" + good.substr(2)},
        {"no header", good.substr(0, 53)},
        {"pixels past the end", packed_bitmap{3, 10, 24, 0, 0, 120}.file(55)},
        {"offset past the end", packed_bitmap{3, 10, 24, 0, 0, 120}.file(0xFFFFFFF0)},
        {"cut", good.substr(0, good.size() - 1)},
    };
    for (const auto &b : bad) {
        put_file(path, b.contents);
        EXPECT_EQ(dib.load_file(path), 0) << b.label;
        look_at_all(dib);
    }
    EXPECT_EQ(dib.load_file(folder / "missing"), 0);
    EXPECT_EQ(dib.load_file(folder.path), 0);
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    EXPECT_EQ(dib.load_file(folder / "fifo"), 0);
    put_file(path, good);
    EXPECT_EQ(dib.load_file(path), 1) << "reusable after every failure";
    EXPECT_EQ(get_file(path), good);
}

TEST_F(Bitmap, CreatedPixelsGoWhereTheFormatHasThem) {
    struct {
        const char *label;
        int bits, row, x;
        uint32_t value;
        int at;
        uint8_t byte; // of a row that was all ones
    } const cases[] = {
        {"1 bit, first", 1, 16, 0, 0, 0, 0x7F},   {"1 bit, ninth", 1, 16, 8, 2, 1, 0x7F},
        {"1 bit, set", 1, 16, 1, 1, 0, 0xFF},     {"4 bits, even", 4, 52, 2, 0x35, 1, 0x5F},
        {"4 bits, odd", 4, 52, 3, 0x1A, 1, 0xFA}, {"8 bits", 8, 100, 99, 0x142, 99, 0x42},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        kel_dib dib;
        const dib_info *info = dib.create(100, 50, c.bits, nullptr, 0);
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->header.height, -50);
        EXPECT_EQ(info->header.colours_used, 0u);
        EXPECT_EQ(dib.stride(), c.row);
        EXPECT_EQ(dib.colour_count(), 1 << c.bits);
        EXPECT_EQ(dib.set_pixel(c.x, 0, c.value), 0) << "no pixel buffer yet";
        std::vector<uint8_t> buffer(static_cast<size_t>(c.row) * 50, 0xFF);
        EXPECT_EQ(dib.set_bits(buffer.data()), 1);
        EXPECT_EQ(dib.set_pixel(c.x, 49, c.value), 1);
        EXPECT_EQ(buffer[static_cast<size_t>(c.row * 49 + c.at)], c.byte) << "top row first";
        EXPECT_EQ(std::count(buffer.begin(), buffer.end(), 0xFF),
                  static_cast<long>(buffer.size()) - (c.byte != 0xFF));
        for (const auto &[x, y] : {std::pair(-1, 0), {0, -1}, {100, 0}, {0, 50}})
            EXPECT_EQ(dib.set_pixel(x, y, 0), 0);
        EXPECT_EQ(dib.get_pixel(0, 0), 0u);
    }
}

TEST_F(Bitmap, CreatedColourTables) {
    const dib_colour table[3] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
    kel_dib dib;
    const dib_info *info = dib.create(100, 50, 4, nullptr, 0);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->colours[1].red, 128);
    EXPECT_EQ(dib.palette_entries()[8].green, 192);
    EXPECT_EQ(dib.palette_entries()[12].blue, 255);
    EXPECT_EQ(dib.palette_entries()[15].red, 255);
    dib.unload();
    ASSERT_NE(dib.create(1, 1, 24, table, 3), nullptr);
    EXPECT_EQ(dib.info()->header.colours_used, 3u);
    EXPECT_EQ(dib.colour_count(), 3);
    EXPECT_EQ(dib.palette_entries()[1].red, 6);
    uint8_t row[4] = {};
    dib.set_bits(row);
    EXPECT_EQ(dib.set_pixel(0, 0, 0xFFFFFF), 0) << "not at 24 bits";
    EXPECT_EQ(row[0], 0);
    dib.unload();
    ASSERT_NE(dib.create(1, 1, 4, table, 3), nullptr);
    EXPECT_EQ(dib.info()->header.colours_used, 0u);
    EXPECT_EQ(dib.colour_count(), 16) << "the rest of the table is black";
    dib.unload();
    ASSERT_NE(dib.create(1, 1, 24, nullptr, 0), nullptr);
    EXPECT_EQ(dib.palette(), nullptr);
    dib.unload();

    EXPECT_EQ(dib.create(1, 1, 1, table, 3), nullptr) << "too many";
    EXPECT_EQ(dib.create(1, 1, 8, table, 0), nullptr);
    EXPECT_EQ(dib.create(1, 1, 8, nullptr, 3), nullptr);
    EXPECT_EQ(dib.create(1, 1, 8, table, -1), nullptr);
    EXPECT_EQ(dib.create(1, 1, 16, nullptr, 0), nullptr);
    EXPECT_EQ(dib.create(0, 1, 8, nullptr, 0), nullptr);
    EXPECT_EQ(dib.create(0x7FFFFFFF, 1, 24, nullptr, 0), nullptr);
    EXPECT_EQ(dib.info(), nullptr);
}
