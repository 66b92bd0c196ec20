// The flat interface over the machine, its display and its sound.
#include "api/kiv.h"

#include "api/lent_machine.h"
#include "api/resampler.h"
#include "api/snapshot.h"
#include "api/typing.h"
#include "display/text_screen.h"
#include "machine/kiv_machine.h"
#include "machine/machine_boot.h"
#include "machine/machine_run.h"
#include "machine/memory_dump.h"
#include "machine/run_block.h"
#include "resources/embedded.h"
#include "sound/sound_slices.h"
#include "support/log.h"
#include <algorithm>
#include <cstdio>
#include <cstring>

static_assert(KIV_WIDTH == frame_width && KIV_HEIGHT == frame_height && KIV_SAMPLE_RATE == sample_rate);
static_assert(KIV_REG_SP == static_cast<int>(reg_sp) && KIV_DUMP_SIZE == dump_size);
static_assert(KIV_STOP_UNIMPLEMENTED == static_cast<int>(stop_unimplemented));

namespace {

constexpr uint32_t longest_run = 798720; // T-states of one call: ten slices
constexpr uint32_t most_samples = (longest_run / 79872 + 2) * slice_samples;
constexpr double lowest_rate = 8000, highest_rate = 192000;
constexpr uint32_t most_resampled = most_samples * 2 + 64;
// What a program can write to its cassette in one run: an OUT takes 12 T-states.
constexpr size_t most_tape_output = longest_run / 12 + 1;

// ---- what the library keeps beside the machine
// ---------------------------------------------------------------

struct rom_slot {
    uint8_t image[largest_rom_image];
    uint32_t size;
};

struct setting {
    const char *key;
    int32_t value;
    void (*apply)(int32_t value);
    int32_t (*live)(); // of a machine that runs; null: the value kept here
};

bool booted = false;
char error_text[256] = "";
rom_slot rom_slots[3];
uint8_t own_font[font_size];
bool font_is_own = false;
sound_slices own_sound;
machine_owner *owner = nullptr; // of a machine that is lent
typist keys;
byte_store tape_output;
bool tape_recorded = false;
resampler rate_converter;
int16_t samples[most_samples], resampled[most_resampled];
uint32_t sample_count = 0, resampled_count = 0;
alignas(64) uint32_t pixels[frame_width * frame_height];
void (*ask_calendar)(void *context, kiv_date *date) = nullptr;
void *calendar_context = nullptr;
void (*hear_log_line)(void *context, int32_t kind, const char *text) = nullptr;
void *log_context = nullptr;

const sound_listener listener = {
    [] { own_sound.beepOn(); },
    [] { own_sound.beepOff(); },
    [](uint16_t frequency, uint32_t channel) { own_sound.setTone(frequency, channel); },
    [](uint32_t cycles) { own_sound.advanceClock(cycles); },
    [] { own_sound.muteTones(); },
    [] { own_sound.clearPCM(); },
};

sound_slices &sound() { return owner != nullptr ? owner->sound() : own_sound; }

template <class... Values> kiv_result failed(kiv_result code, const char *format, Values... values) {
    std::snprintf(error_text, sizeof error_text, format, values...);
    return code;
}

kiv_result not_booted() {
    return failed(KIV_ERROR_NOT_BOOTED, "the machine is off: %s", "kiv_boot comes first");
}

snapshot_parts parts() {
    if (owner != nullptr) return {sound().record()};
    return {own_sound.record(), &tape_output, &rate_converter.state};
}

// ---- settings
// --------------------------------------------------------------------------------------------------

void use_monitor(int32_t high_resolution) {
    const uint32_t standard = high_resolution == 0;
    if (machine.crt_standard == standard) return;
    machine.crt_standard = standard;
    machine.timing_reset();
}

void use_interlace(int32_t on) {
    machine.interlace = on != 0;
    machine.select_scanline_colours(machine.interlace);
}

void use_tenkeyless(int32_t on) {
    machine.reset_keyboard(machine);
    map_cursor_keys(on != 0);
}

setting settings[] = {
    {"z80_no_wait", 0, [](int32_t v) { run_state.charge_waits = static_cast<uint8_t>(v == 0); },
     []() -> int32_t { return run_state.charge_waits == 0; }},
    {"soft_volume", 1, [](int32_t v) { sound().setSoftVolume(v); }, [] { return sound().getSoftVolume(); }},
    {"dma_load", 100, [](int32_t v) { machine.dma_load = static_cast<uint32_t>(v); },
     [] { return static_cast<int32_t>(machine.dma_load); }},
    {"tenkeyless", 1, use_tenkeyless, nullptr},
    {"interlace", 0, use_interlace, [] { return static_cast<int32_t>(machine.interlace); }},
    {"boot_rom", 1, [](int32_t v) { machine.boot_rom = static_cast<uint8_t>(v != 0); },
     []() -> int32_t { return machine.boot_rom; }},
    {"hires_crt", 1, use_monitor, []() -> int32_t { return machine.crt_standard == 0; }},
    {"halt_waits", 0, [](int32_t v) { z80_lenient.halt_waits = v != 0; },
     []() -> int32_t { return z80_lenient.halt_waits; }},
    {"steps_over", 0, [](int32_t v) { z80_lenient.undefined_runs = v != 0; },
     []() -> int32_t { return z80_lenient.undefined_runs; }},
};

setting *setting_of(const char *key) {
    for (setting &s : settings)
        if (key != nullptr && std::strcmp(s.key, key) == 0) return &s;
    failed(KIV_ERROR_ARGUMENT, "no such setting: %s", key != nullptr ? key : "(null)");
    return nullptr;
}

// ---- running
// -----------------------------------------------------------------------------------------------------

// What composing the last frame would have left, where nobody has looked.
void pass_due_frame_over() {
    if (run_state.frame_due != 0) pass_frame_over();
    run_state.frame_due = 0;
}

void close_slice() {
    if (owner != nullptr && owner->takes_slice()) return;
    run_state.slice_cycles = 0;
    const int16_t *const slice = sound().renderSlice();
    if (owner != nullptr) return;
    if (sample_count + slice_samples > most_samples) return; // a run is too short for that
    std::memcpy(samples + sample_count, slice, slice_bytes);
    sample_count += slice_samples;
    if (rate_converter.rate() != 0)
        resampled_count += rate_converter.run(slice, slice_samples, resampled + resampled_count);
}

void begin_run() {
    pass_due_frame_over();
    sample_count = resampled_count = 0;
}

bool has_stopped() { return (main_cpu.stop_flags & stop_code_mask) != 0; }

int32_t run_until(uint64_t end) {
    while (run_state.cycles < end) {
        const uint64_t of_slice = machine.cycles_per_slice - run_state.slice_cycles;
        const auto cycles = static_cast<uint32_t>(std::min(of_slice, end - run_state.cycles));
        const run_result ran = run_passes(cycles, run_state.charge_waits != 0);
        run_state.slice_cycles += ran.cycles;
        if (ran.outcome == pass_outcome::stopped) return KIV_RUN_STOPPED;
        if (run_state.slice_cycles >= machine.cycles_per_slice) close_slice();
        if (ran.outcome == pass_outcome::frame) return KIV_RUN_FRAME;
    }
    return KIV_RUN_LIMIT;
}

void frame_ended() {
    ++run_state.frames;
    run_state.calendar.now_cycles = run_state.cycles;
    run_state.frame_due = owner == nullptr;
    keys.at_frame(run_state.frames);
}

// A picture leaves the carried attributes for the next one; looking must not.
template <class Draw> void look(Draw draw) {
    const uint8_t colour = machine.carried_colour, attribute = machine.carried_attribute;
    draw();
    machine.carried_colour = colour;
    machine.carried_attribute = attribute;
}

kiv_result draw_into(void *target, size_t pitch, uint32_t format, uint32_t pixel_bytes) {
    if (!booted) return not_booted();
    if (target == nullptr || pitch % pixel_bytes != 0 || pitch < frame_width * pixel_bytes ||
        pitch > (1u << 20) * pixel_bytes)
        return failed(KIV_ERROR_ARGUMENT, "a pitch of %zu bytes does not hold 640 pixels a line", pitch);
    set_frame_geometry(frame_width, frame_height, static_cast<uint32_t>(pitch / pixel_bytes));
    geometry.frame_pixels = target;
    look([format] { compose_frame(format); });
    return KIV_OK;
}

// ---- memory
// --------------------------------------------------------------------------------------------------------

struct area {
    uint8_t *bytes;
    uint32_t size;
    bool is_rom;
};

area area_of(int32_t index) {
    switch (index) {
    case KIV_AREA_RAM: return {machine.ram, ram_size, false};
    case KIV_AREA_MAIN_ROM: return {machine.main_rom, rom_size, true};
    case KIV_AREA_NBASIC_ROM: return {machine.nbasic_rom, rom_size, true};
    case KIV_AREA_EXT_ROM: return {machine.ext_rom, ext_rom_size, true};
    case KIV_AREA_BLUE:
    case KIV_AREA_RED:
    case KIV_AREA_GREEN: return {machine.gvram[index - KIV_AREA_BLUE], plane_size, false};
    case KIV_AREA_FONT: return {machine.font_rom, font_size, true};
    case KIV_AREA_PCG: return {reinterpret_cast<uint8_t *>(machine.font_work), font_work_size, false};
    default: return {nullptr, 0, false};
    }
}

uint8_t peek(int32_t index, uint32_t address) {
    if (index != KIV_AREA_CPU) return area_of(index).bytes[address];
    uint32_t waits = 0;
    return mem_read(static_cast<uint16_t>(address), &waits);
}

void poke(int32_t index, uint32_t address, uint8_t value) {
    if (index == KIV_AREA_CPU) {
        uint32_t waits = 0;
        mem_write(static_cast<uint16_t>(address), value, &waits);
        return;
    }
    const area a = area_of(index);
    a.bytes[address] = value;
    if (a.is_rom) snapshot_roms_changed();
}

kiv_result check_range(int32_t index, uint32_t address, const void *buffer, size_t size) {
    if (!booted) return not_booted();
    if (buffer == nullptr && size != 0) return failed(KIV_ERROR_ARGUMENT, "%s", "no buffer");
    const uint32_t whole = kiv_area_size(index);
    if (whole == 0) return failed(KIV_ERROR_ARGUMENT, "no such memory area: %d", index);
    if (address > whole || size > whole - address)
        return failed(KIV_ERROR_ARGUMENT, "%zu bytes from 0x%X on leave the area of 0x%X", size, address,
                      whole);
    return KIV_OK;
}

// ---- boot
// ------------------------------------------------------------------------------------------------------------

calendar_time calendar_time_of(const kiv_date &d) {
    return {d.year, d.month, d.day, d.hour, d.minute, d.second};
}

bool is_date(const kiv_date *d) {
    return d != nullptr && d->year >= 0 && d->year <= 9999 && d->month >= 1 && d->month <= 12 &&
           d->day >= 1 && d->day <= 31 && d->hour >= 0 && d->hour <= 23 && d->minute >= 0 &&
           d->minute <= 59 && d->second >= 0 && d->second <= 59;
}

calendar_time host_date() {
    kiv_date date = {1981, 12, 1, 0, 0, 0};
    if (ask_calendar != nullptr) ask_calendar(calendar_context, &date);
    if (!is_date(&date)) date = {1981, 12, 1, 0, 0, 0};
    return calendar_time_of(date);
}

void record_byte(uint8_t byte) {
    if (tape_recorded && !tape_output.put(byte)) trace("tape output: no memory for it");
}

void forget_run() {
    sample_count = resampled_count = 0;
    keys.forget();
    keys.at_frame(run_state.frames);
}

} // namespace

