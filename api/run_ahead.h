// What the machine will show a frame or two from now if the keys stay as they are: it runs there, is looked
// at, and is put back. A program needs a frame, often two, from a key to its picture; shown is what it will
// come to, so that a person waits that much less.
//
// Nothing of it is left: no sound, no byte on the tape, no log line, and the machine goes on as if nobody had
// looked.
#pragma once

#include "sound/sound_slices.h"
#include <cstddef>
#include <cstdint>
#include <memory>

constexpr uint32_t most_frames_ahead = 2;

class run_ahead {
  public:
    // At a frame's end, on the machine's thread: calls `show` as the frame `frames` later ends (1 to
    // most_frames_ahead), or where the CPU stops before. Keys may be struck meanwhile. False, and `show` is
    // not called: there is no memory.
    template <class Show> bool look(uint32_t frames, sound_block &sound, Show show) {
        if (!go(frames, sound)) return false;
        show();
        come_back(sound);
        return true;
    }

  private:
    bool go(uint32_t frames, sound_block &sound);
    void come_back(sound_block &sound);

    std::unique_ptr<uint8_t[]> bytes;
    size_t room = 0, size = 0;
};
