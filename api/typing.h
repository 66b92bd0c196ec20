// Text typed on the emulated keyboard, a key after the other, at a pace that a ROM which looks at the matrix
// once a frame follows.
#pragma once

#include "support/byte_store.h"
#include <cstddef>
#include <cstdint>

struct key_stroke {
    uint8_t virtual_key;
    bool shifted;
};

// The key of a Japanese keyboard that types a character: ASCII, the yen sign, line feed, tab and ESC. False
// when there is none.
bool stroke_of(uint32_t character, key_stroke &stroke);

// Takes one character off the front of UTF-8 text that ends with a 0; 0 at its end. Damaged bytes come as
// they are.
uint32_t next_character(const char *&text);

// How long a stroke takes from its first press to its last release, and to the next one's first press.
uint32_t stroke_held_frames(bool shifted);
uint32_t stroke_frames(bool shifted);

class typist {
  public:
    // False: there is no memory for it.
    bool add(const key_stroke &stroke);
    bool add_pause(uint32_t frames); // 65535 at most
    // Presses and releases what is due once `frame` frames have passed.
    void at_frame(uint64_t frame);
    // Strokes and pauses that are not done yet.
    uint32_t waiting() const { return static_cast<uint32_t>((queue.size() - done) / entry_size); }
    // Forgets them, and releases the key in work.
    void cancel();
    // Forgets them and leaves the keyboard alone: it is another machine's by now.
    void forget();

    // What waits and how far it is, for who puts the machine back in time: `size` bytes, for the host that
    // wrote them. False: they are none, or there is no memory for them.
    size_t saved_size() const;
    void save(uint8_t *bytes) const;
    bool load(const uint8_t *bytes, size_t size);

  private:
    static constexpr size_t entry_size = 4;
    static constexpr size_t saved_head = 1 + 2 * sizeof(uint64_t);
    enum class stage : uint8_t { idle, shift_down, key_down, key_up, shift_up, over };

    bool put(uint8_t kind, uint8_t virtual_key, uint32_t frames);
    void act(); // what the stage says, and the stage that follows
    const uint8_t *entry() const { return queue.data() + done; }

    byte_store queue; // of four bytes: kind, virtual key, frames
    size_t done = 0;
    stage now = stage::idle;
    uint64_t this_frame = 0;
    uint64_t due = 0; // frame of the next act
};

// The library's own typist, behind kiv_type: kiv_snapshot_load forgets what it has; whoever goes back in time
// saves it beside the snapshot. As typist's.
size_t kiv_typing_size();
void kiv_typing_save(uint8_t *bytes);
bool kiv_typing_load(const uint8_t *bytes, size_t size);
