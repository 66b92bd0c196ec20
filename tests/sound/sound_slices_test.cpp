#include "sound/sound_slices.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr uint64_t slice = 79872;

std::unique_ptr<sound_slices> silent_slices(int32_t soft_volume = 1) {
    auto slices = std::make_unique<sound_slices>();
    slices->clearPCM();
    slices->setSoftVolume(soft_volume);
    return slices;
}

std::vector<int> render(sound_slices &slices) {
    const int16_t *samples = slices.renderSlice();
    return {samples, samples + slice_samples};
}

std::vector<int> square(int half, int low_half, int amplitude, size_t count = slice_samples) {
    std::vector<int> wave;
    while (wave.size() < count) {
        wave.insert(wave.end(), static_cast<size_t>(half), amplitude);
        wave.insert(wave.end(), static_cast<size_t>(low_half), -amplitude);
    }
    wave.resize(count);
    return wave;
}

TEST(sound_slices, a_quiet_slice_is_zeros_from_one_entry_each) {
    auto slices = silent_slices();
    for (int n = 0; n < 3; ++n) {
        slices->advanceClock(slice);
        const slice_source source = slices->closeBanks();
        for (uint32_t c = 0; c < sound_channels; ++c) {
            const int from = c == 0 ? source.beeper : source.tone;
            ASSERT_GE(from, 0) << "channel " << c;
            const sound_bank &bank = slices->channel(c).banks[from];
            EXPECT_EQ(bank.count, 1u) << "channel " << c;
            EXPECT_EQ(bank.entries[0].duration, slice) << "channel " << c;
            EXPECT_EQ(bank.entries[0].level, 0u) << "channel " << c;
        }
        slices->makeNormalPCM(source);
        EXPECT_EQ(std::vector<int>(slices->samples(), slices->samples() + slice_samples),
                  std::vector<int>(slice_samples, 0));
    }
}

TEST(sound_slices, power_on_sounds_until_the_beeper_is_switched_off) {
    auto slices = std::make_unique<sound_slices>();
    slices->beepOn(); // it counts as on already
    slices->advanceClock(slice);
    EXPECT_EQ(render(*slices), square(20, 20, 6000));
    slices->beepOff();
    slices->beepOff();
    EXPECT_EQ(slices->channel(0).banks[slices->channel(0).fill_bank].count, 1u);
    slices->advanceClock(slice);
    EXPECT_EQ(render(*slices), std::vector<int>(slice_samples, 0));
}

TEST(sound_slices, beeper_switched_on_halfway_leaves_the_first_half_silent) {
    auto slices = silent_slices();
    slices->advanceClock(slice / 2);
    slices->beepOn();
    slices->advanceClock(slice / 2);
    const std::vector<int> got = render(*slices);
    EXPECT_TRUE(std::all_of(got.begin(), got.begin() + 960, [](int v) { return v == 0; }));
    EXPECT_EQ(std::vector<int>(got.begin() + 960, got.end()), square(20, 20, 1000, 960));
}

TEST(sound_slices, tone_periods_and_halves) {
    const struct {
        uint32_t frequency;
        int high, low;
    } cases[] = {
        {1000, 48, 48}, {2400, 20, 20}, {700, 68, 69}, {64000, 1, 1}, {65535, 0, 1},
    };
    for (const auto &c : cases)
        for (uint32_t tone = 0; tone < 3; ++tone) {
            auto slices = silent_slices();
            slices->setTone(c.frequency, tone);
            slices->setTone(c.frequency, tone); // no further entry
            EXPECT_EQ(slices->channel(1).banks[0].count, 1u);
            EXPECT_EQ(slices->channel(tone + 1).param, c.frequency);
            slices->advanceClock(slice);
            EXPECT_EQ(render(*slices), square(c.high, c.low, 300)) << c.frequency << " Hz, tone " << tone;
            slices->setTone(0, tone);
            slices->advanceClock(slice);
            EXPECT_EQ(render(*slices), std::vector<int>(slice_samples, 0)) << c.frequency << " Hz off";
        }
}

