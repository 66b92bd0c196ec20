// The recent past of a machine that the debug driver runs: a snapshot a frame, and what came from outside
// between them. Any instant of it comes back by a snapshot and a run from there, to the bit.
#pragma once

#include "api/snapshot_ring.h"
#include "machine/keyboard.h"
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

struct history_limits {
    size_t bytes = size_t{96} << 20;             // of memory for the snapshots
    uint64_t t_states = uint64_t{120} * 3993600; // from the oldest to now: two minutes
};

class history {
  public:
    explicit history(const history_limits &wanted);

    // ---- as the machine runs forwards
    // Before each piece of a run, after everything from outside has come in. `edited`: more than keys may
    // have been changed since the piece before.
    void before_run(bool edited);
    void after_run(); // of a piece

    // ---- backwards
    bool empty() const { return ring.empty(); }
    size_t size() const { return ring.size(); }
    uint64_t oldest() const { return ring.empty() ? 0 : ring.stamp(0); } // T-states since the boot
    uint64_t stamp(size_t index) const { return ring.stamp(index); }
    size_t find(uint64_t t_states) const { return ring.find(t_states); } // the last snapshot not later
    size_t memory() const { return ring.memory(); }                      // bytes

    // Puts snapshot `index` into the machine. False: it was refused, and the machine is as it was.
    bool restore(size_t index);
    // While a past stretch is run again: puts in what came from outside until this instant, and tells how
    // many T-states are left to what comes next; UINT64_MAX: nothing does.
    uint64_t put_in_again();
    // Everything later than the machine's present instant is forgotten.
    void cut_here();
    void clear();

    // The machine as it is, with what waits to be typed; and back. False: it was refused.
    static std::vector<uint8_t> state_now();
    static bool put_state(const std::vector<uint8_t> &state);

  private:
    struct from_outside {
        uint64_t t_states;
        bool whole;                 // a snapshot of the machine; else its keyboard
        std::vector<uint8_t> state; // that, with the keys that wait to be typed behind it
    };
    void push();
    std::vector<uint8_t> keyboard() const;
    void limit_edits();

    snapshot_ring ring;
    std::vector<uint8_t> bytes; // one snapshot
    std::deque<from_outside> came;
    size_t next = 0;                // of `came`, while running again
    size_t edits = 0;               // whole ones in `came`
    std::vector<uint8_t> keys_left; // as the piece before left them
};
