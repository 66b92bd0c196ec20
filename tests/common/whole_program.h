// What the whole program is expected to do on whichever host it runs, with the test's firmware in the
// machine.
#pragma once

#include "tests/common/test_rom.h"

#include <algorithm>
#include <vector>

// The log of a day with a change to full screen, from the start to a close by the End key; other lines stand
// in between.
inline const std::vector<std::string> log_of_a_day = {
    "------------------ Kiv start ----------------",
    "ENTER message Loop",
    "IME禁止",
    "change_screen: try stop z80 thread",
    "change_screen: try stop direct sound",
    "change_screen: try reinit",
    "change_screen: restart",
    "WM_CLOSE",
    "exit: try stop z80 thread",
    "exit: terminating Kiv",
    "WM_DESTROY",
    "LEAVE message Loop",
    "------------------ Kiv end ------------------",
    "ENTER ~z80_thread",
    "ENTER ~Kiv_render_thread",
    "LEAVE ~Kiv_render_thread",
    "LEAVE ~z80_thread",
    "ENTER ~kiv_form",
    "LEAVE ~kiv_form",
};

// The first of `wanted` that is not found among the lines after the ones before it; empty when all are.
inline std::string first_missing(const std::vector<std::string> &lines,
                                 const std::vector<std::string> &wanted) {
    auto from = lines.begin();
    for (const std::string &w : wanted) {
        from = std::find(from, lines.end(), w);
        if (from == lines.end()) return w;
        ++from;
    }
    return {};
}

// The characters of a row of the firmware's text screen, without the blanks at its end.
template <class ByteAt> std::string text_row(ByteAt byte_at, uint16_t row) {
    std::string text;
    for (uint16_t i = 0; i < 80; ++i)
        text += static_cast<char>(byte_at(static_cast<uint16_t>(0xF3C8 + 120 * row + i)));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}
