// kiv-run: the machine without a window, as fast as the host goes, through the flat interface. No wall clock,
// no threads, and with a fixed date and seed no chance in its output.
#include "api/kiv.h"
#include "api/kiv_rom_files.h"
#include "app/kiv_assay.h"
#include "app/settings_file.h"
#include "platform/clock.h"
#include "platform/file.h"
#include "tools/kiv_run_basic.h"
#include "tools/kiv_run_bench.h"
#include "tools/kiv_run_gdb.h"
#include "tools/kiv_run_json.h"
#include "tools/kiv_run_listing.h"
#include "tools/kiv_run_options.h"
#include "tools/kiv_run_outputs.h"
#include "tools/kiv_run_typing.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <memory>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr uint64_t default_frames = 300;
constexpr uint64_t frames_after_typing = 60;
constexpr uint64_t frames_between_looks = 8; // at the screen, for the end of a program
constexpr uint64_t frames_of_silence = 550;  // of the deck, before --list gives up
constexpr uint64_t frames_of_a_test = 20000; // six minutes: a program that shall end by itself
constexpr size_t longest_listing = 1 << 20;  // BASIC has room for 28 KB
constexpr size_t longest_dump = 0x8000;      // what is looked at of a longer file

volatile std::sig_atomic_t interrupted = 0; // by which signal
debug_driver *interruptible = nullptr;      // what a person may stop at the terminal

void interrupt(int signal) {
    interrupted = signal;
    if (interruptible != nullptr) interruptible->ask_to_stop();
}

void check_readable(const std::string &path) {
    const platform::file_handle file = platform::open_file(path, true);
    if (file == platform::invalid_file) throw run_failure(path + ": " + platform::last_file_error());
    platform::close_file(file);
}

void check(kiv_result result) {
    if (result != KIV_OK) throw run_failure(kiv_error_text());
}

std::string screen_text() {
    std::string screen(kiv_text_screen(nullptr, 0), '\0');
    kiv_text_screen(screen.data(), screen.size() + 1);
    return screen;
}

uint64_t planes_sum() {
    uint64_t sum = 0;
    for (const int32_t plane : {KIV_AREA_BLUE, KIV_AREA_RED, KIV_AREA_GREEN})
        for (uint32_t i = 0; i < 0x4000; ++i)
            sum = (sum ^ static_cast<uint64_t>(kiv_peek(plane, i))) * 0x100000001B3u;
    return sum;
}

void host_date(void *, kiv_date *date) {
    const platform::local_time now = platform::current_local_time();
    *date = {now.year, now.month, now.day, now.hour, now.minute, std::min(now.second, 59)};
}

class machine_run {
  public:
    explicit machine_run(const run_options &run) : options(run) {}
    machine_run(const machine_run &) = delete;
    machine_run &operator=(const machine_run &) = delete;

    // Powers the machine on and puts everything in that the options name. Throws run_failure.
    void prepare();
    // Runs to the end of the asked time, or to a stop of the CPU: false.
    bool go();
    void write_outputs();
    // Takes the program out through the deck. After the outputs, for it changes the screen.
    void write_listing();
    void print_stats() const;
    std::string stop_line() const;
    int exit_code() const { return bench ? bench->exit_code : 0; }

  private:
    bool go_on_bench();
    bool bench_piece();
    void go_on_the_wire();
    void use_calendar() const;
    void use_settings() const;
    void load_tape() const;
    void load_listing();
    void load_state();
    void save_state() const;
    void at_keyboard();
    void type_own();
    void check_listing() const;
    void look_for_the_end();
    void frame_shown();
    void fail_if_interrupted() const;
    void draw() { check(kiv_draw_indexed(pixels, KIV_WIDTH)); }
    void run_ended();
    bool ended() const { return options.seconds ? cycles >= cycle_limit : frames >= frame_limit; }
    bool ends_itself() const { return options.run && !options.frames && !options.seconds; }
    // A run that ends in mid-frame leaves the last whole picture, and nobody knows which one that will be.
    bool picture_wanted() const {
        return !options.png.empty() &&
               (options.seconds || (options.png_every != 0 && frames % options.png_every == 0));
    }
    void show_progress();
    double machine_seconds() const { return static_cast<double>(cycles) / kiv_clock_hz(); }

    const run_options &options;
    typed_text typing;
    bool typing_begun = false; // --type is under way or done
    basic_session basic{false, false, 0};
    wav_file wav;
    output_file tape_out;
    bool dump_loaded = false;
    bool heard = false; // since the end of a program was last looked for
    uint64_t frame_limit = 0, cycle_limit = 0;
    uint64_t frames = 0, cycles = 0;           // of this run
    uint64_t first_cycle = 0, first_frame = 0; // of the machine
    std::unique_ptr<run_bench> bench;          // where an option asks for it
    alignas(64) uint8_t pixels[KIV_WIDTH * KIV_HEIGHT] = {};
    std::chrono::steady_clock::time_point started, progress_shown;
    bool on_terminal = false;
    bool progress_line = false;
};