// Every stored volume is usable, also those that wrap in 16 bits or turn negative there.
TEST(sound_slices, all_sources_at_once_stay_within_the_amplitude) {
    for (const int32_t volume : {0, 1, 8, 32, 33, 65, 4096, -1, -33, INT32_MAX, INT32_MIN}) {
        auto slices = silent_slices(volume);
        const int a = static_cast<int16_t>(static_cast<uint16_t>(uint64_t(int64_t{volume} * 1000) & 0xFFFF));
        EXPECT_EQ(slices->getSoftVolume(), a / 1000) << volume;
        slices->beepOn();
        slices->setTone(1000, 0);
        slices->setTone(1000, 1);
        slices->setTone(440, 2);
        slices->advanceClock(slice);
        int peak = 0;
        for (const int v : render(*slices)) peak = std::max(peak, std::abs(v));
        EXPECT_EQ(peak, std::min(std::abs(a), 32767)) << volume;
    }
    auto slices = silent_slices(33); // the tones' amplitude is rounded down, also below zero
    slices->setTone(1000, 0);
    slices->advanceClock(slice);
    EXPECT_EQ(render(*slices), square(48, 48, -9761));
}

// What a port write at a moment means for the samples, worked out from the list of all writes.
struct timeline {
    struct change {
        uint64_t at;
        uint32_t channel, value;
    };
    std::vector<change> changes;
    std::array<uint32_t, 4> level{};
    size_t next = 0;
    uint64_t sample_count = 0;

    void apply(const change &c) {
        level[c.channel] = c.channel == 0 || c.value == 0 ? c.value : (2 * 96000 + c.value) / (2 * c.value);
    }
    std::vector<int> next_slice(uint64_t index, int a) {
        const int b = a * 3 / 10;
        std::vector<int> samples;
        for (uint64_t i = 0; i < slice_samples; ++i, ++sample_count) {
            while (next < changes.size()) {
                // Half a sample is rounded up.
                const uint64_t since = changes[next].at - index * slice;
                if (changes[next].at >= (index + 1) * slice) break;
                if ((2 * since * slice_samples + slice) / (2 * slice) > i) break;
                apply(changes[next++]);
            }
            int v = level[0] == 0 ? 0 : sample_count % 40 < 20 ? a : -a;
            int tone = 0;
            for (uint32_t c = 1; c < 4; ++c)
                if (level[c] != 0) tone += sample_count % level[c] < level[c] / 2 ? b : -b;
            samples.push_back(std::clamp(v + tone, -a, a));
        }
        // A change that rounds to the slice's end belongs to the next one's first sample.
        while (next < changes.size() && changes[next].at < (index + 1) * slice) apply(changes[next++]);
        return samples;
    }
};

// Slices are closed by a run loop whose last step crosses the end; the surplus belongs to the next slice.
TEST(sound_slices, any_run_of_writes_gives_the_samples_of_its_timeline) {
    std::mt19937 generator(8801);
    const auto random = [&] { return static_cast<uint32_t>(generator()); };
    for (int run = 0; run < 20; ++run) {
        auto slices = silent_slices(4);
        timeline expected;
        const uint32_t step_limit = run % 2 ? 40 : 4000;
        uint64_t now = 0, in_slice = 0;
        uint64_t index = 0;
        while (index < 30) {
            if (random() % 4 == 0) {
                const uint32_t channel = random() % 4;
                const uint32_t value = channel == 0 ? random() % 2 : random() % 5 * (random() % 3000);
                if (channel == 0)
                    value ? slices->beepOn() : slices->beepOff();
                else
                    slices->setTone(value, channel - 1);
                expected.changes.push_back({now, channel, value});
            }
            const uint32_t step = 1 + random() % step_limit;
            slices->advanceClock(step);
            now += step;
            if ((in_slice += step) < slice) continue;
            in_slice = 0;
            const std::vector<int> got = render(*slices), wanted = expected.next_slice(index, 4000);
            ASSERT_EQ(got, wanted) << "run " << run << " slice " << index;
            ++index;
        }
    }
}