// ---- the interface
// -------------------------------------------------------------------------------------------------------

void kiv_lend(machine_owner *from) {
    keys.cancel();
    owner = from;
    booted = from != nullptr;
    sample_count = resampled_count = 0;
}

uint32_t kiv_api_version(void) { return KIV_API_VERSION; }
const char *kiv_version(void) { return KIV_VERSION; }
const char *kiv_error_text(void) { return error_text; }

kiv_result kiv_rom(int32_t socket, const void *data, size_t size) {
    if (socket < KIV_ROM_MAIN || socket > KIV_ROM_FONT || (data == nullptr && size != 0))
        return failed(KIV_ERROR_ARGUMENT, "no such ROM socket: %d", socket);
    if (socket == KIV_ROM_FONT) {
        if (size != 0 && size != font_size)
            return failed(KIV_ERROR_SIZE, "a font of %zu bytes instead of %u", size, font_size);
        font_is_own = size != 0;
        if (font_is_own) std::memcpy(own_font, data, size);
        return KIV_OK;
    }
    if (size > largest_rom_image)
        return failed(KIV_ERROR_SIZE, "a ROM image of %zu bytes, more than the %u of a ROM", size,
                      largest_rom_image);
    rom_slot &slot = rom_slots[socket];
    if (size != 0) std::memcpy(slot.image, data, size);
    slot.size = static_cast<uint32_t>(size);
    return KIV_OK;
}

