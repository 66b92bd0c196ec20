// The last two minutes of the machine, a snapshot a frame; and a look at what comes next.
#pragma once

#include "api/run_ahead.h"
#include "api/snapshot.h"
#include "api/snapshot_ring.h"
#include "cpu/z80_thread.h"

#include <deque>
#include <string>

class frame_history final : public frame_watcher {
  public:
    // CPU thread, or window thread while that is parked, as all that follows.
    void frame_ended() override;
    void show_ahead(uint32_t frames) override;
    // Back to the last frame that is not later than `stamp`, T-states as `now` tells them, and at most to the
    // oldest. What came later is forgotten. Empty, or why not.
    std::string go_back_to(uint64_t stamp);
    std::string one_back();
    bool at_beginning() const { return ring.size() <= 1; }
    uint64_t now() const { return ring.empty() ? 0 : ring.stamp(ring.size() - 1); }
    size_t memory() const { return ring.memory(); }

  private:
    struct kept_tape {
        uint64_t checksum;
        std::vector<uint8_t> bytes;
    };
    std::string go_back(size_t count);
    void keep_tape();
    bool put_in_tape(uint64_t checksum);
    uint64_t stamp_of_now();

    snapshot_ring ring{{size_t{64} << 20, uint64_t{120} * 3993600}};
    std::vector<uint8_t> bytes;
    std::deque<kept_tape> tapes; // of the frames, as they hold none; the newest last
    run_ahead ahead;
    uint64_t offset = 0; // of the stamps from run_state.cycles, which a loaded state sets anywhere
};
