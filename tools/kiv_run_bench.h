// kiv-run as a test bench: the machine under the debug driver, with what the options ask for — a console,
// scripts, recorders, conditions that end the run, expectations, keys written down and played back.
#pragma once

#include "debug/console.h"
#include "tools/kiv_run_input.h"
#include "tools/kiv_run_options.h"
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Whether an option asks for the bench; without one the machine runs as fast as it goes, with nobody between.
bool bench_wanted(const run_options &options);

constexpr int exit_expectation = 2; // of kiv-run: the machine ran, and what was expected is not so

class run_bench {
  public:
    explicit run_bench(const run_options &options_);

    // After the boot: symbols, recorders, what ends the run. All throw run_failure.
    void begin();
    // Runs the scripts; false when the run ends with them.
    bool run_scripts();
    void at_terminal(); // until the person has had enough

    enum class outcome { goes_on, ends, stopped }; // stopped: by the processor itself
    outcome run_slice(uint64_t t_states);
    // After a picture: `frame` of the run. True: a text on the screen ends it.
    bool frame_shown(uint64_t frame);
    // After the run: recorders are written, expectations looked at, the input's record is finished.
    void finish();
    bool ended() const { return ended_early; }                  // by what was to end the run
    uint64_t input_ends() const { return player.last_frame(); } // the frame of the last key played

    debug_driver driver;
    debug_console console;
    int exit_code = 0;
    bool interactive = false; // somebody sits at the terminal
    bool in_script = false;
    std::vector<std::string> *collected = nullptr; // takes what the console says, while there is one

  private:
    console_host host();
    void expect();
    void complain(const std::string &text);
    uint32_t until_id = 0, exit_id = 0;
    bool until_reached = false, ended_early = false;

    const run_options &options;
    struct memory_expectation {
        std::string text;
        int32_t area;
        uint16_t address;
        std::vector<uint8_t> bytes;
    };
    std::vector<memory_expectation> expected_memory;
    input_recorder recorder;
    input_player player;
    bool file_failed = false;
};

// What a console on this terminal reads, with history and completion where the build has a line editor.
// Nothing at the end of the input.
std::optional<std::string> read_console_line(const debug_console &console);
