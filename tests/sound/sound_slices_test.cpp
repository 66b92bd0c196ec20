#include "sound/sound_slices.h"
#include "support/log.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr uint64_t slice = 79872; // T-states

// What a program writes: the beeper (channel 0) on or off, a tone's frequency in Hz.
struct port_write {
    uint64_t at; // T-states
    uint32_t channel, value;
};

void apply(sound_slices &slices, const port_write &w) {
    if (w.channel != 0)
        slices.setTone(w.value, w.channel - 1);
    else
        w.value != 0 ? slices.beepOn() : slices.beepOff();
}

std::unique_ptr<sound_slices> silent_slices(int32_t soft_volume = 1) {
    auto slices = std::make_unique<sound_slices>();
    slices->clearPCM();
    slices->setSoftVolume(soft_volume);
    return slices;
}

std::vector<int> next_slice(sound_slices &slices, uint64_t advance) {
    slices.advanceClock(advance);
    const int16_t *const samples = slices.renderSlice();
    return {samples, samples + slice_samples};
}

// "20*1000 20*-1000 1880*0": the first three runs of equal samples.
std::string runs(const std::vector<int> &samples) {
    std::string text;
    auto from = samples.begin();
    for (int n = 0; n < 3 && from != samples.end(); ++n) {
        const auto to = std::find_if(from, samples.end(), [&](int v) { return v != *from; });
        if (n > 0) text += ' ';
        text += std::to_string(to - from) + "*" + std::to_string(*from);
        from = to;
    }
    return text;
}

TEST(SoundSlices, ASliceIsWhatWasWrittenInIt) {
    const struct {
        std::vector<port_write> writes;
        uint32_t entries[2]; // of the beeper, of each tone
        std::string runs;
    } cases[] = {
        {{}, {1, 1}, "1920*0"},
        {{{0, 0, 1}}, {2, 1}, "20*1000 20*-1000 20*1000"},
        {{{39936, 0, 1}, {39936, 0, 1}}, {2, 1}, "960*0 20*1000 20*-1000"},
        {{{0, 0, 1}, {1664, 0, 0}, {1664, 0, 0}}, {3, 1}, "20*1000 20*-1000 1880*0"},
        {{{0, 1, 1000}, {9, 1, 1000}}, {1, 2}, "48*300 48*-300 48*300"},
        {{{0, 2, 1000}, {3994, 2, 0}}, {1, 3}, "48*300 48*-300 1824*0"},
        {{{0, 2, 700}}, {1, 2}, "68*300 69*-300 68*300"}, // an odd period is low for longer
        {{{0, 3, 64000}}, {1, 2}, "1*300 1*-300 1*300"},
        {{{0, 3, 65535}}, {1, 2}, "1920*-300"}, // one sample a period: never high
    };
    for (const auto &c : cases) {
        auto slices = silent_slices();
        uint64_t now = 0;
        for (const port_write &w : c.writes) {
            slices->advanceClock(w.at - std::exchange(now, w.at));
            apply(*slices, w);
        }
        EXPECT_EQ(runs(next_slice(*slices, slice - now)), c.runs);
        for (uint32_t k = 0; k < sound_channels; ++k) {
            const sound_channel &channel = slices->channel(k);
            EXPECT_EQ(channel.banks[channel.fill_bank ^ 1].count, c.entries[k != 0]) << c.runs;
        }
    }
}

TEST(SoundSlices, TheBeeperSoundsFromPowerOnAndNotAfterAClear) {
    auto slices = std::make_unique<sound_slices>();
    EXPECT_EQ(runs(next_slice(*slices, slice)), "20*6000 20*-6000 20*6000");
    slices->setTone(701, 2);
    next_slice(*slices, 3 * slice + 5);
    slices->clearPCM();
    slices->setTone(700, 0);
    EXPECT_EQ(runs(next_slice(*slices, slice)), "68*6000 69*-6000 68*6000") << "the phase starts again";
}

