#include "libretro/auto_start.h"

#include "api/kiv.h"

#include <cstring>

auto_start starting;

namespace {

enum stage : uint8_t { done, wait_for_basic, type_cload, read_tape, type_run };

constexpr uint32_t frames_until_basic = 60, key_frames = 3, frames_a_key = 6;
constexpr uint32_t line_end_frames = 27; // behind the last byte BASIC has a line left to put away
constexpr uint32_t patience_frames = 550;

void enter(stage next, uint32_t frame) {
    starting.stage = next;
    starting.since = frame;
}

// True when all of it is typed.
bool type_by_frame(const char *keys, uint32_t frame) {
    const uint32_t index = (frame - starting.since) / frames_a_key,
                   phase = (frame - starting.since) % frames_a_key;
    if (index >= std::strlen(keys)) return true;
    const auto key = static_cast<uint8_t>(keys[index]); // letters and RETURN are their own virtual-key codes
    if (phase == 0) kiv_key(key, 1);
    if (phase == key_frames) kiv_key(key, 0);
    return false;
}

bool tape_is_read(uint32_t frame) {
    const auto position = static_cast<uint32_t>(kiv_tape_position());
    if (position != starting.position) {
        starting.position = position;
        starting.since = frame;
    }
    return frame - starting.since >= (position >= kiv_tape_size() ? line_end_frames : patience_frames);
}

} // namespace

void auto_start_begin() {
    starting = {};
    enter(wait_for_basic, static_cast<uint32_t>(kiv_frames()));
}

void auto_start_step() {
    const auto frame = static_cast<uint32_t>(kiv_frames());
    switch (starting.stage) { // the next stage begins in the frame in which the one before ends
    case wait_for_basic:
        if (frame - starting.since < frames_until_basic) return;
        enter(type_cload, frame);
        [[fallthrough]];
    case type_cload:
        if (!type_by_frame("CLOAD\r", frame)) return;
        enter(read_tape, frame);
        [[fallthrough]];
    case read_tape:
        if (!tape_is_read(frame)) return;
        enter(type_run, frame);
        [[fallthrough]];
    case type_run:
        if (type_by_frame("RUN\r", frame)) enter(done, frame);
        break;
    default: break;
    }
}
