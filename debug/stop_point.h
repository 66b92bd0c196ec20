// What a debugged machine stops at, and what it says when it has stopped.
#pragma once

#include "debug/debug_words.h"
#include "debug/memory_banks.h"
#include <cstdint>
#include <string>

enum class stop_kind : uint8_t {
    // Stop points: each may stand in stop_point::kind.
    address,   // before the instruction at first-last
    memory,    // behind an instruction that reads or writes first-last
    port,      // behind an IN or OUT of the ports first-last, 0-255
    interrupt, // an interrupt of the levels first-last has been accepted; its routine comes next
    raster,    // the raster has reached the lines first-last; the display's last one: the vertical blank
    frame,     // a picture is due; `count`: that of this number only, by kiv_frames
    t_states,  // `count` T-states since the boot have passed; then it is spent
    halt,      // before a HALT
    undefined, // before an instruction that the processor does not define or that is not emulated
    condition, // before any instruction: its condition alone says
    // What only a stop_report says.
    running,   // the slice is used up and nothing has happened
    aim,       // what was aimed at has been reached: a step is done
    asked,     // somebody called ask_to_stop
    processor, // it has stopped by itself: kiv_stop_reason, kiv_stop_address; only going back or a reset
               // helps
    beginning, // of the history
    observer,  // one that listens wants it: see `text`
};

enum access_kind : uint8_t { access_read = 1, access_write = 2 }; // IN and OUT, too

struct stop_point {
    stop_kind kind = stop_kind::address;
    uint16_t first = 0, last = 0;        // as `kind` says
    memory_bank bank = memory_bank::any; // which memory must be seen there: address, memory
    uint8_t access = access_write;       // of memory and port: access_kind, or both
    uint64_t count = 0;                  // as `kind` says
    std::string condition = {};          // an expression that must not be 0; empty: always
    uint64_t ignore = 0;                 // so many hits are passed over first
    std::string log = {};                // instead of stopping this is said, {expressions} worked out
    bool once = false;                   // removed when it has stopped the machine
    bool enabled = true;
    uint32_t id = 0;   // given by the driver, from 1
    uint64_t hits = 0; // counted by the driver: its condition held
};

struct stop_report {
    stop_kind kind = stop_kind::running;
    uint32_t id = 0;       // of the stop point; 0: none
    uint16_t pc = 0;       // where the next instruction comes from: an interrupt's routine before its entry
    uint16_t by = 0;       // the instruction that read, wrote, or was interrupted; elsewhere `pc`
    uint16_t address = 0;  // memory: what was accessed; port: its number on the bus; interrupt: the level
    uint8_t value = 0;     // what was read or written
    uint8_t before = 0;    // memory written: what stood there
    uint8_t access = 0;    // access_kind
    std::string text = {}; // observer: one line
};

// One line for a person: "breakpoint 3", "$C000 written: $00 -> $41 by $8123 (watchpoint 1)".
std::string describe(const stop_report &report, debug_words words = nullptr);
// What a stop point waits for, as the console lists it, without its number and hits.
std::string describe(const stop_point &point);