// Every stored volume is usable, also those that wrap in 16 bits or turn negative there.
TEST(SoundSlices, AllSourcesAtOnceStayWithinTheAmplitude) {
    for (const int32_t volume : {0, 1, 8, 32, 33, 65, 4096, -1, -33, INT32_MAX, INT32_MIN}) {
        auto slices = silent_slices(volume);
        const int a = static_cast<int16_t>(static_cast<uint16_t>(uint64_t(int64_t{volume} * 1000) & 0xFFFF));
        EXPECT_EQ(slices->getSoftVolume(), a / 1000) << volume;
        for (uint32_t channel = 0; channel < sound_channels; ++channel) apply(*slices, {0, channel, 1000});
        const std::vector<int> got = next_slice(*slices, slice);
        const auto [low, high] = std::minmax_element(got.begin(), got.end());
        EXPECT_EQ(std::max(-*low, *high), std::min(std::abs(a), 32767)) << volume;
    }
    auto slices = silent_slices(33); // the tones' amplitude is rounded down, also below zero
    slices->setTone(1000, 0);
    EXPECT_EQ(runs(next_slice(*slices, slice)), "48*-9761 48*9761 48*-9761");
}

// The samples that a list of writes stands for, one at a time.
struct timeline {
    std::vector<port_write> writes;
    std::array<uint32_t, 4> level{};
    size_t next = 0;
    uint64_t samples_before = 0;

    // A write comes into force at the nearest sample of its slice, or with the next slice.
    std::vector<int> slice_at(uint64_t start, int a) {
        std::vector<int> samples;
        const auto take_until = [&](uint64_t sample) {
            for (; next < writes.size() && writes[next].at < start + slice; ++next) {
                const port_write &w = writes[next];
                if ((2 * (w.at - start) * slice_samples + slice) / (2 * slice) > sample) return;
                level[w.channel] =
                    w.channel == 0 || w.value == 0 ? w.value : (2 * 96000 + w.value) / (2 * w.value);
            }
        };
        for (uint64_t i = 0; i < slice_samples; ++i, ++samples_before) {
            take_until(i);
            int v = level[0] == 0 ? 0 : samples_before % beeper_phase_wrap % 40 < 20 ? a : -a;
            for (uint32_t c = 1; c < 4; ++c)
                if (level[c] != 0)
                    v += (samples_before % tone_phase_wrap % level[c] < level[c] / 2 ? 3 : -3) * a / 10;
            samples.push_back(std::clamp(v, -a, a));
        }
        take_until(slice_samples);
        return samples;
    }
};

// Slices are closed by a run loop whose last step crosses the end; the surplus belongs to the next slice.
TEST(SoundSlices, AnyRunOfWritesGivesTheSamplesOfItsTimeline) {
    std::mt19937 generator(8801);
    const auto random = [&] { return static_cast<uint32_t>(generator()); };
    for (int run = 0; run < 20; ++run) {
        auto slices = silent_slices(4);
        timeline expected;
        uint64_t now = 0, index = 0;
        for (uint64_t in_slice = 0; index < 30; in_slice = in_slice < slice ? in_slice : 0) {
            if (random() % 4 == 0) {
                const uint32_t channel = random() % 4;
                expected.writes.push_back(
                    {now, channel, channel == 0 ? random() % 2 : random() % 5 * (random() % 3000)});
                apply(*slices, expected.writes.back());
            }
            const uint32_t step = 1 + random() % (run % 2 ? 40 : 4000);
            slices->advanceClock(step);
            now += step;
            if ((in_slice += step) < slice) continue;
            ASSERT_EQ(next_slice(*slices, 0), expected.slice_at(index++ * slice, 4000)) << "run " << run;
        }
    }
}

// The sample counters start again every 104 seconds of beeper and 17 minutes of tones.
TEST(SoundSlices, PhasesWrapInALongRun) {
    auto slices = silent_slices();
    timeline expected{{{0, 0, 1}, {0, 1, 700}}};
    for (const port_write &w : expected.writes) apply(*slices, w);
    for (; expected.samples_before + slice_samples < tone_phase_wrap;
         expected.samples_before += slice_samples)
        next_slice(*slices, slice);
    EXPECT_EQ(next_slice(*slices, slice), expected.slice_at(0, 1000));
}

