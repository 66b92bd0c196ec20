// kiv-run: the machine without a window, as fast as the host goes. No wall clock, no threads, and with a
// fixed date and seed no chance in its output.
#include "app/kiv_assay.h"
#include "app/settings_file.h"
#include "machine/host_clock.h"
#include "machine/kiv_machine.h"
#include "machine/machine_pass.h"
#include "machine/memory_dump.h"
#include "machine/tape_files.h"
#include "machine/rom_loader.h"
#include "platform/file.h"
#include "platform/resources.h"
#include "resources/resources.h"
#include "sound/sound_slices.h"
#include "tools/kiv_run_options.h"
#include "tools/kiv_run_outputs.h"
#include "tools/kiv_run_typing.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

namespace {

constexpr uint64_t default_frames = 300;
constexpr uint64_t frames_after_typing = 60;

volatile std::sig_atomic_t interrupted = 0;

// One for the process, as the machine is: the machine's slots are plain functions.
sound_slices &sound() {
    static sound_slices slices;
    return slices;
}

const sound_listener listener = {
    [] { sound().beepOn(); },
    [] { sound().beepOff(); },
    [](uint16_t frequency, uint32_t channel) { sound().setTone(frequency, channel); },
    [](uint32_t cycles) { sound().advanceClock(cycles); },
    [] { sound().muteTones(); },
    [] { sound().clearPCM(); },
};

void check_readable(const std::string &path) {
    const platform::file_handle file = platform::open_file(path, true);
    if (file == platform::invalid_file) throw run_failure(path + ": " + platform::last_file_error());
    platform::close_file(file);
}

class machine_run {
  public:
    explicit machine_run(const run_options &run) : options(run) {}
    ~machine_run() { cassette_set_output(""); }
    machine_run(const machine_run &) = delete;
    machine_run &operator=(const machine_run &) = delete;

    // Powers the machine on and puts everything in that the options name. Throws run_failure.
    void prepare();
    // Runs to the end of the asked time, or to a stop of the CPU: false.
    bool go();
    void write_outputs();
    void print_stats() const;
    std::string stop_line() const;

  private:
    void load_font();
    void at_keyboard();
    void frame_shown();
    void compose();
    void slice_ended();
    void flush_tape();
    bool ended() const { return options.seconds ? cycles >= cycle_limit : frames >= frame_limit; }
    void show_progress();
    double machine_seconds() const { return static_cast<double>(cycles) / machine.clock_hz; }

