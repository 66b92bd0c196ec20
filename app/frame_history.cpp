#include "app/frame_history.h"

#include "app/state_fault.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "machine/run_block.h"

#include <algorithm>
#include <memory>
#include <new>

namespace {

constexpr uint64_t a_frame = 72000;                // T-states, about
constexpr uint64_t most_between = 3993600;         // T-states between two frames of one run
constexpr size_t most_of_tapes = size_t{64} << 20; // bytes, beside one tape of any size

} // namespace

// T-states that go on through loaded states.
uint64_t frame_history::stamp_of_now() {
    const uint64_t stamp = run_state.cycles + offset;
    if (ring.empty() || (stamp > now() && stamp - now() <= most_between)) return stamp;
    offset += now() + a_frame - stamp;
    return now() + a_frame;
}

void frame_history::frame_ended() {
    kiv_directx *const directx = kiv_directx::instance();
    if (directx == nullptr) return;
    keep_tape();
    const snapshot_parts parts{directx->sound_state()};
    bytes.resize(snapshot_size(parts, tape_in_snapshot::checksum_only));
    snapshot_write(parts, tape_in_snapshot::checksum_only, bytes.data());
    ring.push(bytes.data(), bytes.size(), stamp_of_now());
}

void frame_history::show_ahead(uint32_t frames) {
    kiv_directx *const directx = kiv_directx::instance();
    if (directx == nullptr) return;
    directx->compose_ahead([&](auto compose) { ahead.look(frames, directx->sound_state(), compose); });
}

std::string frame_history::go_back_to(uint64_t stamp) {
    return ring.empty() ? std::string() : go_back(ring.find(stamp) + 1);
}

std::string frame_history::one_back() { return at_beginning() ? std::string() : go_back(ring.size() - 1); }

std::string frame_history::go_back(size_t count) {
    if (count >= ring.size()) count = ring.size();
    ring.restore(count - 1, bytes);
    const snapshot_parts parts{kiv_directx::instance()->sound_state()};
    snapshot_fault fault = snapshot_read(parts, bytes.data(), bytes.size());
    if (fault == snapshot_fault::other_tape && put_in_tape(snapshot_tape(bytes.data(), bytes.size())))
        fault = snapshot_read(parts, bytes.data(), bytes.size());
    if (fault == snapshot_fault::none) ring.cut(count);
    return state_fault(fault);
}

// A copy of what lies in the deck: the person may take it out, and go back to a time when it was in.
void frame_history::keep_tape() {
    const uint64_t checksum = cassette_tape_checksum();
    if (checksum == 0 || (!tapes.empty() && tapes.back().checksum == checksum)) return;
    std::erase_if(tapes, [checksum](const kept_tape &tape) { return tape.checksum == checksum; });
    tapes.push_back({checksum, {machine.tape_image, machine.tape_image + machine.tape_size}});
    size_t total = 0;
    for (const kept_tape &tape : tapes) total += tape.bytes.size();
    while (tapes.size() > 1 && total > most_of_tapes) {
        total -= tapes.front().bytes.size();
        tapes.pop_front();
    }
}

bool frame_history::put_in_tape(uint64_t checksum) {
    const auto kept = std::find_if(tapes.begin(), tapes.end(),
                                   [checksum](const kept_tape &tape) { return tape.checksum == checksum; });
    if (kept == tapes.end()) return false;
    std::unique_ptr<uint8_t[]> image(new (std::nothrow) uint8_t[kept->bytes.size() + 1]);
    if (image == nullptr) return false;
    std::copy(kept->bytes.begin(), kept->bytes.end(), image.get());
    return cassette_insert(std::move(image), static_cast<uint32_t>(kept->bytes.size()));
}
