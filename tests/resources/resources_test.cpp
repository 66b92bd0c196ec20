#include "resources/resources.h"

#include <cstdio>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

using platform::find_resource;
using platform::resource;
using platform::resource_type;

class resources : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { register_program_resources(); }
    static resource font() { return find_resource(resource_type::font, font_resource_id); }
    static bool pixel(int code, int row, int column) { // of a character glyph
        return font().data[8 * code + row] >> (7 - column) & 1;
    }
};

std::string hex(unsigned n) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%02X", n);
    return text;
}

TEST_F(resources, font_has_both_halves_and_the_second_follows_the_block_rule) {
    ASSERT_EQ(font().size, 4096u);
    for (int code = 0; code < 256; ++code)
        for (int row = 0; row < 8; ++row) {
            const int k = row / 2;
            const int expected = 240 * (code >> k & 1) + 15 * (code >> (k + 4) & 1);
            EXPECT_EQ(hex(font().data[2048 + 8 * code + row]), hex(static_cast<unsigned>(expected)))
                << "semigraphic code " << hex(static_cast<unsigned>(code)) << " row " << row;
        }
}

// What a frame glyph shows at the edge of its cell must go on in the neighbour: every glyph that reaches an
// edge meets every glyph that is made to be joined to it there.
TEST_F(resources, frame_glyphs_join) {
    struct frame {
        int code;
        bool up, down, left, right;
    };
    const frame frames[] = {
        {0x8F, true, true, true, true},   {0x90, true, false, true, true},  {0x91, false, true, true, true},
        {0x92, true, true, true, false},  {0x93, true, true, false, true},  {0x95, false, false, true, true},
        {0x96, true, true, false, false}, {0x98, false, true, false, true}, {0x99, false, true, true, false},
        {0x9A, true, false, false, true}, {0x9B, true, false, true, false}, {0x9C, false, true, false, true},
        {0x9D, false, true, true, false}, {0x9E, true, false, false, true}, {0x9F, true, false, true, false},
    };
    for (const frame &f : frames)
        for (int i = 0; i < 8; ++i) {
            SCOPED_TRACE("glyph " + hex(static_cast<unsigned>(f.code)) + " edge pixel " + std::to_string(i));
            EXPECT_EQ(pixel(f.code, 0, i), f.up && pixel(0x96, 7, i)) << "upper edge";
            EXPECT_EQ(pixel(f.code, 7, i), f.down && pixel(0x96, 0, i)) << "lower edge";
            EXPECT_EQ(pixel(f.code, i, 0), f.left && pixel(0x95, i, 7)) << "left edge";
            EXPECT_EQ(pixel(f.code, i, 7), f.right && pixel(0x95, i, 0)) << "right edge";
        }
    for (int i = 0; i < 8;
         ++i) { // the double lines: 0xE0 runs through, 0xE1 opens, 0xE2 crosses, 0xE3 closes
        SCOPED_TRACE("double line, pixel " + std::to_string(i));
        EXPECT_EQ(pixel(0xE0, i, 7), pixel(0xE0, i, 0));
        EXPECT_EQ(pixel(0xE1, i, 7), pixel(0xE0, i, 0));
        EXPECT_EQ(pixel(0xE3, i, 0), pixel(0xE0, i, 7));
        EXPECT_EQ(pixel(0xE2, i, 0), pixel(0xE0, i, 7));
        EXPECT_EQ(pixel(0xE2, i, 7), pixel(0xE0, i, 0));
        for (int code : {0xE1, 0xE2, 0xE3}) {
            EXPECT_EQ(pixel(code, 0, i), pixel(0x96, 7, i));
            EXPECT_EQ(pixel(code, 7, i), pixel(0x96, 0, i));
        }
    }
    // The diagonals run from corner to corner.
    EXPECT_TRUE(pixel(0xEE, 0, 7) && pixel(0xEE, 7, 0) && pixel(0xEF, 0, 0) && pixel(0xEF, 7, 7));
}

TEST_F(resources, every_character_has_a_picture_of_its_own) {
    std::map<std::string, int> seen;
    for (int code = 0; code < 256; ++code) {
        const std::string glyph(reinterpret_cast<const char *>(font().data) + 8 * code, 8);
        const bool blank = code <= 0x20 || code == 0x7F || code == 0xA0 || code >= 0xF8;
        EXPECT_EQ(glyph == std::string(8, '\0'), blank) << "code " << hex(static_cast<unsigned>(code));
        if (blank) continue;
        const auto [other, added] = seen.emplace(glyph, code);
        EXPECT_TRUE(added) << "codes " << hex(static_cast<unsigned>(other->second)) << " and "
                           << hex(static_cast<unsigned>(code)) << " look the same";
    }
}

