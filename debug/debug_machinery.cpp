#include "debug/debug_machinery.h"

#include "api/kiv.h"
#include "debug/disassembler.h"
#include "machine/kiv_machine.h"
#include "machine/run_block.h"
#include <algorithm>
#include <utility>

namespace {

constexpr uint64_t a_piece = 72000; // T-states run at a time, about a frame
constexpr uint8_t entering_flags = pending_interrupt | pending_nmi;

bool is_entering() {
    return (main_cpu.stop_flags & pending_nmi) != 0 ||
           ((main_cpu.stop_flags & pending_interrupt) != 0 && main_cpu.IM != 0);
}

bool within(uint32_t value, const stop_point &point) { return value >= point.first && value <= point.last; }

// The stack is where it was, or higher.
bool at_or_above(uint16_t sp, uint16_t level) { return static_cast<int16_t>(sp - level) >= 0; }

bool stops_processor(const uint8_t bytes[4]) {
    if (bytes[0] != 0xED && bytes[0] != 0xDD && bytes[0] != 0xFD) return false;
    const instruction_kind kind = disassemble(0, [bytes](uint16_t at) { return bytes[at & 3]; }).kind;
    return kind == instruction_kind::undefined || kind == instruction_kind::unimplemented;
}

} // namespace

uint16_t debug_driver::next_address() { return is_entering() ? main_cpu.vector_pc : main_cpu.PC; }

debug_place place_now() {
    return {run_state.cycles, debug_driver::next_address(), main_cpu.SP,
            (main_cpu.stop_flags & entering_flags) != 0};
}

void bytes_at(uint16_t address, uint8_t bytes[4]) {
    uint32_t waits = 0;
    for (int i = 0; i < 4; ++i) bytes[i] = mem_read(static_cast<uint16_t>(address + i), &waits);
}

debug_driver::machinery *debug_driver::machinery::running = nullptr;

// ---- the slots ---------------------------------------------------------------------------------------

debug_driver::machinery::slots::slots(machinery &m) {
    running = &m;
    main_cpu.z80_step = step_hook;
    main_cpu.mem_read = read_hook;
    main_cpu.mem_write = write_hook;
    main_cpu.io_in = in_hook;
    main_cpu.io_out = out_hook;
    main_cpu.z80_interrupt = interrupt_hook;
}

debug_driver::machinery::slots::~slots() {
    running = nullptr;
    main_cpu.z80_step = z80_step;
    main_cpu.mem_read = mem_read;
    main_cpu.mem_write = mem_write;
    main_cpu.io_in = io_in;
    main_cpu.io_out = io_out;
    main_cpu.z80_interrupt = z80_interrupt;
}

bool debug_driver::machinery::step_hook(z80_cpu &cpu) {
    machinery &m = *running;
    m.fetch_next = cpu.PC;
    if ((m.attentive || cpu.stop_flags != 0 || (m.marks[cpu.PC] & mark_execute) != 0) && m.before_step())
        return true;
    return z80_step(cpu);
}

uint8_t debug_driver::machinery::read_hook(uint16_t address, uint32_t *wait) {
    machinery &m = *running;
    const uint8_t value = mem_read(address, wait);
    const bool fetched = address == m.fetch_next;
    if (fetched) ++m.fetch_next;
    if ((m.marks[address] & mark_read) != 0 || m.tell_memory) [[unlikely]]
        m.accessed(address, value, value, access_read, fetched);
    return value;
}

void debug_driver::machinery::write_hook(uint16_t address, uint8_t value, uint32_t *wait) {
    machinery &m = *running;
    if ((m.marks[address] & mark_write) == 0 && !m.tell_memory) [[likely]]
        return mem_write(address, value, wait);
    const uint8_t before = byte_written(address);
    mem_write(address, value, wait);
    m.accessed(address, before, value, access_write, false);
}

uint8_t debug_driver::machinery::in_hook(uint16_t port) {
    machinery &m = *running;
    const uint8_t value = io_in(port);
    if ((m.port_marks[port & 0xFF] & access_read) != 0 || m.tell_ports) [[unlikely]]
        m.port_used(port, value, access_read);
    return value;
}

void debug_driver::machinery::out_hook(uint16_t port, uint8_t value) {
    machinery &m = *running;
    io_out(port, value);
    if ((m.port_marks[port & 0xFF] & access_write) != 0 || m.tell_ports) [[unlikely]]
        m.port_used(port, value, access_write);
}

uint32_t debug_driver::machinery::interrupt_hook(z80_cpu &cpu, uint8_t level) {
    const uint32_t refused = z80_interrupt(cpu, level);
    if (refused != 0) return refused;
    machinery &m = *running;
    if (m.visiting == nullptr)
        for (debug_observer *o : m.driver.observers)
            if (o->wants & debug_observer::wants_interrupts) o->interrupt(level);
    stop_report report{.kind = stop_kind::interrupt, .by = cpu.PC, .address = level};
    m.event(report, [level](const stop_point &p) { return within(level, p); });
    m.ask_observers();
    return refused;
}

