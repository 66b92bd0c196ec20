#include "platform/desktop/sound_feeder.h"

#include <algorithm>
#include <cmath>

namespace platform {

namespace {

constexpr double machine_slice_ms = 20;
constexpr double least_margin_ms = 8; // a slice's lateness that is always covered
constexpr double greatest_margin_ms = 24;
constexpr double margin_step_ms = 4;      // more after every underrun,
constexpr double margin_decay = 1.0 / 20; // less by a millisecond every 20 seconds
constexpr double greatest_correction = 0.005;
constexpr double correction_per_ms = 0.00025;
constexpr double averaging_ms = 500;
constexpr double skip_above_ms = 30;   // over the target on average, and
constexpr double skip_at_once_ms = 60; // at one moment
constexpr double bridge_ms = 3;
constexpr uint64_t no_beginning = UINT64_MAX;
constexpr double pi = 3.14159265358979323846;

double blackman(double x) { return 0.42 + 0.5 * std::cos(pi * x) + 0.08 * std::cos(2 * pi * x); } // -1 to 1

} // namespace

sound_feeder::sound_feeder(uint32_t rate) : source_rate(rate), ring(ring_size + taps) {}

// The low-pass: everything that the device can carry and nothing of what would fold back. The transition of
// 48 taps is about a tenth of the source rate wide.
std::vector<float> sound_feeder::make_kernel(double at_speed) const {
    const double cutoff = std::min(
        0.5, std::max(0.02, 0.5 * device_rate / (source_rate * at_speed) - 0.02)); // of the source rate
    std::vector<float> kernel_of_speed(static_cast<size_t>(phases + 1) * taps, 0.0f);
    for (int phase = 0; phase <= phases; ++phase) {
        float *row = &kernel_of_speed[static_cast<size_t>(phase) * taps];
        double sum = 0;
        for (int tap = 0; tap < taps; ++tap) {
            const double x = tap - before - static_cast<double>(phase) / phases;
            const double sinc = x == 0 ? 2 * cutoff : std::sin(2 * pi * cutoff * x) / (pi * x);
            const double value = sinc * blackman(std::clamp(x / (taps / 2.0), -1.0, 1.0));
            row[tap] = static_cast<float>(value);
            sum += value;
        }
        for (int tap = 0; tap < taps; ++tap) row[tap] = static_cast<float>(row[tap] / sum);
    }
    return kernel_of_speed;
}

void sound_feeder::open_device(uint32_t rate, uint32_t block_samples) {
    device_rate = rate;
    block_ms = block_samples * 1000.0 / device_rate;
    for (size_t i = 0; i < std::size(kernels); ++i) kernels[i] = make_kernel(steps_of_speed[i]);
    kernel = nullptr;
    follow_speed();
    margin_ms = least_margin_ms;
    average_ms = 0;
    ratio = 1;
    sounding = false;
    bridge_left = 0;
    last = 0;
    start_at.store(written.load());
    begun_at = no_beginning;
}

void sound_feeder::start() {
    start_at.store(written.load());
    playing.store(true);
}

void sound_feeder::stop() { playing.store(false); }

void sound_feeder::set_speed(uint32_t percent) { wanted_speed.store(std::clamp(percent, 25u, 400u)); }

void sound_feeder::set_gain(float factor) { gain.store(factor, std::memory_order_relaxed); }

void sound_feeder::push(const int16_t *samples, size_t count) {
    const uint64_t end = written.load(std::memory_order_relaxed);
    const size_t room = ring_size - static_cast<size_t>(end - consumed.load(std::memory_order_acquire));
    count = std::min(count, room);
    for (size_t i = 0; i < count; ++i) {
        const size_t at = static_cast<size_t>(end + i) % ring_size;
        ring[at] = samples[i];
        if (at < taps) ring[at + ring_size] = samples[i];
    }
    written.store(end + count, std::memory_order_release);
}

// The signal at `index` + `at`. Needs the samples from index - before to index + taps / 2. Sums in lanes,
// which the compiler makes vectors of.
float sound_feeder::interpolate(uint64_t index, double at) const {
    constexpr int lanes = 8;
    static_assert(taps % lanes == 0);
    const double scaled = at * phases;
    const int phase = static_cast<int>(scaled);
    const float between = static_cast<float>(scaled - phase);
    const float *low = &kernel[static_cast<size_t>(phase) * taps];
    const float *high = low + taps;
    const int16_t *samples = &ring[(index - before) % ring_size];
    float sums[lanes] = {};
    for (int tap = 0; tap < taps; tap += lanes)
        for (int lane = 0; lane < lanes; ++lane)
            sums[lane] += (low[tap + lane] + (high[tap + lane] - low[tap + lane]) * between) *
                          static_cast<float>(samples[tap + lane]);
    float sum = 0;
    for (const float part : sums) sum += part;
    return sum;
}

// Half the slice is waiting on average, a block is about to be taken, and the margin is for what comes late.
void sound_feeder::steer(double fill_ms, double elapsed_ms) {
    const double weight = std::min(1.0, elapsed_ms / averaging_ms);
    average_ms += (fill_ms - average_ms) * weight;
    margin_ms = std::max(least_margin_ms, margin_ms - elapsed_ms / 1000 * margin_decay);
    const double error = average_ms - target_ms();
    ratio = 1 + std::clamp(error * correction_per_ms, -greatest_correction, greatest_correction);
}

double sound_feeder::slice_ms() const { return machine_slice_ms / speed; }
double sound_feeder::target_ms() const { return slice_ms() / 2 + block_ms + margin_ms; }

void sound_feeder::follow_speed() {
    const double wanted = wanted_speed.load() / 100.0;
    if (kernel != nullptr && wanted == speed) return;
    speed = wanted;
    size_t step = 0;
    while (step + 1 < std::size(kernels) && steps_of_speed[step] < speed) ++step;
    kernel = kernels[step].data();
    average_ms = target_ms();
}

// From here on the signal comes over from where it was to what goes on.
void sound_feeder::cut() {
    bridge_from = last;
    bridge_length = std::max(1, static_cast<int>(bridge_ms * device_rate / 1000));
    bridge_left = bridge_length;
}

void sound_feeder::follow_start_and_stop(bool wanted) {
    if (const uint64_t begin = start_at.load(); begin != begun_at) {
        begun_at = begin;
        // What came before a start is not heard, not even in the filter's past.
        position = begin + before;
        fraction = 0;
        if (sounding) cut();
        sounding = false;
    }
    if (!wanted && sounding) {
        cut();
        sounding = false;
    }
}

void sound_feeder::skip(double ms) {
    if (ms > 0) position += static_cast<uint64_t>(ms * source_rate * speed / 1000);
}

// With enough waiting the sound begins; with far too much some of it is left out.
void sound_feeder::look_at_fill(uint64_t end, double block, bool wanted) {
    const double fill_ms =
        static_cast<double>(static_cast<int64_t>(end - position)) * 1000 / (source_rate * speed);
    if (wanted && !sounding && fill_ms >= target_ms() + slice_ms() / 2 - block) {
        sounding = true;
        cut();
        average_ms = target_ms();
        skip(fill_ms - average_ms - slice_ms() / 2); // slow slices are long ones
    }
    if (!sounding) {
        if (!wanted) position = end;
        return;
    }
    const double target = target_ms();
    steer(fill_ms, block);
    const double of_long_slices = std::max(0.0, (slice_ms() - machine_slice_ms) / 2);
    if (average_ms > target + skip_above_ms)
        skip(std::min(average_ms - target, fill_ms / 2));
    else if (fill_ms > target + skip_at_once_ms + of_long_slices)
        skip(fill_ms - target - of_long_slices);
    else
        return;
    average_ms = target;
    cut();
    count_skips.fetch_add(1, std::memory_order_relaxed);
}

// The signal at the position, which moves on by `step`; silence once nothing is left.
float sound_feeder::next_sample(uint64_t end, double step) {
    if (!sounding) return 0;
    if (static_cast<int64_t>(end - position) <= taps / 2) {
        sounding = false;
        cut();
        margin_ms = std::min(greatest_margin_ms, margin_ms + margin_step_ms);
        count_underruns.fetch_add(1, std::memory_order_relaxed);
        return 0;
    }
    const float sample = interpolate(position, fraction);
    fraction += step;
    const double whole = std::floor(fraction);
    position += static_cast<uint64_t>(whole);
    fraction -= whole;
    return sample;
}

float sound_feeder::bridged(float sample) {
    if (bridge_left > 0) {
        sample +=
            (bridge_from - sample) * static_cast<float>(bridge_left) / static_cast<float>(bridge_length);
        --bridge_left;
    }
    return last = sample;
}

void sound_feeder::pull(int16_t *out, size_t count) {
    const uint64_t end = written.load(std::memory_order_acquire);
    const bool wanted = playing.load();
    follow_speed();
    const double shown_target_ms = target_ms();
    follow_start_and_stop(wanted);
    look_at_fill(end, static_cast<double>(count) * 1000 / device_rate, wanted);
    const double step = source_rate * speed / device_rate * ratio;
    const float wanted_gain = gain.load(std::memory_order_relaxed);
    const float gain_step = count == 0 ? 0 : (wanted_gain - current_gain) / static_cast<float>(count);
    for (size_t i = 0; i < count; ++i) {
        const float sample = next_sample(end, step);
        current_gain += gain_step;
        out[i] = static_cast<int16_t>(
            std::lround(std::clamp(bridged(sample * current_gain), -32768.0f, 32767.0f)));
    }
    current_gain = wanted_gain;
    consumed.store(position > static_cast<uint64_t>(taps) ? std::min(end, position - taps) : 0,
                   std::memory_order_release);
    count_pulled.fetch_add(count, std::memory_order_relaxed);
    shown_fill.store(sounding ? average_ms : 0, std::memory_order_relaxed);
    shown_target.store(shown_target_ms, std::memory_order_relaxed);
    shown_ratio.store(ratio, std::memory_order_relaxed);
}

sound_feeder::figures sound_feeder::get_figures() const {
    figures f;
    f.underruns = count_underruns.load();
    f.skips = count_skips.load();
    f.pulled = count_pulled.load();
    f.fill_ms = shown_fill.load();
    f.target_ms = shown_target.load();
    f.ratio = shown_ratio.load();
    return f;
}

} // namespace platform
