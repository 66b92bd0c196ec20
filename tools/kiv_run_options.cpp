#include "tools/kiv_run_options.h"

#include "debug/memory_faults.h"

#include "tools/kiv_run_gdb.h"
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>

const char run_help[] =
    R"(kiv-run: the machine without a window, as fast as this computer goes.

usage: kiv-run [options]

The machine is powered on with the three ROM images 8801-zun.rom, 8801-kiv.rom and 8801-4th.rom, runs for
the time asked for, and leaves what you asked for: a picture, its text, its sound. What it does is exactly
what the program with the window does; only nobody waits for the clock.

What runs
  --roms DIR            folder of the ROM images (default: the current directory)
  --settings FILE       a settings file such as KIV.INI (default: the default settings, but for TEN-Keyless)
  --load-dump FILE      load a memory dump (.KIV) at the frame of --type-at
  --load-state FILE     go on from a state that --save-state left, with the same ROM images; frames and
                        times below count from there
  --tape FILE           put a tape image (.CMT) into the cassette deck
  --bas FILE            a BASIC program as text (UTF-8), loaded through the cassette deck of Kiv BASIC at the
                        frame of --type-at; what BASIC says against it ends the run
  --run                 RUN it; then, or when it is loaded, --type types
  --halt stop|wait      what HALT does: ends the run, or waits for an interrupt (default: stop)
  --undefined stop|run  what undefined instructions do: end the run, or nothing (default: stop)

How long
  --frames N            N pictures of the machine, about 55 a second
  --seconds S           S seconds of the machine's time
                        (default: 300 frames, or 60 frames past the end of the typed text; 20000 frames where
                        the program or a condition shall end the run; with --run until
                        BASIC says Ok and is silent, or has waited for keys for 10 seconds, 30 minutes of the
                        machine's time at most: a program that looks for keys itself never waits)

At the keyboard
  --type TEXT           types TEXT; \n return, \e ESC, \t TAB, \b STOP, \f1 to \f5 function keys,
                        \u \d \l \r the cursor keys, \p a pause of half a second, \\ the yen key
  --type-at FRAME       frame at which a dump is loaded and typing begins (default: 60, when BASIC is up)

  --record-input FILE   write down which keys go down and up, at which frame
  --replay-input FILE   strike them again (default for --frames: 60 past the last one)

Testing and debugging
  --symbols FILE        symbols of pasmo, sjasmplus or z88dk; FILE:main for those of one memory (main nbasic ext
                        ram); may be given again
  --listing FILE        source lines out of a listing whose lines begin with address and bytes; likewise
  --script FILE         commands of the debugger, a line each, from the machine's start; the run ends with them
                        unless a length or an end is given, too; may be given again
  --debug               the debugger on this terminal; help lists its commands
  --until CONDITION     ends the run when it becomes true: --until 'PC==$8123', '[score]>9 && frame>100'
  --exit-port PORT      an OUT to the port ends the run, with its value as the exit code
  --exit-text TEXT=CODE the text on the screen ends the run with that exit code; may be given again
  --expect-text TEXT    must stand on the screen at the end; may be given again
  --expect-memory AREA:ADDRESS=BYTES
                        must stand there at the end: $9000=1,2,"AB"; ram:$8000=255; may be given again
  --faults report|stop[,KIND...]
                        tell what programs in RAM hardly mean, or end the run, too: unwritten (memory that is
                        read or run), under-rom (writes there), stack (in a plane), interrupts (off for longer
                        than a frame), text (writes past its window), port (that nothing takes); all if none
  --trace FILE          every instruction with its T-states and registers
  --profile FILE        T-states by routine and address, in callgrind's format
  --coverage FILE       lines of the listings that have run, in lcov's format
  --json                requests on the standard input, a line each, answers on the standard output

What it leaves
  --png FILE            the last picture, 640 x 400
  --png-every N         also one of every N pictures: FILE-000010.png, FILE-000020.png, ...
  --text                the text screen, as UTF-8, on the standard output
  --wav FILE            the sound: 96000 Hz, one channel, 16 bits
  --tape-out FILE       what the machine wrote to its cassette
  --save-dump FILE      a memory dump at the end
  --save-state FILE     the whole machine at the end, to go on from exactly
  --list FILE           the BASIC program in the machine at the end, as text (UTF-8)
  --stats               T-states, frames and speed, on the standard error output
  --help                this text, and nothing else
  --version             the version, and nothing else

With a debugger of the GDB remote protocol
  --gdb PORT            wait for one at this TCP port, on this computer's loopback interface alone; at another
                        interface only as ADDRESS:PORT; 0: a free port; -: standard input and output. The run
                        goes on as the debugger says, until --frames or --seconds or an interrupt
  --gdb-alone wait|run  what the machine does while no debugger is there (default: wait)

The same again, byte for byte
  --date YYYY-MM-DDTHH:MM:SS   what the calendar clock shows, standing still
  --seed N                     seed of the refresh register's random bytes

Examples
  kiv-run --seconds 5 --png screen.png
  kiv-run --type 'PRINT 6*7\n' --text
  kiv-run --bas programs/mandelbrot.bas --run --png picture.png
  kiv-run --load-dump game.KIV --symbols game.sym --exit-port 0x99 --coverage game.info --listing game.lst
  kiv-run --date 1982-11-01T12:00:00 --seed 1 --frames 600 --wav sound.wav --png-every 60 --png f.png

Exit code: 0, or 1 with one line that says why: an option, a file, or the address at which the processor
stopped; 2 when something expected is not so, a condition did not come, a script's line was wrong or a fault
was found; or what --exit-port, --exit-text or a script's quit say. Files are written whole or not at all; after a stop of the processor the outputs show the machine
at that moment.
)";

