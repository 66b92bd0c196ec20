// Keys with the frames at which they go down and up, as a file:
//
//     kiv input 1
//     # frame row bit
//     61 2 1 down
//     64 2 1 up
//
// Frames count from the start of the run, as --frames does; a change is made between two pictures. Row and
// bit are a key of the matrix.
#pragma once

#include "tools/kiv_run_outputs.h"
#include <array>
#include <cstdint>
#include <string>
#include <vector>

class input_recorder {
  public:
    void open(const std::string &path); // throws run_failure, as all
    bool is_open() const { return file.is_open(); }
    void look(uint64_t frame); // at the matrix, and writes what has changed
    void finish();

  private:
    output_file file;
    std::array<uint8_t, 12> rows{};
};

class input_player {
  public:
    // The file's text; its name is for messages. Throws run_failure, with the line.
    void load(const std::string &text, const std::string &path);
    bool is_open() const { return opened; }
    void play(uint64_t frame); // what is due at this frame, or was
    uint64_t last_frame() const { return changes.empty() ? 0 : changes.back().frame; }

  private:
    struct change {
        uint64_t frame;
        uint8_t row, bit;
        bool down;
    };
    std::vector<change> changes;
    size_t next = 0;
    bool opened = false;
};
