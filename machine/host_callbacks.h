// The slots through which devices reach the sound side. The side that listens hands its functions over
// once, before or after machine_init; without a listener the slots do nothing.
#pragma once

#include <cstdint>

struct sound_listener {
    void (*beep_on)();
    void (*beep_off)();
    void (*pcg_tone)(uint16_t frequency, uint32_t channel); // Hz, 0 silent; channel 0-2
    void (*advance_sound)(uint32_t cycles);
    void (*tones_off)();
    void (*sound_clear)();
};

struct host_callback_block : sound_listener {
    void (*host_callbacks_init)();
};

// From now on, and after every machine_init, the slots hold these functions.
void host_callbacks_listen(const sound_listener &listener);

void host_callbacks_init();
