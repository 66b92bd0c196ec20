// Starts the demonstration of our ROM set, as a person does.
#pragma once

#include "machine/keyboard.h"

// Types DEMO and RETURN; `run_frames(n)` lets the machine run for n frames.
template <class Run> void start_demonstration(Run run_frames) {
    run_frames(30); // the title
    for (const uint32_t key : {0x44, 0x45, 0x4D, 0x4F, 0x0D}) {
        key_press(key);
        run_frames(3);
        key_release(key);
        run_frames(3);
    }
}