void kiv_seed(uint32_t seed) { z80_fix_seed(seed); }

kiv_result kiv_calendar_fix(const kiv_date *date) {
    if (!is_date(date)) return failed(KIV_ERROR_ARGUMENT, "%s", "no such date");
    calendar_fix_time(calendar_time_of(*date));
    return KIV_OK;
}

kiv_result kiv_calendar_start(const kiv_date *date) {
    if (!is_date(date)) return failed(KIV_ERROR_ARGUMENT, "%s", "no such date");
    calendar_start_at(calendar_time_of(*date));
    return KIV_OK;
}

kiv_result kiv_calendar_host(void (*now)(void *context, kiv_date *date), void *context) {
    if (now == nullptr) return failed(KIV_ERROR_ARGUMENT, "%s", "no function that tells the date");
    ask_calendar = now;
    calendar_context = context;
    calendar_ask(host_date);
    calendar_use_host_time();
    return KIV_OK;
}

void kiv_log(void (*log)(void *context, int32_t kind, const char *text), void *context) {
    hear_log_line = log;
    log_context = context;
    set_log_sink(log == nullptr ? nullptr : +[](log_kind kind, const char *text) {
        hear_log_line(log_context, kind == log_kind::line ? KIV_LOG_TRACE : KIV_LOG_DEVICE, text);
    });
}