// ---- what has been accessed --------------------------------------------------------------------------

// Stops before the next step where a stop point of the report's kind matches.
template <class Matches> void debug_driver::machinery::event(stop_report report, Matches matches) {
    for (size_t i = 0; i < driver.stop_points.size(); ++i) {
        const stop_point &p = driver.stop_points[i];
        if (p.kind != report.kind || !p.enabled || !matches(p)) continue;
        report.id = p.id;
        if (hit(i, report)) want_stop(report);
    }
}

void debug_driver::machinery::accessed(uint16_t address, uint8_t before, uint8_t value, uint8_t access,
                                       bool fetched) {
    if (fetched) {
        // A byte behind the instruction that it reads itself is data, though it comes next.
        uint8_t bytes[4];
        bytes_at(main_cpu.trace_pc, bytes);
        fetched = static_cast<uint16_t>(address - main_cpu.trace_pc) < instruction_length(bytes);
    }
    if (tell_memory && visiting == nullptr) {
        for (debug_observer *o : driver.observers) {
            if ((o->wants & debug_observer::wants_memory) == 0) continue;
            if (access == access_read)
                o->read(address, value, fetched);
            else
                o->written(address, before, value);
        }
        ask_observers();
    }
    if (fetched || (marks[address] & (access == access_read ? mark_read : mark_write)) == 0) return;
    const memory_bank bank = access == access_read ? bank_at(address) : bank_written(address);
    const stop_report report{.kind = stop_kind::memory,
                             .by = main_cpu.trace_pc,
                             .address = address,
                             .value = value,
                             .before = before,
                             .access = access};
    event(report, [&](const stop_point &p) {
        return within(address, p) && (p.access & access) != 0 &&
               (p.bank == memory_bank::any || p.bank == bank);
    });
}

void debug_driver::machinery::port_used(uint16_t port, uint8_t value, uint8_t access) {
    if (tell_ports && visiting == nullptr) {
        for (debug_observer *o : driver.observers) {
            if ((o->wants & debug_observer::wants_ports) == 0) continue;
            if (access == access_read)
                o->in(port, value);
            else
                o->out(port, value);
        }
        ask_observers();
    }
    const stop_report report{
        .kind = stop_kind::port, .by = main_cpu.trace_pc, .address = port, .value = value, .access = access};
    event(report, [&](const stop_point &p) { return within(port & 0xFF, p) && (p.access & access) != 0; });
}

void debug_driver::machinery::ask_observers() {
    if (visiting != nullptr) return;
    for (debug_observer *o : driver.observers) {
        if (!o->wants_to_stop) continue;
        o->wants_to_stop = false;
        want_stop({.kind = stop_kind::observer, .by = main_cpu.trace_pc, .text = o->stop_text});
    }
}

void debug_driver::machinery::want_stop(const stop_report &report) {
    if (visiting != nullptr) {
        seen.push_back(report);
        return;
    }
    if (!pending) pending = report;
    attentive = true;
}

bool debug_driver::machinery::hit(size_t index, const stop_report &report) {
    stop_point &p = driver.stop_points[index];
    const compiled_point &c = compiled[index];
    looked_at = {report.address, report.value, static_cast<int64_t>(p.hits + 1)};
    if (c.condition && c.condition() == 0) return false;
    if (visiting != nullptr) return p.log.empty();
    if (++p.hits <= p.ignore) return false;
    if (p.log.empty()) return true;
    std::string line;
    for (const text_or_expression &part : c.log)
        line += part.value ? std::to_string(part.value()) : part.text;
    if (driver.on_log) driver.on_log(line);
    return false;
}

// ---- before an instruction ---------------------------------------------------------------------------

bool debug_driver::machinery::before_step() {
    const debug_place here = place_now();
    fetch_next = here.pc;
    if (visiting != nullptr) {
        stopped = (*visiting)(here);
        return stopped;
    }
    if (!check_points(here) && aim_reached(here)) pending = stop_report{.kind = stop_kind::aim};
    if (pending) {
        stopped = true;
        resumed = here;
        return true;
    }
    for (debug_observer *o : driver.observers)
        if (o->wants & debug_observer::wants_steps) o->step(here.pc, here.t_states, here.entering);
    ask_observers(); // what they object to is behind them when the machine stops
    if (aimed == aim_kind::out) {
        uint8_t bytes[4];
        bytes_at(here.pc, bytes);
        last_returned = flow_of(bytes) == flow::returns;
    }
    ++steps;
    attentive = always_attentive || aimed != aim_kind::none || pending.has_value();
    return false;
}

