#include "tools/kiv_run_bench.h"

#include "api/kiv.h"
#include "debug/console_commands.h"
#include "platform/file.h"
#include "tools/kiv_run_outputs.h"
#include "tools/kiv_run_typing.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <unistd.h>
#ifdef KIV_HAS_LINE_EDITOR
#include <editline/readline.h>
#endif

namespace {

constexpr uint64_t frames_between_looks = 8; // at the screen
constexpr size_t longest_file = size_t{64} << 20;

std::string file_text(const std::string &path) {
    const std::vector<uint8_t> bytes = bytes_of_file(path, longest_file);
    return {bytes.begin(), bytes.end()};
}

// The console's complaints are debug_error.
template <class Do> auto as_debug_error(Do what) {
    try {
        return what();
    } catch (const run_failure &failure) {
        throw debug_error(failure.what());
    }
}

// A file that grows; its name is taken when the last sink of it is gone.
struct growing {
    output_file file;
    std::string waiting, path;
    bool &failed;

    growing(const std::string &p, bool &f) : path(p), failed(f) { file.open(path); }
    growing(const growing &) = delete;
    growing &operator=(const growing &) = delete;
    ~growing() {
        if (std::uncaught_exceptions() != 0) return; // the run has failed, perhaps at this very file
        try {
            flush();
            file.finish();
        } catch (const run_failure &failure) {
            failed = true;
            std::fprintf(stderr, "kiv-run: %s\n", failure.what());
        }
    }
    void add(const std::string &text) {
        waiting += text;
        if (waiting.size() > 1 << 16) flush();
    }
    void flush() {
        file.write(waiting.data(), waiting.size());
        waiting.clear();
    }
};

std::string screen() {
    std::string text(kiv_text_screen(nullptr, 0), '\0');
    kiv_text_screen(text.data(), text.size() + 1);
    return text;
}

} // namespace

bool bench_wanted(const run_options &o) {
    return o.debug || o.json || !o.scripts.empty() || !o.until.empty() || !o.expect_text.empty() ||
           !o.expect_memory.empty() || o.exit_port || !o.exit_text.empty() || !o.record_input.empty() ||
           !o.replay_input.empty() || !o.trace.empty() || !o.profile.empty() || !o.coverage.empty() ||
           !o.symbols.empty() || !o.listings.empty() || !o.gdb.empty() || o.faults != 0;
}

run_bench::run_bench(const run_options &options_) : console(driver, host()), options(options_) {}

console_host run_bench::host() {
    console_host h;
    h.print = [this](const std::string &line) {
        if (collected != nullptr)
            collected->push_back(line);
        else // the standard output may be for --text
            std::fprintf(options.debug || (!options.scripts.empty() && options.gdb.empty()) ? stdout : stderr,
                         "%s\n", line.c_str());
    };
    h.read_file = [](const std::string &path) { return as_debug_error([&] { return file_text(path); }); };
    h.write_file = [](const std::string &path, std::string_view bytes) {
        if (!platform::atomic_write(path, bytes.data(), bytes.size()))
            throw debug_error(path + ": " + platform::last_file_error());
    };
    h.grow_file = [this](const std::string &path) -> text_sink {
        auto file = as_debug_error([&] { return std::make_shared<growing>(path, file_failed); });
        return [file](const std::string &text) { file->add(text); };
    };
    h.write_picture = [](const std::string &path) {
        as_debug_error([&] {
            std::vector<uint8_t> pixels(KIV_WIDTH * KIV_HEIGHT);
            kiv_draw_indexed(pixels.data(), KIV_WIDTH);
            write_png(path, pixels.data());
        });
    };
    h.type = [](const std::string &text) { as_debug_error([&] { typed_text(text).start(); }); };
    return h;
}

void run_bench::complain(const std::string &text) {
    std::fprintf(stderr, "kiv-run: %s\n", text.c_str());
    if (exit_code == 0) exit_code = exit_expectation;
}

void run_bench::begin() {
    std::vector<std::string> not_shown;
    if (!options.debug) collected = &not_shown;
    try {
        for (const std::string &file : options.symbols) console.load_symbols(file);
        for (const std::string &file : options.listings) console.load_listing(file);
        if (options.debug || !options.scripts.empty() || !options.gdb.empty()) driver.keep_history({});
        if (!options.trace.empty()) console.trace_into(options.trace);
        if (!options.profile.empty()) console.profile_into(options.profile);
        if (!options.coverage.empty()) console.coverage_into(options.coverage);
        if (options.faults != 0)
            console.watch_faults(options.faults, false, options.stop_at_faults,
                                 options.exit_port ? *options.exit_port : -1);
        if (!options.until.empty())
            until_id = driver.add({.kind = stop_kind::condition, .condition = options.until});
        if (options.exit_port)
            exit_id = driver.add(
                {.kind = stop_kind::port, .first = *options.exit_port, .last = *options.exit_port});
        for (const std::string &text : options.expect_memory) {
            const size_t equals = text.find('=');
            if (equals == std::string::npos)
                throw debug_error("--expect-memory " + text + ": ADDRESS=BYTES is wanted");
            const auto place = console_text::place_of(console, text.substr(0, equals));
            expected_memory.push_back(
                {text, place.area, place.address, console_text::bytes_of(console, text.substr(equals + 1))});
        }
    } catch (const debug_error &error) {
        throw run_failure(error.what());
    }
    collected = nullptr;
    if (!options.record_input.empty()) recorder.open(options.record_input);
    if (!options.replay_input.empty()) player.load(file_text(options.replay_input), options.replay_input);
    player.play(0);
    recorder.look(0);
}

