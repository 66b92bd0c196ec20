// Whole frames against an oracle that knows no tables, masks or vectors.
#include "display_machine.h"
#include "picture_oracle.h"

#include <algorithm>
#include <atomic>
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

    // The colour that a pixel shows; untouched ones are told apart.
    uint32_t shown(size_t at) const {
        const uint8_t index = reinterpret_cast<const uint8_t *>(words.data())[at];
        return rgb ? words[at] : index == (untouched & 0xFF) ? untouched : host_palette[index];
    }
};

class FrameComposer : public testing::Test {
  protected:
    void SetUp() override {
        power_on();
        for (uint8_t &byte : machine.font_rom) byte = random.byte();
        for (auto &byte : machine.font_work) byte = random.byte();
    }

    // Composes with and without the vector unit and compares both with the oracle.
    void check(const std::string &what, surface_size size, bool rgb, bool interlace) {
        machine.select_scanline_colours(interlace);
        const std::vector<uint32_t> picture = oracle.picture(!interlace ? 0xFF : rgb ? 0x7F : 0x80);
        std::vector<uint32_t> expected(size.pitch * static_cast<uint32_t>(size.height), untouched);
        for (int y = 0; y < 400; ++y)
            std::copy_n(picture.begin() + 640 * y, 640,
                        expected.begin() + ((size.height - 400) / 2 + y) * static_cast<int>(size.pitch) +
                            (size.width - 640) / 2);
        const display_block before = machine;
        for (const bool wide : {false, true}) {
            static_cast<display_block &>(machine) = before;
            use_wide_vectors = wide;
            const surface got(size, rgb);
            EXPECT_EQ(compose_frame(rgb ? pixels_rgb32 : pixels_indexed8),
                      machine.crtc_status == 0 ? 25u : 0u)
                << what;
            for (size_t at = 0; at < expected.size(); ++at)
                if (got.shown(at) != expected[at])
                    FAIL() << what << (rgb ? ", 32 bits" : ", 8 bits")
                           << (wide ? ", wide vectors" : ", portable") << (interlace ? ", interlace" : "")
                           << std::hex << ": got " << got.shown(at) << ", expected " << expected[at]
                           << std::dec << " at " << at % size.pitch << ", " << at / size.pitch;
        }
    }

    void randomise_memory();
    void randomise_ports();

    random_numbers random{std::mt19937(20)};
    picture_oracle oracle;
};

// Half of the rows hold pairs as programs write them, the others bytes at random.
void FrameComposer::randomise_memory() {
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

void FrameComposer::randomise_ports() {
    out(0x30, {random.byte()});
    out(0x31, {random.byte()});
    crtc(0x80 | static_cast<int>(random() % 4 != 0),
         {static_cast<int>(random() % 128), static_cast<int>(random() % 27)});
    const bool plain = random() % 3 == 0; // the palette as it is at power-on
    for (uint8_t port = 0x54; port <= 0x5B; ++port) out(port, {plain ? port - 0x54 : random.byte()});
    out(0x64, {random.byte(), random() % 4 ? random.byte() : 0xFF}); // often past the end of RAM
    out(0x53, {random() % 8 == 0});
    out(0x68, {random() % 8 != 0 ? 0x04 : 0x00});
    machine.cursor_phase = static_cast<uint8_t>(random() % 4 != 0);
    machine.attr_blink_phase = static_cast<uint8_t>(random() % 2);
    machine.pcg_glyphs_on = static_cast<uint8_t>(random() % 2);
}

TEST_F(FrameComposer, EveryModeShowsWhatTheOracleShows) {
    constexpr surface_size sizes[] = {{640, 400, 640}, {720, 480, 736}, {800, 600, 800}, {641, 403, 700}};
    start_display(25);
    for (int mode = 0; mode < 4; ++mode)
        for (int round = 0; round < 12 && !HasFatalFailure(); ++round) {
            randomise_ports();
            out(0x30, {(machine.port30 & 0xFE) | mode >> 1});
            crtc(0x00, {0xCE, mode & 1 ? 0x18 : 0x13});
            crtc(0x20 | (round & 1));
            randomise_memory();
            machine.select_renderer(4);  // no such mode
            machine.text_row_decode(25); // no such row
            const std::string what = "mode " + std::to_string(mode) + ", round " + std::to_string(round);
            check(what, sizes[round % 4], round / 2 % 2 == 0, round / 4 % 2 == 0);
        }
}

// The text window may begin anywhere in RAM and wraps at its end.
TEST_F(FrameComposer, RowsAreFetchedFromEveryAddress) {
    std::vector<uint8_t> twice(0x20000);
    for (uint32_t i = 0; i < 0x10000; ++i) machine.ram[i] = twice[i] = twice[i + 0x10000] = random.byte();
    for (uint32_t start = 0; start < 0x10000; ++start) {
        machine.text_start = start;
        for (uint32_t row = 0; row < 25; ++row) {
            machine.text_row_fetch(row);
            const uint8_t *const source = &twice[(start + 120 * row) % 0x10000];
            ASSERT_TRUE(std::equal(source, source + 80, text_work.row_chars)) << start << ", row " << row;
        }
    }
}

// What a program may do to the display between two frames, and a running display after it.
void write_random_ports(random_numbers &random) {
    constexpr uint8_t ports[] = {0x00, 0x01, 0x02, 0x03, 0x30, 0x31, 0x50, 0x50, 0x50, 0x51, 0x53, 0x54,
                                 0x57, 0x5B, 0x60, 0x61, 0x64, 0x64, 0x65, 0x65, 0x66, 0x67, 0x68};
    for (int i = 0; i < 300; ++i) {
        io_out(ports[random() % sizeof ports], random.byte());
        machine.timing_tick(random() % 200);
    }
    out(0x68, {0x84});
    crtc(0x20 | static_cast<int>(random() % 2));
    out(0x53, {0});
}

// No order of port writes leads to a picture that the ports do not stand for.
TEST_F(FrameComposer, RandomPortWritesThenFrames) {
    start_display(25);
    randomise_memory();
    for (int frame = 0; frame < 30 && !HasFatalFailure(); ++frame) {
        write_random_ports(random);
        check("frame " + std::to_string(frame), {640, 400, 640}, frame % 2 == 0, frame % 3 == 0);
    }
}

// For the thread sanitizer: the CPU thread writes ports and memory while frames are drawn.
TEST_F(FrameComposer, FramesAreDrawnWhileTheCpuRuns) {
    static std::mutex lock;
    start_display(25);
    machine.video_lock = [] { lock.lock(); };
    machine.video_unlock = [] { lock.unlock(); };
    std::atomic<bool> stop{false};
    std::thread cpu([&] {
        random_numbers bytes{std::mt19937(3)};
        for (uint32_t wait = 0; !stop;) { // few writes to memory: their lock hides what happens without one
            write_random_ports(bytes);
            out(0x5C + static_cast<uint8_t>(bytes() % 4), {0}); // a plane or the main memory
            mem_write(static_cast<uint16_t>(0xC000 | bytes()), bytes.byte(), &wait);
        }
    });
    surface target({640, 400, 640}, true);
    uint32_t rows = 0;
    for (int frame = 0; frame < 100000 && rows < 200 * 25; ++frame) {
        use_wide_vectors = frame % 2 == 0;
        machine.pcg_glyphs_on = static_cast<uint8_t>(frame % 3 != 0);
        rows += compose_frame(frame % 4 < 2 ? pixels_rgb32 : pixels_indexed8);
    }
    stop = true;
    cpu.join();
    EXPECT_EQ(rows, 200u * 25) << "the display was hardly ever on";
}

} // namespace
