// Sound output by SDL. The emulator's looping buffer is memory of our own, with cursors that the clock moves;
// each half that is unlocked goes into a `sound_feeder`, from which the device takes its samples. No device,
// one that vanishes or one that hangs costs the sound only: a thread of its own opens it, watches it, and
// tries again every two seconds.
#pragma once

#include "platform/desktop/sound_feeder.h"
#include "platform/host.h"

namespace platform {

// What the feeder and the thread that owns the device share; it outlives whichever of them ends first.
struct sound_output;

class desktop_sound : public sound_device {
  public:
    desktop_sound();
    ~desktop_sound() override;
    void open() override;
    void close() override;
    void set_loudness(int percent) override;
    std::unique_ptr<primary_sound_buffer> create_primary() override;
    std::unique_ptr<sound_stream> create_stream(uint32_t bytes, const wave_format &format) override;

    struct figures {
        sound_feeder::figures feeder;
        bool device_open = false;
        int device_rate = 0;  // Hz
        int device_block = 0; // samples asked for at a time
        uint32_t openings = 0;
    };
    figures get_figures() const;

  private:
    std::shared_ptr<sound_output> output;
};

} // namespace platform
