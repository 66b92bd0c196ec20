// Whole frames against an oracle that knows no tables, masks or vectors.
#include "display_machine.h"
#include "picture_oracle.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr uint32_t untouched = 0xA5A5A5A5;

struct surface_size {
    int32_t width, height;
    uint32_t pitch;
};

// A surface with a margin of its own around it.
struct surface {
    std::vector<uint32_t> words;
    surface_size size;
    bool rgb;

    surface(surface_size s, bool is_rgb)
        : words(s.pitch * static_cast<uint32_t>(s.height), untouched), size(s), rgb(is_rgb) {
        set_frame_geometry(s.width, s.height, s.pitch);
        geometry.frame_pixels = words.data();
    }

    uint32_t pixel(int x, int y) const {
        const size_t at = static_cast<size_t>(y) * size.pitch + static_cast<size_t>(x);
        return rgb ? words[at] : reinterpret_cast<const uint8_t *>(words.data())[at];
    }
};

// The first pixel that is wrong, or nothing.
std::string difference(const surface &got, const std::vector<uint32_t> &picture) {
    const int left = (got.size.width - 640) / 2, top = (got.size.height - 400) / 2;
    for (int y = 0; y < got.size.height; ++y)
        for (int x = 0; x < static_cast<int>(got.size.pitch); ++x) {
            const int px = x - left, py = y - top;
            const bool inside = px >= 0 && px < 640 && py >= 0 && py < 400;
            const uint32_t expected = inside    ? picture[static_cast<size_t>(py * 640 + px)]
                                      : got.rgb ? untouched
                                                : untouched & 0xFF;
            if (got.pixel(x, y) == expected) continue;
            char line[128];
            std::snprintf(line, sizeof line, "picture pixel (%d, %d): got 0x%06X, expected 0x%06X", px, py,
                          got.pixel(x, y), expected);
            return line;
        }
    return {};
}

class frame_composer : public testing::Test {
  protected:
    void SetUp() override {
        power_on();
        for (uint8_t &byte : machine.font_rom) byte = random.byte();
        for (auto &byte : machine.font_work) byte = random.byte();
    }

    // Composes with and without the vector unit and compares both with the oracle.
    void check(const std::string &what, surface_size size, bool rgb, bool interlace) {
        machine.select_scanline_colours(interlace);
        const std::vector<uint32_t> picture = oracle.picture(rgb, interlace);
        const display_block before = machine;
        for (const bool wide : {false, true}) {
            static_cast<display_block &>(machine) = before;
            use_wide_vectors = wide;
            const surface got(size, rgb);
            const uint32_t rows = compose_frame(rgb ? pixels_rgb32 : pixels_indexed8);
            EXPECT_EQ(rows, machine.crtc_status == 0 ? 25u : 0u) << what;
            ASSERT_EQ(difference(got, picture), "")
                << what << (rgb ? ", 32 bits" : ", 8 bits") << (wide ? ", wide vectors" : ", portable")
                << (interlace ? ", interlace" : "");
        }
    }

    void randomise_memory();
    void randomise_ports();

    random_numbers random{std::mt19937(20)};
    picture_oracle oracle;
};

// Half of the rows hold pairs as programs write them, the others bytes at random.
void frame_composer::randomise_memory() {
    for (uint8_t &byte : machine.ram) byte = random.byte();
    for (auto &plane : machine.gvram)
        for (uint8_t &byte : plane) byte = random.byte();
    for (uint32_t row = 0; row < 25; row += 2) {
        const auto pairs = static_cast<uint16_t>(machine.text_start + 120 * row + 80);
        uint32_t position = random() % 3;
        for (uint16_t i = 0; i < 40; i = static_cast<uint16_t>(i + 2)) {
            machine.ram[static_cast<uint16_t>(pairs + i)] = static_cast<uint8_t>(std::min(position, 80u));
            position += 1 + random() % 20;
        }
    }
}

void frame_composer::randomise_ports() {
    out(0x30, {random.byte()});
    out(0x31, {random.byte()});
    crtc(0x00, {0xCE, random() % 2 ? 0x18 : 0x13});
    crtc(0x20 | static_cast<int>(random() % 2));
    crtc(0x80 | static_cast<int>(random() % 4 != 0),
         {static_cast<int>(random() % 90), static_cast<int>(random() % 27)});
    for (uint8_t port = 0x54; port <= 0x5B; ++port) out(port, {random.byte()});
    out(0x64, {random.byte(), random.byte()});
    out(0x53, {random() % 8 == 0});
    out(0x68, {random() % 8 != 0 ? 0x04 : 0x00});
    machine.cursor_phase = static_cast<uint8_t>(random() % 4 != 0);
    machine.attr_blink_phase = static_cast<uint8_t>(random() % 2);
    machine.pcg_glyphs_on = static_cast<uint8_t>(random() % 2);
}

