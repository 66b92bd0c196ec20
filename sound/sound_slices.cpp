#include "sound/sound_slices.h"

#include "support/log.h"
#include <algorithm>
#include <cmath>
#include <type_traits>

namespace {

constexpr uint32_t beeper = 0;
constexpr uint32_t first_tone = 1; // the tones' common time base
constexpr uint32_t tones = 3;
constexpr int16_t power_on_amplitude = 6000;
constexpr uint32_t power_on_clock_hz = 3993600;

template <class Entries> void append(Entries &to, const sound_entry &entry) {
    to.entries[to.count++] = entry;
    to.total += entry.duration;
}

// As append, but time at an unchanged level lengthens the last entry.
template <class Entries> void append_merged(Entries &to, const sound_entry &entry) {
    if (to.count != 0 && to.entries[to.count - 1].level == entry.level) {
        to.entries[to.count - 1].duration += entry.duration;
        to.total += entry.duration;
    } else {
        append(to, entry);
    }
}

template <class Entries> void make_empty(Entries &entries) {
    entries.count = 0;
    entries.total = 0;
}

sound_entry with_duration(const sound_entry &entry, uint64_t duration) {
    return {duration, entry.level, entry.param};
}

// Walks the entries as stretches of samples: emit(entry index, first sample, samples), the phase standing
// at the stretch's first sample. The source's time fills the slice whatever its total is.
template <class View, class Emit>
void walk_samples(const View &source, uint32_t &phase, uint32_t phase_wrap, Emit emit) {
    if (source.count == 0) {
        trace("makeNormalPCM: no data output");
        return;
    }
    if (source.total == 0) return;
    const double scale = slice_samples / static_cast<double>(source.total);
    uint64_t elapsed = 0;
    uint32_t position = 0;
    for (uint32_t i = 0; i < source.count; ++i) {
        elapsed += source.entries[i].duration;
        const auto rounded = static_cast<uint32_t>(std::floor(static_cast<double>(elapsed) * scale + 0.5));
        const uint32_t end = std::min(rounded, slice_samples);
        while (position < end) {
            const uint32_t run = std::min(end - position, phase_wrap - phase);
            emit(i, position, run);
            position += run;
            phase += run;
            if (phase == phase_wrap) phase = 0;
        }
    }
}

// A square wave of `period` samples, joined at a given phase; the odd sample of an odd period is low.
struct square_wave {
    uint32_t period, position;

    square_wave(uint32_t samples, uint32_t phase)
        : period(samples), position(samples == 0 ? 0 : phase % samples) {}
    int32_t next(int32_t amplitude) {
        const int32_t value = position < period / 2 ? amplitude : -amplitude;
        if (++position == period) position = 0;
        return value;
    }
};

// A soft volume past 32 makes the amplitude negative, and then the bounds would stand the wrong way round.
int32_t loudest(int16_t amplitude) { return std::min<int32_t>(std::abs(int32_t{amplitude}), INT16_MAX); }

} // namespace

static_assert(std::is_trivially_copyable_v<sound_block>);

sound_slices::sound_slices() : state{}, slice_buffer{}, lists{} { power_on(); }

void sound_slices::power_on() {
    state.sound_clock = 0;
    clearPCM();
    state.beeper_amplitude = state.tone_amplitude = power_on_amplitude;
    state.tick_delay = power_on_clock_hz * uint64_t{20} / 1000;
    state.channels[beeper].level = 1; // sounds until port 0x40 is first written with bit 5 clear
}

uint32_t tone_period(uint32_t frequency) {
    if (frequency == 0) return 0;
    return static_cast<uint32_t>(std::floor(double{sample_rate} / frequency + 0.5));
}

void sound_slices::beepOn() {
    if (state.channels[beeper].level == 0) appendPCMTick(beeper, 1, 0);
}

void sound_slices::beepOff() {
    if (state.channels[beeper].level == 1) appendPCMTick(beeper, 0, 0);
}

