// The console's commands and what they share.
#pragma once

#include "debug/console.h"
#include <span>

struct debug_console::command {
    const char *names;     // the full one first, then short ones, with blanks between
    const char *arguments; // for a person
    const char *help;      // one line
    void (*run)(debug_console &c, const std::string &rest);
    bool runs_machine = false;
};

struct console_commands {
    static std::span<const debug_console::command> of_running(), of_stopping(), of_looking(), of_changing(),
        of_recording();
    // Every group with its heading.
    struct group {
        const char *heading;
        std::span<const debug_console::command> commands;
    };
    static std::span<const group> all();

    // The console's insides for the commands.
    static debug_driver &driver(debug_console &c) { return c.driver; }
    static const console_host &host(const debug_console &c) { return c.host; }
    static void print(const debug_console &c, const std::string &line) { c.print(line); }
    static uint16_t &next_dump(debug_console &c) { return c.next_dump; }
    static int32_t &dump_area(debug_console &c) { return c.dump_area; }
    static uint16_t &next_listing(debug_console &c) { return c.next_listing; }
    static auto &displays(debug_console &c) { return c.displays; }
    static void stop_recording(debug_console &c, const std::string &what);
    static void profile_goes_on(debug_console &c, bool on);
    static void profile_anew(debug_console &c);
    static coverage *covered(debug_console &c) { return c.covered.get(); }
    static void set_quit(debug_console &c) { c.has_quit = true; }
    // Runs to the aim or a stop, and shows where that is.
    static void run(debug_console &c, aim_kind kind, uint16_t address = 0);
};

namespace console_text {

template <class... Values> std::string text_of(const char *format, Values... values) {
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::vector<std::string> split(const std::string &text); // at blanks; "..." is one word, without its quotes
std::string first_word(const std::string &text, std::string &rest);
[[noreturn]] void fail(const std::string &text); // throws debug_error

// Values out of expressions, worked out now.
int64_t value_of(debug_console &c, const std::string &text);
uint16_t address_of(debug_console &c, const std::string &text);
uint64_t count_of(debug_console &c, const std::string &text, uint64_t none); // empty: `none`
// A..B, A,N (N of them) or A alone.
struct range {
    uint16_t first, last;
};
range range_of(debug_console &c, const std::string &text, uint16_t highest = 0xFFFF);
// AREA:address; without an area the processor's view.
struct place {
    int32_t area;
    uint16_t address;
};
place place_of(debug_console &c, const std::string &text);
// Bytes: numbers and "text", with commas or blanks between.
std::vector<uint8_t> bytes_of(debug_console &c, const std::string &text);
std::string instruction_line(debug_console &c, uint16_t address, uint8_t &length);
std::string screen();
// Whether a call stands in front of the address, so that it may be where that returns to.
bool behind_call(uint16_t address);

} // namespace console_text