void machine_run::use_calendar() const {
    if (!options.date) return void(kiv_calendar_host(host_date, nullptr));
    const calendar_time &t = *options.date;
    const kiv_date date = {t.year, t.month, t.day, t.hour, t.minute, t.second};
    check(kiv_calendar_fix(&date));
}

void machine_run::use_settings() const {
    setting_values settings = default_settings();
    settings[setting_tenkeyless] = 0; // a cursor key in --type means itself
    if (!options.settings.empty()) {
        check_readable(options.settings);
        settings = read_settings_file(options.settings);
    }
    for (size_t i = 0; i < setting_count; ++i)
        kiv_set_setting(setting_rules[i].key, settings[i]); // those that the machine has
    check(kiv_set_setting("halt_waits", options.halt_waits));
    check(kiv_set_setting("steps_over", options.steps_over));
}

void machine_run::load_tape() const {
    const std::vector<uint8_t> tape = bytes_of_file(options.tape, UINT32_MAX);
    check(kiv_tape_insert(tape.data(), tape.size()));
}

void machine_run::load_listing() {
    const std::vector<uint8_t> text = bytes_of_file(options.bas, longest_listing);
    const std::string tape =
        listing_tape({reinterpret_cast<const char *>(text.data()), text.size()}, options.bas);
    check(kiv_tape_insert(tape.data(), tape.size()));
    basic = basic_session(true, options.run, options.type_at);
    if (!options.frames) frame_limit = std::numeric_limits<uint64_t>::max(); // until it is loaded
}

void machine_run::load_state() {
    const std::vector<uint8_t> state = bytes_of_file(options.load_state, SIZE_MAX);
    if (kiv_snapshot_load(state.data(), state.size()) != KIV_OK)
        throw run_failure(options.load_state + ": " + kiv_error_text());
    first_cycle = kiv_t_states();
    first_frame = kiv_frames();
    if (options.date) use_calendar();
}

void machine_run::save_state() const {
    std::vector<uint8_t> state(kiv_snapshot_size(KIV_SNAPSHOT_WHOLE));
    kiv_snapshot_save(KIV_SNAPSHOT_WHOLE, state.data(), state.size());
    if (!platform::atomic_write(options.save_state, state.data(), state.size()))
        throw run_failure(options.save_state + ": " + platform::last_file_error());
}

void machine_run::prepare() {
    typing = typed_text(options.type);
    frame_limit = options.frames.value_or(
        options.type.empty()
            ? default_frames
            : std::max(default_frames, options.type_at + typing.frames() + frames_after_typing));
    kiv_seed(options.seed.value_or(static_cast<unsigned>(std::time(nullptr))));
    use_calendar();
    if (kiv_rom_files(options.roms.c_str()) != KIV_OK) throw run_failure(kiv_rom_files_error());
    use_settings();
    check(kiv_boot());
    cycle_limit = static_cast<uint64_t>(options.seconds.value_or(0) * kiv_clock_hz());
    if (!options.load_dump.empty()) check_readable(options.load_dump);
    if (!options.load_state.empty()) load_state();
    if (!options.tape.empty()) load_tape();
    if (!options.bas.empty()) load_listing();
    if (!options.tape_out.empty()) tape_out.open(options.tape_out);
    kiv_tape_record(!options.tape_out.empty());
    if (!options.wav.empty()) wav.open(options.wav);
    on_terminal = isatty(STDERR_FILENO) != 0 && !options.debug && !options.json && options.gdb.empty();
    if (!bench_wanted(options)) return;
    bench = std::make_unique<run_bench>(options);
    interruptible = &bench->driver;
    bench->begin();
    if (!options.frames && bench->input_ends() != 0)
        frame_limit = std::max(frame_limit, bench->input_ends() + frames_after_typing);
    if (!options.frames && (!options.until.empty() || options.exit_port || !options.exit_text.empty()))
        frame_limit = std::max(frame_limit, frames_of_a_test);
    if (!options.gdb.empty() && !options.frames) frame_limit = std::numeric_limits<uint64_t>::max();
}