void sound_slices::setTone(uint32_t frequency, uint32_t tone) {
    if (tone >= tones) return;
    const uint32_t changed = first_tone + tone;
    const uint32_t period = tone_period(frequency);
    if (state.channels[changed].level == period) return;
    // All three banks gain an entry, so that entry i has the same duration in each.
    for (uint32_t i = first_tone; i < sound_channels; ++i) {
        if (i == changed)
            appendPCMTick(i, period, frequency);
        else
            appendPCMTick(i, state.channels[i].level, state.channels[i].param);
    }
}

void sound_slices::muteTones() {
    for (uint32_t i = first_tone; i < sound_channels; ++i) appendPCMTick(i, 0, 0);
}

void sound_slices::clearPCM() {
    for (sound_channel &c : state.channels) {
        c.recorded_until = state.sound_clock;
        c.level = c.param = c.fill_bank = 0;
        for (sound_bank &bank : c.banks) make_empty(bank);
    }
    state.beeper_phase = state.tone_phase = 0;
}

void sound_slices::reset_cpu_clk(uint32_t clock_hz) {
    state.tick_delay = uint64_t{clock_hz} * 20 / 1000;
    trace("reset_cpu_clk: m_tick_delay=%dl", static_cast<int>(state.tick_delay));
}

// Once: the emulated program decides how often it happens.
void sound_slices::tell_overrun(const char *where) {
    if (!overrun_told) trace("%s: bank overrun; not told again", where);
    overrun_told = true;
}

void sound_slices::appendPCMTick(uint32_t channel, uint32_t level, uint32_t param) {
    sound_channel &c = state.channels[channel];
    sound_bank &bank = c.banks[c.fill_bank];
    if (bank.count < bank_capacity)
        append(bank, {pending(channel), c.level, c.param});
    else
        tell_overrun("appendPCMTick");
    c.level = level;
    c.param = param;
    c.recorded_until = state.sound_clock;
}

void sound_slices::advanceTick(uint32_t channel, uint64_t cycles) {
    sound_channel &c = state.channels[channel];
    const uint64_t taken = std::min(pending(channel), cycles);
    c.recorded_until += taken;
    if (taken == 0) return;
    sound_bank &bank = c.banks[c.fill_bank];
    if (bank.count < bank_capacity) {
        append(bank, {taken, c.level, c.param});
    } else if (bank.entries[bank.count - 1].level == c.level) {
        bank.entries[bank.count - 1].duration += taken;
        bank.total += taken;
    } else {
        tell_overrun("advanceTick");
    }
}

slice_source sound_slices::closeBanks() {
    const slice_source source{close_beeper(), close_tones()};
    for (sound_channel &c : state.channels) c.fill_bank ^= 1;
    return source;
}

int sound_slices::close_beeper() {
    sound_channel &c = state.channels[beeper];
    sound_bank &fill = c.banks[c.fill_bank], &other = c.banks[c.fill_bank ^ 1];
    make_empty(other);
    if (fill.total < state.tick_delay) advanceTick(beeper, state.tick_delay - fill.total);
    if (fill.total <= state.tick_delay) return static_cast<int>(c.fill_bank);
    // A step that crossed the slice's end, or a program that switches faster than slices are closed.
    slice_list &list = lists[beeper];
    make_empty(list);
    uint32_t i = 0;
    while (list.total + fill.entries[i].duration <= state.tick_delay) append_merged(list, fill.entries[i++]);
    const uint64_t left = state.tick_delay - list.total;
    append_merged(list, with_duration(fill.entries[i], left));
    append_merged(other, with_duration(fill.entries[i], fill.entries[i].duration - left));
    while (++i < fill.count) append_merged(other, fill.entries[i]);
    return source_slice_list;
}

