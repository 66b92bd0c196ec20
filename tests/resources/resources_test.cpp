// What the build made of the text art: what an eye overlooks.
#include "resources/resources.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

using platform::find_resource;
using platform::resource;
using platform::resource_type;

struct Resources : testing::Test {
    static void SetUpTestSuite() { register_program_resources(); }
    const resource font = find_resource(resource_type::font, font_resource_id);
    bool pixel(int code, int row, int column) const { // of a character glyph
        return font.data[8 * code + row] >> (7 - column) & 1;
    }
};

TEST_F(Resources, FontHasItsCharactersAndTheBlockPatterns) {
    ASSERT_EQ(font.size, 4096u);
    std::map<std::string, int> seen;
    for (int i = 0; i < 256 * 8; ++i) {
        const int code = i / 8, row = i % 8, k = row / 2;
        SCOPED_TRACE("code " + std::to_string(code) + " row " + std::to_string(row));
        EXPECT_EQ(font.data[2048 + i], 240 * (code >> k & 1) + 15 * (code >> (k + 4) & 1));
        // Letters that touch make words unreadable.
        const bool letter = (code >= 0x21 && code < 0x7F) || (code >= 0xA0 && code < 0xE0);
        EXPECT_FALSE(letter && pixel(code, row, 7)) << "touches the next one";
        if (row != 0) continue;
        const std::string glyph(reinterpret_cast<const char *>(font.data) + i, 8);
        const bool blank = code <= 0x20 || code == 0x7F || code == 0xA0 || code >= 0xF8;
        EXPECT_EQ(glyph == std::string(8, '\0'), blank);
        EXPECT_TRUE(blank || seen.emplace(glyph, code).second) << "looks like " << seen[glyph];
    }
}

// What a frame glyph shows at the edge of its cell must go on in the neighbour: every glyph that reaches an
// edge meets every glyph that is made to be joined to it there.
TEST_F(Resources, FrameGlyphsJoin) {
    const struct {
        int code;
        const char *reaches; // up, down, left, right; = a double line
    } frames[] = {
        {0x8F, "udlr"}, {0x90, "ulr"},  {0x91, "dlr"},   {0x92, "udl"},  {0x93, "udr"},
        {0x95, "lr"},   {0x96, "ud"},   {0x98, "dr"},    {0x99, "dl"},   {0x9A, "ur"},
        {0x9B, "ul"},   {0x9C, "dr"},   {0x9D, "dl"},    {0x9E, "ur"},   {0x9F, "ul"},
        {0xE0, "=lr"},  {0xE1, "=udr"}, {0xE2, "=udlr"}, {0xE3, "=udl"},
    };
    for (const auto &f : frames)
        for (int i = 0; i < 8; ++i) {
            SCOPED_TRACE("glyph " + std::to_string(f.code) + " edge pixel " + std::to_string(i));
            const auto reaches = [&f](char edge) { return std::strchr(f.reaches, edge) != nullptr; };
            const int across = reaches('=') ? 0xE0 : 0x95;
            EXPECT_EQ(pixel(f.code, 0, i), reaches('u') && pixel(0x96, 7, i)) << "upper edge";
            EXPECT_EQ(pixel(f.code, 7, i), reaches('d') && pixel(0x96, 0, i)) << "lower edge";
            EXPECT_EQ(pixel(f.code, i, 0), reaches('l') && pixel(across, i, 7)) << "left edge";
            EXPECT_EQ(pixel(f.code, i, 7), reaches('r') && pixel(across, i, 0)) << "right edge";
        }
    // The diagonals run from corner to corner.
    EXPECT_TRUE(pixel(0xEE, 0, 7) && pixel(0xEE, 7, 0) && pixel(0xEF, 0, 0) && pixel(0xEF, 7, 7));
}

TEST_F(Resources, IconDecodesInAllSizesAndRefusesDamagedBytes) {
    const resource r = find_resource(resource_type::icon, icon_resource_id);
    std::vector<int> sides;
    for (const icon_picture &picture : icon_pictures(r)) {
        sides.push_back(picture.side);
        size_t opaque = 0;
        for (uint32_t p : picture.pixels) opaque += p >> 24 == 0xFF;
        EXPECT_GT(opaque, picture.pixels.size() / 2) << "side " << picture.side;
    }
    EXPECT_EQ(sides, (std::vector{16, 32, 48, 256}));
    for (size_t size = 0; size < r.size; ++size) {
        // A copy of exactly this size, so that a read past the end is caught.
        const std::vector<uint8_t> cut(r.data, r.data + size);
        ASSERT_TRUE(icon_pictures({cut.data(), cut.size()}).empty()) << "cut to " << size;
    }
}

} // namespace
