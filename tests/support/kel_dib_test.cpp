#include "platform/resources.h"
#include "support/kel_dib.h"
#include "tests/temporary_folder.h"
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

constexpr uint16_t test_id = 900;

// A packed bitmap as a resource holds it; each pixel byte is its offset, so that rows can be told apart.
struct packed_bitmap {
    int width, height, bits;
    uint32_t colours_used, table, pixel_bytes;

    std::vector<uint8_t> bytes() const {
        const dib_header h{40, width, height, 1, static_cast<uint16_t>(bits), 0, 0, 0, 0, colours_used, 0};
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
        std::memcpy(&f[10], &offset, 4);
        return f + std::string(data.begin(), data.end());
    }
};

// Registers exactly these bytes, so that a read past their end is caught.
int load(kel_dib &dib, const std::vector<uint8_t> &bytes) {
    platform::register_resource(platform::resource_type::bitmap, test_id, {bytes.data(), bytes.size()});
    const int loaded = dib.load_resource(test_id);
    platform::register_resource(platform::resource_type::bitmap, test_id, {});
    return loaded;
}

} // namespace

TEST(Bitmap, FourBitsWithEightColoursBottomUp) {
    kel_dib dib;
    const auto bytes = packed_bitmap{128, 128, 4, 8, 8, 128 * 64}.bytes();
    ASSERT_EQ(load(dib, bytes), 1);
    EXPECT_TRUE(dib.width() == 128 && dib.height() == 128 && dib.bit_count() == 4 && !dib.is_top_down());
    EXPECT_EQ(dib.stride(), 64);
    EXPECT_EQ(dib.row_bytes(), 64u);
    EXPECT_EQ(dib.bits(), bytes.data() + 40 + 32) << "used in place";
    ASSERT_EQ(dib.palette()->count, 8);
    EXPECT_EQ(dib.palette()->version, 0x300);
    EXPECT_EQ(dib.palette_entries()[0].blue, 1) << "stored blue first";
    EXPECT_EQ(dib.palette_entries()[2].red, 3);
    EXPECT_EQ(dib.palette_entries()[7].flags, 4);
    EXPECT_EQ(dib.set_pixel(0, 0, 1), 0) << "read-only";
    EXPECT_EQ(dib.set_bits(nullptr), 0);
    EXPECT_EQ(load(dib, bytes), 0) << "one is held";
    EXPECT_EQ(dib.create(8, 8, 8, nullptr, 0), nullptr);
    EXPECT_EQ(dib.width(), 128);
    dib.unload();
    EXPECT_EQ(dib.width() + dib.height() + dib.stride() + dib.bit_count(), 0);
    EXPECT_TRUE(dib.info() == nullptr && dib.bits() == nullptr && dib.palette_entries() == nullptr);
    EXPECT_EQ(load(dib, bytes), 1) << "reusable";
}

