// From the machine's 96000 samples a second to another rate, band-limited: a low-pass of 64 taps, looked up
// at 256 places between two samples. Whole numbers throughout, so that the same samples give the same samples
// everywhere.
#pragma once

#include <cstdint>

constexpr uint32_t resampler_taps = 64;

// What a resampler knows of the past, as plain data.
struct resampler_block {
    int16_t history[resampler_taps]; // the last samples, oldest first
    uint64_t position;               // of the next output sample behind history's end, 32 fractional bits
};

class resampler {
  public:
    // Samples a second, 8000 to 192000. A change below two per cent keeps the filter.
    void set_rate(double samples_per_second);
    double rate() const { return output_rate; }

    // Takes `count` input samples and writes what they give to `output`; returns the samples written, at most
    // most_output(count).
    uint32_t run(const int16_t *input, uint32_t count, int16_t *output);
    uint32_t most_output(uint32_t count) const;

    resampler_block state = {};

  private:
    static constexpr uint32_t phases = 256;
    void make_filter();
    int16_t filtered(const int16_t *window, uint32_t phase) const;

    double output_rate = 0, filter_rate = 0;
    uint64_t step = 0; // input samples from output sample to output sample, 32 fractional bits
    int16_t filter[phases][resampler_taps] = {};
};