    const run_options &options;
    typist keys;
    wav_file wav;
    output_file tape_out;
    bool dump_loaded = false;
    bool charge_waits = true;
    uint64_t frame_limit = 0, cycle_limit = 0;
    uint64_t frames = 0, cycles = 0;
    uint64_t slice_cycles = 0; // T-states of the current sound slice
    alignas(64) uint8_t pixels[frame_width * frame_height] = {};
    std::chrono::steady_clock::time_point started, progress_shown;
    bool on_terminal = false;
    bool progress_line = false;
};

void machine_run::load_font() {
    register_program_resources();
    const platform::resource font = platform::find_resource(platform::resource_type::font, font_resource_id);
    if (font.data == nullptr || font.size < font_size)
        throw run_failure("the character font is missing from the program");
    std::memcpy(machine.font_rom, font.data, font_size);
    for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = font.data[i];
}

void machine_run::prepare() {
    keys = typist(options.type, options.type_at);
    frame_limit = options.frames.value_or(
        options.type.empty() ? default_frames : std::max(default_frames, keys.end() + frames_after_typing));

    // Power-on, in the program's own order.
    use_host_clock();
    if (options.seed) z80_fix_seed(*options.seed);
    if (options.date) calendar_fix_time(*options.date);
    host_callbacks_listen(listener);
    z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
    machine_init(
        machine, [] {}, [] {});
    machine_restart_clock_counter();
    if (const std::string error = load_rom_images(options.roms); !error.empty()) throw run_failure(error);

    setting_values settings = default_settings();
    if (!options.settings.empty()) {
        check_readable(options.settings);
        settings = read_settings_file(options.settings);
    }
    charge_waits = settings[setting_z80_no_wait] == 0;
    machine.dma_load = static_cast<uint32_t>(settings[setting_dma_load]);
    machine.interlace = static_cast<uint32_t>(settings[setting_interlace]);
    machine.boot_rom = static_cast<uint8_t>(settings[setting_boot_rom]);
    machine.crt_standard = settings[setting_hires_crt] == 0;
    machine.timing_reset();
    load_font();
    machine.select_scanline_colours(machine.interlace);
    machine.init_ram(machine);
    map_cursor_keys(settings[setting_tenkeyless] != 0);
    sound().reset_cpu_clk(machine.clock_hz);
    sound().setSoftVolume(settings[setting_soft_volume]);
    cycle_limit = static_cast<uint64_t>(options.seconds.value_or(0) * machine.clock_hz);

    if (!options.load_dump.empty()) check_readable(options.load_dump);
    if (!options.tape.empty()) {
        if (!cassette_load_tape(options.tape))
            throw run_failure(options.tape + ": " + platform::last_file_error());
        machine.cassette_set_stopped(1);
    }
    if (!options.tape_out.empty()) {
        // The deck in the window appends; here each run starts a new tape.
        tape_out.open(options.tape_out);
        cassette_set_output([this](const uint8_t *tape, size_t count) { return tape_out.take(tape, count); },
                            options.tape_out);
    }
    if (!options.wav.empty()) wav.open(options.wav);

    set_frame_geometry(frame_width, frame_height, frame_width);
    geometry.frame_pixels = pixels;
    on_terminal = isatty(STDERR_FILENO) != 0;
}

// What a person does between two frames: a dump is loaded, then keys are typed.
void machine_run::at_keyboard() {
    if (!dump_loaded && !options.load_dump.empty() && frames >= options.type_at) {
        if (!memory_dump_load(options.load_dump, main_cpu))
            throw run_failure(options.load_dump + ": not a memory dump (it is shorter than 32576 bytes)");
        machine.cassette_set_stopped(1);
        dump_loaded = true;
    }
    keys.at_frame(frames);
}

void machine_run::compose() { compose_frame(pixels_indexed8); }

void machine_run::frame_shown() {
    compose();
    ++frames;
    if (options.png_every != 0 && frames % options.png_every == 0)
        write_png(numbered_name(options.png, frames), pixels);
    at_keyboard();
    if (on_terminal && frames % 32 == 0) show_progress();
    if (interrupted) throw run_failure("interrupted after " + std::to_string(frames) + " frames");
}

void machine_run::slice_ended() {
    slice_cycles = 0;
    const int16_t *samples = sound().renderSlice();
    if (wav.is_open()) wav.add(samples, slice_samples);
    flush_tape();
}

void machine_run::flush_tape() {
    cassette_flush_output();
    if (const std::string &reason = cassette_output_failure(); !reason.empty())
        throw run_failure(options.tape_out + ": " + reason);
}

bool machine_run::go() {
    started = progress_shown = std::chrono::steady_clock::now();
    at_keyboard();
    bool stopped = false;
    for (uint32_t iteration = 0; !ended(); ++iteration) {
        const pass_outcome outcome = machine_pass(iteration, charge_waits);
        if (outcome == pass_outcome::stopped) {
            stopped = true;
            break;
        }
        cycles += main_cpu.step_cycles;
        slice_cycles += main_cpu.step_cycles;
        if (outcome == pass_outcome::frame) frame_shown();
        if (slice_cycles >= machine.cycles_per_slice) slice_ended();
    }
    if (stopped || frames == 0) compose();
    if (!stopped && !options.load_dump.empty() && !dump_loaded)
        throw run_failure(options.load_dump + ": not loaded, as the run ended before frame " +
                          std::to_string(options.type_at));
    if (progress_line) std::fprintf(stderr, "\r\033[K");
    return !stopped;
}

void machine_run::write_outputs() {
    flush_tape();
    if (!options.png.empty()) write_png(options.png, pixels);
    if (!options.save_dump.empty() && !memory_dump_save(options.save_dump, main_cpu))
        throw run_failure(options.save_dump + ": " + platform::last_file_error());
    if (wav.is_open()) wav.finish();
    if (tape_out.is_open()) tape_out.finish();
    if (options.text) {
        const std::string screen = text_screen();
        if (screen.empty()) std::fputs("kiv-run: the text screen is off\n", stderr);
        if (std::fputs(screen.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
            throw run_failure(std::string("standard output: ") + std::strerror(errno));
    }
}

void machine_run::show_progress() {
    using namespace std::chrono;
    const auto now = steady_clock::now();
    if (now - progress_shown < milliseconds(500)) return;
    progress_shown = now;
    progress_line = true;
    const double host = duration<double>(now - started).count();
    const double part = options.seconds ? static_cast<double>(cycles) / static_cast<double>(cycle_limit)
                                        : static_cast<double>(frames) / static_cast<double>(frame_limit);
    std::fprintf(stderr, "\r%3.0f %%  %llu frames, %.1f s of the machine's time, %.0f times as fast\033[K",
                 part * 100, static_cast<unsigned long long>(frames), machine_seconds(),
                 machine_seconds() / host);
}

void machine_run::print_stats() const {
    const double host = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::fprintf(stderr,
                 "%llu T-states, %llu frames, %.3f s of the machine's time in %.3f s: %.1f times as fast\n",
                 static_cast<unsigned long long>(cycles), static_cast<unsigned long long>(frames),
                 machine_seconds(), host, machine_seconds() / std::max(host, 1e-6));
}

std::string machine_run::stop_line() const {
    char text[160];
    const char *reason = "an interrupt arrived in no interrupt mode";
    if (main_cpu.stop_reason == stop_halt)
        reason = "HALT";
    else if (main_cpu.stop_reason == stop_undefined)
        reason = "undefined instruction";
    else if (main_cpu.stop_reason == stop_unimplemented)
        reason = "instruction that is not emulated";
    const uint16_t pc = main_cpu.trace_pc;
    uint32_t waits = 0;
    uint8_t bytes[4];
    for (uint16_t i = 0; i < 4; ++i) bytes[i] = mem_read(static_cast<uint16_t>(pc + i), &waits);
    std::snprintf(text, sizeof text,
                  "the processor stopped at $%04X: %s (%02X %02X %02X %02X), after %llu T-states", pc, reason,
                  bytes[0], bytes[1], bytes[2], bytes[3], static_cast<unsigned long long>(cycles));
    return text;
}

void complain(const std::string &text) { std::fprintf(stderr, "kiv-run: %s\n", text.c_str()); }

} // namespace

int main(int argc, char **argv) {
    hear_log();
    try {
        const run_options options = parse_run_options(argc, argv);
        if (options.help) {
            std::fputs(run_help, stdout);
            return 0;
        }
        platform::let_writes_fail();
        std::signal(SIGINT, [](int) { interrupted = 1; });
        std::signal(SIGTERM, [](int) { interrupted = 1; });
        const auto run =
            std::make_unique<machine_run>(options); // the frame's pixels are too many for a stack
        run->prepare();
        const bool reached_end = run->go();
        if (options.stats) run->print_stats();
        run->write_outputs();
        if (reached_end) return 0;
        complain(run->stop_line());
    } catch (const run_failure &failure) {
        complain(failure.what());
    }
    return 1;
}