kiv_result kiv_set_setting(const char *key, int32_t value) {
    setting *const s = setting_of(key);
    if (s == nullptr) return KIV_ERROR_ARGUMENT;
    s->value = value;
    if (booted) s->apply(value);
    return KIV_OK;
}

kiv_result kiv_get_setting(const char *key, int32_t *value) {
    const setting *const s = setting_of(key);
    if (s == nullptr) return KIV_ERROR_ARGUMENT;
    if (value == nullptr) return failed(KIV_ERROR_ARGUMENT, "no place for the value of %s", key);
    *value = booted && s->live != nullptr ? s->live() : s->value;
    return KIV_OK;
}

const char *kiv_setting_key(uint32_t index) {
    return index < std::size(settings) ? settings[index].key : nullptr;
}

kiv_result kiv_boot(void) {
    if (rom_slots[KIV_ROM_MAIN].size == 0 && rom_slots[KIV_ROM_NBASIC].size == 0)
        return failed(KIV_ERROR_ARGUMENT, "%s", "no ROM image: kiv_rom comes first");
    run_state_init();
    run_state.calendar.start_cycles = run_state.calendar.now_cycles = 0;
    owner = nullptr;
    own_sound.power_on();
    machine_power_on(
        listener, [] {}, [] {});
    machine_put_rom(rom_socket::nbasic, rom_slots[KIV_ROM_NBASIC].image, rom_slots[KIV_ROM_NBASIC].size);
    machine_put_rom(rom_socket::main, rom_slots[KIV_ROM_MAIN].image, rom_slots[KIV_ROM_MAIN].size);
    machine_put_rom(rom_socket::ext, rom_slots[KIV_ROM_EXT].image, rom_slots[KIV_ROM_EXT].size);
    machine_put_font(font_is_own ? own_font : embedded::font);
    snapshot_roms_changed();
    for (const setting &s : settings) s.apply(s.value);
    machine_get_ready();
    own_sound.reset_cpu_clk(machine.clock_hz);
    cassette_record_with({record_byte, [] {}});
    tape_recorded = false;
    tape_output.clear();
    rate_converter.state = {};
    run_state.frame_due = 1;
    booted = true;
    forget_run();
    return KIV_OK;
}

