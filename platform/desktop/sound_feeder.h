// From the machine's slices to the sound device's callback.
//
// The emulator hands over 1920 samples every 20 ms of its own clock; the device asks for its samples in
// blocks of its own size, at its own rate, by its own clock. Between them stand a queue and a resampler
// (windowed sinc) whose ratio follows the queue's fill: at most 0.5 % off, so slowly that nobody hears it,
// which holds the latency where it is while the two clocks drift apart. Whatever must be cut (nothing to
// play, too much waiting, start and stop) is bridged over 3 ms, so that it does not click.
//
// A machine at another speed hands its slices over faster or slower; they are played as fast as they come,
// higher or lower, as a tape would be.
//
// `push`: one thread. `pull`: one thread, never waits, allocates nothing. The rest from any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace platform {

class sound_feeder {
  public:
    explicit sound_feeder(uint32_t source_rate);

    // Before the device's callback starts, with the rate that the device was opened at and the samples that
    // it asks for at a time. Forgets what is waiting.
    void open_device(uint32_t device_rate, uint32_t block_samples);
    void start(); // what was pushed before is not played
    void stop();
    void set_gain(float factor);      // 0 to 1
    void set_speed(uint32_t percent); // of the machine's own, at which slices come; 25 to 400
    // Appends samples; what finds no room (a device that has stopped asking) is dropped.
    void push(const int16_t *samples, size_t count);
    void pull(int16_t *out, size_t count); // always fills `out`

    struct figures {
        uint64_t underruns = 0; // the queue ran dry while playing
        uint64_t skips = 0;     // too much was waiting, some was left out
        uint64_t pulled = 0;    // samples handed to the device since the program's start
        double fill_ms = 0;     // waiting before the device takes its next block, averaged over half a second
        double target_ms = 0;   // what `fill_ms` is steered to
        double ratio = 1;       // source samples a device sample, over the nominal ratio
    };
    figures get_figures() const;

  private:
    static constexpr size_t ring_size = 1 << 15; // samples; 341 ms at 96 kHz
    static constexpr int taps = 48, phases = 256;
    static constexpr int before = taps / 2 - 1; // taps left of the sample that the position stands on
    static constexpr double steps_of_speed[] = {1, 1.5, 2, 3, 4}; // a low-pass each

    float interpolate(uint64_t index, double fraction) const;
    void steer(double fill_ms, double block_ms);
    double target_ms() const;
    double slice_ms() const;
    void follow_speed();
    std::vector<float> make_kernel(double speed) const;
    void cut();
    void skip(double ms);
    void follow_start_and_stop(bool wanted);
    void look_at_fill(uint64_t end, double block, bool wanted);
    float next_sample(uint64_t end, double step);
    float bridged(float sample);

    const double source_rate;
    std::vector<int16_t> ring; // its first `taps` samples stand again behind its end: a window never wraps
    std::vector<float> kernels[std::size(steps_of_speed)]; // (phases + 1) x taps
    const float *kernel = nullptr;                         // the one in use

    std::atomic<uint64_t> written{0};  // samples pushed; the queue's end
    std::atomic<uint64_t> consumed{0}; // samples that the writer may overwrite
    std::atomic<uint64_t> start_at{0}; // the queue's beginning after a start
    std::atomic<bool> playing{false};
    std::atomic<float> gain{1.0f};
    std::atomic<uint32_t> wanted_speed{100}; // per cent

    // The device's side.
    double device_rate = 0;
    double block_ms = 0;
    double speed = 1;
    uint64_t begun_at = 0; // `start_at` as last seen
    uint64_t position = 0; // next source sample, and
    double fraction = 0;   // how far behind it
    bool sounding = false; // past the wait for the first samples
    float current_gain = 1.0f;
    float last = 0;                         // last sample handed over
    float bridge_from = 0;                  // where the last cut left the signal, and
    int bridge_left = 0, bridge_length = 1; // device samples until it has come over to what goes on
    double average_ms = 0;                  // of the fill
    double ratio = 1;
    double margin_ms = 0; // for slices that come late

    std::atomic<uint64_t> count_underruns{0}, count_skips{0}, count_pulled{0};
    std::atomic<double> shown_fill{0}, shown_target{0}, shown_ratio{1};
};

} // namespace platform