// A program can switch faster than banks hold, and nobody may have closed a slice for long.
TEST(SoundSlices, OverrunBanksDropTimeAndStillGiveWholeSlices) {
    static int told;
    set_log_sink(
        [](log_kind, const char *text) { told += std::string(text).find("overrun") != std::string::npos; });
    for (const uint32_t channel : {0, 1, 2, 4}) // 4: all tones muted
        for (const uint64_t step : {1, 8}) {    // less than a slice in all, or more
            SCOPED_TRACE("channel " + std::to_string(channel) + ", step " + std::to_string(step));
            auto slices = silent_slices();
            told = 0;
            for (uint32_t n = 0; n < 12000; ++n) {
                channel == 4 ? slices->muteTones() : apply(*slices, {0, channel, n % 2 ? 0 : 1000u});
                slices->advanceClock(step);
            }
            const sound_channel &full = slices->channel(channel == 0 ? 0 : 1);
            EXPECT_EQ(full.banks[0].count, bank_capacity);
            EXPECT_EQ(full.recorded_until, 11999 * step) << "what found no room is over";
            EXPECT_EQ(told, 1);
            for (int n = 0; n < 40; ++n) {
                next_slice(*slices, n == 0 ? 1000000 : slice);
                for (uint32_t c = 0; c < sound_channels; ++c) {
                    const sound_bank &bank = slices->channel(c).banks[n % 2];
                    uint64_t sum = 0;
                    for (uint32_t i = 0; i < bank.count; ++i) sum += bank.entries[i].duration;
                    ASSERT_EQ(bank.total, sum);
                    ASSERT_TRUE(c < 2 || bank.count == slices->channel(1).banks[n % 2].count);
                }
            }
        }
    set_log_sink(nullptr);
}

// The bank keeps 9599 stretches, here 923 samples' worth, the last of them silent. What follows lengthens
// that one if it is silence, too; else the slice is filled by stretching what was kept.
TEST(SoundSlices, AfterAnOverrunTheSamplesAreThoseOfWhatWasKept) {
    const struct {
        uint32_t writes; // one every four T-states: on, off, on ...
        bool sounds_to_the_end;
        std::string next;
    } cases[] = {{12000, false, "1920*0"}, {12001, true, "48*300 48*-300 48*300"}};
    for (const auto &c : cases) {
        auto slices = silent_slices();
        for (uint32_t n = 0; n < c.writes; ++n) {
            apply(*slices, {0, 1, n % 2 ? 0 : 1000u});
            slices->advanceClock(4);
        }
        const std::vector<int> samples = next_slice(*slices, slice);
        const auto sounding = [&](int from, int to) {
            return std::count_if(samples.begin() + from, samples.begin() + to, [](int v) { return v != 0; });
        };
        EXPECT_GT(sounding(0, 923), 0) << c.writes;
        EXPECT_EQ(sounding(923, 1920) > 0, c.sounds_to_the_end) << c.writes;
        EXPECT_EQ(runs(next_slice(*slices, slice)), c.next) << c.writes;
    }
}

TEST(SoundSlices, ShortAndEmptySlicesAreStretchedOrSilent) {
    auto slices = silent_slices();
    slices->beepOn(); // its entry of no time is the whole slice
    EXPECT_EQ(runs(next_slice(*slices, 0)), "1920*0");
    slices->advanceClock(100);
    slices->beepOff();
    const std::vector<int> stretched = next_slice(*slices, 100);
    EXPECT_EQ(runs({stretched.begin() + 920, stretched.end()}), "20*1000 20*-1000 960*0");
    slices->reset_cpu_clk(0);
    slices->beepOn();
    EXPECT_EQ(runs(next_slice(*slices, slice)), "1920*0");
    slices->reset_cpu_clk(7987200);
    EXPECT_EQ(slices->tick_delay(), 2 * slice);
}

} // namespace
