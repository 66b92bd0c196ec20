// The driver's way back: a snapshot of the past, and a run from there that looks for the place to stand at.
#include "debug/debug_machinery.h"

#include "api/kiv.h"
#include "debug/disassembler.h"
#include "machine/kiv_machine.h"
#include "machine/run_block.h"
#include <algorithm>
#include <utility>

namespace {

constexpr uint64_t a_piece = 72000;
constexpr size_t most_at_once = 64; // snapshots that one run passes

flow flow_at(const debug_place &place) {
    uint8_t bytes[4];
    bytes_at(place.pc, bytes);
    return flow_of(bytes);
}

bool has_stopped() { return (main_cpu.stop_flags & stop_code_mask) != 0; }

} // namespace

// Runs on from where the machine is as it did then, until `visit` says so or the processor stops.
void debug_driver::machinery::run_again(const visitor &visit) {
    visiting = &visit;
    attentive = true;
    stopped = frame_seen = false;
    seen.clear();
    while (!stopped) {
        const uint64_t left = std::min(driver.own_history->put_in_again(), a_piece);
        const int32_t ended_by = kiv_run(static_cast<uint32_t>(left));
        frame_seen |= ended_by == KIV_RUN_FRAME;
        if (driver.on_work) driver.on_work(looked_through);
        if (ended_by != KIV_RUN_STOPPED || stopped) continue;
        driver.own_history->put_in_again(); // a reset may have set it going again, at this very instant
        if (has_stopped()) break;
    }
    if (stopped) run_state.frame_due = 0;
    visiting = nullptr;
}

// Looks at the steps of a stretch and keeps the last one that it likes.
class debug_driver::machinery::looker {
  public:
    explicit looker(machinery &m_) : m(m_) {}
    virtual ~looker() = default;
    virtual void begin() { found.reset(); }
    virtual void at(const debug_place &here) = 0;
    // The stretch ends with this step, which is not of it.
    virtual void end(const debug_place &) {}
    std::optional<found_place> found;

  protected:
    machinery &m;
};

class debug_driver::machinery::previous_looker final : public looker {
  public:
    using looker::looker;
    void at(const debug_place &here) override { found = {here, {.kind = stop_kind::aim}}; }
};

// The last step with the stack where it is now, or higher: a call as a whole. Or the first one of a block
// instruction that repeats.
class debug_driver::machinery::over_looker final : public looker {
  public:
    over_looker(machinery &m_, uint16_t sp_, std::optional<uint16_t> repeating_at)
        : looker(m_), sp(sp_), repeating(repeating_at) {}
    void begin() override {
        looker::begin();
        before.reset();
    }
    void at(const debug_place &here) override {
        const bool outside = static_cast<int16_t>(here.sp - sp) >= 0;
        const bool begins = !repeating || (here.pc == *repeating && before && *before != here.pc);
        if (outside && !here.entering && begins) found = {here, {.kind = stop_kind::aim}};
        if (outside) before = here.pc;
    }

  private:
    uint16_t sp;
    std::optional<uint16_t> repeating, before;
};

// The call, or the interrupted instruction, that has not returned yet.
class debug_driver::machinery::call_looker final : public looker {
  public:
    call_looker(machinery &m_, uint16_t sp_) : looker(m_), sp(sp_) {}
    void begin() override {
        looker::begin();
        calls.clear();
    }
    void at(const debug_place &here) override {
        leave(here.sp);
        const flow f = flow_at(here);
        if (here.entering || f == flow::call || f == flow::restart) calls.push_back(here);
        found.reset();
    }
    void end(const debug_place &) override {
        leave(sp);
        if (!calls.empty()) found = {calls.back(), {.kind = stop_kind::aim}};
    }

  private:
    void leave(uint16_t now) {
        while (!calls.empty() && static_cast<int16_t>(now - calls.back().sp) >= 0) calls.pop_back();
    }
    uint16_t sp;
    std::vector<debug_place> calls;
};

