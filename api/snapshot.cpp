#include "api/snapshot.h"

#include "api/resampler.h"
#include "machine/kiv_machine.h"
#include "machine/run_block.h"
#include "support/checksum.h"
#include "support/little_endian.h"
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr uint8_t magic[8] = {'K', 'I', 'V', 'S', 'N', 'A', 'P', 0x1A};
constexpr uint32_t version = 1;
constexpr size_t version_at = 8, sections_at = 12, length_at = 16, checksum_at = 24, header_size = 32;
constexpr size_t tag_size = 4, section_header_size = snapshot_section_head; // tag and length
constexpr char tag_roms[] = "ROMS", tag_machine[] = "MACH", tag_processor[] = "Z80 ", tag_run[] = "RUN ",
               tag_sound[] = "SND ", tag_tape[] = "TAPE", tag_output[] = "TOUT", tag_resampler[] = "RSMP";

constexpr uint64_t longest_pending = uint64_t{1} << 40; // T-states that a sound channel may be behind
constexpr uint64_t longest_run = uint64_t{1} << 56;     // T-states since power-on
constexpr uint32_t entry_level = 0x80000000;            // of a beeper's entry: the level above the duration

// ---- archives -------------------------------------------------------------------------------------------
// One list of fields serves to measure, to write, to check and to load. `ranged` is for what is an index, a
// divisor or a count later on: an archive that checks refuses what lies outside.

struct measuring {
    static constexpr bool loads = false;
    size_t size = 0;

    template <class T> void number(T) { size += sizeof(T); }
    void bytes(const uint8_t *, size_t count) { size += count; }
};

struct writing {
    static constexpr bool loads = false;
    uint8_t *at;

    template <class T> void number(T value) {
        put_little_endian(at, value);
        at += sizeof(T);
    }
    void bytes(const uint8_t *from, size_t count) {
        std::memcpy(at, from, count);
        at += count;
    }
};

// What checking and loading share: bytes with an end. Past it, or outside a range, `good` turns false.
struct source {
    const uint8_t *at;
    size_t left;
    bool good = true;

    template <class T> T take() {
        if (left < sizeof(T)) {
            good = false;
            return T{};
        }
        const T value = get_little_endian<T>(at);
        at += sizeof(T);
        left -= sizeof(T);
        return value;
    }
    const uint8_t *take_bytes(size_t count) {
        if (left < count) {
            good = false;
            return nullptr;
        }
        left -= count;
        return std::exchange(at, at + count);
    }
};

template <class T> struct stored_type { using type = T; };
template <class T> struct stored_type<shared<T>> { using type = T; };
template <class T> using stored = typename stored_type<T>::type;

// The fields of records, one after the other.
template <class Archive> struct fields {
    Archive &archive;

    template <class T> void one(T &field) {
        using value = stored<T>;
        if constexpr (Archive::loads)
            archive.number(field, value{}, static_cast<value>(~value{}), false);
        else
            archive.number(static_cast<value>(field));
    }
    template <class T, size_t count> void one(T (&array)[count]) {
        for (T &element : array) one(element);
    }
    template <class... Fields> void operator()(Fields &...all) { (one(all), ...); }

    template <class T> void ranged(T &field, stored<T> least, stored<T> most) {
        if constexpr (Archive::loads)
            archive.number(field, least, most, true);
        else
            archive.number(static_cast<stored<T>>(field));
    }
};

struct checking : source {
    static constexpr bool loads = true;

    template <class T> void number(T &, stored<T> least, stored<T> most, bool bounded) {
        const auto value = take<stored<T>>();
        if (bounded && (value < least || value > most)) good = false;
    }
};

struct loading : source {
    static constexpr bool loads = true;

    template <class T> void number(T &field, stored<T>, stored<T>, bool) { field = take<stored<T>>(); }
};

// ---- the sections' fields --------------------------------------------------------------------------------

template <class Archive> void calendar_fields(fields<Archive> f) {
    f(machine.calendar_register, machine.calendar_strobe, machine.calendar_clock, machine.calendar_shifting);
}

template <class Archive> void cassette_fields(fields<Archive> f) {
    f(machine.cassette_countdown, machine.cassette_flags);
    f(machine.usart_expect_mode, machine.usart_discard_next, machine.usart_receiver_on,
      machine.usart_received, machine.usart_byte_ready, machine.usart_overrun);
}

