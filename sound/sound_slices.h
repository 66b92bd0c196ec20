// From port writes to samples: the beeper and three tone channels, cut into slices of 20 ms of emulated
// time and rendered as 1920 signed 16-bit samples at 96000 Hz each. Sound time is emulated time; nothing
// here reads a clock. The beeper is a fixed 2400 Hz square wave, a tone a square wave of its period.
//
// The CPU thread alone calls everything here while the machine runs; clearPCM only while it is parked.
#pragma once

#include "support/shared.h"
#include <cstdint>

constexpr uint32_t sample_rate = 96000;
constexpr uint32_t slice_samples = sample_rate * 20 / 1000; // 1920
constexpr uint32_t slice_bytes = slice_samples * 2;
constexpr uint32_t sound_channels = 4;                 // 0 the beeper, 1-3 the tones
constexpr uint32_t bank_capacity = 9599;               // entries of a bank
constexpr uint32_t slice_list_capacity = 9600;         // entries of a slice list
constexpr uint32_t beeper_period = sample_rate / 2400; // samples
constexpr uint32_t beeper_phase_wrap = 10'000'000;
constexpr uint32_t tone_phase_wrap = 100'000'000;

struct sound_entry {
    uint64_t duration; // T-states
    uint32_t level;    // beeper 0/1; tone: period in samples, 0 silent
    uint32_t param;    // tone: Hz
};

template <uint32_t capacity> struct sound_entries {
    sound_entry entries[capacity];
    uint32_t count;
    uint64_t total; // sum of the durations, T-states
};
using sound_bank = sound_entries<bank_capacity>;
using slice_list = sound_entries<slice_list_capacity>;

struct sound_channel {
    uint64_t recorded_until; // sound clock up to which the time is in a bank; what follows is pending
    uint32_t level;
    uint32_t param;
    uint32_t fill_bank; // 0 or 1
    sound_bank banks[2];
};

// All that decides the sound to come, as plain data that can be copied and compared. Of the banks only the
// fill bank counts, up to its count: what else stands there has been played.
struct sound_block {
    uint64_t sound_clock;                             // T-states advanced
    uint64_t tick_delay;                              // T-states in one slice
    shared<int16_t> beeper_amplitude, tone_amplitude; // A and B
    uint32_t beeper_phase, tone_phase;                // samples
    sound_channel channels[sound_channels];
};

// The samples of a tone's period; 0 for a frequency of 0, which is silence.
uint32_t tone_period(uint32_t frequency);

// Where a slice's entries are: a bank, or the slice list.
constexpr int source_slice_list = -1;
struct slice_source {
    int beeper, tone; // 0, 1 or source_slice_list
};

class sound_slices {
  public:
    sound_slices();
    sound_slices(const sound_slices &) = delete;
    sound_slices &operator=(const sound_slices &) = delete;

    void power_on(); // as after construction
    void beepOn();
    void beepOff();
    void setTone(uint32_t frequency, uint32_t tone); // Hz, 0 silent; tone 0-2
    void muteTones();
    void clearPCM();
    // After every pass. One clock serves all channels: a channel's pending time is what has gone by since
    // it last wrote an entry.
    void advanceClock(uint64_t cycles) { state.sound_clock += cycles; }
    void reset_cpu_clk(uint32_t clock_hz); // slice length from the CPU clock; 3993600 Hz at first

    // Closes the slice and renders it; the 1920 samples stay valid until the next call.
    const int16_t *renderSlice();

    void setSoftVolume(int32_t n); // beeper amplitude n * 1000, kept in 16 bits
    int32_t getSoftVolume() const;

    // The steps of renderSlice, for whoever wants to look between them. Channel 0-3.
    void appendPCMTick(uint32_t channel, uint32_t level, uint32_t param);
    void advanceTick(uint32_t channel, uint64_t cycles);
    slice_source closeBanks();
    void makeNormalPCM(slice_source source);
    const int16_t *samples() const { return slice_buffer; }
    const sound_channel &channel(uint32_t index) const { return state.channels[index]; }
    // T-states at the channel's current level that are not yet in a bank.
    uint64_t pending(uint32_t index) const {
        return state.sound_clock - state.channels[index].recorded_until;
    }
    const slice_list &list(uint32_t index) const { return lists[index]; }
    uint64_t tick_delay() const { return state.tick_delay; }
    // For who saves and restores it, between two calls of the others.
    sound_block &record() { return state; }

  private:
    void tell_overrun(const char *where);

    struct entry_view { // a bank or a slice list
        const sound_entry *entries;
        uint32_t count;
        uint64_t total;
    };
    int close_beeper();
    int close_tones();
    entry_view source_of(uint32_t index, int source) const;
    void render_beeper(const entry_view &source);
    void render_tones(int source);

    sound_block state;
    int16_t slice_buffer[slice_samples];
    slice_list lists[sound_channels];
    bool overrun_told = false;
};
