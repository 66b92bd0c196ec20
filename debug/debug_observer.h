// Who hears of every instruction and access of a machine that the debug driver runs: traces, profiles,
// coverage, the search for faults.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

class debug_observer {
  public:
    enum wanted : uint8_t { wants_steps = 1, wants_memory = 2, wants_ports = 4, wants_interrupts = 8 };
    explicit debug_observer(uint8_t wanted_events) : wants(wanted_events) {}
    virtual ~debug_observer() = default;
    const uint8_t wants;

    // Before an instruction. `pc`: where it comes from; `t_states`: since the boot, so that the difference of
    // two calls is what the earlier instruction took, the display's DMA included. `entering`: an interrupt's
    // routine is entered with it.
    virtual void step(uint16_t /*pc*/, uint64_t /*t_states*/, bool /*entering*/) {}
    // An access has been made; `fetched`: a byte of the instruction itself. `ask` makes the machine stop
    // before the next instruction.
    virtual void read(uint16_t /*address*/, uint8_t /*value*/, bool /*fetched*/) {}
    virtual void written(uint16_t /*address*/, uint8_t /*before*/, uint8_t /*value*/) {}
    virtual void in(uint16_t /*port*/, uint8_t /*value*/) {}
    virtual void out(uint16_t /*port*/, uint8_t /*value*/) {}
    virtual void interrupt(uint8_t /*level*/) {} // accepted
    // The machine was put elsewhere in time; `another`: or changed by hand, nobody knows how.
    virtual void moved(bool /*another*/) {}
    virtual void redirected() {} // somebody set PC: what runs next is nobody's continuation
    // Somebody wrote bytes by hand: as the processor sees memory.
    virtual void poked(uint16_t /*address*/, size_t /*size*/) {}

    // A line that stops the machine before the next instruction; empty: nothing. Asked when
    // `wants_to_stop` is set, which then is reset.
    bool wants_to_stop = false;
    std::string stop_text;
};
