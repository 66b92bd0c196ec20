// Many passes at once. Devices are asked after every pass by machine_pass; most passes bring them nothing,
// and when the next one will is known in T-states. So the processor runs on until then, and the devices are
// moved on by the sum. What comes out is the same to the bit.
#pragma once

#include "machine/machine_pass.h"

struct run_result {
    pass_outcome outcome; // of the last pass
    uint32_t cycles;      // T-states charged for all passes
};

// Runs passes, one at least, until one brings a frame or stops the CPU, or until `cycles` T-states have been
// charged. run_state counts the passes and their T-states; slices and frames are the caller's. A slot of the
// CPU or of a device that holds another than the machine's own function is called as often as in plain
// passes; advance_sound is called with sums.
run_result run_passes(uint32_t cycles, bool charge_waits);