class debug_driver::machinery::frame_looker final : public looker {
  public:
    using looker::looker;
    void at(const debug_place &here) override {
        if (m.frame_seen) found = {here, {.kind = stop_kind::aim}};
        m.frame_seen = false;
    }
};

// Where a stop point would have stopped last. An access counts for the step that made it.
class debug_driver::machinery::stop_looker final : public looker {
  public:
    using looker::looker;
    void begin() override {
        looker::begin();
        before.reset();
        m.resumed.t_states = UINT64_MAX;
        m.last_line = UINT32_MAX;
    }
    void at(const debug_place &here) override {
        take(&here);
        const bool first = !before;
        m.check_points(here);
        for (const stop_report &r : m.seen) {
            // Nobody knows what was before the first step; the stretch in front of it ends with that one.
            if (first && (r.kind == stop_kind::condition || r.kind == stop_kind::raster)) continue;
            found = {here, r};
        }
        m.seen.clear();
        before = here;
    }
    void end(const debug_place &) override { take(nullptr); }

  private:
    void take(const debug_place *here) {
        for (const stop_report &r : m.seen) {
            const bool access = r.kind == stop_kind::memory || r.kind == stop_kind::port;
            if (access && before) found = {*before, r};
            if (!access && here != nullptr) found = {*here, r};
        }
        m.seen.clear();
        if (!std::exchange(m.frame_seen, false) || here == nullptr) return;
        for (size_t i = 0; i < m.driver.stop_points.size(); ++i) {
            const stop_point &p = m.driver.stop_points[i];
            const stop_report r{.kind = stop_kind::frame, .id = p.id};
            if (p.kind == stop_kind::frame && p.enabled && (p.count == 0 || p.count == kiv_frames()) &&
                m.hit(i, r))
                found = {*here, r};
        }
    }
    std::optional<debug_place> before;
};

bool debug_driver::machinery::no_past(uint64_t before) const {
    return !driver.own_history || driver.own_history->empty() || driver.own_history->oldest() >= before;
}

// The last place that the looker likes, before that instant: stretch by stretch into the past, or, when it
// has to see everything up to the end, ever longer ones.
std::optional<debug_driver::machinery::found_place>
debug_driver::machinery::search(uint64_t before, bool to_the_end, looker &looking) {
    if (no_past(before)) return std::nullopt;
    history &past = *driver.own_history;
    size_t index = past.find(before - 1), step = 1;
    for (uint64_t to = before;;) {
        if (driver.is_asked() || !past.restore(index)) return std::nullopt;
        looked_through = static_cast<double>(before - past.stamp(index)) /
                         static_cast<double>(std::max<uint64_t>(before - past.oldest(), 1));
        looking.begin();
        run_again([&](const debug_place &here) {
            if (here.t_states >= before) {
                looking.end(here);
                return true;
            }
            looking.at(here);
            return here.t_states >= to;
        });
        if (looking.found || index == 0) return looking.found;
        if (!to_the_end) to = past.stamp(index);
        index -= std::min(step, index);
        step = std::min(step * 2, most_at_once);
    }
}

std::optional<debug_driver::machinery::found_place> debug_driver::machinery::find_over(uint64_t before) {
    const uint16_t sp = main_cpu.SP;
    previous_looker previous(*this);
    auto found = search(before, false, previous);
    if (!found) return found;
    uint8_t bytes[4];
    driver.own_history->restore(driver.own_history->find(found->place.t_states));
    run_again([&](const debug_place &here) { return here.t_states >= found->place.t_states; });
    bytes_at(found->place.pc, bytes);
    const flow f = flow_of(bytes);
    const bool repeats = f == flow::repeats;
    if (!repeats && (f != flow::returns || static_cast<int16_t>(sp - found->place.sp) <= 0)) return found;
    over_looker over(*this, sp, repeats ? std::optional(found->place.pc) : std::nullopt);
    auto whole = search(before, repeats, over);
    return whole ? whole : found;
}