TEST(Bitmap, HeadersThatDoNotFitTheirBytesDoNotLoad) {
    struct {
        const char *label;
        packed_bitmap bitmap;
        int loads;
    } const cases[] = {
        {"true colour", {4, 3, 24, 0, 0, 36}, 1},
        {"true colour with a table", {4, 3, 24, 5, 5, 36}, 1},
        {"rows padded to four bytes", {5, 3, 24, 0, 0, 48}, 1},
        {"padding missing", {5, 3, 24, 0, 0, 47}, 0},
        {"huge table", {4, 3, 8, 0xFFFFFFFF, 1, 12}, 0},
        {"table past the palette's count", {1, 1, 24, 65536, 65536, 4}, 0},
        {"8 bits", {4, 3, 8, 0, 256, 12}, 1},
        {"16 bits", {4, 3, 16, 0, 0, 36}, 0},
        {"16 bits with a table", {4, 3, 16, 2, 2, 24}, 1},
        {"2 bits with a table", {4, 3, 2, 4, 4, 36}, 0},
        {"no width", {0, 3, 24, 0, 0, 36}, 0},
        {"height without a positive", {4, INT32_MIN, 24, 0, 0, 36}, 0},
        {"width whose row wraps", {0x60000000, 1, 24, 0, 0, 36}, 0},
        {"size that wraps", {0x10000, 0x10000, 24, 0, 0, 36}, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        kel_dib dib;
        const auto bytes = c.bitmap.bytes();
        EXPECT_EQ(load(dib, bytes), c.loads);
        for (size_t size = 0; size < bytes.size() && bytes.size() < 4096; size++) {
            kel_dib cut;
            ASSERT_EQ(load(cut, {bytes.begin(), bytes.begin() + static_cast<long>(size)}), 0)
                << "cut to " << size;
        }
    }
}

TEST(Bitmap, FilesAreReadAsTheyWereAndNeverWritten) {
    temporary_folder folder;
    const std::string path = folder / "絵.bmp";
    const std::string good = packed_bitmap{3, -10, 24, 0, 0, 120}.file(54);
    put_file(path, good);
    kel_dib dib;
    ASSERT_EQ(dib.load_file(path), 1);
    EXPECT_EQ(dib.load_file(path), 0) << "one is held";
    EXPECT_EQ(get_file(path), good);
    std::filesystem::resize_file(path, 0); // by somebody else: no reason to end
    EXPECT_TRUE(dib.height() == 10 && dib.is_top_down() && dib.stride() == 12);
    EXPECT_EQ(dib.get_pixel(0, 0), 0x000102u) << "the first stored row";
    EXPECT_EQ(dib.get_pixel(2, 9), 0x727374u);
    EXPECT_EQ(dib.get_pixel(3, 0) + dib.get_pixel(0, 10) + dib.get_pixel(-1, 0), 0u);
    EXPECT_EQ(dib.palette(), nullptr);
    dib.unload();
    put_file(path, packed_bitmap{3, 10, 24, 0, 0, 130}.file(64));
    ASSERT_EQ(dib.load_file(path), 1) << "a gap before the pixels";
    EXPECT_EQ(dib.get_pixel(0, 9), 0x0A0B0Cu) << "bottom up";
    dib.unload();

    for (const std::string &bad :
         {std::string(), std::string("BM"), "MB" + good.substr(2), good.substr(0, 53),
          packed_bitmap{3, 10, 24, 0, 0, 120}.file(55), packed_bitmap{3, 10, 24, 0, 0, 120}.file(0xFFFFFFF0),
          good.substr(0, good.size() - 1)}) {
        put_file(path, bad);
        EXPECT_EQ(dib.load_file(path), 0) << bad.size() << " bytes";
    }
    EXPECT_EQ(dib.load_file(folder / "missing"), 0);
    put_file(path, good);
    EXPECT_EQ(dib.load_file(path), 1) << "reusable after every failure";
}

TEST(Bitmap, CreatedPixelsGoWhereTheFormatHasThem) {
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
        EXPECT_EQ(dib.stride(), c.row);
        EXPECT_EQ(dib.set_pixel(c.x, 0, c.value), 0) << "no pixel buffer yet";
        std::vector<uint8_t> buffer(static_cast<size_t>(c.row) * 50, 0xFF), expected = buffer;
        expected[static_cast<size_t>(c.row * 49 + c.at)] = c.byte; // top row first
        EXPECT_EQ(dib.set_bits(buffer.data()), 1);
        EXPECT_EQ(dib.set_pixel(c.x, 49, c.value), 1);
        for (const auto &[x, y] : {std::pair(-1, 0), {0, -1}, {100, 0}, {0, 50}})
            EXPECT_EQ(dib.set_pixel(x, y, 0), 0);
        EXPECT_EQ(buffer, expected);
        EXPECT_EQ(dib.get_pixel(0, 0), 0u);
    }
}

TEST(Bitmap, CreatedColourTables) {
    const dib_colour table[3] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
    struct {
        int width, bits;
        const dib_colour *table;
        int given, held; // colours; held -1: refused
        uint32_t used;
        int looked_at, rgb;
    } const cases[] = {
        {1, 1, nullptr, 0, 2, 0, 1, 0xFFFFFF},
        {1, 4, nullptr, 0, 16, 0, 1, 0x800000},
        {1, 4, nullptr, 0, 16, 0, 8, 0xC0C0C0},
        {1, 8, nullptr, 0, 256, 0, 21, 0x0000FF},
        {1, 4, table, 3, 16, 0, 1, 0x060504},
        {1, 24, table, 3, 3, 3, 2, 0x090807},
        {1, 24, nullptr, 0, 0, 0, -1, 0},
        {1, 1, table, 3, -1, 0, 0, 0},
        {1, 8, table, 0, -1, 0, 0, 0},
        {1, 8, nullptr, 3, -1, 0, 0, 0},
        {1, 16, nullptr, 0, -1, 0, 0, 0},
        {0, 8, nullptr, 0, -1, 0, 0, 0},
        {0x7FFFFFFF, 24, nullptr, 0, -1, 0, 0, 0},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.bits << " bits, " << c.given << " colours given");
        kel_dib dib;
        const dib_info *info = dib.create(c.width, 1, c.bits, c.table, c.given);
        ASSERT_EQ(info != nullptr, c.held >= 0);
        if (info == nullptr) continue;
        EXPECT_EQ(dib.colour_count(), c.held);
        EXPECT_EQ(info->header.colours_used, c.used);
        uint8_t row[4] = {};
        dib.set_bits(row);
        EXPECT_EQ(dib.set_pixel(0, 0, 1), c.bits != 24);
        if (c.looked_at < 0) continue;
        const palette_entry &e = dib.palette_entries()[c.looked_at];
        EXPECT_EQ(e.red << 16 | e.green << 8 | e.blue, c.rgb);
    }
}