template <class Archive> void crtc_fields(fields<Archive> f) {
    f(machine.crtc_state, machine.crtc_param_index, machine.crtc_status, machine.crtc_burst,
      machine.crtc_width, machine.crtc_lines);
    f.ranged(machine.crtc_raster, 1, 32);
    f(machine.crtc_vrl, machine.crtc_hrc, machine.crtc_attr_on, machine.crtc_attr_mono,
      machine.crtc_attr_transparent, machine.crtc_attr_special, machine.crtc_line_size);
    f.ranged(machine.crtc_rows25, 0, 1);
    f(machine.crtc_reverse);
    f.ranged(machine.crtc_wide, 0, 1);
    f.ranged(machine.crtc_mono, 0, 1);
    f.ranged(machine.screen_mode, 0, 3);
    f(machine.cursor_x, machine.cursor_y, machine.cursor_load_x, machine.cursor_load_y,
      machine.cursor_enabled, machine.cursor_phase, machine.attr_blink_phase);
    f.ranged(machine.cursor_blink_period, 1, 0xFFFF);
    f.ranged(machine.attr_blink_period, 1, 0xFFFF);
    f(machine.cursor_blink_on, machine.attr_blink_on);
}

template <class Archive> void timing_fields(fields<Archive> f) {
    f(machine.raster_line, machine.line_clock, machine.vblank_clock);
    f.ranged(machine.line_clocks, 1, 1000);
    f.ranged(machine.vblank_clocks, 1, 100'000);
    f.ranged(machine.display_lines, 1, 400);
    f(machine.frame_count, machine.new_line, machine.vrtc, machine.dma_remaining);
    f.ranged(machine.crt_standard, 0, 1);
    for (dma_channel &c : machine.dma_channels)
        f(c.address_low, c.address_high, c.address_flip_flop, c.count_low, c.count_high, c.count_flip_flop,
          c.transfer_mode, c.address, c.terminal_count, c.terminal_count_copy);
    f(machine.dma_autoload, machine.dma_ch2_enable);
    f.ranged(machine.text_start, 0, 0xFFFF);
    f.ranged(machine.text_end, 0, 0x1FFFF);
    f(machine.dma_load, machine.dma_stall);
}

template <class Archive> void pcg_fields(fields<Archive> f) {
    f(machine.pcg_glyphs_on, machine.pcg_data, machine.pcg_address_low);
    f.ranged(machine.pcg_address_high, 0, 3);
    for (pcg_counter &c : machine.pcg_counters) f(c.frequency, c.high, c.low, c.access, c.toggle, c.gate);
}

// Of the changes that wait their number is told, so that it can be checked. It is read first: a key that is
// struck while the machine's thread takes a snapshot belongs to the time after it.
template <class Archive> void keyboard_fields(fields<Archive> f, key_matrix_block &keys) {
    uint32_t waiting =
        __atomic_load_n(&keys.key_changes_asked.value, __ATOMIC_ACQUIRE) - keys.key_changes_made;
    f(keys.key_matrix, keys.key_retraces, keys.key_pressed_at);
    for (key_change &c : keys.key_changes) f(c.due, c.key, c.down);
    f(keys.key_changes_made);
    f.ranged(waiting, 0, key_changes_size);
    if constexpr (std::is_same_v<Archive, loading>) keys.key_changes_asked = keys.key_changes_made + waiting;
}

// Everything of the machine but its memory and the choice of the attribute decoder.
template <class Archive> void machine_fields(fields<Archive> f, key_matrix_block &keys = machine) {
    keyboard_fields(f, keys);
    for (auto &colour : machine.palette) f.ranged(colour, 0, 7);
    f(machine.sys_status, machine.gvram_select, machine.port10, machine.port21, machine.port30,
      machine.port31, machine.port40, machine.port70, machine.port71, machine.portE4, machine.portE6);
    calendar_fields(f);
    cassette_fields(f);
    crtc_fields(f);
    timing_fields(f);
    pcg_fields(f);
    f(machine.interrupt_pending, machine.carried_colour, machine.carried_attribute);
    f.ranged(machine.interlace, 0, 1);
    f.ranged(machine.boot_rom, 0, 1);
}

template <class Archive> void processor_fields(fields<Archive> f) {
    z80_cpu &c = main_cpu;
    f(c.BC, c.DE, c.HL, c.AF, c.BC_alt, c.DE_alt, c.HL_alt, c.AF_alt, c.IX, c.IY, c.PC, c.SP);
    f(c.step_cycles, c.m1_count, c.wait_count, c.wait_count2, c.accept_cycles, c.I);
    f.ranged(c.IM, 0, 2);
    f.ranged(c.IFF1, 0, 1);
    f.ranged(c.IFF2, 0, 1);
    f(c.stop_reason, c.trace_pc, c.vector_pc, c.r_counter, c.stop_flags, c.restore_steps, c.r_table);
    f.ranged(c.inject_active, 0, 1);
    f(c.inject_bytes);
    f.ranged(c.inject_count, 0, 5);
    uint32_t unused = 0; // once counted the memory waits of opcode fetches
    f(c.total_cycles, unused);
}

template <class Archive> void run_fields(fields<Archive> f, run_block &r) {
    f(r.pass_counter, r.clock_counter, r.slice_cycles);
    f.ranged(r.charge_waits, 0, 1);
    f.ranged(r.frame_due, 0, 1);
    f.ranged(r.cycles, 0, longest_run);
    f(r.frames);
    f.ranged(r.calendar.source, calendar_of_host, calendar_running);
    f.ranged(r.calendar.time.year, 0, 9999);
    f.ranged(r.calendar.time.month, 1, 12);
    f.ranged(r.calendar.time.day, 1, 31);
    f.ranged(r.calendar.time.hour, 0, 23);
    f.ranged(r.calendar.time.minute, 0, 59);
    f.ranged(r.calendar.time.second, 0, 60);
    f(r.calendar.start_cycles, r.calendar.now_cycles);
}

// Which decoder is in use is no field: a reset changes the attributes' mode and leaves the decoder.
constexpr uint8_t told_apart_by = 0x80;
bool decoder_is_mono() { return machine.attr_decoder.load()(told_apart_by) != 0; }

// ---- memory ----------------------------------------------------------------------------------------------

constexpr size_t memory_size = ram_size + 3 * plane_size + font_work_size;

template <class Archive> void write_memory(Archive &a) {
    a.bytes(machine.ram, ram_size);
    a.bytes(machine.gvram[0], 3 * plane_size);
    a.bytes(reinterpret_cast<const uint8_t *>(machine.font_work), font_work_size);
}

void load_memory(const uint8_t *from) {
    machine.video_lock();
    for (uint32_t i = 0; i < ram_size; ++i) ram_store(static_cast<uint16_t>(i), from[i]);
    std::memcpy(machine.gvram, from + ram_size, 3 * plane_size);
    machine.video_unlock();
    for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = from[ram_size + 3 * plane_size + i];
}

// ---- sound -----------------------------------------------------------------------------------------------
// Of each channel what is in its fill bank; the three tones share their times, and a tone's period follows
// from its frequency.

template <class Archive> void write_sound(Archive &a, const sound_block &sound) {
    a.number(sound.beeper_amplitude.load());
    a.number(sound.tone_amplitude.load());
    a.number(sound.beeper_phase);
    a.number(sound.tone_phase);
    for (const sound_channel &c : sound.channels) {
        a.number(sound.sound_clock - c.recorded_until);
        a.number(static_cast<uint32_t>(c.level));
        a.number(static_cast<uint16_t>(c.param));
    }
    const auto fill = [&](int channel) -> const sound_bank & {
        return sound.channels[channel].banks[sound.channels[channel].fill_bank];
    };
    const sound_bank &beeper = fill(0), &tone = fill(1);
    a.number(beeper.count);
    for (uint32_t i = 0; i < beeper.count; ++i) {
        const sound_entry &e = beeper.entries[i];
        a.number(static_cast<uint32_t>(e.duration | (e.level != 0 ? entry_level : 0)));
    }
    a.number(tone.count);
    for (uint32_t i = 0; i < tone.count; ++i) {
        a.number(static_cast<uint32_t>(tone.entries[i].duration));
        for (int channel = 1; channel < 4; ++channel)
            a.number(static_cast<uint16_t>(fill(channel).entries[i].param));
    }
}

void add_entry(sound_bank *bank, uint32_t duration, uint32_t level, uint32_t param) {
    if (bank == nullptr) return;
    bank->entries[bank->count++] = {duration, level, param};
    bank->total += duration;
}

// Takes a sound section; without a target it is only checked.
void take_sound(source &s, sound_block *sound) {
    const auto beeper_amplitude = s.take<int16_t>(), tone_amplitude = s.take<int16_t>();
    const auto beeper_phase = s.take<uint32_t>(), tone_phase = s.take<uint32_t>();
    if (beeper_phase >= beeper_phase_wrap || tone_phase >= tone_phase_wrap) s.good = false;
    if (sound != nullptr) {
        sound->beeper_amplitude = beeper_amplitude;
        sound->tone_amplitude = tone_amplitude;
        sound->beeper_phase = beeper_phase;
        sound->tone_phase = tone_phase;
        sound->sound_clock = longest_pending;
    }
    sound_bank *banks[sound_channels] = {};
    for (uint32_t i = 0; i < sound_channels; ++i) {
        const auto pending = s.take<uint64_t>();
        const auto level = s.take<uint32_t>();
        const auto param = s.take<uint16_t>();
        if (pending > longest_pending) s.good = false;
        if (sound == nullptr) continue;
        sound_channel &c = sound->channels[i];
        c.recorded_until = longest_pending - pending;
        c.level = level;
        c.param = param;
        c.fill_bank = 0;
        banks[i] = &c.banks[0];
        for (sound_bank &bank : c.banks) bank.count = 0, bank.total = 0;
    }
    const auto beeper_count = s.take<uint32_t>();
    if (beeper_count > bank_capacity) s.good = false;
    for (uint32_t i = 0; s.good && i < beeper_count; ++i) {
        const auto entry = s.take<uint32_t>();
        add_entry(banks[0], entry & ~entry_level, (entry & entry_level) != 0, 0);
    }
    const auto tone_count = s.take<uint32_t>();
    if (tone_count > bank_capacity) s.good = false;
    for (uint32_t i = 0; s.good && i < tone_count; ++i) {
        const auto duration = s.take<uint32_t>();
        for (uint32_t channel = 1; channel < sound_channels; ++channel) {
            const auto frequency = s.take<uint16_t>();
            add_entry(banks[channel], duration, tone_period(frequency), frequency);
        }
    }
}

// ---- ROM images, tape -----------------------------------------------------------------------------------

bool roms_known = false;
uint64_t rom_checksums[4];

const uint64_t *checksums_of_roms() {
    if (!roms_known) {
        rom_checksums[0] = checksum64(machine.main_rom, rom_size);
        rom_checksums[1] = checksum64(machine.nbasic_rom, rom_size);
        rom_checksums[2] = checksum64(machine.ext_rom, ext_rom_size);
        rom_checksums[3] = checksum64(machine.font_rom, font_size);
        roms_known = true;
    }
    return rom_checksums;
}

enum tape_form : uint8_t { tape_none, tape_by_checksum, tape_with_bytes };

struct tape_head {
    uint8_t form = tape_none;
    uint32_t size = 0, position = 0;
    uint64_t checksum = 0;

    template <class Archive> void list(fields<Archive> f) {
        f.ranged(form, tape_none, tape_with_bytes);
        f(size, position, checksum);
    }
};

template <class Archive> void write_tape(Archive &a, tape_in_snapshot what) {
    tape_head head;
    if (machine.tape_image != nullptr)
        head = {what == tape_in_snapshot::whole ? tape_with_bytes : tape_by_checksum, machine.tape_size,
                machine.tape_position, cassette_tape_checksum()};
    head.list(fields<Archive>{a});
    if (head.form == tape_with_bytes) a.bytes(machine.tape_image, machine.tape_size);
}

bool tape_in_deck(const tape_head &head) {
    return machine.tape_image != nullptr && machine.tape_size == head.size &&
           cassette_tape_checksum() == head.checksum;
}

// ---- writing --------------------------------------------------------------------------------------------

struct section_writer {
    uint8_t *at;
    uint32_t count = 0;

    template <class Write> void add(const char *tag, Write write) {
        std::memcpy(at, tag, tag_size);
        writing body{at + section_header_size};
        write(body);
        const auto length = static_cast<uint64_t>(body.at - at) - section_header_size;
        put_little_endian(at + tag_size, length);
        at = body.at;
        ++count;
    }
};

struct section_measurer {
    size_t size = header_size;

    template <class Write> void add(const char *, Write write) {
        measuring body;
        write(body);
        size += section_header_size + body.size;
    }
};

template <class Sections>
void all_sections(Sections &to, const snapshot_parts &parts, tape_in_snapshot tape) {
    to.add(tag_roms, [](auto &a) {
        for (int i = 0; i < 4; ++i) a.number(checksums_of_roms()[i]);
    });
    to.add(tag_machine, [](auto &a) {
        write_memory(a);
        machine_fields(fields<std::remove_reference_t<decltype(a)>>{a});
        a.number(static_cast<uint8_t>(decoder_is_mono()));
    });
    to.add(tag_processor, [](auto &a) { processor_fields(fields<std::remove_reference_t<decltype(a)>>{a}); });
    to.add(tag_run, [](auto &a) { run_fields(fields<std::remove_reference_t<decltype(a)>>{a}, run_state); });
    to.add(tag_sound, [&](auto &a) { write_sound(a, parts.sound); });
    to.add(tag_tape, [&](auto &a) { write_tape(a, tape); });
    if (parts.tape_output != nullptr && parts.tape_output->size() != 0)
        to.add(tag_output, [&](auto &a) { a.bytes(parts.tape_output->data(), parts.tape_output->size()); });
    if (parts.resampler != nullptr)
        to.add(tag_resampler, [&](auto &a) {
            for (const int16_t sample : parts.resampler->history) a.number(sample);
            a.number(parts.resampler->position);
        });
}

// ---- reading --------------------------------------------------------------------------------------------

struct section {
    const uint8_t *at = nullptr;
    size_t size = 0;
};

struct all_found {
    section roms, machine, processor, run, sound, tape, output, resampler;

    section *of(const uint8_t *tag) {
        const std::pair<const char *, section *> known[] = {
            {tag_roms, &roms},     {tag_machine, &machine},    {tag_processor, &processor},
            {tag_run, &run},       {tag_sound, &sound},        {tag_tape, &tape},
            {tag_output, &output}, {tag_resampler, &resampler}};
        for (const auto &[name, place] : known)
            if (std::memcmp(tag, name, tag_size) == 0) return place;
        return nullptr;
    }
};

snapshot_fault look_at_header(const uint8_t *bytes, size_t size) {
    if (size < header_size || std::memcmp(bytes, magic, sizeof magic) != 0)
        return snapshot_fault::no_snapshot;
    if (get_little_endian<uint32_t>(bytes + version_at) != version) return snapshot_fault::version;
    if (get_little_endian<uint64_t>(bytes + length_at) != size) return snapshot_fault::damaged;
    const auto sum = get_little_endian<uint64_t>(bytes + checksum_at);
    return checksum64(bytes + header_size, size - header_size) == sum ? snapshot_fault::none
                                                                      : snapshot_fault::damaged;
}

// Sections with another tag are passed over: a later one may bring more.
bool find_sections(const uint8_t *bytes, size_t size, all_found &found) {
    source s{bytes + header_size, size - header_size};
    for (auto left = get_little_endian<uint32_t>(bytes + sections_at); left > 0; --left) {
        const uint8_t *const tag = s.take_bytes(tag_size);
        const auto length = s.take<uint64_t>();
        if (!s.good || length > s.left) return false;
        const uint8_t *const body = s.take_bytes(static_cast<size_t>(length));
        if (section *const place = found.of(tag)) *place = {body, static_cast<size_t>(length)};
    }
    return s.left == 0;
}

// Whether a section holds just what `take` takes, and all of it within its ranges.
template <class Take> bool holds(const section &in, Take take) {
    if (in.at == nullptr) return false;
    checking c{{in.at, in.size}};
    take(c);
    return c.good && c.left == 0;
}

template <class Archive> void take_machine(Archive &a, key_matrix_block &keys = machine) {
    const uint8_t *const memory = a.take_bytes(memory_size);
    machine_fields(fields<Archive>{a}, keys);
    const auto mono = a.template take<uint8_t>();
    if constexpr (std::is_same_v<Archive, loading>) {
        load_memory(memory);
        machine.text_window_size =
            machine.text_end > machine.text_start ? machine.text_end - machine.text_start : 0;
        machine.select_attr_decoder(mono != 0);
        machine.select_renderer(machine.screen_mode);
        machine.select_scanline_colours(machine.interlace);
    }
}

template <class Archive> void take_resampler(Archive &a, resampler_block &r) {
    for (int16_t &sample : r.history) sample = a.template take<int16_t>();
    r.position = a.template take<uint64_t>();
    if (r.position >> 38 != 0) a.good = false;
}

bool calendar_makes_sense(const calendar_base &base) {
    return base.now_cycles - base.start_cycles <= longest_run;
}

// Where the date comes from is the host's matter, unless both take it from the run itself.
calendar_base calendar_after_load(const calendar_base &here, const calendar_base &loaded) {
    calendar_base base = loaded;
    if (here.source != calendar_of_host && loaded.source != calendar_of_host) return base;
    base.source = here.source;
    base.time = here.time;
    if (here.source != calendar_of_host)
        base.start_cycles = loaded.now_cycles - (here.now_cycles - here.start_cycles);
    return base;
}

// All that is to be loaded, looked at and made ready.
struct arrival {
    all_found found;
    run_block run;
    tape_head tape;
    std::unique_ptr<uint8_t[]> tape_bytes; // of a tape that is not in the deck
};

bool well_formed(arrival &a) {
    const all_found &f = a.found;
    const auto take_tape = [&](auto &c) {
        loading head{c};
        a.tape.list(fields<loading>{head});
        c = checking{head};
        if (a.tape.form > tape_with_bytes) c.good = false;
        if (a.tape.form == tape_with_bytes) c.take_bytes(a.tape.size);
    };
    resampler_block unused;
    if (!holds(f.machine, [](auto &c) { take_machine(c); }) ||
        !holds(f.processor, [](auto &c) { processor_fields(fields<checking>{c}); }) ||
        !holds(f.run, [&](auto &c) { run_fields(fields<checking>{c}, a.run); }) ||
        !holds(f.sound, [](auto &c) { take_sound(c, nullptr); }) || !holds(f.tape, take_tape) ||
        (f.resampler.at != nullptr && !holds(f.resampler, [&](auto &c) { take_resampler(c, unused); })))
        return false;
    loading run{{f.run.at, f.run.size}};
    run_fields(fields<loading>{run}, a.run);
    return calendar_makes_sense(a.run.calendar);
}

// The tape, and room for the output, before anything of the machine changes.
snapshot_fault make_ready(arrival &a, const snapshot_parts &parts) {
    if (a.tape.form == tape_by_checksum && !tape_in_deck(a.tape)) return snapshot_fault::other_tape;
    if (a.tape.form == tape_with_bytes && !tape_in_deck(a.tape)) {
        a.tape_bytes.reset(new (std::nothrow) uint8_t[size_t{a.tape.size} + 1]);
        if (a.tape_bytes == nullptr) return snapshot_fault::no_memory;
        std::memcpy(a.tape_bytes.get(), a.found.tape.at + (a.found.tape.size - a.tape.size), a.tape.size);
    }
    if (parts.tape_output != nullptr && !parts.tape_output->reserve(a.found.output.size))
        return snapshot_fault::no_memory;
    return snapshot_fault::none;
}

void load_tape(arrival &a) {
    // A deck that is empty stays untouched: the window reads it while a look ahead comes back.
    if (a.tape.form == tape_none && machine.tape_image != nullptr)
        cassette_eject(machine);
    else if (a.tape_bytes != nullptr && !cassette_insert(std::move(a.tape_bytes), a.tape.size))
        cassette_eject(machine);
    machine.tape_position = a.tape.position < a.tape.size ? a.tape.position : a.tape.size;
}

void load_all(arrival &a, const snapshot_parts &parts) {
    const all_found &f = a.found;
    loading in{{f.machine.at, f.machine.size}};
    key_matrix_block of_snapshot{};
    take_machine(in, parts.keeps_keys ? of_snapshot : machine);
    loading processor{{f.processor.at, f.processor.size}};
    processor_fields(fields<loading>{processor});
    a.run.calendar = calendar_after_load(run_state.calendar, a.run.calendar);
    run_state = a.run;
    source sound{f.sound.at, f.sound.size};
    take_sound(sound, &parts.sound);
    load_tape(a);
    if (parts.tape_output != nullptr) {
        parts.tape_output->clear();
        if (f.output.at != nullptr) parts.tape_output->assign(f.output.at, f.output.size);
    }
    if (parts.resampler != nullptr && f.resampler.at != nullptr) {
        source resampler{f.resampler.at, f.resampler.size};
        take_resampler(resampler, *parts.resampler);
    }
}

} // namespace