TEST_F(frame_composer, EveryModeShowsWhatTheOracleShows) {
    constexpr surface_size sizes[] = {{640, 400, 640}, {720, 480, 736}, {800, 600, 800}, {641, 403, 700}};
    start_display(25);
    for (int mode = 0; mode < 4; ++mode)
        for (int round = 0; round < 12; ++round) {
            randomise_ports();
            out(0x30, {(machine.port30 & 0xFE) | mode >> 1});
            crtc(0x00, {0xCE, mode & 1 ? 0x18 : 0x13});
            crtc(0x20 | (round & 1));
            randomise_memory();
            const std::string what = "mode " + std::to_string(mode) + ", round " + std::to_string(round);
            check(what, sizes[round % 4], round / 2 % 2 == 0, round / 4 % 2 == 0);
            if (HasFatalFailure()) return;
        }
}

// No order of port writes leads to a picture that the ports do not stand for.
TEST_F(frame_composer, RandomPortWritesThenFrames) {
    constexpr uint8_t ports[] = {0x00, 0x01, 0x02, 0x03, 0x30, 0x31, 0x50, 0x50, 0x50, 0x51, 0x53, 0x54,
                                 0x57, 0x5B, 0x60, 0x61, 0x64, 0x64, 0x65, 0x65, 0x66, 0x67, 0x68};
    start_display(25);
    randomise_memory();
    for (int frame = 0; frame < 30; ++frame) {
        for (int i = 0; i < 300; ++i) {
            io_out(ports[random() % sizeof ports], random.byte());
            machine.timing_tick(random() % 200);
        }
        out(0x68, {0x84});
        crtc(0x20 | static_cast<int>(random() % 2));
        out(0x53, {0});
        check("frame " + std::to_string(frame), {640, 400, 640}, frame % 2 == 0, frame % 3 == 0);
        if (HasFatalFailure()) return;
    }
}

// The attributes of a row, column by column, as decoded from pairs in colour mode.
TEST_F(frame_composer, AttributePairsFlowAlongAndDown) {
    using pairs = std::vector<std::pair<int, int>>;
    struct {
        const char *what;
        int port30; // 1 colour, 3 monochrome
        pairs row0, row1;
        std::vector<std::pair<int, int>> cells; // (80 * row + column, cell_attr)
    } const cases[] = {
        {"white, then fillers",
         1,
         {{0, 0xE8}, {80, 0xE8}, {80, 0xE8}},
         {},
         {{0, 0x07}, {79, 0x07}, {80, 0x07}}},
        {"red semigraphic at 10",
         1,
         {{0, 0xE8}, {10, 0x58}},
         {},
         {{9, 0x07}, {10, 0x14}, {79, 0x14}, {80, 0x14}}},
        {"reverse to 40", 1, {{0, 0x04}, {40, 0x00}}, {}, {{0, 0x20}, {39, 0x20}, {40, 0x00}, {80, 0x00}}},
        {"colour and character flow apart",
         1,
         {{5, 0x28}, {9, 0x20}},
         {{70, 0x88}},
         {{4, 0x00}, {5, 0x01}, {9, 0x81}, {80, 0x81}, {149, 0x81}, {150, 0x82}}},
        {"out of order, repeated",
         1,
         {{40, 0x48}, {10, 0xE8}, {40, 0x28}, {0xC0 | 20, 0x88}},
         {},
         {{10, 0x07}, {39, 0x07}, {40, 0x04}, {79, 0x04}}},
        {"monochrome, semigraphic and lines",
         3,
         {{3, 0xB8}, {50, 0x01}},
         {},
         {{2, 0x07}, {3, 0x9F}, {50, 0x47}}},
        {"blink in the dark, with and without secret",
         3,
         {{1, 0x02}, {2, 0x03}, {3, 0x00}},
         {},
         {{1, 0x47}, {2, 0x47}, {3, 0x07}}},
    };
    for (const auto &c : cases) {
        power_on();
        out(0x30, {c.port30});
        machine.attr_blink_phase = uint8_t{0};
        crtc(0x80);
        for (uint32_t row = 0; row < 2; ++row) {
            const pairs &source = row == 0 ? c.row0 : c.row1;
            for (uint32_t i = 0; i < 20; ++i) {
                const auto at = machine.text_start + 120 * row + 80 + 2 * i;
                machine.ram[at] = static_cast<uint8_t>(i < source.size() ? source[i].first : 80);
                machine.ram[at + 1] = static_cast<uint8_t>(i < source.size() ? source[i].second : 0);
            }
            machine.text_row_fetch(row);
            machine.text_row_decode(row);
            for (const auto &[cell, value] : c.cells)
                if (cell / 80 == static_cast<int>(row)) {
                    EXPECT_EQ(machine.cell_attr[cell % 80], value)
                        << c.what << ", row " << row << ", column " << cell % 80;
                }
        }
    }
}