// Letters that touch make words unreadable: letters, digits and katakana leave column 7 free.
TEST_F(resources, letters_keep_apart) {
    for (int code = 0x21; code < 0xE0; ++code) {
        if (code >= 0x7F && code < 0xA0) continue;
        for (int row = 0; row < 8; ++row)
            EXPECT_FALSE(pixel(code, row, 7))
                << "code " << hex(static_cast<unsigned>(code)) << " row " << row;
    }
}

TEST_F(resources, pause_picture_is_a_bitmap_of_eight_colours) {
    const resource r = find_resource(resource_type::bitmap, pause_resource_id);
    ASSERT_EQ(r.size, 40u + 8 * 4 + 128 * 64);
    const auto number = [&](size_t offset, size_t bytes) {
        uint32_t n = 0;
        for (size_t i = 0; i < bytes; ++i) n |= static_cast<uint32_t>(r.data[offset + i]) << 8 * i;
        return n;
    };
    EXPECT_EQ(number(0, 4), 40u);
    EXPECT_EQ(number(4, 4), 128u);
    EXPECT_EQ(number(8, 4), 128u) << "positive: the bottom row comes first";
    EXPECT_EQ(number(12, 2), 1u);
    EXPECT_EQ(number(14, 2), 4u);
    EXPECT_EQ(number(16, 4), 0u);
    EXPECT_EQ(number(20, 4), 8192u);
    EXPECT_EQ(number(32, 4), 8u);
    bool used[16] = {};
    for (size_t i = 72; i < r.size; ++i) used[r.data[i] >> 4] = used[r.data[i] & 15] = true;
    for (int c = 0; c < 16; ++c) EXPECT_EQ(used[c], c < 8) << "colour " << c;
}

TEST_F(resources, icon_decodes_in_all_sizes_and_refuses_damaged_bytes) {
    const resource r = find_resource(resource_type::icon, icon_resource_id);
    const auto pictures = icon_pictures(r);
    ASSERT_EQ(pictures.size(), 4u);
    const int sides[] = {16, 32, 48, 256};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(pictures[i].side, sides[i]);
        size_t opaque = 0;
        for (uint32_t p : pictures[i].pixels) opaque += p >> 24 == 0xFF;
        EXPECT_GT(opaque, pictures[i].pixels.size() / 2) << "side " << sides[i];
    }
    for (size_t size = 0; size < r.size; ++size) {
        // A copy of exactly this size, so that a read past the end is caught.
        const std::vector<uint8_t> cut(r.data, r.data + size);
        ASSERT_TRUE(icon_pictures({cut.data(), cut.size()}).empty() || size == 0) << "cut to " << size;
    }
}

TEST_F(resources, version_is_the_file_version) {
    const resource r = find_resource(resource_type::version, version_resource_id);
    ASSERT_EQ(r.size, 8u);
    const uint8_t expected[8] = {2, 0, 0, 0, 9, 0, 0, 0};
    EXPECT_EQ(std::memcmp(r.data, expected, 8), 0);
}

TEST_F(resources, table_replaces_and_removes) {
    const uint8_t bytes[3] = {1, 2, 3};
    platform::register_resource(resource_type::icon, 900, {bytes, 3});
    EXPECT_EQ(find_resource(resource_type::icon, 900).data, bytes);
    EXPECT_EQ(find_resource(resource_type::bitmap, 900).data, nullptr);
    platform::register_resource(resource_type::icon, 900, {bytes + 1, 2});
    EXPECT_EQ(find_resource(resource_type::icon, 900).data, bytes + 1);
    platform::register_resource(resource_type::icon, 900, {});
    EXPECT_EQ(find_resource(resource_type::icon, 900).data, nullptr);
    for (int i = 0; i < 100; ++i) { // removing leaves room
        platform::register_resource(resource_type::icon, static_cast<uint16_t>(1000 + i), {bytes, 3});
        EXPECT_EQ(find_resource(resource_type::icon, static_cast<uint16_t>(1000 + i)).size, 3u);
        platform::register_resource(resource_type::icon, static_cast<uint16_t>(1000 + i), {});
    }
}

} // namespace
