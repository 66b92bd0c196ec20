#include "debug/history.h"

#include "api/kiv.h"
#include "api/typing.h"
#include "machine/kiv_machine.h"
#include <algorithm>
#include <cstring>

namespace {

constexpr uint64_t between_snapshots = 72000; // T-states, about a frame
constexpr size_t most_edits = 128;            // each keeps a whole snapshot

// A state: the snapshot or the keyboard, the typist's, and the size of that in four bytes.
void append_typing(std::vector<uint8_t> &state) {
    const auto size = static_cast<uint32_t>(kiv_typing_size());
    const size_t at = state.size();
    state.resize(at + size + sizeof size);
    kiv_typing_save(state.data() + at);
    std::memcpy(state.data() + at + size, &size, sizeof size);
}

// Puts the typist's part back; the size of the other part.
size_t restore_typing(const std::vector<uint8_t> &state) {
    uint32_t size = 0;
    const size_t end = state.size() - sizeof size;
    std::memcpy(&size, state.data() + end, sizeof size);
    kiv_typing_load(state.data() + end - size, size);
    return end - size;
}

void take_snapshot(std::vector<uint8_t> &state) {
    state.resize(kiv_snapshot_size(KIV_SNAPSHOT_WITHOUT_TAPE));
    kiv_snapshot_save(KIV_SNAPSHOT_WITHOUT_TAPE, state.data(), state.size());
    append_typing(state);
}

} // namespace

bool history::put_state(const std::vector<uint8_t> &state) {
    uint32_t typing = 0;
    std::memcpy(&typing, state.data() + state.size() - sizeof typing, sizeof typing);
    if (kiv_snapshot_load(state.data(), state.size() - sizeof typing - typing) != KIV_OK) return false;
    restore_typing(state);
    return true;
}

std::vector<uint8_t> history::state_now() {
    std::vector<uint8_t> state;
    take_snapshot(state);
    return state;
}

history::history(const history_limits &wanted) : ring({wanted.bytes, wanted.t_states}) {}

std::vector<uint8_t> history::keyboard() const {
    const key_matrix_block &keys = machine;
    std::vector<uint8_t> state(sizeof keys);
    std::memcpy(state.data(), static_cast<const void *>(&keys), sizeof keys);
    append_typing(state);
    return state;
}

void history::push() {
    take_snapshot(bytes);
    ring.push(bytes.data(), bytes.size(), kiv_t_states());
    while (!came.empty() && came.front().t_states < ring.stamp(0)) {
        edits -= came.front().whole;
        came.pop_front();
    }
}

// An edit that is forgotten ends the past: nothing older can be run up to now any more.
void history::limit_edits() {
    if (edits <= most_edits) return;
    ring.clear();
    came.clear();
    edits = 0;
}

void history::before_run(bool edited) {
    const uint64_t now = kiv_t_states();
    std::vector<uint8_t> keys = keyboard();
    if (edited && !ring.empty()) {
        came.push_back({now, true, {}});
        take_snapshot(came.back().state);
        ++edits;
        limit_edits();
    } else if (keys != keys_left) {
        came.push_back({now, false, std::move(keys)});
    }
    if (ring.empty() || now - ring.stamp(ring.size() - 1) >= between_snapshots) push();
}

void history::after_run() { keys_left = keyboard(); }

bool history::restore(size_t index) {
    ring.restore(index, bytes);
    if (!put_state(bytes)) return false;
    const auto later = [](const from_outside &f, uint64_t t) { return f.t_states < t; };
    next =
        static_cast<size_t>(std::lower_bound(came.begin(), came.end(), kiv_t_states(), later) - came.begin());
    return true;
}

uint64_t history::put_in_again() {
    const uint64_t now = kiv_t_states();
    for (; next < came.size() && came[next].t_states <= now; ++next) {
        const from_outside &f = came[next];
        if (f.whole) {
            put_state(f.state);
        } else {
            restore_typing(f.state);
            key_matrix_block &keys = machine;
            std::memcpy(static_cast<void *>(&keys), f.state.data(), sizeof keys);
        }
    }
    return next < came.size() ? came[next].t_states - now : UINT64_MAX;
}

void history::cut_here() {
    const uint64_t now = kiv_t_states();
    if (!ring.empty()) ring.cut(ring.find(now) + 1);
    while (!came.empty() && came.back().t_states > now) {
        edits -= came.back().whole;
        came.pop_back();
    }
    keys_left = keyboard();
}

void history::clear() {
    ring.clear();
    came.clear();
    keys_left.clear();
    edits = next = 0;
}