const char *snapshot_fault_text(snapshot_fault fault) {
    switch (fault) {
    case snapshot_fault::none: return "";
    case snapshot_fault::no_snapshot: return "not a snapshot";
    case snapshot_fault::version: return "a snapshot of another version";
    case snapshot_fault::damaged: return "a damaged snapshot (cut off, or bytes changed)";
    case snapshot_fault::other_roms: return "a snapshot made with other ROM images";
    case snapshot_fault::other_tape: return "a snapshot without its tape, and that tape is not in the deck";
    case snapshot_fault::no_memory: return "not enough memory for the tape of a snapshot";
    }
    return "";
}

void snapshot_roms_changed() { roms_known = false; }

size_t snapshot_size(const snapshot_parts &parts, tape_in_snapshot tape) {
    section_measurer measurer;
    all_sections(measurer, parts, tape);
    return measurer.size;
}

size_t snapshot_limit(tape_in_snapshot tape, size_t tape_output) {
    constexpr size_t fields_and_heads = 8192, full_banks = bank_capacity * (4 + 4 + 3 * 2);
    const size_t tape_bytes = tape == tape_in_snapshot::whole ? machine.tape_size : 0;
    return memory_size + fields_and_heads + full_banks + tape_output + tape_bytes;
}

void snapshot_write(const snapshot_parts &parts, tape_in_snapshot tape, uint8_t *bytes) {
    section_writer writer{bytes + header_size};
    all_sections(writer, parts, tape);
    const auto size = static_cast<size_t>(writer.at - bytes);
    std::memcpy(bytes, magic, sizeof magic);
    put_little_endian(bytes + version_at, version);
    put_little_endian(bytes + sections_at, writer.count);
    put_little_endian(bytes + length_at, uint64_t{size});
    snapshot_seal(bytes, size);
}

