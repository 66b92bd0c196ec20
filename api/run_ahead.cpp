#include "api/run_ahead.h"

#include "api/snapshot.h"
#include "display/frame_composer.h"
#include "machine/kiv_machine.h"
#include "machine/machine_run.h"
#include "machine/run_block.h"
#include "support/log.h"

#include <new>

namespace {

constexpr uint32_t longest_frame = 400'000; // T-states; a program may set the CRT to anything
constexpr auto no_tape = tape_in_snapshot::checksum_only;

const sound_listener nobody = {[] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {}};

// Up to the next frame's end. False: the CPU has stopped, or there is no frame to wait for.
bool run_frame() {
    const uint64_t until = run_state.cycles + longest_frame;
    while (run_state.cycles < until) {
        switch (run_passes(static_cast<uint32_t>(until - run_state.cycles), run_state.charge_waits != 0)
                    .outcome) {
        case pass_outcome::stopped: return false;
        case pass_outcome::frame: return true;
        default: break;
        }
    }
    return false;
}

} // namespace

bool run_ahead::go(uint32_t frames, sound_block &sound) {
    pass_frame_over(); // the frame that has ended is not the one that is shown
    run_state.frame_due = 0;
    size = snapshot_size({sound}, no_tape);
    if (size > room) {
        room = snapshot_limit(no_tape, 0);
        bytes.reset(new (std::nothrow) uint8_t[room]);
        if (bytes == nullptr) {
            room = 0;
            return false;
        }
    }
    snapshot_write({sound}, no_tape, bytes.get());
    // From here on the outside hears nothing, and keys stay what they are.
    const sound_listener hears = machine;
    const cassette_recorder records = cassette_record_with({[](uint8_t) {}, [] {}});
    static_cast<sound_listener &>(machine) = nobody;
    keyboard_hold(true);
    hold_emulated_lines(true);
    for (uint32_t n = 1; run_frame() && n < frames; ++n) {
        ++run_state.frames;
        run_state.calendar.now_cycles = run_state.cycles;
        pass_frame_over();
    }
    hold_emulated_lines(false);
    keyboard_hold(false);
    cassette_record_with(records);
    static_cast<sound_listener &>(machine) = hears;
    return true;
}

void run_ahead::come_back(sound_block &sound) {
    snapshot_parts parts{sound};
    parts.keeps_keys = true;
    // It was written here, a moment ago, with these ROM images and this tape.
    (void)snapshot_read(parts, bytes.get(), size);
}
