// The way of the samples to the device: continuous, of bounded latency, whatever the clocks do.
#include "platform/desktop/sound_feeder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <thread>

using platform::sound_feeder;

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr uint32_t source_rate = 96000;
constexpr size_t slice = 1920;

// The machine and a device on two clocks, simulated: slices are pushed every 20 ms of the machine's clock,
// blocks pulled by the device's, which is `ppm` faster. The samples are a sine, or a constant at frequency 0.
struct simulation {
    double frequency, amplitude = 10000;
    double device_rate;
    std::vector<int16_t> block;
    double block_seconds;
    double lateness = 0; // seconds, of every 50th slice
    double speed = 1;
    double now = 0, next_slice = 0.02, next_block = 0.0037;
    uint64_t pushed = 0, slices = 0;
    sound_feeder feeder{source_rate};

    // What was heard since `listen_anew`: the greatest sample, step and bend (change of the step), and the
    // fill's bounds.
    int16_t last = 0, greatest = -32768;
    double peak = 0, worst_step = 0, worst_bend = 0, least_fill = 1e9, most_fill = 0;

    simulation(double hz, uint32_t rate = 48000, size_t block_samples = 512, double ppm = 0)
        : frequency(hz), device_rate(rate), block(block_samples),
          block_seconds(static_cast<double>(block_samples) / rate / (1 + ppm / 1e6)) {
        feeder.open_device(rate, static_cast<uint32_t>(block_samples));
        feeder.start();
    }
    void push_slice() {
        int16_t samples[slice];
        for (int16_t &sample : samples) {
            const double angle = 2 * pi * frequency * static_cast<double>(pushed++) / source_rate;
            sample = static_cast<int16_t>(std::lround(amplitude * (frequency == 0 ? 1 : std::sin(angle))));
        }
        feeder.push(samples, slice);
    }
    void pull_block() {
        feeder.pull(block.data(), block.size());
        for (const int16_t x : block) {
            worst_bend = std::max(worst_bend, std::abs(x - last - step));
            step = x - last;
            worst_step = std::max(worst_step, std::abs(step));
            peak = std::max(peak, std::abs(static_cast<double>(x)));
            greatest = std::max(greatest, x);
            last = x;
        }
        least_fill = std::min(least_fill, feeder.get_figures().fill_ms);
        most_fill = std::max(most_fill, feeder.get_figures().fill_ms);
    }
    void run(double end) {
        while (now < end) {
            const double due = next_slice + (slices % 50 == 49 ? lateness : 0);
            now = std::min(due, next_block);
            if (due <= next_block) {
                next_slice += 0.02 / speed;
                slices++;
                push_slice();
            } else {
                next_block += block_seconds;
                pull_block();
            }
        }
    }
    void listen_anew() {
        greatest = -32768;
        peak = worst_step = worst_bend = most_fill = 0;
        least_fill = 1e9;
    }

  private:
    double step = 0;
};

TEST(SoundFeeder, ASineComesOutAsTheSineWithoutASeam) {
    struct row {
        uint32_t rate;
        size_t block;
        double ppm;
    };
    for (const row r : {row{48000, 512, 200}, row{48000, 480, -200}, row{44100, 512, 200},
                        row{96000, 1024, -200}, row{22050, 256, 100}, row{192000, 2048, -100}}) {
        SCOPED_TRACE(testing::Message() << r.rate << " Hz, " << r.ppm << " ppm");
        simulation s(440, r.rate, r.block, r.ppm);
        s.run(1);
        s.listen_anew();
        s.run(20);
        // A sine bends by at most amplitude x (2 pi f / rate)^2 between samples; a seam bends it by far more.
        const double omega = 2 * pi * s.frequency / r.rate;
        EXPECT_LE(s.worst_bend, s.amplitude * omega * omega * 1.05 + 4); // rounding and the ratio's drift
        EXPECT_NEAR(s.peak, s.amplitude, s.amplitude * 0.01);
        EXPECT_EQ(s.feeder.get_figures().underruns + s.feeder.get_figures().skips, 0u);
    }
    // What a device of 48000 Hz cannot carry must vanish, not come back as another tone.
    simulation high(38000);
    high.run(0.5);
    high.listen_anew();
    high.run(2);
    EXPECT_LT(high.peak, high.amplitude / 300); // 50 dB
}

