// What --bas and --run do at the machine, frame by frame: CLOAD, then RUN; and when such a run is over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// What of the machine tells whether a program goes on.
struct basic_view {
    std::string text;  // the screen, a line a row
    uint64_t graphics; // a checksum of the planes
};

class basic_session {
  public:
    // With `load` a tape of `size` bytes lies in the deck; CLOAD is typed at `first_frame`.
    basic_session(bool load, bool run, size_t size, uint64_t first_frame)
        : stage(load ? stage_load : stage_done), runs(run), tape_size(size), moved(first_frame) {}

    // What is to be typed now, or nothing. Once a frame while nothing is being typed.
    std::string type_now(uint64_t frame, size_t tape_position);
    // The program is loaded, and RUN typed where that was asked for.
    bool done() const { return stage == stage_done; }
    // After that, once a frame: whether the program has ended, waits for a person, or has run for 30 minutes.
    bool over(uint64_t frame, const basic_view &view);

  private:
    enum { stage_load, stage_loading, stage_run, stage_done } stage;
    bool runs;
    size_t tape_size, position = 0;
    uint64_t moved;       // frame at which the tape, later the screen, was last seen to change
    uint64_t started = 0; // frame of RUN
    basic_view last{};
};
