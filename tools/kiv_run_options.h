// The command line of kiv-run.
#pragma once

#include "machine/calendar_clock.h"
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// A reason to end the run with exit code 1: one line that names what and why.
struct run_failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

struct run_options {
    bool help = false, version = false;
    std::string roms;               // folder; empty: the current directory
    std::string settings;           // a settings file; empty: the defaults
    std::optional<uint64_t> frames; // run length, or
    std::optional<double> seconds;  // run length in emulated time
    std::string type;               // text to type, with its escapes
    uint64_t type_at = 60;          // frame at which typing begins
    std::string png;                // the last frame
    uint64_t png_every = 0;         // also one of every so many frames; 0: no
    bool text = false;
    bool stats = false;
    bool halt_waits = false; // else HALT ends the run
    bool steps_over = false; // undefined instructions; else they end it
    std::optional<calendar_time> date;
    std::optional<unsigned> seed;
    std::string wav;
    std::string tape, tape_out;
    std::string bas, list; // listings, in and out
    bool run = false;      // RUN behind bas
    std::string load_dump, save_dump;
    std::string load_state, save_state;
    // The test bench.
    bool debug = false, json = false;
    std::vector<std::string> scripts, symbols, listings, expect_text, expect_memory;
    std::string until;                                  // a condition that ends the run
    std::optional<uint8_t> exit_port;                   // an OUT ends the run with its value
    std::vector<std::pair<std::string, int>> exit_text; // a text on the screen does, with a code
    std::string record_input, replay_input;
    std::string trace, profile, coverage;
    uint8_t faults = 0; // fault_kind of debug/memory_faults.h
    bool stop_at_faults = false;
    std::string gdb;             // where a debugger comes in; empty: none does
    bool gdb_alone_runs = false; // the machine, while none is there; else it waits
};

extern const char run_help[];

// Throws run_failure when an option is unknown or makes no sense.
run_options parse_run_options(int argc, char **argv);
