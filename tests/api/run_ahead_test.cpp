// A look ahead shows what comes, and leaves nothing behind.
#include "tests/api/machine_at_hand.h"

#include "api/run_ahead.h"
#include "display/frame_composer.h"
#include "machine/kiv_machine.h"

#include <cstring>
#include <memory>

namespace {

constexpr size_t frame_pixels = size_t{frame_width} * frame_height;

bytes picture_of_now() {
    alignas(64) static uint32_t pixels[frame_pixels];
    set_frame_geometry(frame_width, frame_height, frame_width);
    geometry.frame_pixels = pixels;
    compose_frame(pixels_rgb32);
    const auto *at = reinterpret_cast<const uint8_t *>(pixels);
    return {at, at + sizeof pixels};
}

struct course {
    std::vector<bytes> pictures; // as shown
    bytes heard;                 // samples, tape output, why each run ended
    bytes end;                   // a snapshot
    std::unique_ptr<kiv_machine> record;
};

// Runs frames with a look ahead at the end of each; 0 frames: without one.
course run(int frames, uint32_t ahead) {
    static run_ahead looks;
    const auto unused = std::make_unique<sound_slices>();
    course c;
    while (frames-- > 0) {
        const size_t at = c.heard.size();
        c.heard.push_back(static_cast<uint8_t>(kiv_run_frame()));
        const auto *samples = reinterpret_cast<const uint8_t *>(kiv_samples());
        c.heard.insert(c.heard.end(), samples, samples + 2 * kiv_sample_count());
        c.heard.insert(c.heard.end(), kiv_tape_output(), kiv_tape_output() + kiv_tape_output_size());
        kiv_tape_output_clear();
        if (c.heard[at] != KIV_RUN_FRAME) {
            c.pictures.emplace_back(); // the CPU has stopped
        } else if (ahead != 0) {
            EXPECT_TRUE(looks.look(ahead, unused->record(), [&] { c.pictures.push_back(picture_of_now()); }));
        } else {
            const auto *pixels = reinterpret_cast<const uint8_t *>(kiv_pixels());
            c.pictures.emplace_back(pixels, pixels + 4 * frame_pixels);
        }
    }
    kiv_run(100); // what the last picture leaves for the next one is settled
    c.end = snapshot();
    c.record = std::make_unique<kiv_machine>(machine);
    return c;
}

void expect_no_trace(int frames, const std::string &what) {
    const bytes start = snapshot();
    const auto again = [&](uint32_t ahead) {
        EXPECT_EQ(load(start), KIV_OK);
        kiv_tape_record(1);
        return run(frames, ahead);
    };
    const course plain = again(0);
    for (uint32_t ahead = 1; ahead <= most_frames_ahead; ++ahead) {
        SCOPED_TRACE(what + ", " + std::to_string(ahead) + " ahead");
        const course with = again(ahead);
        EXPECT_TRUE(with.heard == plain.heard) << "samples or tape output";
        EXPECT_TRUE(with.end == plain.end);
        EXPECT_EQ(std::memcmp(with.record.get(), plain.record.get(), sizeof machine), 0);
        size_t others = 0;
        for (size_t i = ahead; i < plain.pictures.size(); ++i)
            others += with.pictures[i - ahead] != plain.pictures[i];
        EXPECT_EQ(others, 0u) << "pictures that did not come";
    }
}

TEST(RunAhead, LeavesNothingBehind) {
    for (uint32_t seed = 1; seed <= 12; ++seed) {
        put_rom(KIV_ROM_MAIN, storm_rom(seed));
        put_rom(KIV_ROM_NBASIC, {0xC7});
        const kiv_date date = {1982, 12, 31, 23, 59, 59};
        ASSERT_EQ(kiv_calendar_start(&date), KIV_OK);
        ASSERT_EQ(kiv_boot(), KIV_OK);
        const bytes tape = some_tape();
        ASSERT_EQ(kiv_tape_insert(tape.data(), tape.size()), KIV_OK);
        kiv_key('A', 1);
        kiv_key('A', 0); // waits for its two retraces
        for (uint32_t i = 0; i < seed; ++i) kiv_run_frame();
        expect_no_trace(30, "storm " + std::to_string(seed));
    }
}

TEST(RunAhead, AKeyStruckMeanwhileStays) {
    put_rom(KIV_ROM_MAIN, storm_rom(1));
    put_rom(KIV_ROM_NBASIC, {0xC7});
    ASSERT_EQ(kiv_boot(), KIV_OK);
    for (int i = 0; i < 5; ++i) kiv_run_frame();
    run_ahead ahead;
    const auto unused = std::make_unique<sound_slices>();
    const uint8_t a = key_place('A');
    ahead.look(2, unused->record(), [&] { kiv_key('A', 1); });
    EXPECT_TRUE(is_key_held(a));
    ahead.look(2, unused->record(),
               [&] { kiv_key('A', 0); }); // its release waits, by the machine's own retraces
    EXPECT_TRUE(is_key_held(a));
    for (int i = 0; i < 4; ++i) kiv_run_frame();
    EXPECT_FALSE(is_key_held(a));
}

} // namespace