// A program can switch faster than banks hold, and nobody may have closed a slice for long.
TEST(sound_slices, overrun_banks_drop_time_and_still_give_whole_slices) {
    for (const int variant : {0, 1, 2, 3, 4, 5}) {
        const int writer = variant % 3;
        const bool long_time = variant < 3; // than a slice holds
        auto slices = silent_slices();
        for (int n = 0; n < 12000; ++n) {
            if (writer == 0) n % 2 ? slices->beepOff() : slices->beepOn();
            if (writer == 1) slices->setTone(n % 2 ? 0 : 1000, 1);
            if (writer == 2) slices->muteTones();
            slices->advanceClock(long_time ? 7 + n % 3 : 1);
        }
        for (uint32_t c = 0; c < sound_channels; ++c) {
            const bool written = (c == 0) == (writer == 0);
            EXPECT_EQ(slices->channel(c).banks[0].count, written ? bank_capacity : 0) << "writer " << writer;
        }
        slices->setTone(500, 0);
        slices->advanceClock(1000000);
        for (int n = 0; n < 40; ++n) {
            slices->renderSlice();
            slices->advanceClock(slice);
            const uint32_t fill = slices->channel(1).fill_bank;
            for (uint32_t c = 2; c < sound_channels; ++c)
                ASSERT_EQ(slices->channel(c).banks[fill].count, slices->channel(1).banks[fill].count)
                    << "writer " << writer << " slice " << n;
        }
    }
}

TEST(sound_slices, short_and_empty_slices_are_stretched_or_silent) {
    auto slices = silent_slices();
    slices->beepOn(); // its entry of no time is the whole slice
    EXPECT_EQ(render(*slices), std::vector<int>(slice_samples, 0));
    slices->advanceClock(100);
    slices->beepOff();
    slices->advanceClock(100);
    const std::vector<int> got = render(*slices);
    EXPECT_EQ(std::vector<int>(got.begin(), got.begin() + 960), square(20, 20, 1000, 960));
    EXPECT_TRUE(std::all_of(got.begin() + 960, got.end(), [](int v) { return v == 0; }));
    slices->reset_cpu_clk(0);
    slices->beepOn();
    slices->advanceClock(slice);
    EXPECT_EQ(render(*slices), std::vector<int>(slice_samples, 0));
    slices->reset_cpu_clk(7987200);
    EXPECT_EQ(slices->tick_delay(), 2 * slice);
}

TEST(sound_slices, clearing_forgets_old_time_and_silences_all) {
    auto slices = silent_slices();
    slices->beepOn();
    slices->setTone(701, 2);
    slices->advanceClock(3 * slice + 5);
    slices->renderSlice();
    slices->clearPCM();
    for (uint32_t c = 0; c < sound_channels; ++c) EXPECT_EQ(slices->pending(c), 0u);
    slices->setTone(700, 0);
    slices->advanceClock(slice);
    EXPECT_EQ(render(*slices), square(68, 69, 300)) << "beeper and old tone silent, the phase starts again";
}

// The sample counters start again every 104 seconds of beeper and 17 minutes of tones.
TEST(sound_slices, phases_wrap_in_a_long_run) {
    auto slices = silent_slices();
    slices->beepOn();
    slices->setTone(700, 0);
    const uint32_t last = tone_phase_wrap / slice_samples;
    for (uint32_t n = 0; n < last; ++n) {
        slices->advanceClock(slice);
        slices->renderSlice();
    }
    slices->advanceClock(slice);
    const std::vector<int> got = render(*slices);
    for (uint32_t i = 0; i < slice_samples; ++i) {
        const uint32_t beeper = (last * slice_samples + i) % beeper_phase_wrap % 40;
        const uint32_t tone = (last * slice_samples + i) % tone_phase_wrap % 137;
        const int wanted = std::clamp((beeper < 20 ? 1000 : -1000) + (tone < 68 ? 300 : -300), -1000, 1000);
        ASSERT_EQ(got[i], wanted) << "sample " << i;
    }
}

} // namespace
