// Commands that run the machine, forwards and backwards, and those that say where it stops.
#include "debug/console_commands.h"

#include "api/kiv.h"
#include "debug/disassembler.h"
#include "debug/memory_banks.h"
#include <cinttypes>

using namespace console_text;
using command = debug_console::command;

namespace {

debug_driver &driver(debug_console &c) { return console_commands::driver(c); }
void print(debug_console &c, const std::string &line) { console_commands::print(c, line); }

void repeat(debug_console &c, const std::string &rest, aim_kind kind) {
    const uint64_t times = count_of(c, rest, 1);
    for (uint64_t i = 0; i < times; ++i) {
        driver(c).aim(kind);
        const stop_report report = driver(c).run();
        if (i + 1 == times || report.kind != stop_kind::aim) return c.show_stop(report);
    }
}

void repeat_back(debug_console &c, const std::string &rest, aim_kind kind) {
    if (driver(c).past() == nullptr) fail("no history is kept: history on");
    const uint64_t times = count_of(c, rest, 1);
    for (uint64_t i = 0; i < times; ++i) {
        const stop_report report = driver(c).back(kind);
        if (i + 1 == times || report.kind == stop_kind::beginning || report.kind == stop_kind::asked)
            return c.show_stop(report);
    }
}

void go(debug_console &c, const std::string &rest) {
    if (rest.empty()) return console_commands::run(c, aim_kind::none);
    console_commands::run(c, aim_kind::address, address_of(c, rest));
}

void until(debug_console &c, const std::string &rest) {
    if (rest.empty()) fail("a condition is missing");
    const uint32_t id = driver(c).add({.kind = stop_kind::condition, .condition = rest, .once = true});
    console_commands::run(c, aim_kind::none);
    driver(c).remove(id);
}

void run_for(debug_console &c, const std::string &rest) {
    const uint64_t frames = count_of(c, rest, 0);
    if (frames == 0) fail("a number of frames is missing");
    const uint32_t id =
        driver(c).add({.kind = stop_kind::frame, .count = kiv_frames() + frames, .once = true});
    console_commands::run(c, aim_kind::none);
    driver(c).remove(id);
}

void back_to(debug_console &c, const std::string &rest) {
    if (driver(c).past() == nullptr) fail("no history is kept: history on");
    const int64_t t = value_of(c, rest);
    if (t < 0) fail("T-states since the boot are wanted");
    c.show_stop(driver(c).back_to(static_cast<uint64_t>(t)));
}

void history_command(debug_console &c, const std::string &rest) {
    if (rest == "on") driver(c).keep_history({});
    if (rest == "off") driver(c).keep_no_history();
    if (!rest.empty() && rest != "on" && rest != "off") fail("history, history on or history off");
    const history *const past = driver(c).past();
    if (past == nullptr) return print(c, "no history is kept");
    if (past->empty()) return print(c, "history is kept from here on");
    print(c, text_of("%.2f s back to T-state %" PRIu64 ", %zu snapshots, %.1f MB",
                     static_cast<double>(kiv_t_states() - past->oldest()) / kiv_clock_hz(), past->oldest(),
                     past->size(), static_cast<double>(past->memory()) / 1e6));
}

void last(debug_console &c, const std::string &rest) {
    const uint64_t count = count_of(c, rest, 20);
    if (driver(c).past() == nullptr) fail("no history is kept: history on");
    driver(c).look_back(static_cast<size_t>(count), [&c](uint16_t pc, uint64_t) {
        uint8_t length = 0;
        const std::string line = instruction_line(c, pc, length);
        print(c, line + std::string(line.size() < 34 ? 34 - line.size() : 1, ' ') + registers_line());
    });
}

void reset(debug_console &c, const std::string &) {
    kiv_reset();
    driver(c).changed();
    c.show_place();
}

const command running[] = {
    {"go g c continue", "[ADDRESS]", "runs on, to a stop, or to an address", go, true},
    {"step s into", "[N]", "one instruction, or N",
     [](debug_console &c, const std::string &rest) { repeat(c, rest, aim_kind::into); }, true},
    {"over n next", "[N]", "one instruction; a call or a repeating one as a whole",
     [](debug_console &c, const std::string &rest) { repeat(c, rest, aim_kind::over); }, true},
    {"out finish", "", "to behind the return of this routine",
     [](debug_console &c, const std::string &rest) { repeat(c, rest, aim_kind::out); }, true},
    {"frame f", "[N]", "to the next picture, or the Nth",
     [](debug_console &c, const std::string &rest) { repeat(c, rest, aim_kind::frame); }, true},
    {"frames", "N", "N pictures, or to a stop", run_for, true},
    {"until", "CONDITION", "runs until the condition becomes true", until, true},
    {"back b", "[N]", "one instruction back, or N",
     [](debug_console &c, const std::string &rest) { repeat_back(c, rest, aim_kind::into); }, true},
    {"back-over bn", "[N]", "the same; a call that has returned as a whole",
     [](debug_console &c, const std::string &rest) { repeat_back(c, rest, aim_kind::over); }, true},
    {"back-out bo", "", "back to the call of this routine",
     [](debug_console &c, const std::string &rest) { repeat_back(c, rest, aim_kind::out); }, true},
    {"back-frame bf", "[N]", "back to the last picture, or the Nth last",
     [](debug_console &c, const std::string &rest) { repeat_back(c, rest, aim_kind::frame); }, true},
    {"back-go bg", "", "back to where a stop point would have stopped last; before an access",
     [](debug_console &c, const std::string &rest) { repeat_back(c, rest, aim_kind::none); }, true},
    {"back-to", "TSTATES", "back to that many T-states since the boot", back_to, true},
    {"last", "[N]", "the last 20 instructions, or N, with the registers before each", last},
    {"history", "[on|off]", "how far back it goes", history_command},
    {"reset", "", "the machine's reset key", reset},
};

// ---- stop points -------------------------------------------------------------------------------------

// [in BANK] [if CONDITION] [ignore N] [once] [log TEXT], in this order or another; log takes the rest.
void take_options(debug_console &c, std::string rest, stop_point &p) {
    constexpr const char *keywords[] = {"in", "if", "ignore", "once", "log"};
    const auto next_keyword = [&](size_t from) {
        size_t nearest = rest.size();
        for (const char *k : keywords) {
            const std::string with_blanks = std::string(" ") + k + " ";
            nearest = std::min(nearest, (rest + " ").find(with_blanks, from));
        }
        return nearest;
    };
    rest.insert(0, " ");
    while (rest.find_first_not_of(" \t") != std::string::npos) {
        std::string value;
        const std::string word = first_word(rest, value);
        if (word == "log") {
            if (value.empty()) fail("log: a text is missing");
            p.log = value;
            return;
        }
        rest = " " + value;
        const size_t end = next_keyword(word == "once" ? 0 : 1);
        std::string argument = word == "once" ? std::string() : rest.substr(0, end);
        if (word != "once") rest = end < rest.size() ? rest.substr(end) : std::string();
        argument.erase(0, argument.find_first_not_of(' '));
        if (word == "in") {
            const auto bank = bank_named(argument);
            if (!bank) fail(argument + ": no such memory; main nbasic ext ram blue red green");
            p.bank = *bank;
        } else if (word == "if") {
            if (argument.empty()) fail("if: a condition is missing");
            p.condition = argument;
        } else if (word == "ignore") {
            p.ignore = count_of(c, argument, 1);
        } else if (word == "once") {
            p.once = true;
        } else {
            fail(word + " is not understood; in MEMORY, if CONDITION, ignore N, once, log TEXT");
        }
    }
}

std::string line_of(const stop_point &p) {
    std::string text = std::to_string(p.id) + " " + describe(p);
    if (p.hits != 0) text += ", " + std::to_string(p.hits) + (p.hits == 1 ? " hit" : " hits");
    return text + (p.enabled ? "" : ", off");
}

void add(debug_console &c, const stop_point &p) {
    const uint32_t id = driver(c).add(p);
    print(c, line_of(*driver(c).find(id)));
}

uint8_t take_access(std::string &rest, uint8_t none) {
    std::string behind;
    const std::string word = first_word(rest, behind);
    const uint8_t access = word == "r"   ? uint8_t{access_read}
                           : word == "w" ? uint8_t{access_write}
                                         : uint8_t{3};
    if (word != "r" && word != "w" && word != "rw") return none;
    rest = behind;
    return access;
}

struct point_word {
    const char *name;
    stop_kind kind;
    uint16_t highest;
    bool needs_value;
};
constexpr point_word point_words[] = {
    {"port", stop_kind::port, 0xFF, true},         {"irq", stop_kind::interrupt, 2, false},
    {"line", stop_kind::raster, 400, true},        {"frame", stop_kind::frame, 0, false},
    {"time", stop_kind::t_states, 0, true},        {"halt", stop_kind::halt, 0, false},
    {"undefined", stop_kind::undefined, 0, false},
};

bool begins_option(const std::string &word) {
    return word == "in" || word == "if" || word == "ignore" || word == "once" || word == "log";
}

void break_command(debug_console &c, const std::string &all) {
    if (all.empty()) fail("what to stop at is missing; help break");
    stop_point p;
    std::string rest, value, behind;
    const std::string word = first_word(all, rest);
    if (word == "if") {
        p.kind = stop_kind::condition;
        take_options(c, all, p);
        return add(c, p);
    }
    for (const point_word &w : point_words) {
        if (word != w.name) continue;
        p.kind = w.kind;
        value = first_word(rest, behind);
        if (w.kind == stop_kind::interrupt) p.last = 2;
        if (!value.empty() && !begins_option(value) && w.kind != stop_kind::halt &&
            w.kind != stop_kind::undefined) {
            rest = behind;
            if (w.highest != 0) {
                const range r = range_of(c, value, w.highest);
                p.first = r.first;
                p.last = r.last;
            } else {
                p.count = count_of(c, value, 0);
            }
        } else if (w.needs_value) {
            fail(std::string(w.name) + ": which one?");
        }
        if (w.kind == stop_kind::port) p.access = take_access(rest, 3);
        take_options(c, rest, p);
        return add(c, p);
    }
    const range r = range_of(c, word);
    p.first = r.first;
    p.last = r.last;
    take_options(c, rest, p);
    add(c, p);
}

void watch(debug_console &c, const std::string &all) {
    std::string rest;
    const std::string where = first_word(all, rest);
    if (where.empty()) fail("an address is missing");
    const range r = range_of(c, where);
    stop_point p{.kind = stop_kind::memory, .first = r.first, .last = r.last};
    p.access = take_access(rest, access_write);
    take_options(c, rest, p);
    add(c, p);
}

void points(debug_console &c, const std::string &) {
    for (const stop_point &p : driver(c).points()) print(c, line_of(p));
    if (driver(c).points().empty()) print(c, "no stop points");
}

template <class Do> void for_ids(debug_console &c, const std::string &rest, Do what) {
    if (rest.empty()) fail("the number of a stop point is missing, or all");
    std::vector<uint32_t> ids;
    if (rest == "all")
        for (const stop_point &p : driver(c).points()) ids.push_back(p.id);
    else
        for (const std::string &word : split(rest))
            ids.push_back(static_cast<uint32_t>(count_of(c, word, 0)));
    for (const uint32_t id : ids)
        if (!what(id)) fail("no stop point " + std::to_string(id));
}

const command stopping[] = {
    {"break br", "WHAT [OPTIONS]",
     "stops at ADDRESS, A..B, port P [r|w], irq [LEVEL], line N, frame [N], time T, halt, undefined, if "
     "CONDITION. Options: in MEMORY, if CONDITION, ignore N, once, log TEXT with {EXPRESSION}",
     break_command},
    {"watch w", "RANGE [r|w|rw] [OPTIONS]",
     "stops behind an access to A, A..B or A,N; address and value in "
     "conditions are the access's",
     watch},
    {"points info", "", "the stop points, with their hits", points},
    {"delete del", "N...|all", "removes stop points",
     [](debug_console &c, const std::string &rest) {
         for_ids(c, rest, [&c](uint32_t id) { return driver(c).remove(id); });
     }},
    {"enable", "N...|all", "turns stop points on",
     [](debug_console &c, const std::string &rest) {
         for_ids(c, rest, [&c](uint32_t id) { return driver(c).enable(id, true); });
     }},
    {"disable", "N...|all", "turns stop points off",
     [](debug_console &c, const std::string &rest) {
         for_ids(c, rest, [&c](uint32_t id) { return driver(c).enable(id, false); });
     }},
};

} // namespace