kiv_result kiv_reset(void) {
    if (!booted) return not_booted();
    pass_due_frame_over();
    sound().clearPCM();
    machine.machine_reset(machine);
    machine.pcg_glyphs_on = uint8_t{0};
    machine.tape_position = 0;
    main_cpu.z80_reset(main_cpu);
    return KIV_OK;
}

int32_t kiv_run(uint32_t t_states) {
    if (!booted) return not_booted();
    begin_run();
    const uint64_t end = run_state.cycles + std::clamp<uint32_t>(t_states, 1, longest_run);
    const int32_t ended_by = has_stopped() ? KIV_RUN_STOPPED : run_until(end);
    if (ended_by == KIV_RUN_FRAME) frame_ended();
    if (ended_by == KIV_RUN_STOPPED) run_state.frame_due = owner == nullptr;
    return ended_by;
}

int32_t kiv_run_frame(void) { return kiv_run(longest_run); }

int32_t kiv_stop_reason(void) {
    if (!booted || !has_stopped()) return KIV_STOP_NONE;
    return main_cpu.stop_reason != stop_none ? main_cpu.stop_reason : int32_t{KIV_STOP_INTERRUPT_MODE};
}

uint32_t kiv_stop_address(void) { return main_cpu.trace_pc; }
uint64_t kiv_t_states(void) { return run_state.cycles; }
uint64_t kiv_frames(void) { return run_state.frames; }
uint32_t kiv_clock_hz(void) { return default_clock_hz; }
uint32_t kiv_frame_t_states(void) {
    return machine.line_clocks * machine.display_lines + machine.vblank_clocks;
}

const uint32_t *kiv_pixels(void) {
    return kiv_draw(pixels, KIV_WIDTH * sizeof(uint32_t)) == KIV_OK ? pixels : nullptr;
}

kiv_result kiv_draw(uint32_t *target, size_t pitch) { return draw_into(target, pitch, pixels_rgb32, 4); }
kiv_result kiv_draw_indexed(uint8_t *target, size_t pitch) {
    return draw_into(target, pitch, pixels_indexed8, 1);
}
const uint32_t *kiv_palette(void) { return host_palette.data(); }

size_t kiv_text_screen(char *buffer, size_t size) {
    if (!booted) return 0;
    size_t length = 0;
    look([&] {
        if (run_state.frame_due != 0) pass_frame_over();
        length = text_screen_utf8(buffer, buffer != nullptr ? size : 0);
    });
    return length;
}

int32_t kiv_text_cursor(void) {
    return machine.cursor_enabled != 0 ? machine.cursor_y * 256 + machine.cursor_x : -1;
}

uint32_t kiv_sample_count(void) { return sample_count; }
const int16_t *kiv_samples(void) { return samples; }

