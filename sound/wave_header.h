// What stands before the samples of a WAV file: one channel, 16 bits, the machine's own rate.
#pragma once

#include "sound/sound_slices.h"

#include <array>
#include <cstdint>

using wave_header_bytes = std::array<uint8_t, 44>;

// The most bytes of samples that the header can count.
constexpr uint64_t wave_limit = 0xFFFFFFFF - sizeof(wave_header_bytes);

// RIFF, WAVE, a format chunk of 16 bytes (PCM, one channel, 2 bytes a sample), then `bytes` of samples.
inline wave_header_bytes wave_header(uint64_t bytes) {
    wave_header_bytes header = {'R', 'I', 'F', 'F', 0, 0, 0,  0, 'W', 'A', 'V', 'E', 'f', 'm',
                                't', ' ', 16,  0,   0, 0, 1,  0, 1,   0,   0,   0,   0,   0,
                                0,   0,   0,   0,   2, 0, 16, 0, 'd', 'a', 't', 'a'};
    const auto put = [&header](size_t at, uint64_t n) {
        for (size_t i = 0; i < 4; ++i) header[at + i] = static_cast<uint8_t>(n >> 8 * i);
    };
    put(4, sizeof header - 8 + bytes);
    put(24, sample_rate);
    put(28, sample_rate * 2);
    put(40, bytes);
    return header;
}
