// Types CLOAD and RUN for a listing that was opened, as a person would: RUN when the tape has been read.
// Where it stands goes into every state, so that rewind and run-ahead see the same keys again.
#pragma once

#include <cstdint>

struct auto_start {
    uint8_t stage;     // 0: nothing to do
    uint32_t since;    // frames since the boot: when the stage began, or the tape moved last
    uint32_t position; // of the tape, when it was looked at last
};

extern auto_start starting;

// A listing lies in the deck of a machine that was just powered on.
void auto_start_begin();

// Once a frame, before the machine runs.
void auto_start_step();