std::string describe(const stop_point &p) {
    const std::string access = p.access == access_read ? "r" : p.access == access_write ? "w" : "rw";
    const auto range = [&p](const char *format) {
        std::string text = text_of(format, p.first);
        if (p.last != p.first) text += std::string("..") + text_of(format, p.last);
        return text;
    };
    std::string text;
    switch (p.kind) {
    case stop_kind::address: text += "at " + range("$%04X"); break;
    case stop_kind::memory: text += "memory " + range("$%04X") + " " + access; break;
    case stop_kind::port: text += "port " + range("$%02X") + " " + access; break;
    case stop_kind::interrupt: text += "interrupt " + range("%u"); break;
    case stop_kind::raster: text += "line " + range("%u"); break;
    case stop_kind::frame: text += p.count == 0 ? "every frame" : "frame " + std::to_string(p.count); break;
    case stop_kind::t_states: text += "time " + std::to_string(p.count); break;
    case stop_kind::halt: text += "halt"; break;
    case stop_kind::undefined: text += "undefined"; break;
    default: break;
    }
    if (p.bank != memory_bank::any) text += std::string(" in ") + bank_name(p.bank);
    if (!p.condition.empty()) text += " if " + p.condition;
    if (p.ignore != 0) text += " ignore " + std::to_string(p.ignore);
    if (p.once) text += " once";
    if (!p.log.empty()) text += " log " + p.log;
    return text.starts_with(' ') ? text.substr(1) : text;
}

std::span<const command> console_commands::of_running() { return running; }
std::span<const command> console_commands::of_stopping() { return stopping; }
