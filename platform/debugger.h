// A debugger's window as the host shows it: what it looks at, and what the person does there. The window asks
// for what it shows, and gets a copy that was made while the machine stood still.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

enum class debugger_action : uint8_t {
    go_or_stop,
    into,
    over,
    out,
    frame,
    run_to, // value: an address
    back_into,
    back_over,
    back_out,
    back_frame,
    back_go,
    put_pc, // value: an address
};

// What the window has room for.
struct debugger_request {
    bool follow = true;      // the listing stands around the next instruction
    uint16_t listing_at = 0; // else from this address on
    int listing_rows = 0;
    int area = 0; // of debugger_look::areas
    uint32_t memory_at = 0, memory_size = 0;
    bool stack = false, points = false, devices = false;
    enum : uint8_t { no_profile, by_routine, by_address } profile = no_profile;
    uint32_t past = 0; // the last so many instructions; asked for only while the machine stands
};

struct debugger_line { // of the listing or of the past
    uint16_t address = 0;
    std::string label, bytes, text, note;
    enum : uint8_t { no_point, point_off, point_on } point = no_point;
};
struct debugger_register {
    std::string name;
    int index;
    int digits; // hexadecimal
    uint32_t value;
};
struct debugger_area {
    std::string name;
    uint32_t size;
};
struct debugger_word { // on the stack
    uint16_t address, value;
    std::string text; // where it returns to; empty: it is no return address
};
struct debugger_point {
    uint32_t id;
    bool enabled;
    std::string text;
    uint64_t hits;
};
struct debugger_cost { // of a routine, or of one instruction
    uint16_t address;
    std::string name, source;
    uint64_t own, with_calls; // T-states
    uint64_t times;           // calls, or how often it ran
};
struct debugger_device {
    std::string name;
    std::vector<std::pair<std::string, std::string>> lines;
};

struct debugger_look {
    bool running = false;
    uint64_t changes = 0; // another number: the machine may be another than at the look before
    std::string why;      // it has stopped; empty: nothing to say
    std::string place;    // of the raster
    uint16_t pc = 0;      // where the next instruction comes from
    std::vector<debugger_line> listing, past;
    std::vector<debugger_register> registers;
    std::vector<debugger_area> areas;
    std::vector<uint8_t> memory; // from memory_at on
    std::vector<debugger_word> stack;
    std::vector<debugger_point> points;
    std::vector<debugger_device> devices;
    std::vector<debugger_cost> profile; // the most expensive first
    uint64_t profiled = 0;              // T-states in all
    bool profiling = false;
};

// What stands behind the window. Everything on the window thread; a text that comes back says what was wrong.
class debugger_listener {
  public:
    virtual ~debugger_listener() = default;
    virtual bool debugger_looks(const debugger_request &at, debugger_look &look) = 0; // false: not now
    virtual void debugger_acts(debugger_action action, uint16_t value) = 0;
    virtual std::string debugger_sets_register(int index, uint32_t value) = 0;
    virtual std::string debugger_writes(int area, uint32_t address, const std::vector<uint8_t> &bytes) = 0;
    virtual void debugger_toggles_point(uint16_t address) = 0;
    virtual std::string debugger_adds_point(const std::string &text) = 0; // as the console takes it
    virtual void debugger_removes_point(uint32_t id) = 0;
    virtual void debugger_enables_point(uint32_t id, bool on) = 0;
    virtual void debugger_command(const std::string &line) = 0;
    virtual std::vector<std::string> debugger_lines() = 0; // that have been said since the call before
    virtual std::vector<std::string> debugger_completes(const std::string &line) = 0;
    // Where an expression of numbers, registers and symbols leads; -1: `wrong` says why not.
    virtual int64_t debugger_finds(const std::string &expression, std::string &wrong) = 0;
    virtual void debugger_closed(const std::string &layout) = 0; // by the person
};

} // namespace platform