// As a tape would be: higher or lower, and nothing else.
TEST(SoundFeeder, AnotherSpeedIsAnotherPitch) {
    simulation s(440);
    s.run(1);
    for (const uint32_t percent : {150u, 400u, 25u, 300u, 75u, 50u, 200u, 100u}) {
        SCOPED_TRACE(percent);
        s.speed = percent / 100.0;
        s.feeder.set_speed(percent);
        s.run(s.now + 3); // what was waiting has been played, or left out
        const auto before = s.feeder.get_figures();
        s.listen_anew();
        s.run(s.now + 5);
        const double omega = 2 * pi * s.frequency * s.speed / s.device_rate;
        EXPECT_LE(s.worst_bend, s.amplitude * omega * omega * 1.05 + 4);
        EXPECT_NEAR(s.worst_step, s.amplitude * omega, s.amplitude * omega * 0.02 + 2) << "its pitch";
        EXPECT_NEAR(s.peak, s.amplitude, s.amplitude * 0.01);
        const auto after = s.feeder.get_figures();
        EXPECT_EQ(after.underruns + after.skips, before.underruns + before.skips);
        EXPECT_LT(after.fill_ms, 80);
    }
    EXPECT_LT(s.feeder.get_figures().underruns + s.feeder.get_figures().skips, 12u) << "one a change";
}

TEST(SoundFeeder, LatencyStaysWhereItIsWhileTheClocksDriftApart) {
    for (const double ppm : {-200.0, 200.0}) {
        SCOPED_TRACE(ppm);
        simulation s(0, 4000, 40, ppm); // a low rate, as the arithmetic of two hours takes its time
        s.run(2);
        s.listen_anew();
        s.run(600); // 120 ms apart
        const auto f = s.feeder.get_figures();
        EXPECT_EQ(f.underruns + f.skips, 0u);
        EXPECT_GT(s.least_fill, 18);
        EXPECT_LT(s.most_fill, 38);
        EXPECT_NEAR(f.ratio, 1 - ppm / 1e6, 300e-6);
    }
}

TEST(SoundFeeder, SlicesThatComeLateRaiseTheMarginOnce) {
    simulation s(0, 48000, 512, 50);
    s.lateness = 0.016;
    s.run(60);
    const uint64_t after_a_minute = s.feeder.get_figures().underruns;
    EXPECT_LE(after_a_minute, 5u);
    s.run(120);
    EXPECT_LE(s.feeder.get_figures().underruns - after_a_minute, 3u);
    EXPECT_LT(s.feeder.get_figures().fill_ms + 10.7, 60);
}

// A device far off the clock (as SDL's dummy is): samples are left out, the latency stays.
TEST(SoundFeeder, ADeviceTwoPercentSlowCostsSamplesNotLatency) {
    simulation s(100, 48000, 512, -20000);
    s.run(60);
    EXPECT_GT(s.feeder.get_figures().skips, 0u);
    EXPECT_LT(s.most_fill, 65);
    EXPECT_LE(s.peak, s.amplitude + 2) << "a cut is no louder than the sound";
    // Bridged over 3 ms: twice the amplitude over 144 samples, on top of the sine's own slope.
    EXPECT_LT(s.worst_step, 2 * s.amplitude / 144 + s.amplitude * 2 * pi * s.frequency / 48000 + 2);
}

TEST(SoundFeeder, GainStopAndPlayBringNoClickAndNoOldSamples) {
    simulation s(0);
    s.run(1);
    EXPECT_EQ(s.last, 10000);
    s.listen_anew();
    for (const auto &[gain, heard] : {std::pair(0.5f, 5000), {0.0f, 0}, {1.0f, 10000}}) {
        s.feeder.set_gain(gain);
        s.run(s.now + 0.1);
        EXPECT_EQ(s.last, heard);
    }
    EXPECT_LT(s.worst_step, 30) << "the gain has no step";
    s.feeder.stop();
    s.pull_block();
    EXPECT_EQ(s.last, 0) << "silent within one block of the stop";
    // What comes after the start is negative; nothing positive may be heard any more.
    s.amplitude = -10000;
    s.feeder.start();
    s.greatest = -32768;
    s.run(2.5);
    EXPECT_LE(s.greatest, 100);
    EXPECT_EQ(s.last, -10000);
    s.feeder.stop(); // and at once
    s.feeder.start();
    s.run(3);
    EXPECT_EQ(s.last, -10000);
    EXPECT_EQ(s.feeder.get_figures().underruns, 0u);
    EXPECT_LT(s.worst_step, 400) << "a cut is bridged";
    // A device that stops asking holds nobody up, and coming back as another it hears nothing old.
    for (int i = 0; i < 1000; ++i) s.push_slice();
    s.feeder.open_device(44100, 512);
    s.listen_anew();
    for (int i = 0; i < 4; ++i) s.pull_block();
    EXPECT_EQ(s.peak, 0);
}

TEST(SoundFeeder, PushPullStartAndStopOnThreadsOfTheirOwn) {
    sound_feeder feeder(source_rate);
    feeder.open_device(48000, 512);
    std::atomic<bool> done{false};
    std::thread machine([&] {
        for (const std::vector<int16_t> samples(slice, 1000); !done; std::this_thread::yield())
            feeder.push(samples.data(), samples.size());
    });
    std::thread device([&] {
        for (std::vector<int16_t> out(512); !done;) feeder.pull(out.data(), out.size());
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