bool snapshot_seal(uint8_t *bytes, size_t size) {
    if (size < header_size) return false;
    put_little_endian(bytes + checksum_at, checksum64(bytes + header_size, size - header_size));
    return true;
}

void snapshot_append(uint8_t *bytes, size_t size, const char *tag, const uint8_t *body, size_t body_size) {
    section_writer writer{bytes + size};
    writer.add(tag, [&](auto &a) { a.bytes(body, body_size); });
    size += snapshot_section_head + body_size;
    put_little_endian(bytes + sections_at, get_little_endian<uint32_t>(bytes + sections_at) + 1);
    put_little_endian(bytes + length_at, uint64_t{size});
    snapshot_seal(bytes, size);
}

const uint8_t *snapshot_section(const uint8_t *bytes, size_t size, const char *tag, size_t &body_size) {
    if (size < header_size || std::memcmp(bytes, magic, sizeof magic) != 0) return nullptr;
    source s{bytes + header_size, size - header_size};
    while (s.left != 0) {
        const uint8_t *const its_tag = s.take_bytes(tag_size);
        const auto length = s.take<uint64_t>();
        if (!s.good || length > s.left) return nullptr;
        body_size = static_cast<size_t>(length);
        const uint8_t *const body = s.take_bytes(body_size);
        if (std::memcmp(its_tag, tag, tag_size) == 0) return body;
    }
    return nullptr;
}

uint64_t snapshot_tape(const uint8_t *bytes, size_t size) {
    size_t body_size = 0;
    const uint8_t *const body = snapshot_section(bytes, size, tag_tape, body_size);
    if (body == nullptr) return 0;
    loading in{{body, body_size}};
    tape_head head;
    head.list(fields<loading>{in});
    return in.good ? head.checksum : 0;
}

snapshot_fault snapshot_read(const snapshot_parts &parts, const uint8_t *bytes, size_t size) {
    if (const snapshot_fault fault = look_at_header(bytes, size); fault != snapshot_fault::none) return fault;
    arrival a{};
    if (!find_sections(bytes, size, a.found) || a.found.roms.size != 4 * sizeof(uint64_t))
        return snapshot_fault::damaged;
    source roms{a.found.roms.at, a.found.roms.size};
    for (int i = 0; i < 4; ++i)
        if (roms.take<uint64_t>() != checksums_of_roms()[i]) return snapshot_fault::other_roms;
    if (!well_formed(a)) return snapshot_fault::damaged;
    if (const snapshot_fault fault = make_ready(a, parts); fault != snapshot_fault::none) return fault;
    load_all(a, parts);
    return snapshot_fault::none;
}