kiv_result kiv_set_sample_rate(double samples_per_second) {
    const bool none = samples_per_second == 0;
    if (!none && !(samples_per_second >= lowest_rate && samples_per_second <= highest_rate))
        return failed(KIV_ERROR_ARGUMENT, "%g samples a second are not 8000 to 192000", samples_per_second);
    rate_converter.set_rate(samples_per_second);
    return KIV_OK;
}

uint32_t kiv_resampled_count(void) { return resampled_count; }
const int16_t *kiv_resampled(void) { return resampled; }

void kiv_key(uint32_t virtual_key, int32_t down) {
    if (!booted) return;
    if (down != 0)
        key_press(virtual_key);
    else
        key_release(virtual_key);
}

kiv_result kiv_matrix_key(uint32_t row, uint32_t bit, int32_t down) {
    if (!booted) return not_booted();
    if (row >= key_rows || bit >= 8) return failed(KIV_ERROR_ARGUMENT, "no key at row %u, bit %u", row, bit);
    const auto mask = static_cast<uint8_t>(1u << bit);
    if (down != 0)
        machine.key_matrix[row] &= static_cast<uint8_t>(~mask);
    else
        machine.key_matrix[row] |= mask;
    return KIV_OK;
}

uint32_t kiv_matrix_row(uint32_t row) {
    return booted && row < key_rows ? machine.key_matrix[row].load() : uint8_t{0xFF};
}

void kiv_release_keys(void) {
    if (booted) machine.reset_keyboard(machine);
}

kiv_result kiv_type(const char *text) {
    if (!booted) return not_booted();
    if (text == nullptr) return failed(KIV_ERROR_ARGUMENT, "%s", "no text to type");
    key_stroke stroke;
    for (const char *at = text;;) {
        const uint32_t character = next_character(at);
        if (character == 0) break;
        if (!stroke_of(character, stroke))
            return failed(KIV_ERROR_CHARACTER, "no key types the character U+%04X", character);
    }
    for (const char *at = text;;) {
        const uint32_t character = next_character(at);
        if (character == 0) break;
        stroke_of(character, stroke);
        if (!keys.add(stroke)) return failed(KIV_ERROR_MEMORY, "%s", "no memory for the text to type");
    }
    keys.at_frame(run_state.frames);
    return KIV_OK;
}

kiv_result kiv_type_key(uint32_t virtual_key, int32_t with_shift) {
    if (!booted) return not_booted();
    if (virtual_key > 0xFF) return failed(KIV_ERROR_ARGUMENT, "no virtual key %u", virtual_key);
    if (!keys.add({static_cast<uint8_t>(virtual_key), with_shift != 0}))
        return failed(KIV_ERROR_MEMORY, "%s", "no memory for the key to type");
    keys.at_frame(run_state.frames);
    return KIV_OK;
}

kiv_result kiv_type_pause(uint32_t frames) {
    if (!booted) return not_booted();
    if (!keys.add_pause(frames)) return failed(KIV_ERROR_MEMORY, "%s", "no memory for the pause");
    keys.at_frame(run_state.frames);
    return KIV_OK;
}

uint32_t kiv_type_waiting(void) { return keys.waiting(); }
void kiv_type_cancel(void) { keys.cancel(); }

size_t kiv_typing_size() { return keys.saved_size(); }
void kiv_typing_save(uint8_t *bytes) { keys.save(bytes); }
bool kiv_typing_load(const uint8_t *bytes, size_t size) { return keys.load(bytes, size); }

uint32_t kiv_area_size(int32_t index) { return index == KIV_AREA_CPU ? 0x10000 : area_of(index).size; }

int32_t kiv_peek(int32_t index, uint32_t address) {
    return booted && address < kiv_area_size(index) ? peek(index, address) : -1;
}

kiv_result kiv_poke(int32_t index, uint32_t address, uint8_t value) {
    return kiv_write(index, address, &value, 1);
}