bool run_bench::run_scripts() {
    for (const std::string &script : options.scripts) {
        bool good = false;
        in_script = true;
        try {
            good = console.run_script(script);
        } catch (const debug_error &error) {
            throw run_failure(error.what());
        }
        in_script = false;
        if (console.quit()) {
            exit_code = console.exit_code;
            return false;
        }
        if (!good) {
            exit_code = exit_expectation;
            return false;
        }
    }
    return options.scripts.empty() || options.frames || options.seconds || !options.until.empty() ||
           options.exit_port || !options.exit_text.empty() || options.debug || !options.gdb.empty();
}

void run_bench::at_terminal() {
    interactive = true;
    if (isatty(STDIN_FILENO)) std::puts("help lists the commands.");
    console.show_place();
    std::string last;
    while (!console.quit()) {
        std::fflush(stdout);
        std::optional<std::string> line = read_console_line(console);
        if (!line) break;
        if (line->empty()) line = last;
        last = *line;
        console.execute(*line);
    }
    exit_code = console.exit_code;
    if (!isatty(STDIN_FILENO) && !console.quit() && console.failures != 0) exit_code = exit_expectation;
}

run_bench::outcome run_bench::run_slice(uint64_t t_states) {
    const stop_report report = driver.run_slice(t_states);
    switch (report.kind) {
    case stop_kind::running: return outcome::goes_on;
    case stop_kind::processor: return outcome::stopped;
    case stop_kind::asked: return outcome::ends;
    default: break;
    }
    ended_early = true;
    if (report.id != 0 && report.id == until_id) {
        until_reached = true;
    } else if (report.id != 0 && report.id == exit_id) {
        exit_code = report.value;
    } else if (report.kind == stop_kind::observer) {
        exit_code = exit_expectation;
    } else {
        console.show_stop(report);
    }
    return outcome::ends;
}

bool run_bench::frame_shown(uint64_t frame) {
    player.play(frame);
    recorder.look(frame);
    if (options.exit_text.empty() || frame % frames_between_looks != 0) return false;
    const std::string shown = screen();
    for (const auto &[text, code] : options.exit_text) {
        if (shown.find(text) == std::string::npos) continue;
        exit_code = code;
        ended_early = true;
        return true;
    }
    return false;
}

void run_bench::expect() {
    if (!options.until.empty() && !until_reached) complain("--until " + options.until + ": did not come");
    if ((options.exit_port || !options.exit_text.empty()) && !ended_early && exit_code == 0)
        complain("the run ended before the program did");
    const std::string shown = screen();
    bool missing = false;
    for (const std::string &text : options.expect_text) {
        if (shown.find(text) != std::string::npos) continue;
        complain("expected on the screen: " + text);
        missing = true;
    }
    if (missing) std::fprintf(stderr, "%s", shown.c_str());
    for (const memory_expectation &m : expected_memory)
        for (size_t i = 0; i < m.bytes.size(); ++i) {
            const int32_t byte = kiv_peek(m.area, static_cast<uint32_t>(m.address + i));
            if (byte == m.bytes[i]) continue;
            char found[64];
            std::snprintf(found, sizeof found, "$%04X is $%02X", static_cast<unsigned>(m.address + i),
                          static_cast<unsigned>(byte));
            complain("--expect-memory " + m.text + ": " + found);
            break;
        }
    if (options.faults != 0 && console.faults() != 0)
        complain(std::to_string(console.faults()) + (console.faults() == 1 ? " fault" : " faults"));
}

void run_bench::finish() {
    expect();
    try {
        console.finish_recorders();
    } catch (const debug_error &error) {
        throw run_failure(error.what());
    }
    recorder.finish();
    if (file_failed) throw run_failure("a file was not written");
}

// ---- the terminal ------------------------------------------------------------------------------------

#ifdef KIV_HAS_LINE_EDITOR
namespace {

const debug_console *completed = nullptr;

char *next_candidate(const char *word, int state) {
    static std::vector<std::string> candidates;
    static size_t next;
    if (state == 0) {
        const std::string line(rl_line_buffer, static_cast<size_t>(rl_point));
        candidates = completed->complete(line);
        next = 0;
    }
    static_cast<void>(word);
    return next < candidates.size() ? strdup(candidates[next++].c_str()) : nullptr;
}

char **candidates_of(const char *word, int, int) {
    rl_attempted_completion_over = 1; // files are not completed
    return rl_completion_matches(word, next_candidate);
}

} // namespace
#endif

std::optional<std::string> read_console_line(const debug_console &console) {
#ifdef KIV_HAS_LINE_EDITOR
    if (isatty(STDIN_FILENO) && isatty(STDOUT_FILENO)) {
        static char name[] = "kiv-run"; // the library's declaration has no const
        rl_readline_name = name;
        completed = &console;
        rl_attempted_completion_function = candidates_of;
        char *const text = readline("kiv> ");
        if (text == nullptr) return std::nullopt;
        std::string line = text;
        if (!line.empty()) add_history(text);
        std::free(text);
        return line;
    }
#else
    static_cast<void>(console);
#endif
    if (isatty(STDIN_FILENO)) {
        std::fputs("kiv> ", stdout);
        std::fflush(stdout);
    }
    std::string line;
    if (!std::getline(std::cin, line)) return std::nullopt;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return line;
}
