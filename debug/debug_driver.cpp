#include "debug/debug_driver.h"

#include "api/kiv.h"
#include "debug/debug_machinery.h"
#include "machine/system_ports.h"
#include <algorithm>
#include <cinttypes>

namespace {

void check(const stop_point &p) {
    const auto wrong = [](const char *text) { throw debug_error(text); };
    if (p.kind > stop_kind::condition) wrong("this is nothing to stop at");
    if (p.first > p.last) wrong("the range ends before it begins");
    if (p.kind == stop_kind::port && p.last > 0xFF) wrong("ports are 0 to 255");
    if (p.kind == stop_kind::interrupt && p.last > 2) wrong("interrupt levels are 0 to 2");
    const bool accesses = p.kind == stop_kind::memory || p.kind == stop_kind::port;
    if (accesses && (p.access & (access_read | access_write)) == 0) wrong("neither reads nor writes");
    if (p.kind == stop_kind::condition && p.condition.empty()) wrong("a condition is wanted");
}

std::string describe_access(const stop_report &r, const debug_teller &t) {
    if (r.kind == stop_kind::port)
        return t.text_of((r.access & access_read) ? "port $%02X read: $%02X" : "port $%02X written: $%02X",
                         r.address & 0xFF, r.value);
    if (r.access & access_read) return t.text_of("$%04X read: $%02X", r.address, r.value);
    return t.text_of("$%04X written: $%02X -> $%02X", r.address, r.before, r.value);
}

const char *describe_processor() {
    switch (kiv_stop_reason()) {
    case KIV_STOP_HALT: return "the processor has stopped: HALT";
    case KIV_STOP_UNDEFINED: return "the processor has stopped: an undefined instruction";
    case KIV_STOP_UNIMPLEMENTED: return "the processor has stopped: an instruction that is not emulated";
    default: return "the processor has stopped: an interrupt in no interrupt mode";
    }
}

std::string describe_kind(const stop_report &r, const debug_teller &t) {
    switch (r.kind) {
    case stop_kind::address: return t.say("breakpoint");
    case stop_kind::memory:
    case stop_kind::port: return describe_access(r, t) + t.text_of(" by $%04X", r.by);
    case stop_kind::interrupt: return t.text_of("interrupt of level %u at $%04X", r.address, r.by);
    case stop_kind::raster: return t.text_of("raster line %u", r.address);
    case stop_kind::frame: return t.text_of("frame %" PRIu64, kiv_frames());
    case stop_kind::t_states: return t.text_of("%" PRIu64 " T-states", kiv_t_states());
    case stop_kind::halt: return t.say("HALT comes next");
    case stop_kind::undefined: return t.say("an instruction comes next that stops the processor");
    case stop_kind::condition: return t.say("the condition holds");
    case stop_kind::running: return t.say("running");
    case stop_kind::aim: return "";
    case stop_kind::asked: return t.say("interrupted");
    case stop_kind::processor: return t.say(describe_processor());
    case stop_kind::beginning: return t.say("the history begins here");
    case stop_kind::observer: return r.text;
    }
    return "";
}

} // namespace

std::string describe(const stop_report &r, debug_words words) {
    return describe_kind(r, {words}) + (r.id != 0 ? " (" + std::to_string(r.id) + ")" : std::string());
}

debug_driver::debug_driver() : inner(std::make_unique<machinery>(*this)) {}
debug_driver::~debug_driver() = default;

// ---- stop points -------------------------------------------------------------------------------------

uint32_t debug_driver::add(const stop_point &point) {
    check(point);
    stop_points.push_back(point);
    stop_points.back().id = next_id;
    stop_points.back().hits = 0;
    try {
        inner->compile();
    } catch (...) {
        stop_points.pop_back();
        inner->compile();
        throw;
    }
    return next_id++;
}

const stop_point *debug_driver::find(uint32_t id) const {
    const auto found = std::find_if(stop_points.begin(), stop_points.end(),
                                    [id](const stop_point &p) { return p.id == id; });
    return found == stop_points.end() ? nullptr : &*found;
}