kiv_result kiv_read(int32_t index, uint32_t address, void *buffer, size_t size) {
    if (const kiv_result result = check_range(index, address, buffer, size); result != KIV_OK) return result;
    for (size_t i = 0; i < size; ++i)
        static_cast<uint8_t *>(buffer)[i] = peek(index, static_cast<uint32_t>(address + i));
    return KIV_OK;
}

kiv_result kiv_write(int32_t index, uint32_t address, const void *data, size_t size) {
    if (const kiv_result result = check_range(index, address, data, size); result != KIV_OK) return result;
    for (size_t i = 0; i < size; ++i)
        poke(index, static_cast<uint32_t>(address + i), static_cast<const uint8_t *>(data)[i]);
    return KIV_OK;
}

// A read changes the USART, the tape's position, the status image and one latch.
uint8_t kiv_port_peek(uint16_t port) {
    if (!booted) return 0xFF;
    const usart_block usart = machine;
    const cassette_block cassette = machine;
    const system_port_block latches = machine;
    const uint8_t value = io_in(port);
    static_cast<usart_block &>(machine) = usart;
    static_cast<cassette_block &>(machine) = cassette;
    static_cast<system_port_block &>(machine) = latches;
    return value;
}

uint8_t kiv_port_in(uint16_t port) { return booted ? io_in(port) : uint8_t{0xFF}; }

void kiv_port_out(uint16_t port, uint8_t value) {
    if (booted) io_out(port, value);
}

uint32_t kiv_get_register(int32_t index) {
    const z80_cpu &cpu = main_cpu;
    switch (index) {
    case KIV_REG_I: return cpu.I;
    case KIV_REG_R: return cpu.r_counter;
    case KIV_REG_IM: return cpu.IM;
    case KIV_REG_IFF1: return cpu.IFF1;
    case KIV_REG_IFF2: return cpu.IFF2;
    default: return z80_register(cpu, index);
    }
}

kiv_result kiv_set_register(int32_t index, uint32_t value) {
    if (!booted) return not_booted();
    z80_cpu &cpu = main_cpu;
    const auto byte = static_cast<uint8_t>(value), bit = static_cast<uint8_t>(value & 1);
    uint16_t *const words[] = {&cpu.BC,     &cpu.DE,     &cpu.HL, &cpu.AF, &cpu.BC_alt, &cpu.DE_alt,
                               &cpu.HL_alt, &cpu.AF_alt, &cpu.IX, &cpu.IY, &cpu.PC,     &cpu.SP};
    switch (index) {
    case KIV_REG_I: cpu.I = byte; return KIV_OK;
    case KIV_REG_R: cpu.r_counter = byte; return KIV_OK;
    case KIV_REG_IM: cpu.IM = static_cast<uint8_t>(value % 3); return KIV_OK;
    case KIV_REG_IFF1: cpu.IFF1 = bit; return KIV_OK;
    case KIV_REG_IFF2: cpu.IFF2 = bit; return KIV_OK;
    default: break;
    }
    if (index < 0 || index > KIV_REG_SP) return failed(KIV_ERROR_ARGUMENT, "no register %d", index);
    *words[index] = static_cast<uint16_t>(value);
    return KIV_OK;
}

kiv_result kiv_tape_insert(const void *data, size_t size) {
    if (!booted) return not_booted();
    if (data == nullptr && size != 0) return failed(KIV_ERROR_ARGUMENT, "%s", "no tape");
    if (size >= UINT32_MAX) return failed(KIV_ERROR_SIZE, "a tape of %zu bytes, 4 GiB or more", size);
    // One byte more than the tape, so that an empty tape is a tape all the same.
    std::unique_ptr<uint8_t[]> tape(new (std::nothrow) uint8_t[size + 1]);
    if (tape == nullptr) return failed(KIV_ERROR_MEMORY, "no memory for a tape of %zu bytes", size);
    if (size != 0) std::memcpy(tape.get(), data, size);
    if (!cassette_insert(std::move(tape), static_cast<uint32_t>(size)))
        return failed(KIV_ERROR_MEMORY, "no memory to index a tape of %zu bytes", size);
    machine.cassette_set_stopped(1);
    return KIV_OK;
}

