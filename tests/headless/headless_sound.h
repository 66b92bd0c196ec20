// A sound device in memory: a looping buffer whose cursors move with real time or with a clock that the test
// drives, and a record of what was written to it and what of it would have been heard.
#pragma once

#include "platform/host.h"
#include "tests/headless/fault_plan.h"
#include <atomic>
#include <memory>

namespace platform {

class headless_sound : public sound_device {
  public:
    explicit headless_sound(fault_plan &plan);
    ~headless_sound() override;

    // ---- for the test; from any thread ----
    // From now on time passes only by `advance`.
    void use_manual_clock();
    void advance(uint64_t microseconds);
    // Bytes by which the write cursor is ahead of the play cursor; 0 at first.
    void set_write_lead(uint32_t bytes);
    // Bytes of the first part of a lock: a longer one comes in two parts, as it does where the buffer wraps.
    void set_first_part(uint32_t bytes);
    // Keeps the first `samples` of each record from now on; 0 (at first) keeps none.
    void set_record_limit(size_t samples);
    std::vector<int16_t> written() const; // in the order of the unlocks
    std::vector<int16_t> heard() const;   // as the play cursor passed over the buffer
    uint64_t unlocks() const;
    bool is_open() const;
    bool is_playing() const;
    uint32_t speed() const; // of the stream, per cent
    int32_t volume() const; // hundredths of a decibel, as it was set last; 0 at first

    // ---- for the program ----
    void open() override;
    void set_loudness(int percent) override { loud = percent; }
    std::atomic<int> loud{100};
    void close() override;
    std::unique_ptr<primary_sound_buffer> create_primary() override;
    std::unique_ptr<sound_stream> create_stream(uint32_t bytes, const wave_format &format) override;

    struct device;

  private:
    fault_plan &faults;
    std::shared_ptr<device> state;
};

} // namespace platform