bool debug_driver::remove(uint32_t id) {
    const bool removed = std::erase_if(stop_points, [id](const stop_point &p) { return p.id == id; }) != 0;
    inner->compile();
    return removed;
}

void debug_driver::remove_all() {
    stop_points.clear();
    inner->compile();
}

bool debug_driver::replace(uint32_t id, const stop_point &point) {
    const stop_point *const old = find(id);
    if (old == nullptr) return false;
    check(point);
    stop_point &there = stop_points[static_cast<size_t>(old - stop_points.data())];
    const stop_point kept = there;
    there = point;
    there.id = id;
    there.hits = kept.hits;
    try {
        inner->compile();
    } catch (...) {
        there = kept;
        inner->compile();
        throw;
    }
    return true;
}

bool debug_driver::enable(uint32_t id, bool on) {
    const stop_point *const point = find(id);
    if (point == nullptr) return false;
    stop_points[static_cast<size_t>(point - stop_points.data())].enabled = on;
    inner->compile();
    return true;
}

// ---- running -----------------------------------------------------------------------------------------

void debug_driver::aim(aim_kind kind, uint16_t address, memory_bank bank) { inner->aim(kind, address, bank); }

void debug_driver::aim_outside(uint16_t first, uint16_t last) { inner->aim_outside(first, last); }

void debug_driver::leave_here() { inner->leave_here(); }

stop_report debug_driver::run_slice(uint64_t t_states) { return inner->run_slice(t_states); }

stop_report debug_driver::run() {
    for (;;) {
        stop_report report = run_slice(UINT32_MAX);
        if (report.kind != stop_kind::running) return report;
    }
}

void debug_driver::keep_history(const history_limits &limits) {
    own_history = std::make_unique<history>(limits);
}

void debug_driver::keep_no_history() { own_history.reset(); }
stop_report debug_driver::back(aim_kind kind) { return inner->back(kind); }
stop_report debug_driver::back_to(uint64_t t_states) { return inner->back_to(t_states); }

bool debug_driver::in_the_past() const { return inner->in_the_past(); }

void debug_driver::look_back(size_t count, const std::function<void(uint16_t, uint64_t)> &look) {
    inner->look_back(count, look);
}

// ---- changing ----------------------------------------------------------------------------------------

kiv_result debug_driver::write(int32_t area, uint32_t address, const void *data, size_t size) {
    const kiv_result result = kiv_write(area, address, data, size);
    // Snapshots belong to the ROM images that they were made with.
    const bool rom = area == KIV_AREA_MAIN_ROM || area == KIV_AREA_NBASIC_ROM || area == KIV_AREA_EXT_ROM ||
                     area == KIV_AREA_FONT;
    if (rom)
        forget_history();
    else
        inner->changed();
    if (area == KIV_AREA_CPU || area == KIV_AREA_RAM)
        for (debug_observer *o : observers) o->poked(static_cast<uint16_t>(address), size);
    return result;
}

kiv_result debug_driver::set_register(int32_t index, uint32_t value) {
    inner->changed();
    if (index == KIV_REG_PC)
        for (debug_observer *o : observers) o->redirected();
    return kiv_set_register(index, value);
}

void debug_driver::port_out(uint16_t port, uint8_t value) {
    inner->changed();
    kiv_port_out(port, value);
}

void debug_driver::changed() {
    inner->changed();
    for (debug_observer *o : observers) o->moved(true);
}

void debug_driver::forget_history() {
    if (own_history) own_history->clear();
    inner->another_machine();
    changed();
}

// ---- who listens -------------------------------------------------------------------------------------

void debug_driver::listen(debug_observer &observer) {
    observers.push_back(&observer);
    inner->compile();
}

void debug_driver::unlisten(debug_observer &observer) {
    std::erase(observers, &observer);
    inner->compile();
}
