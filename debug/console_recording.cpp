// Commands that record, load symbols, run scripts and check.
#include "debug/console_commands.h"

#include "api/kiv.h"

using namespace console_text;
using command = debug_console::command;

namespace {

debug_driver &driver(debug_console &c) { return console_commands::driver(c); }
void print(debug_console &c, const std::string &line) { console_commands::print(c, line); }

void print_lines(debug_console &c, const std::string &text) {
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        print(c, text.substr(at, end - at));
        at = end + 1;
    }
}

void trace(debug_console &c, const std::string &rest) {
    if (rest.empty()) fail("trace FILE, or trace off");
    if (rest == "off") return console_commands::stop_recording(c, "trace");
    c.trace_into(rest);
}

void profile_command(debug_console &c, const std::string &rest) {
    if (rest == "off") return console_commands::stop_recording(c, "profile");
    const bool paused = c.profiled() != nullptr && !c.profiling();
    if (rest == "on" && paused) return console_commands::profile_goes_on(c, true);
    if (rest == "on") return c.profile_into("");
    const bool of_one = rest.empty() || rest == "show" || rest == "pause" || rest == "clear";
    if (!of_one) return c.profile_into(rest);
    if (c.profiled() == nullptr) fail("no profile is taken: profile FILE, or profile on");
    if (rest == "pause") return console_commands::profile_goes_on(c, false);
    if (rest == "clear") return console_commands::profile_anew(c);
    print_lines(c, c.profiled()->table(20));
}

void coverage_command(debug_console &c, const std::string &rest) {
    if (rest == "off") return console_commands::stop_recording(c, "coverage");
    if (rest == "on") return c.coverage_into("");
    if (!rest.empty() && rest != "show") return c.coverage_into(rest);
    if (console_commands::covered(c) == nullptr) fail("no coverage is taken: coverage FILE, or coverage on");
    print(c, console_commands::covered(c)->summary());
}

void faults(debug_console &c, const std::string &rest) {
    uint8_t kinds = 0;
    bool of_roms = false, stop = false;
    for (const std::string &word : split(rest)) {
        if (word == "off") return console_commands::stop_recording(c, "faults");
        if (word == "stop") {
            stop = true;
        } else if (word == "roms") {
            of_roms = true;
        } else if (const auto kind = fault_named(word)) {
            kinds |= *kind;
        } else {
            fail(word + ": no such fault; unwritten under-rom stack interrupts text port, or all");
        }
    }
    c.watch_faults(kinds != 0 ? kinds : uint8_t{fault_every}, of_roms, stop);
}

void symbol(debug_console &c, const std::string &rest) {
    const size_t equals = rest.find('=');
    if (equals == std::string::npos || equals == 0) fail("symbol NAME=VALUE");
    driver(c).symbols.add(rest.substr(0, equals), address_of(c, rest.substr(equals + 1)));
}

void picture(debug_console &c, const std::string &rest) {
    if (rest.empty()) fail("a file is missing");
    if (!console_commands::host(c).write_picture) fail("no pictures can be written here");
    console_commands::host(c).write_picture(rest);
}

void expect(debug_console &c, const std::string &rest) {
    if (value_of(c, rest) == 0) fail("expected: " + rest);
}

void expect_text(debug_console &, const std::string &rest) {
    const auto words = split(rest);
    const std::string text = rest.starts_with("\"") && !words.empty() ? words[0] : rest;
    if (text.empty()) fail("a text is missing");
    if (screen().find(text) == std::string::npos) fail("expected on the screen: " + text);
}

void if_command(debug_console &c, const std::string &rest) {
    const size_t colon = rest.find(" : ");
    if (colon == std::string::npos) fail("if CONDITION : COMMAND");
    if (value_of(c, rest.substr(0, colon)) != 0) c.execute(rest.substr(colon + 3));
}

void repeat(debug_console &c, const std::string &rest) {
    std::string line;
    const uint64_t times = count_of(c, first_word(rest, line), 0);
    if (line.empty()) fail("repeat N COMMAND");
    for (uint64_t i = 0; i < times && !c.quit() && !c.interrupted(); ++i) {
        const int before = c.failures;
        c.execute(line);
        if (c.failures != before) return;
    }
}

void quit(debug_console &c, const std::string &rest) {
    c.exit_code = rest.empty() ? 0 : static_cast<int>(value_of(c, rest) & 0xFF);
    console_commands::set_quit(c);
}

std::string usage(const command &one) {
    const auto all_names = split(one.names);
    return all_names[0] + (one.arguments[0] != '\0' ? std::string(" ") + one.arguments : "");
}

void help(debug_console &c, const std::string &rest) {
    bool found = false;
    for (const auto &group : console_commands::all()) {
        if (rest.empty()) print(c, group.heading);
        for (const command &one : group.commands) {
            bool named = rest.empty();
            for (const std::string &name : split(one.names)) named |= name == rest;
            if (!named) continue;
            found = true;
            print(c, text_of("  %-36s %s", usage(one).c_str(), one.help));
            if (!rest.empty()) print(c, text_of("  also: %s", one.names));
        }
    }
    if (!found) fail(rest + ": no such command");
    if (!rest.empty()) return;
    print(
        c,
        "A command may be cut short while only one begins so. Numbers: 31, $1F, 0x1F, 1Fh, %101; values are");
    print(c, "expressions of registers, [memory], symbols, frame, line, tstates. An empty line says the last "
             "again.");
}

const command recording[] = {
    {"symbols", "FILE[:MEMORY]", "a symbol file of pasmo, sjasmplus or z88dk",
     [](debug_console &c, const std::string &rest) { c.load_symbols(rest); }},
    {"listing", "FILE[:MEMORY]", "source lines out of a listing",
     [](debug_console &c, const std::string &rest) { c.load_listing(rest); }},
    {"symbol", "NAME=VALUE", "one symbol", symbol},
    {"trace", "FILE|off", "writes down every instruction", trace},
    {"profile", "[FILE|on|pause|clear|off|show]", "T-states by routine and address, in callgrind's format",
     profile_command},
    {"coverage", "[FILE|on|off|show]", "lines of the listings that have run, in lcov's format",
     coverage_command},
    {"faults", "[KIND...] [roms] [stop]|off",
     "tells what programs hardly mean: unwritten under-rom stack interrupts text port; of ROMs, too; "
     "stopping",
     faults},
    {"picture", "FILE", "the picture as PNG", picture},
    {"expect", "CONDITION", "a line that is wrong when it does not hold: ends the script", expect},
    {"expect-text", "TEXT", "likewise, when the text is not on the screen", expect_text},
    {"if", "CONDITION : COMMAND", "only then", if_command},
    {"repeat", "N COMMAND", "N times", repeat},
    {"echo", "TEXT", "says it", [](debug_console &c, const std::string &rest) { print(c, rest); }},
    {"source", "FILE", "runs the lines of a script; # begins a remark",
     [](debug_console &c, const std::string &rest) { c.run_script(rest); }},
    {"help h ?", "[COMMAND]", "this", help},
    {"quit q exit", "[CODE]", "ends, with an exit code", quit},
};

} // namespace

std::span<const command> console_commands::of_recording() { return recording; }