TEST_F(frame_composer, CursorOnAReversedScreenIsNormalVideoInWhite) {
    start_display(25);
    crtc(0x21);
    crtc(0x81, {5, 0});
    machine.text_row_fetch(0);
    machine.text_row_decode(0);
    EXPECT_EQ(machine.cell_attr[5] & (cell_reverse | cell_colour), 7);
    EXPECT_EQ(machine.cell_attr[6] & cell_reverse, cell_reverse);
    const display_block before = machine;
    for (int x = 80; x < 128; ++x) { // beyond the row there is no cursor
        crtc(0x81, {x, 0});
        machine.text_row_decode(0);
        machine.cell_attr[5] = before.cell_attr[5];
        ASSERT_EQ(std::memcmp(static_cast<display_block *>(&machine), &before, sizeof before), 0)
            << "column " << x;
    }
    const auto cells = std::to_array(machine.cell_attr);
    machine.text_row_decode(25); // no such row
    EXPECT_EQ(std::to_array(machine.cell_attr), cells);
}

// The fetch wraps at the end of RAM and sorts its pairs wherever the window starts.
TEST_F(frame_composer, RowsAreFetchedFromEveryAddress) {
    std::vector<uint8_t> twice(0x20000);
    for (uint32_t i = 0; i < 0x10000; ++i) machine.ram[i] = twice[i] = twice[i + 0x10000] = random.byte();
    for (uint32_t start = 0; start < 0x10000; ++start) {
        machine.text_start = start;
        for (uint32_t row = 0; row < 25; ++row) {
            machine.text_row_fetch(row);
            const uint8_t *const source = &twice[(start + 120 * row) % 0x10000];
            ASSERT_EQ(std::memcmp(machine.row_chars, source, 80), 0)
                << "start " << std::hex << start << ", row " << row;
            if (row % 8 != 0) continue;
            int attribute_at[128];
            std::fill_n(attribute_at, 128, -1);
            for (int i = 0; i < 20; ++i)
                if (int &at = attribute_at[source[80 + 2 * i] & 0x7F]; at < 0) at = source[80 + 2 * i + 1];
            int stored = 0;
            for (int position = 0; position < 128; ++position) {
                if (attribute_at[position] < 0) continue;
                const attr_pair pair = machine.attr_pairs[stored++];
                ASSERT_TRUE(pair.position == position && pair.attribute == attribute_at[position])
                    << "start " << std::hex << start << ", row " << row << ", pair " << stored;
            }
            for (; stored < 20; ++stored) ASSERT_EQ(machine.attr_pairs[stored].position, 80);
        }
    }
}

TEST_F(frame_composer, ThePaletteOfAnIndexedSurfaceShowsTheColoursOf32Bits) {
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(host_palette[index_full[i]], rgb_full[i]) << "index " << i;
        EXPECT_EQ(host_palette[index_half[i]] / 0x80 * 0x7F, rgb_half[i]) << "half index " << i;
    }
    EXPECT_EQ(host_palette[0x80], 0u);
}

TEST_F(frame_composer, UnknownScreenModesAreIgnored) {
    machine.select_renderer(3);
    const row_renderer before = machine.renderer_table[renderer_text32];
    for (const uint32_t index : {4u, 0xFFFFFFFFu}) machine.select_renderer(index);
    EXPECT_EQ(machine.renderer_table[renderer_text32].load(), before);
}

// For the thread sanitizer: the CPU thread writes ports and memory while frames are drawn.
TEST_F(frame_composer, FramesAreDrawnWhileTheCpuRuns) {
    static std::mutex lock;
    start_display(25);
    machine.video_lock = [] { lock.lock(); };
    machine.video_unlock = [] { lock.unlock(); };
    machine.pcg_glyphs_on = uint8_t{1};
    std::atomic<bool> stop{false};
    std::thread cpu([&] {
        random_numbers bytes{std::mt19937(3)};
        uint32_t wait = 0;
        while (!stop) {
            constexpr uint8_t ports[] = {0x00, 0x01, 0x02, 0x30, 0x31, 0x50, 0x51,
                                         0x53, 0x54, 0x5C, 0x5F, 0x65, 0x68};
            switch (bytes() % 8) { // few writes to memory: their lock hides what happens without one
            case 0: mem_write(static_cast<uint16_t>(bytes()), bytes.byte(), &wait); break;
            case 1: start_display(25); break;
            case 2: out(0x53, {0}); break;
            case 3: out(0x64, {bytes.byte(), bytes.byte()}); break;
            case 4: // a line of a programmable glyph
                out(0x01, {bytes.byte()});
                out(0x02, {0x13, 0x03});
                break;
            default: io_out(ports[bytes() % sizeof ports], bytes.byte());
            }
            machine.timing_tick(bytes() % 100);
        }
    });
    surface target({640, 400, 640}, true);
    uint32_t rows = 0;
    for (int frame = 0; frame < 100000 && rows < 200 * 25; ++frame) {
        use_wide_vectors = frame % 2 == 0;
        rows += compose_frame(frame % 4 < 2 ? pixels_rgb32 : pixels_indexed8);
    }
    stop = true;
    cpu.join();
    EXPECT_EQ(rows, 200u * 25) << "the display was hardly ever on";
}

} // namespace