int sound_slices::close_tones() {
    const uint32_t fill = state.channels[first_tone].fill_bank;
    const sound_bank &base = state.channels[first_tone].banks[fill];
    for (uint32_t k = first_tone; k < sound_channels; ++k) {
        make_empty(state.channels[k].banks[fill ^ 1]);
        make_empty(lists[k]);
    }
    if (base.total < state.tick_delay) {
        const uint64_t missing = state.tick_delay - base.total;
        for (uint32_t k = first_tone; k < sound_channels; ++k) advanceTick(k, missing);
    }
    if (base.total <= state.tick_delay) return static_cast<int>(fill);
    // Not merged: entry i stays entry i in all three, and it is as long as the first tone's. After an overrun
    // the others' last entry may say something else.
    const auto copy = [&](uint32_t i, uint64_t duration, bool now) {
        for (uint32_t k = first_tone; k < sound_channels; ++k) {
            const sound_entry entry = with_duration(state.channels[k].banks[fill].entries[i], duration);
            if (now)
                append(lists[k], entry);
            else
                append(state.channels[k].banks[fill ^ 1], entry);
        }
    };
    const slice_list &list = lists[first_tone];
    uint32_t i = 0;
    for (; list.total + base.entries[i].duration <= state.tick_delay; ++i)
        copy(i, base.entries[i].duration, true);
    const uint64_t left = state.tick_delay - list.total;
    copy(i, left, true);
    copy(i, base.entries[i].duration - left, false);
    while (++i < base.count) copy(i, base.entries[i].duration, false);
    return source_slice_list;
}

const int16_t *sound_slices::renderSlice() {
    makeNormalPCM(closeBanks());
    return slice_buffer;
}

void sound_slices::makeNormalPCM(slice_source source) {
    std::fill_n(slice_buffer, slice_samples, int16_t{0});
    render_beeper(source_of(beeper, source.beeper));
    render_tones(source.tone);
}

sound_slices::entry_view sound_slices::source_of(uint32_t index, int source) const {
    if (source == source_slice_list) return {lists[index].entries, lists[index].count, lists[index].total};
    const sound_bank &bank = state.channels[index].banks[source];
    return {bank.entries, bank.count, bank.total};
}

void sound_slices::render_beeper(const entry_view &source) {
    const int32_t amplitude = state.beeper_amplitude, limit = loudest(state.beeper_amplitude);
    walk_samples(
        source, state.beeper_phase, beeper_phase_wrap, [&](uint32_t entry, uint32_t first, uint32_t run) {
            if (source.entries[entry].level == 0) return;
            square_wave wave(beeper_period, state.beeper_phase);
            for (uint32_t i = first; i < first + run; ++i)
                slice_buffer[i] = static_cast<int16_t>(std::clamp(wave.next(amplitude), -limit, limit));
        });
}

void sound_slices::render_tones(int source) {
    const entry_view tone[tones] = {source_of(first_tone, source), source_of(first_tone + 1, source),
                                    source_of(first_tone + 2, source)};
    const int32_t amplitude = state.tone_amplitude, limit = loudest(state.beeper_amplitude);
    walk_samples(tone[0], state.tone_phase, tone_phase_wrap,
                 [&](uint32_t entry, uint32_t first, uint32_t run) {
                     square_wave waves[tones] = {{tone[0].entries[entry].level, state.tone_phase},
                                                 {tone[1].entries[entry].level, state.tone_phase},
                                                 {tone[2].entries[entry].level, state.tone_phase}};
                     if (waves[0].period == 0 && waves[1].period == 0 && waves[2].period == 0) return;
                     for (uint32_t i = first; i < first + run; ++i) {
                         int32_t mixed = slice_buffer[i];
                         for (square_wave &wave : waves)
                             if (wave.period != 0) mixed += wave.next(amplitude);
                         slice_buffer[i] = static_cast<int16_t>(std::clamp(mixed, -limit, limit));
                     }
                 });
}

void sound_slices::setSoftVolume(int32_t n) {
    const auto a = static_cast<int16_t>(static_cast<uint16_t>(static_cast<uint32_t>(n) * 1000));
    state.beeper_amplitude = a;
    // Rounded down, also below zero.
    state.tone_amplitude = static_cast<int16_t>((a * 3 - (a < 0 ? 9 : 0)) / 10);
}

int32_t sound_slices::getSoftVolume() const { return state.beeper_amplitude / 1000; }
