// Types a text on the emulated keyboard, frame by frame, through the host key table.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Key presses and releases of a text, each with the frame at which it happens. Keys are held and released
// for several frames, so that a ROM that looks at the matrix once a frame sees every one.
class typist {
  public:
    typist() = default;
    // Throws run_failure for a character that no key types.
    typist(const std::string &text, uint64_t first_frame);
    // Presses and releases what is due once `frame` frames have been shown.
    void at_frame(uint64_t frame);
    // The frame of the last release.
    uint64_t end() const { return actions.empty() ? 0 : actions.back().frame; }

  private:
    struct action {
        uint64_t frame;
        uint32_t virtual_key;
        bool press;
    };
    void add_key(uint32_t virtual_key, bool shifted);
    std::vector<action> actions;
    size_t next = 0;
    uint64_t now = 0;
};