// What a person does between two frames: a dump is loaded, then keys are typed.
void machine_run::at_keyboard() {
    if (!dump_loaded && !options.load_dump.empty() && frames >= options.type_at) {
        const std::vector<uint8_t> dump = bytes_of_file(options.load_dump, longest_dump);
        if (kiv_dump_load(dump.data(), dump.size()) != KIV_OK)
            throw run_failure(options.load_dump + ": not a memory dump (it is shorter than 32576 bytes)");
        dump_loaded = true;
    }
    if (typing_begun || frames < options.type_at || kiv_type_waiting() != 0) return;
    if (basic.done()) return type_own();
    const std::string text = basic.type_now(frames, {kiv_tape_position(), kiv_tape_motor() != 0});
    if (text == "RUN\n" || basic.done()) check_listing();
    if (!text.empty()) check(kiv_type(text.c_str()));
}

void machine_run::check_listing() const {
    const std::string complaint = basic_session::complaint(screen_text());
    if (!complaint.empty()) throw run_failure(options.bas + ": " + complaint);
}

void machine_run::type_own() {
    typing_begun = true;
    typing.start();
    if (options.bas.empty() || options.frames || ends_itself()) return;
    frame_limit = std::max(default_frames, frames + typing.frames() + frames_after_typing);
}

// Now and then only: a look takes longer than a frame of the machine.
void machine_run::look_for_the_end() {
    if (!ends_itself() || !typing_begun || frames % frames_between_looks != 0 || kiv_type_waiting() != 0)
        return;
    const int cursor = kiv_text_cursor();
    if (basic.over(frames, {screen_text(), planes_sum(), std::exchange(heard, false),
                            cursor < 0 ? -1 : cursor / 256}))
        frame_limit = frames;
}

void machine_run::frame_shown() {
    frames = kiv_frames() - first_frame;
    if (picture_wanted()) draw();
    if (options.png_every != 0 && frames % options.png_every == 0)
        write_png(numbered_name(options.png, frames), pixels);
    at_keyboard();
    look_for_the_end();
    if (on_terminal && frames % 32 == 0) show_progress();
    if (bench && bench->frame_shown(frames)) frame_limit = frames;
    if (interrupted == SIGINT && bench && bench->interactive) {
        interrupted = 0; // the driver has been asked to stop, and the person goes on
        return;
    }
    fail_if_interrupted();
}

void machine_run::fail_if_interrupted() const {
    if (interrupted && options.gdb.empty())
        throw run_failure("interrupted after " + std::to_string(frames) + " frames");
}

void machine_run::run_ended() {
    cycles = kiv_t_states() - first_cycle;
    const int16_t *const samples = kiv_samples(), *const end = samples + kiv_sample_count();
    heard |= std::adjacent_find(samples, end, std::not_equal_to<>()) != end;
    if (wav.is_open()) wav.add(kiv_samples(), kiv_sample_count());
    if (!tape_out.is_open()) return;
    if (!tape_out.take(kiv_tape_output(), kiv_tape_output_size()))
        throw run_failure(options.tape_out + ": " + platform::last_file_error());
    kiv_tape_output_clear();
}

bool machine_run::go() {
    started = progress_shown = std::chrono::steady_clock::now();
    at_keyboard();
    bool stopped = bench && !go_on_bench();
    while (!bench && !stopped && !ended()) {
        const uint64_t left = options.seconds ? cycle_limit - cycles : UINT32_MAX;
        const int32_t ended_by = kiv_run(static_cast<uint32_t>(std::min<uint64_t>(left, UINT32_MAX)));
        run_ended();
        stopped = ended_by == KIV_RUN_STOPPED;
        if (ended_by == KIV_RUN_FRAME) frame_shown();
    }
    if (!options.png.empty() && (stopped || frames == 0 || !options.seconds)) draw();
    if (!bench && !stopped && !options.load_dump.empty() && !dump_loaded)
        throw run_failure(options.load_dump + ": not loaded, as the run ended before frame " +
                          std::to_string(options.type_at));
    if (progress_line) std::fprintf(stderr, "\r\033[K");
    return !stopped;
}

// A slice of the run under the debug driver; false: it has ended. The end of the time asked for comes from
// on_run, between two pieces.
bool machine_run::bench_piece() {
    if (ended()) return false;
    const uint64_t left = options.seconds ? cycle_limit - cycles : UINT32_MAX;
    return bench->run_slice(left) == run_bench::outcome::goes_on;
}

// A debugger says when the machine runs; an interrupt ends the run as its time does.
void machine_run::go_on_the_wire() {
    serve_gdb(options, *bench, [this] { return ended() || interrupted != 0 || bench->console.quit(); });
    bench->exit_code = bench->console.exit_code;
}

