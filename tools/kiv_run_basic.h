// What --bas and --run do at the machine, frame by frame: CLOAD, then RUN; and when such a run is over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// What of the machine tells whether a program goes on.
struct basic_view {
    std::string text;  // the screen, a line a row
    uint64_t graphics; // a checksum of the planes
    bool sounds;       // something was heard since the last look: PLAY goes on behind a program's end
    int cursor_row;    // BASIC shows a cursor while it waits for keys; -1: it shows none
};

// What tells whether a tape is still being read.
struct deck_view {
    size_t position; // of the next byte
    bool motor;
};

class basic_session {
  public:
    // With `load` a tape lies in the deck; CLOAD is typed at `first_frame`.
    basic_session(bool load, bool run, uint64_t first_frame)
        : stage(load ? stage_load : stage_done), runs(run), moved(first_frame) {}

    // What is to be typed now, or nothing. Once a frame while nothing is being typed.
    std::string type_now(uint64_t frame, const deck_view &deck);
    // The program is loaded, and RUN typed where that was asked for.
    bool done() const { return stage == stage_done; }
    // After that, once in a while: whether the program has ended, waits for a person, or has run for 30
    // minutes.
    bool over(uint64_t frame, const basic_view &view);
    // What BASIC said against the program when it was loaded; empty: nothing.
    static std::string complaint(const std::string &screen);

  private:
    enum { stage_load, stage_loading, stage_run, stage_done } stage;
    bool runs;
    size_t position = 0;
    bool motor = false;
    uint64_t moved;       // frame at which the tape, later the screen, was last seen to change
    uint64_t shown = 0;   // frame at which the screen was
    uint64_t started = 0; // frame of RUN
    basic_view last{};
};