// Those that stop before an instruction. True: `pending` says which.
bool debug_driver::machinery::check_points(const debug_place &here) {
    const bool standing = here.t_states == resumed.t_states && here.pc == resumed.pc;
    const bool new_line = machine.raster_line != last_line;
    last_line = machine.raster_line;
    uint8_t bytes[4] = {};
    if (looks_at_bytes) bytes_at(here.pc, bytes);
    for (size_t i = 0; i < driver.stop_points.size(); ++i) {
        const stop_point &p = driver.stop_points[i];
        if (!p.enabled) continue;
        bool matches = false;
        switch (p.kind) {
        case stop_kind::address:
            matches =
                !standing && within(here.pc, p) && (p.bank == memory_bank::any || p.bank == bank_at(here.pc));
            break;
        case stop_kind::raster: matches = new_line && within(last_line, p); break;
        case stop_kind::halt: matches = !standing && bytes[0] == 0x76; break;
        case stop_kind::undefined: matches = !standing && stops_processor(bytes); break;
        case stop_kind::condition: {
            looked_at = {0, 0, static_cast<int64_t>(p.hits + 1)};
            const bool holds = compiled[i].condition() != 0;
            matches = holds && !compiled[i].held;
            compiled[i].held = holds;
            break;
        }
        default: break;
        }
        if (!matches) continue;
        stop_report report{.kind = p.kind, .id = p.id, .by = here.pc, .address = here.pc};
        if (p.kind == stop_kind::raster) report.address = static_cast<uint16_t>(last_line);
        if (hit(i, report)) want_stop(report);
    }
    return pending.has_value();
}

void debug_driver::machinery::aim_over(const debug_place &here) {
    aim_sp = here.sp;
    if (here.entering) {
        aim_until = true;
        aim_pc = main_cpu.PC;
        return;
    }
    uint8_t bytes[4];
    bytes_at(here.pc, bytes);
    const flow f = flow_of(bytes);
    aim_until = f == flow::call || f == flow::restart || f == flow::repeats || f == flow::halt;
    aim_pc = static_cast<uint16_t>(here.pc + instruction_length(bytes));
}

void debug_driver::machinery::aim(aim_kind kind, uint16_t address, memory_bank bank) {
    aimed = kind;
    aim_pc = address;
    aim_bank = bank;
    aim_sp = main_cpu.SP;
    aim_until = last_returned = false;
    steps = 0;
    if (kind == aim_kind::over) aim_over(place_now());
}

void debug_driver::machinery::aim_outside(uint16_t first, uint16_t last) {
    aim(aim_kind::outside, first, memory_bank::any);
    aim_last = last;
}

bool debug_driver::machinery::aim_reached(const debug_place &here) {
    switch (aimed) {
    case aim_kind::into: return steps != 0;
    case aim_kind::over:
        if (aim_until)
            return steps != 0 && here.pc == aim_pc && at_or_above(here.sp, aim_sp) && !here.entering;
        if (steps == 0) return false;
        if (!here.entering) return true;
        aim_until = true; // behind the interrupt that came right then
        aim_pc = main_cpu.PC;
        aim_sp = here.sp;
        return false;
    case aim_kind::out: return last_returned && here.sp != aim_sp && at_or_above(here.sp, aim_sp);
    case aim_kind::address:
        return here.pc == aim_pc && (steps != 0 || here.t_states != resumed.t_states) &&
               (aim_bank == memory_bank::any || aim_bank == bank_at(here.pc));
    case aim_kind::outside: return steps != 0 && (here.pc < aim_pc || here.pc > aim_last);
    default: return false;
    }
}

// ---- forwards ----------------------------------------------------------------------------------------

uint64_t debug_driver::machinery::next_t_states() const {
    uint64_t next = UINT64_MAX;
    for (const stop_point &p : driver.stop_points)
        if (p.kind == stop_kind::t_states && p.enabled && p.count > run_state.cycles)
            next = std::min(next, p.count);
    return next;
}

// What a piece of a run that has come to its own end brings.
std::optional<stop_report> debug_driver::machinery::after_piece(int32_t ended_by) {
    std::optional<stop_report> result;
    const auto consider = [&](size_t i) {
        const stop_report report{.kind = driver.stop_points[i].kind, .id = driver.stop_points[i].id};
        if (hit(i, report) && !result) result = report;
    };
    for (size_t i = 0; i < driver.stop_points.size(); ++i) {
        stop_point &p = driver.stop_points[i];
        if (!p.enabled) continue;
        if (p.kind == stop_kind::frame && ended_by == KIV_RUN_FRAME &&
            (p.count == 0 || p.count == kiv_frames()))
            consider(i);
        if (p.kind == stop_kind::t_states && p.count <= run_state.cycles) {
            p.enabled = false;
            consider(i);
        }
    }
    if (!result && ended_by == KIV_RUN_FRAME && aimed == aim_kind::frame)
        result = stop_report{.kind = stop_kind::aim};
    if (!result && ended_by == KIV_RUN_STOPPED) result = stop_report{.kind = stop_kind::processor};
    return result;
}

