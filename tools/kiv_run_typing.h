// The text of --type: the keys that it stands for, and how long typing them takes.
#pragma once

#include "api/typing.h"
#include <cstdint>
#include <string>
#include <vector>

class typed_text {
  public:
    typed_text() = default;
    // Throws run_failure for a character that no key types.
    explicit typed_text(const std::string &text);
    // Hands everything to the machine's typist, who begins at once.
    void start() const;
    // Frames from the start to the last release.
    uint64_t frames() const;

  private:
    struct item {
        key_stroke stroke;
        uint32_t pause; // frames; 0: the stroke
    };
    std::vector<item> items;
};
