// The way of the samples to the device: continuous, of bounded latency, whatever the clocks do.
#include "platform/desktop/sound_feeder.h"

#include <atomic>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>

using platform::sound_feeder;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr uint32_t source_rate = 96000;
constexpr size_t slice = 1920;
#ifdef __SANITIZE_THREAD__
constexpr double simulated_seconds = 300; // one thread: there is nothing to be found in hours of it
#else
constexpr double simulated_seconds = 2 * 3600;
#endif

// The machine and a device on two clocks, simulated: slices are pushed every 20 ms of the machine's clock,
// blocks pulled by the device's, which is `ppm` faster.
struct simulation {
    sound_feeder feeder{source_rate};
    double device_rate;
    size_t block;
    double block_seconds;
    double now = 0, next_slice = 0.02, next_block;
    double frequency = 440, amplitude = 10000;
    uint64_t pushed = 0;
    bool constant = false; // the same value throughout instead of a sine
    double lateness = 0;   // seconds, of every 50th slice
    uint64_t slices = 0;

    simulation(uint32_t rate, size_t block_samples, double ppm)
        : device_rate(rate), block(block_samples),
          block_seconds(static_cast<double>(block) / device_rate / (1 + ppm / 1e6)), next_block(0.0037) {
        feeder.open_device(rate, static_cast<uint32_t>(block));
        feeder.start();
    }

    void push_slice() {
        int16_t samples[slice];
        for (size_t i = 0; i < slice; ++i, ++pushed)
            samples[i] = constant ? static_cast<int16_t>(amplitude)
                                  : static_cast<int16_t>(std::lround(
                                        amplitude * std::sin(2 * pi * frequency *
                                                             static_cast<double>(pushed) / source_rate)));
        feeder.push(samples, slice);
    }

    // Runs until `end`; `hear` gets every block.
    template <class Hear> void run(double end, Hear hear) {
        std::vector<int16_t> out(block);
        while (now < end) {
            const double due = next_slice + (slices % 50 == 49 ? lateness : 0);
            if (due <= next_block) {
                now = due;
                next_slice += 0.02;
                ++slices;
                push_slice();
            } else {
                now = next_block;
                next_block += block_seconds;
                feeder.pull(out.data(), block);
                hear(out);
            }
        }
    }
};

TEST(SoundFeeder, ASineComesOutAsTheSineWithoutASeam) {
    struct row {
        uint32_t rate;
        size_t block;
        double ppm;
    };
    for (const row r : {row{48000, 512, 0}, row{48000, 512, 200}, row{48000, 480, -200}, row{44100, 512, 200},
                        row{96000, 1024, -200}, row{22050, 256, 100}, row{192000, 2048, -100}}) {
        simulation s(r.rate, r.block, r.ppm);
        // A sine bends by at most amplitude x (2 pi f / rate)^2 between samples; a seam bends it by far more.
        const double omega = 2 * pi * s.frequency / r.rate;
        const double bend = s.amplitude * omega * omega * 1.05 + 4; // rounding and the ratio's drift
        double x1 = 0, x2 = 0, worst = 0, peak = 0;
        s.run(20, [&](const std::vector<int16_t> &out) {
            for (const int16_t x : out) {
                if (s.now > 1) worst = std::max(worst, std::abs(x - 2 * x1 + x2));
                if (s.now > 1) peak = std::max(peak, std::abs(static_cast<double>(x)));
                x2 = x1;
                x1 = x;
            }
        });
        EXPECT_LE(worst, bend) << r.rate << " Hz, " << r.ppm << " ppm";
        EXPECT_NEAR(peak, s.amplitude, s.amplitude * 0.01) << r.rate << " Hz";
        EXPECT_EQ(s.feeder.get_figures().underruns, 0u) << r.rate << " Hz, " << r.ppm << " ppm";
        EXPECT_EQ(s.feeder.get_figures().skips, 0u) << r.rate << " Hz, " << r.ppm << " ppm";
    }
}

// What a device of 48000 Hz cannot carry must vanish, not come back as another tone.
TEST(SoundFeeder, WhatTheDeviceCannotCarryIsFilteredOut) {
    simulation s(48000, 512, 0);
    s.frequency = 38000;
    double worst = 0;
    s.run(2, [&](const std::vector<int16_t> &out) {
        for (const int16_t x : out)
            if (s.now > 0.5) worst = std::max(worst, std::abs(static_cast<double>(x)));
    });
    EXPECT_LT(worst, s.amplitude / 300) << "of " << s.amplitude; // 50 dB
}

TEST(SoundFeeder, LatencyStaysBoundedOverHoursOfDriftingClocks) {
    for (const double ppm : {-200.0, 200.0}) {
        simulation s(4000, 40, ppm); // a low rate, as the arithmetic of two hours takes its time
        s.constant = true;
        double least = 1e9, most = 0;
        s.run(simulated_seconds, [&](const std::vector<int16_t> &) {
            if (s.now < 2) return;
            const double fill = s.feeder.get_figures().fill_ms;
            least = std::min(least, fill);
            most = std::max(most, fill);
        });
        const auto f = s.feeder.get_figures();
        EXPECT_EQ(f.underruns, 0u) << ppm << " ppm";
        EXPECT_EQ(f.skips, 0u) << ppm << " ppm";
        EXPECT_GT(least, 18) << ppm << " ppm";
        EXPECT_LT(most, 38) << ppm << " ppm";
        EXPECT_NEAR(f.ratio, 1 - ppm / 1e6, 300e-6) << ppm << " ppm";
    }
}

