#include "api/resampler.h"

#include "sound/sound_slices.h"
#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double one = 4294967296.0; // of a position
constexpr int unity_bits = 14;
constexpr double kaiser_beta = 8; // 80 dB below
constexpr double pass_band =
    0.92; // of the lower one of the two halves of the rates: there the filter falls by half

// The modified Bessel function of order 0, by its series.
double bessel0(double x) {
    double sum = 1, term = 1;
    for (int k = 1; k < 40; ++k) {
        term *= (x / (2 * k)) * (x / (2 * k));
        sum += term;
    }
    return sum;
}

double windowed_sinc(double distance, double cut_off) {
    const double from_middle = distance / (resampler_taps / 2.0);
    if (from_middle <= -1 || from_middle >= 1) return 0;
    const double x = pi * cut_off * distance;
    const double sinc = std::fabs(x) < 1e-9 ? 1 : std::sin(x) / x;
    return sinc * bessel0(kaiser_beta * std::sqrt(1 - from_middle * from_middle)) / bessel0(kaiser_beta);
}

} // namespace

void resampler::set_rate(double samples_per_second) {
    output_rate = samples_per_second;
    if (output_rate == 0) return; // nobody asks for samples
    step = static_cast<uint64_t>(std::floor(sample_rate / output_rate * one + 0.5));
    if (std::fabs(output_rate - filter_rate) > 0.02 * filter_rate) make_filter();
}

void resampler::make_filter() {
    filter_rate = output_rate;
    const double cut_off = pass_band * std::min(1.0, output_rate / sample_rate);
    for (uint32_t phase = 0; phase < phases; ++phase) {
        double taps[resampler_taps], sum = 0;
        for (uint32_t i = 0; i < resampler_taps; ++i) {
            taps[i] = windowed_sinc(i - (resampler_taps / 2.0 - 1.0) - static_cast<double>(phase) / phases,
                                    cut_off);
            sum += taps[i];
        }
        for (uint32_t i = 0; i < resampler_taps; ++i)
            filter[phase][i] = static_cast<int16_t>(std::lround(taps[i] / sum * (1 << unity_bits)));
    }
}

int16_t resampler::filtered(const int16_t *window, uint32_t phase) const {
    int32_t sum = 1 << (unity_bits - 1);
    for (uint32_t i = 0; i < resampler_taps; ++i) sum += window[i] * filter[phase][i];
    return static_cast<int16_t>(std::clamp(sum >> unity_bits, INT16_MIN, INT16_MAX));
}

uint32_t resampler::most_output(uint32_t count) const {
    return static_cast<uint32_t>((uint64_t{count} << 32) / std::max<uint64_t>(step, 1)) + 2;
}

// The window of an output sample begins `position` behind the oldest sample of the history.
uint32_t resampler::run(const int16_t *input, uint32_t count, int16_t *output) {
    if (step == 0) return 0;
    constexpr uint32_t block = 512;
    int16_t samples[resampler_taps + block];
    uint32_t written = 0;
    while (count != 0) {
        const uint32_t taken = std::min(count, block);
        std::memcpy(samples, state.history, sizeof state.history);
        std::memcpy(samples + resampler_taps, input, taken * sizeof *input);
        for (; state.position >> 32 < taken; state.position += step)
            output[written++] =
                filtered(samples + (state.position >> 32) + 1, static_cast<uint32_t>(state.position) >> 24);
        state.position -= uint64_t{taken} << 32;
        std::memcpy(state.history, samples + taken, sizeof state.history);
        input += taken;
        count -= taken;
    }
    return written;
}