stop_report debug_driver::machinery::finish(stop_report report) {
    if (report.kind == stop_kind::running) return report;
    report.pc =
        report.kind == stop_kind::processor ? static_cast<uint16_t>(kiv_stop_address()) : next_address();
    if (report.kind != stop_kind::memory && report.kind != stop_kind::port &&
        report.kind != stop_kind::interrupt && report.kind != stop_kind::observer)
        report.by = report.pc;
    aimed = aim_kind::none;
    if (report.id != 0)
        if (const stop_point *p = driver.find(report.id); p != nullptr && p->once) driver.remove(report.id);
    return report;
}

stop_report debug_driver::machinery::run_slice(uint64_t t_states) {
    const uint64_t end = run_state.cycles + std::max<uint64_t>(t_states, 1);
    const slots hooked(*this);
    attentive = true; // for the first step
    while (run_state.cycles < end) {
        if (driver.asked.exchange(false)) return finish({.kind = stop_kind::asked});
        const uint64_t left = std::min({end - run_state.cycles, a_piece, next_t_states() - run_state.cycles});
        if (driver.own_history) driver.own_history->before_run(edited);
        edited = stopped = false;
        int32_t ended_by = kiv_run(static_cast<uint32_t>(left));
        if (stopped) {
            run_state.frame_due = 0; // the run had begun: what was due has been seen to
            ended_by = KIV_RUN_LIMIT;
        }
        if (driver.own_history) driver.own_history->after_run();
        if (driver.on_run) driver.on_run(ended_by);
        if (pending && stopped) return finish(*std::exchange(pending, std::nullopt));
        if (const auto report = after_piece(ended_by)) return finish(*report);
    }
    return {};
}

void debug_driver::machinery::leave_here() { resumed = place_now(); }

void debug_driver::machinery::another_machine() {
    resumed.t_states = UINT64_MAX;
    pending.reset();
    aimed = aim_kind::none;
    for (compiled_point &c : compiled) c.held = false;
}

// ---- stop points, made ready -------------------------------------------------------------------------

void debug_driver::machinery::mark_point(const stop_point &p) {
    if (p.kind == stop_kind::port)
        for (unsigned i = p.first; i <= p.last; ++i) port_marks[i & 0xFF] |= p.access;
    uint8_t bits = 0;
    if (p.kind == stop_kind::address) bits = mark_execute;
    if (p.kind == stop_kind::memory)
        bits = static_cast<uint8_t>(((p.access & access_read) ? mark_read : 0) |
                                    ((p.access & access_write) ? mark_write : 0));
    if (bits != 0)
        for (unsigned i = p.first; i <= p.last; ++i) marks[i] |= bits;
    looks_at_bytes |= p.kind == stop_kind::halt || p.kind == stop_kind::undefined;
    always_attentive |= looks_at_bytes || p.kind == stop_kind::raster || p.kind == stop_kind::condition;
}

void debug_driver::machinery::compile_log(const std::string &text, compiled_point &into) const {
    for (size_t at = 0; at < text.size();) {
        const size_t open = std::min(text.find('{', at), text.size());
        if (open > at) into.log.push_back({text.substr(at, open - at), nullptr});
        if (open == text.size()) break;
        const size_t close = text.find('}', open);
        if (close == std::string::npos) throw debug_error("'" + text + "': a } is missing");
        into.log.push_back({{}, parse_expression(text.substr(open + 1, close - open - 1), driver.symbols)});
        at = close + 1;
    }
}

void debug_driver::machinery::compile() {
    std::vector<compiled_point> made;
    for (const stop_point &p : driver.stop_points) {
        compiled_point c;
        c.id = p.id;
        for (const compiled_point &old : compiled)
            if (old.id == p.id) c.held = old.held;
        if (!p.condition.empty()) c.condition = parse_expression(p.condition, driver.symbols);
        compile_log(p.log, c);
        made.push_back(std::move(c));
    }
    compiled = std::move(made);
    marks.fill(0);
    port_marks.fill(0);
    always_attentive = looks_at_bytes = tell_memory = tell_ports = false;
    for (const stop_point &p : driver.stop_points)
        if (p.enabled) mark_point(p);
    for (const debug_observer *o : driver.observers) {
        always_attentive |= (o->wants & debug_observer::wants_steps) != 0;
        tell_memory |= (o->wants & debug_observer::wants_memory) != 0;
        tell_ports |= (o->wants & debug_observer::wants_ports) != 0;
    }
    attentive = true;
}