void debug_driver::machinery::moved() {
    pending.reset();
    seen.clear();
    resumed = place_now();
    last_line = machine.raster_line;
    looked_at = {};
    for (size_t i = 0; i < driver.stop_points.size(); ++i)
        if (driver.stop_points[i].kind == stop_kind::condition)
            compiled[i].held = compiled[i].condition() != 0;
    // What the stretch has written again has been taken when it ran first.
    if (driver.on_run) kiv_tape_output_clear();
    for (debug_observer *o : driver.observers) o->moved(false);
    edited = false;
}

stop_report debug_driver::machinery::go_to(const found_place &found) {
    history &past = *driver.own_history;
    past.restore(past.find(found.place.t_states));
    run_again([&](const debug_place &here) { return here.t_states >= found.place.t_states; });
    past.cut_here();
    moved();
    driver.never_mind(); // it is over
    stop_report report = found.report;
    return finish(report);
}

// The oldest instant, or the present one when somebody does not want to wait.
stop_report debug_driver::machinery::nothing_found(uint64_t before) {
    if (driver.asked.exchange(false)) {
        const found_place present{{before - has_stopped(), 0, 0, false}, {.kind = stop_kind::asked}};
        return go_to(present);
    }
    if (!driver.own_history || driver.own_history->empty()) return finish({.kind = stop_kind::beginning});
    if (driver.own_history->oldest() < before) {
        driver.own_history->restore(0);
        driver.own_history->cut_here();
        moved();
    }
    return finish({.kind = stop_kind::beginning});
}

stop_report debug_driver::machinery::back(aim_kind kind) {
    const slots hooked(*this);
    // A processor that has stopped stands behind the instruction that stopped it, with no time gone by.
    const uint64_t before = run_state.cycles + (has_stopped() ? 1 : 0);
    std::optional<found_place> found;
    switch (kind) {
    case aim_kind::into: {
        previous_looker previous(*this);
        found = search(before, false, previous);
        break;
    }
    case aim_kind::over: found = find_over(before); break;
    case aim_kind::out: {
        call_looker call(*this, main_cpu.SP);
        found = search(before, true, call);
        break;
    }
    case aim_kind::frame: {
        frame_looker frame(*this);
        found = search(before, false, frame);
        break;
    }
    default: {
        stop_looker stop(*this);
        found = search(before, false, stop);
        break;
    }
    }
    return found ? go_to(*found) : nothing_found(before);
}

stop_report debug_driver::machinery::back_to(uint64_t t_states) {
    const slots hooked(*this);
    const uint64_t before = run_state.cycles + (has_stopped() ? 1 : 0);
    if (t_states >= run_state.cycles && !has_stopped()) return finish({.kind = stop_kind::aim});
    previous_looker previous(*this);
    const auto found = search(t_states < before ? t_states + 1 : before, false, previous);
    return found ? go_to(*found) : nothing_found(before);
}

uint64_t debug_driver::machinery::steps_between(size_t index, uint64_t before) {
    uint64_t count = 0;
    driver.own_history->restore(index);
    run_again([&](const debug_place &here) {
        count += here.t_states < before;
        return here.t_states >= before;
    });
    return count;
}

void debug_driver::machinery::look_back(size_t count, const std::function<void(uint16_t, uint64_t)> &look) {
    const uint64_t before = run_state.cycles + (has_stopped() ? 1 : 0);
    if (count == 0 || no_past(before)) return;
    const slots hooked(*this);
    history &past = *driver.own_history;
    const std::vector<uint8_t> present = history::state_now();
    size_t index = past.find(before - 1), step = 1;
    uint64_t found = steps_between(index, before);
    while (found < count && index != 0 && !driver.is_asked()) {
        index -= std::min(step, index);
        step = std::min(step * 2, most_at_once);
        found = steps_between(index, before);
    }
    past.restore(index);
    run_again([&](const debug_place &here) {
        if (here.t_states >= before) return true;
        if (found-- <= count) look(here.pc, here.t_states);
        return false;
    });
    history::put_state(present);
    driver.never_mind();
    if (driver.on_run) kiv_tape_output_clear();
}
