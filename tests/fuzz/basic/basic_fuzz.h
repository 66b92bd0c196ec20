// Random lines, words and damaged tapes for the running interpreter, in process: the line editor is left out,
// its result is put where it would stand. Every instruction is watched.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct basic_fault {
    std::string what;  // what was wrong, and where
    std::string lines; // all since power-on, each ended by a newline
};

struct basic_fuzz_result {
    uint64_t lines = 0, cycles = 0, instructions = 0;
    uint64_t power_ons = 0, tapes = 0;
    uint64_t stopped = 0; // lines that the STOP key had to end
    std::vector<basic_fault> faults;
};

// Feeds `lines` lines; the same seed gives the same lines. Looks for: a HALT or undefined instruction; code
// outside the ROMs; calls, jumps and returns to where nothing is entered; a stack out of bounds; writes
// outside the interpreter's areas; no way back to the next line, even by STOP. After a fault the machine is
// powered on anew.
basic_fuzz_result fuzz_basic(uint64_t lines, unsigned seed);

// Feeds the given lines.
basic_fuzz_result replay_basic(const std::vector<std::string> &lines);
