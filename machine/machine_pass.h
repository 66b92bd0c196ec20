// One pass of the run loop: an instruction, or clocks burnt for the DMA, and every device moved on by the
// T-states it was charged. This is the plain way, which says what the machine does; run_passes of
// machine_run.h does the same in less time.
#pragma once

#include "machine/kiv_machine.h"

enum class pass_outcome {
    nothing,
    frame,   // vertical blank has ended: a frame is due
    stopped, // the CPU has stopped; see trace_pc and stop_reason. The devices did not advance.
};

constexpr uint32_t dma_burn_limit = 10; // T-states burnt in one pass at most

// Charges an instruction that has run: main_cpu.step_cycles then holds what.
inline uint32_t charge_step(bool charge_waits) {
    uint32_t charged = main_cpu.step_cycles + main_cpu.m1_count;
    if (charge_waits) charged += main_cpu.wait_count + main_cpu.wait_count2;
    return main_cpu.step_cycles = charged;
}

// The processor's part of a pass: false when it has stopped, else main_cpu.step_cycles holds the T-states
// charged.
template <class Step>
[[gnu::always_inline]] inline bool run_processor(Step step, uint32_t iteration, bool charge_waits) {
    // While clocks are owed to the DMA, three passes of four burn some and the fourth runs an instruction.
    if (machine.dma_stall != 0 && iteration % 4 != 3) {
        const uint32_t burnt = machine.dma_stall < dma_burn_limit ? machine.dma_stall : dma_burn_limit;
        machine.dma_stall -= burnt;
        main_cpu.step_cycles = burnt;
        main_cpu.m1_count = main_cpu.wait_count = main_cpu.wait_count2 = 0;
    } else if (step(main_cpu)) {
        return false;
    }
    charge_step(charge_waits);
    return true;
}

// The devices' part of a pass that was charged main_cpu.step_cycles.
inline pass_outcome run_devices() {
    const uint32_t charged = main_cpu.step_cycles;
    machine.machine_step(machine, main_cpu);
    const uint32_t event = machine.timing_tick(charged);
    if (event == timing_vblank_begins) machine.interrupt_request_vrtc(main_cpu);
    machine.advance_sound(charged);
    return event == timing_vblank_ends ? pass_outcome::frame : pass_outcome::nothing;
}

// `iteration` counts passes since the run began, `charge_waits` is false where memory waits are not charged.
// After the pass main_cpu.step_cycles holds the T-states charged.
inline pass_outcome machine_pass(uint32_t iteration, bool charge_waits) {
    if (!run_processor(main_cpu.z80_step, iteration, charge_waits)) return pass_outcome::stopped;
    return run_devices();
}
