#include "app/frame_history.h"

#include "display/kiv_directx.h"
#include "machine/run_block.h"

namespace {

constexpr uint64_t a_frame = 72000;        // T-states, about
constexpr uint64_t most_between = 3993600; // T-states between two frames of one run

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
    kiv_directx *const directx = kiv_directx::instance();
    const snapshot_fault fault = snapshot_read({directx->sound_state()}, bytes.data(), bytes.size());
    if (fault == snapshot_fault::none) ring.cut(count);
    return snapshot_fault_text(fault);
}