namespace {

[[noreturn]] void bad(const std::string &option, const std::string &value, const std::string &wanted) {
    throw run_failure(option + " " + value + ": " + wanted);
}

uint64_t parse_count(const std::string &option, const std::string &value, uint64_t minimum,
                     uint64_t maximum) {
    char *end = nullptr;
    errno = 0;
    const unsigned long long n = std::strtoull(value.c_str(), &end, 10);
    if (value.empty() || value[0] < '0' || value[0] > '9' || *end != '\0' || errno != 0 || n < minimum ||
        n > maximum)
        bad(option, value,
            "a number from " + std::to_string(minimum) + " to " + std::to_string(maximum) + " is wanted");
    return n;
}

double parse_seconds(const std::string &option, const std::string &value) {
    char *end = nullptr;
    const double s = std::strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0' || !std::isfinite(s) || s <= 0 || s > 1e9)
        bad(option, value, "seconds above 0 are wanted");
    return s;
}

calendar_time parse_date(const std::string &option, const std::string &value) {
    calendar_time t{};
    int size = -1;
    std::sscanf(value.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &t.year, &t.month, &t.day, &t.hour, &t.minute,
                &t.second, &size);
    constexpr char wanted[] = "a date such as 1982-11-01T12:00:00 is wanted";
    // Nineteen characters and six numbers leave no room for signs or blanks, except in front of a digit.
    if (size != 19 || value.size() != 19 || value.find_first_not_of("0123456789-T:") != std::string::npos)
        bad(option, value, wanted);
    const bool leap = (t.year % 4 == 0 && t.year % 100 != 0) || t.year % 400 == 0;
    const int days[] = {31, leap ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (t.year < 1 || t.month < 1 || t.month > 12 || t.day < 1 || t.day > days[t.month - 1] || t.hour < 0 ||
        t.hour > 23 || t.minute < 0 || t.minute > 59 || t.second < 0 || t.second > 59)
        bad(option, value, wanted);
    return t;
}

uint8_t parse_port(const std::string &option, const std::string &value) {
    const auto port = parse_number(value);
    if (!port || *port > 0xFF) bad(option, value, "a port from 0 to 255 is wanted, such as 153, $99 or 0x99");
    return static_cast<uint8_t>(*port);
}

// report or stop, with kinds behind it.
void parse_faults(const std::string &option, const std::string &value, run_options &o) {
    size_t at = std::min(value.find(','), value.size());
    const std::string what = value.substr(0, at);
    if (what != "report" && what != "stop") bad(option, value, "report or stop is wanted");
    o.stop_at_faults = what == "stop";
    o.faults = at == value.size() ? uint8_t{fault_every} : uint8_t{0};
    while (at < value.size()) {
        const size_t end = std::min(value.find(',', at + 1), value.size());
        const auto kind = fault_named(value.substr(at + 1, end - at - 1));
        if (!kind) bad(option, value, "known are unwritten, under-rom, stack, interrupts, text and port");
        o.faults |= *kind;
        at = end;
    }
}

std::pair<std::string, int> parse_exit_text(const std::string &option, const std::string &value) {
    const size_t equals = value.rfind('=');
    if (equals == std::string::npos || equals == 0) bad(option, value, "TEXT=CODE is wanted");
    const auto code = static_cast<int>(parse_count(option, value.substr(equals + 1), 0, 255));
    return {value.substr(0, equals), code};
}

using value_option = std::function<void(const std::string &option, const std::string &value)>;

value_option text_into(std::string &target) {
    return [&target](const std::string &, const std::string &value) { target = value; };
}

value_option path_into(std::string &target) {
    return [&target](const std::string &option, const std::string &value) {
        if (value.empty()) throw run_failure(option + ": a name is wanted");
        target = value;
    };
}

// One of two words; the second sets it.
value_option choice_into(bool &target, const char *first, const char *second) {
    return [&target, first, second](const std::string &option, const std::string &value) {
        if (value != first && value != second)
            bad(option, value, std::string(first) + " or " + second + " is wanted");
        target = value == second;
    };
}

value_option added_to(std::vector<std::string> &target) {
    return [&target](const std::string &option, const std::string &value) {
        if (value.empty()) throw run_failure(option + ": its value is empty");
        target.push_back(value);
    };
}

std::map<std::string, value_option> options_with_value(run_options &o) {
    return {
        {"--symbols", added_to(o.symbols)},
        {"--listing", added_to(o.listings)},
        {"--script", added_to(o.scripts)},
        {"--expect-text", added_to(o.expect_text)},
        {"--expect-memory", added_to(o.expect_memory)},
        {"--until", path_into(o.until)},
        {"--record-input", path_into(o.record_input)},
        {"--replay-input", path_into(o.replay_input)},
        {"--trace", path_into(o.trace)},
        {"--profile", path_into(o.profile)},
        {"--coverage", path_into(o.coverage)},
        {"--faults", [&o](auto &name, auto &value) { parse_faults(name, value, o); }},
        {"--exit-port", [&o](auto &name, auto &value) { o.exit_port = parse_port(name, value); }},
        {"--exit-text",
         [&o](auto &name, auto &value) { o.exit_text.push_back(parse_exit_text(name, value)); }},
        {"--halt", choice_into(o.halt_waits, "stop", "wait")},
        {"--undefined", choice_into(o.steps_over, "stop", "run")},
        {"--gdb-alone", choice_into(o.gdb_alone_runs, "wait", "run")},
        {"--gdb", path_into(o.gdb)},
        {"--roms", path_into(o.roms)},
        {"--settings", path_into(o.settings)},
        {"--load-dump", path_into(o.load_dump)},
        {"--save-dump", path_into(o.save_dump)},
        {"--load-state", path_into(o.load_state)},
        {"--save-state", path_into(o.save_state)},
        {"--tape", path_into(o.tape)},
        {"--bas", path_into(o.bas)},
        {"--list", path_into(o.list)},
        {"--tape-out", path_into(o.tape_out)},
        {"--png", path_into(o.png)},
        {"--wav", path_into(o.wav)},
        {"--type", text_into(o.type)},
        {"--frames",
         [&o](auto &name, auto &value) { o.frames = parse_count(name, value, 1, 1'000'000'000); }},
        {"--seconds", [&o](auto &name, auto &value) { o.seconds = parse_seconds(name, value); }},
        {"--type-at",
         [&o](auto &name, auto &value) { o.type_at = parse_count(name, value, 0, 1'000'000'000); }},
        {"--png-every",
         [&o](auto &name, auto &value) { o.png_every = parse_count(name, value, 1, 1'000'000'000); }},
        {"--date", [&o](auto &name, auto &value) { o.date = parse_date(name, value); }},
        {"--seed",
         [&o](auto &name, auto &value) {
             o.seed = static_cast<unsigned>(parse_count(name, value, 0, UINT_MAX));
         }},
    };
}

std::map<std::string, bool *> switches(run_options &o) {
    return {{"--help", &o.help},   {"-h", &o.help},   {"--version", &o.version}, {"--text", &o.text},
            {"--stats", &o.stats}, {"--run", &o.run}, {"--debug", &o.debug},     {"--json", &o.json}};
}

// Options that are each good alone.
void check_together(const run_options &o) {
    if (o.frames && o.seconds) throw run_failure("--frames and --seconds: one of them is enough");
    if (o.debug && o.json) throw run_failure("--debug and --json: the standard input is one of them's");
    if (!o.record_input.empty() && o.record_input == o.replay_input)
        throw run_failure("--record-input and --replay-input: the same file");
    if (!o.bas.empty() && !o.tape.empty()) throw run_failure("--bas and --tape: the deck holds one of them");
    if (o.run && o.bas.empty()) throw run_failure("--run: --bas names the program");
    if (!o.gdb.empty() && (o.debug || o.json || !o.until.empty() || o.exit_port))
        throw run_failure("--gdb: with it --debug, --json, --until and --exit-port have no place");
    if (o.gdb_alone_runs && o.gdb.empty()) throw run_failure("--gdb-alone: --gdb lets a debugger come");
    if (!o.gdb.empty() && is_standard_gdb_place(o.gdb) && o.text)
        throw run_failure("--gdb " + o.gdb + " and --text: the standard output is for one of them");
    if (o.png_every != 0 && o.png.empty()) throw run_failure("--png-every: --png names the pictures");
}

} // namespace

run_options parse_run_options(int argc, char **argv) {
    run_options o;
    const auto with_value = options_with_value(o);
    const auto without = switches(o);
    for (int i = 1; i < argc; ++i) {
        std::string name = argv[i];
        if (const auto found = without.find(name); found != without.end()) {
            *found->second = true;
            continue;
        }
        std::optional<std::string> value;
        if (const size_t equals = name.find('='); equals != std::string::npos) {
            value = name.substr(equals + 1);
            name.resize(equals);
        }
        const auto option = with_value.find(name);
        if (option == with_value.end()) throw run_failure(name + ": no such option (--help lists them)");
        if (!value) {
            if (++i >= argc) throw run_failure(name + ": its value is missing");
            value = argv[i];
        }
        option->second(name, *value);
    }
    check_together(o);
    return o;
}