void kiv_tape_eject(void) { cassette_eject(machine); }
int32_t kiv_tape_inserted(void) { return machine.tape_image != nullptr; }
const uint8_t *kiv_tape_data(void) { return machine.tape_image; }
size_t kiv_tape_size(void) { return machine.tape_size; }
size_t kiv_tape_position(void) { return machine.tape_position; }

kiv_result kiv_tape_seek(size_t position) {
    if (!booted) return not_booted();
    if (position > machine.tape_size)
        return failed(KIV_ERROR_ARGUMENT, "position %zu of a tape of %u bytes", position, machine.tape_size);
    machine.tape_position = static_cast<uint32_t>(position);
    return KIV_OK;
}

int32_t kiv_tape_motor(void) { return booted && (machine.cassette_flags & cassette_motor_off) == 0; }

void kiv_tape_record(int32_t on) { tape_recorded = on != 0; }
const uint8_t *kiv_tape_output(void) { return tape_output.data(); }
size_t kiv_tape_output_size(void) { return tape_output.size(); }
void kiv_tape_output_clear(void) { tape_output.clear(); }

size_t kiv_dump_save(void *buffer, size_t size) {
    if (!booted || buffer == nullptr || size < dump_size) return 0;
    memory_dump_make(static_cast<uint8_t *>(buffer), main_cpu);
    return dump_size;
}

kiv_result kiv_dump_load(const void *data, size_t size) {
    if (!booted) return not_booted();
    if (data == nullptr || !memory_dump_apply(static_cast<const uint8_t *>(data), size, main_cpu))
        return failed(KIV_ERROR_SIZE, "not a memory dump (%zu bytes, fewer than %u)", size, dump_minimum);
    machine.cassette_set_stopped(1);
    return KIV_OK;
}

namespace {

tape_in_snapshot tape_wanted(int32_t what) {
    return what == KIV_SNAPSHOT_WITHOUT_TAPE ? tape_in_snapshot::checksum_only : tape_in_snapshot::whole;
}

kiv_result code_of(snapshot_fault fault) {
    switch (fault) {
    case snapshot_fault::none: return KIV_OK;
    case snapshot_fault::no_snapshot: return KIV_ERROR_NO_SNAPSHOT;
    case snapshot_fault::version: return KIV_ERROR_VERSION;
    case snapshot_fault::damaged: return KIV_ERROR_DAMAGED;
    case snapshot_fault::other_roms: return KIV_ERROR_OTHER_ROMS;
    case snapshot_fault::other_tape: return KIV_ERROR_OTHER_TAPE;
    case snapshot_fault::no_memory: return KIV_ERROR_MEMORY;
    }
    return KIV_ERROR_DAMAGED;
}

} // namespace

size_t kiv_snapshot_size(int32_t what) { return booted ? snapshot_size(parts(), tape_wanted(what)) : 0; }

size_t kiv_snapshot_limit(int32_t what) {
    return booted ? snapshot_limit(tape_wanted(what), most_tape_output) : 0;
}

size_t kiv_snapshot_save(int32_t what, void *buffer, size_t size) {
    const size_t wanted = kiv_snapshot_size(what);
    if (wanted == 0 || buffer == nullptr || size < wanted) return 0;
    snapshot_write(parts(), tape_wanted(what), static_cast<uint8_t *>(buffer));
    return wanted;
}

kiv_result kiv_snapshot_load(const void *data, size_t size) {
    if (!booted) return not_booted();
    const snapshot_fault fault =
        snapshot_read(parts(), static_cast<const uint8_t *>(data), data != nullptr ? size : 0);
    if (fault != snapshot_fault::none) return failed(code_of(fault), "%s", snapshot_fault_text(fault));
    forget_run();
    return KIV_OK;
}