// False: the processor has stopped.
bool machine_run::go_on_bench() {
    bench->driver.on_run = [this](int32_t ended_by) {
        run_ended();
        if (ended_by == KIV_RUN_FRAME) frame_shown();
        if (!bench->interactive && !bench->in_script && ended()) bench->driver.ask_to_stop();
    };
    if (options.json) {
        answer_requests(*bench);
    } else if (bench->run_scripts()) {
        if (options.debug)
            bench->at_terminal();
        else if (!options.gdb.empty())
            go_on_the_wire();
        else
            while (bench_piece()) {
            }
    }
    bench->driver.on_run = nullptr;
    if (!options.debug && !options.json) fail_if_interrupted(); // the driver may have stopped in mid-frame
    bench->finish();
    const bool own_end =
        bench->ended() || options.debug || options.json || !options.gdb.empty() || !options.scripts.empty();
    return own_end || kiv_stop_reason() == KIV_STOP_NONE;
}

void machine_run::write_listing() {
    if (options.list.empty()) return;
    kiv_tape_record(1);
    kiv_tape_output_clear();
    typed_text("\\b\\pCSAVE\"LIST\"\n").start();
    std::string tape;
    std::optional<std::string> listing;
    for (uint64_t silence = 0; silence < frames_of_silence && !listing;) {
        const int32_t ended_by = kiv_run(UINT32_MAX);
        if (ended_by == KIV_RUN_STOPPED) break;
        if (ended_by == KIV_RUN_FRAME && kiv_type_waiting() == 0) ++silence;
        if (kiv_tape_output_size() == 0) continue;
        tape.append(reinterpret_cast<const char *>(kiv_tape_output()), kiv_tape_output_size());
        kiv_tape_output_clear();
        silence = 0;
        if (tape.find('\x1A') + 1 < tape.size()) listing = listing_of_tape(tape);
    }
    if (!listing) throw run_failure(options.list + ": no program came out of the machine; is it Kiv BASIC?");
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.InnerPointer): the listing stands since the loop
    if (!platform::atomic_write(options.list, listing->data(), listing->size()))
        throw run_failure(options.list + ": " + platform::last_file_error());
}

void machine_run::write_outputs() {
    if (!options.png.empty()) write_png(options.png, pixels);
    if (!options.save_dump.empty()) {
        std::vector<uint8_t> dump(KIV_DUMP_SIZE);
        kiv_dump_save(dump.data(), dump.size());
        if (!platform::atomic_write(options.save_dump, dump.data(), dump.size()))
            throw run_failure(options.save_dump + ": " + platform::last_file_error());
    }
    if (!options.save_state.empty()) save_state();
    if (wav.is_open()) wav.finish();
    if (tape_out.is_open()) tape_out.finish();
    if (options.text) {
        const std::string screen = screen_text();
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
    const int32_t code = kiv_stop_reason();
    const char *const reason = code == KIV_STOP_HALT            ? "HALT"
                               : code == KIV_STOP_UNDEFINED     ? "undefined instruction"
                               : code == KIV_STOP_UNIMPLEMENTED ? "instruction that is not emulated"
                                                                : "an interrupt arrived in no interrupt mode";
    const uint32_t pc = kiv_stop_address();
    int32_t bytes[4];
    for (uint32_t i = 0; i < 4; ++i) bytes[i] = kiv_peek(KIV_AREA_CPU, (pc + i) & 0xFFFF);
    const char *const help = code == KIV_STOP_HALT        ? "; --halt wait goes on"
                             : code == KIV_STOP_UNDEFINED ? "; --undefined run goes on"
                                                          : "";
    char text[192];
    std::snprintf(
        text, sizeof text, "the processor stopped at $%04X: %s (%02X %02X %02X %02X), after %llu T-states%s",
        pc, reason, bytes[0], bytes[1], bytes[2], bytes[3], static_cast<unsigned long long>(cycles), help);
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
        if (options.version) {
            std::fputs("kiv-run " KIV_VERSION "\n", stdout);
            return 0;
        }
        platform::let_writes_fail();
        // A debugger that has started this program itself may get the terminal's interrupts, too.
        const bool of_debugger = !options.gdb.empty() && is_standard_gdb_place(options.gdb);
        std::signal(SIGINT, of_debugger ? SIG_IGN : interrupt);
        struct sigaction end {
        }, hang_up{};
        end.sa_handler = interrupt; // without SA_RESTART: a prompt that waits ends, too
        sigaction(SIGTERM, &end, nullptr);
        if (sigaction(SIGHUP, nullptr, &hang_up) == 0 && hang_up.sa_handler != SIG_IGN) // by nohup
            sigaction(SIGHUP, &end, nullptr);
        const auto run =
            std::make_unique<machine_run>(options); // the frame's pixels are too many for a stack
        run->prepare();
        const bool reached_end = run->go();
        if (options.stats) run->print_stats();
        run->write_outputs();
        if (reached_end) run->write_listing();
        interruptible = nullptr;
        if (reached_end) return run->exit_code();
        complain(run->stop_line());
    } catch (const run_failure &failure) {
        complain(failure.what());
    }
    return 1;
}