TEST(SoundFeeder, SlicesThatComeLateRaiseTheMarginOnce) {
    simulation s(48000, 512, 50);
    s.lateness = 0.016;
    uint64_t after_a_minute = 0;
    s.run(60, [](const std::vector<int16_t> &) {});
    after_a_minute = s.feeder.get_figures().underruns;
    EXPECT_LE(after_a_minute, 5u);
    s.run(120, [](const std::vector<int16_t> &) {});
    EXPECT_LE(s.feeder.get_figures().underruns - after_a_minute, 3u);
    EXPECT_LT(s.feeder.get_figures().fill_ms + 10.7, 60);
}

// A device far off the clock (as SDL's dummy is): samples are left out, the latency stays.
TEST(SoundFeeder, ADeviceTwoPercentSlowCostsSamplesNotLatency) {
    simulation s(48000, 512, -20000);
    double most = 0, x1 = 0, worst_step = 0;
    s.frequency = 100;
    s.run(60, [&](const std::vector<int16_t> &out) {
        most = std::max(most, s.feeder.get_figures().fill_ms);
        for (const int16_t x : out) {
            worst_step = std::max(worst_step, std::abs(x - x1));
            x1 = x;
        }
    });
    EXPECT_GT(s.feeder.get_figures().skips, 0u);
    EXPECT_LT(most, 65);
    // Bridged over 3 ms: twice the amplitude over 144 samples, on top of the sine's own slope.
    EXPECT_LT(worst_step, 2 * s.amplitude / 144 + s.amplitude * 2 * pi * s.frequency / 48000 + 2);
}

TEST(SoundFeeder, StopAndPlayBringNoOldSamplesAndNoClick) {
    simulation s(48000, 512, 0);
    s.constant = true;
    double x1 = 0, worst_step = 0;
    int16_t last = 0;
    const auto hear = [&](const std::vector<int16_t> &out) {
        for (const int16_t x : out) {
            worst_step = std::max(worst_step, std::abs(x - x1));
            x1 = x;
            last = x;
        }
    };
    s.run(1, hear);
    EXPECT_EQ(last, 10000);
    s.feeder.stop();
    std::vector<int16_t> out(512);
    s.feeder.pull(out.data(), out.size());
    hear(out);
    EXPECT_EQ(last, 0) << "silent within one block of the stop";
    // What comes after the start is negative; nothing positive may be heard any more.
    s.amplitude = -10000;
    s.feeder.start();
    int16_t greatest = -32768;
    s.run(2, [&](const std::vector<int16_t> &block) {
        hear(block);
        for (const int16_t x : block) greatest = std::max(greatest, x);
    });
    EXPECT_LE(greatest, 100);
    EXPECT_EQ(last, -10000);
    EXPECT_LT(worst_step, 400) << "a cut is bridged";
}

TEST(SoundFeeder, TheGainReachesEverySampleWithoutAStep) {
    simulation s(48000, 512, 0);
    s.constant = true;
    int16_t last = 0;
    double x1 = 0, worst_step = 0;
    const auto hear = [&](const std::vector<int16_t> &out) {
        for (const int16_t x : out) {
            worst_step = std::max(worst_step, std::abs(x - x1));
            x1 = last = x;
        }
    };
    s.run(1, hear);
    worst_step = 0;
    s.feeder.set_gain(0.5f);
    s.run(1.1, hear);
    EXPECT_EQ(last, 5000);
    s.feeder.set_gain(0);
    s.run(1.2, hear);
    EXPECT_EQ(last, 0);
    EXPECT_LT(worst_step, 30);
}

// A device that stops asking must not stop whoever pushes.
TEST(SoundFeeder, ADeadDeviceBlocksNobody) {
    simulation s(48000, 512, 0);
    for (int i = 0; i < 1000; ++i) s.push_slice();
    s.feeder.open_device(44100, 512); // it comes back as another
    std::vector<int16_t> out(512);
    for (int i = 0; i < 4; ++i) {
        s.feeder.pull(out.data(), out.size());
        for (const int16_t x : out) EXPECT_EQ(x, 0) << "old samples";
    }
}

TEST(SoundFeeder, PushPullStartAndStopOnThreadsOfTheirOwn) {
    sound_feeder feeder(source_rate);
    feeder.open_device(48000, 512);
    std::atomic<bool> done{false};
    std::thread machine([&] {
        std::vector<int16_t> samples(slice, 1000);
        while (!done) {
            feeder.push(samples.data(), samples.size());
            std::this_thread::yield();
        }
    });
    std::thread device([&] {
        std::vector<int16_t> out(512);
        while (!done) feeder.pull(out.data(), out.size());
    });
    for (int i = 0; i < 300; ++i) {
        feeder.start();
        feeder.set_gain(static_cast<float>(i) / 300.0f);
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        (void)feeder.get_figures();
        feeder.stop();
    }
    done = true;
    machine.join();
    device.join();
    EXPECT_GT(feeder.get_figures().pulled, 0u);
}

} // namespace
