#include "debug/recorders.h"

#include "api/kiv.h"
#include "debug/disassembler.h"
#include "machine/kiv_machine.h"
#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

template <class... Values> std::string text_of(const char *format, Values... values) {
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

uint8_t byte_at(uint16_t address) {
    uint32_t waits = 0;
    return mem_read(address, &waits);
}

} // namespace

std::string flags_text(uint8_t f) {
    constexpr std::pair<uint8_t, char> flags[] = {{flag_s, 'S'},  {flag_z, 'Z'}, {flag_h, 'H'},
                                                  {flag_pv, 'P'}, {flag_n, 'N'}, {flag_c, 'C'}};
    std::string text;
    for (const auto &[bit, letter] : flags)
        text += (f & bit) ? letter : static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    return text;
}

std::string registers_line() {
    const z80_cpu &c = main_cpu;
    return text_of("A=%02X F=%s BC=%04X DE=%04X HL=%04X IX=%04X IY=%04X SP=%04X", c.AF >> 8,
                   flags_text(static_cast<uint8_t>(c.AF)).c_str(), c.BC, c.DE, c.HL, c.IX, c.IY, c.SP);
}

// ---- trace -------------------------------------------------------------------------------------------

instruction_trace::instruction_trace(const symbol_table &names, text_sink write_)
    : debug_observer(wants_steps | wants_interrupts), symbols(names), write(std::move(write_)) {}

void instruction_trace::flush(const std::string &took) {
    if (head.empty()) return;
    write(head + took + tail);
    head.clear();
}

void instruction_trace::step(uint16_t pc, uint64_t t_states, bool entering) {
    flush(text_of("%3llu", static_cast<unsigned long long>(t_states - began)));
    began = t_states;
    const disassembled d = disassemble(pc, byte_at, [this](uint16_t a) { return symbols.name_of(a); });
    std::string bytes;
    for (int i = 0; i < d.length; ++i) bytes += text_of("%02X", d.bytes[i]);
    const std::string name = symbols.name_of(pc);
    head = (name.empty() ? "" : name + ":\n") + text_of("%04X ", pc);
    tail = text_of(" %-8s %-22s %s%s\n", bytes.c_str(), d.text.c_str(), registers_line().c_str(),
                   entering ? " entering" : "");
}

void instruction_trace::interrupt(uint8_t level) {
    tail += text_of("     -- interrupt of level %u\n", level);
}

void instruction_trace::moved(bool) { flush(" --"); }
void instruction_trace::finish() { flush(" --"); }

// ---- profile -----------------------------------------------------------------------------------------

profile::profile(const symbol_table &names)
    : debug_observer(wants_steps | wants_interrupts), symbols(names) {}

size_t profile::routine_at(uint16_t address) {
    const memory_bank bank = bank_at(address);
    const uint32_t place = static_cast<uint32_t>(bank) << 16 | address;
    const auto [found, fresh] = by_place.try_emplace(place, routines.size());
    if (fresh) {
        std::string name = symbols.name_of(address);
        if (name.empty())
            name = text_of("sub_%04X", address) +
                   (bank == memory_bank::ram ? "" : text_of("@%s", bank_name(bank)));
        routines.push_back({address, name, 0, 0, 0, {}, {}, 0});
    }
    return found->second;
}

void profile::charge(uint64_t t_states) {
    if (line == nullptr) return;
    line->first += t_states - began;
    routines[stack.back().routine].own += t_states - began;
    line = nullptr;
}

void profile::enter(uint16_t address, uint16_t from, bool by_interrupt, uint64_t t_states) {
    const size_t r = routine_at(address);
    ++routines[r].calls;
    ++routines[r].depth;
    stack.push_back({r, last_sp, from, t_states, interrupted, by_interrupt});
}

// The innermost routine has ended. What interrupts took while it ran is theirs alone.
void profile::leave_one(uint64_t t_states) {
    const active done = stack.back();
    stack.pop_back();
    const uint64_t took = t_states - done.began - (interrupted - done.interrupts);
    routine &r = routines[done.routine];
    if (--r.depth == 0) r.with_calls += took; // of a recursion the outermost counts
    if (done.by_interrupt) {
        interrupted += took;
    } else if (!stack.empty()) {
        routine::call &c = routines[stack.back().routine].called[{done.from, done.routine}];
        ++c.count;
        c.t_states += took;
    }
}

void profile::leave(uint16_t sp, uint64_t t_states) {
    while (stack.size() > 1 && static_cast<int16_t>(sp - stack.back().sp) >= 0) leave_one(t_states);
}

void profile::step(uint16_t pc, uint64_t t_states, bool entering) {
    charge(t_states);
    const uint16_t sp = main_cpu.SP;
    if (stack.empty()) {
        last_sp = 0xFFFF; // nothing returns from here
        enter(pc, pc, false, t_states);
    } else if (calling && pc != static_cast<uint16_t>(last_pc + last_length) && sp != last_sp) {
        enter(pc, last_pc, false, t_states);
    } else {
        leave(sp, t_states);
    }
    last_sp = sp;
    if (entering) enter(pc, main_cpu.PC, true, t_states);
    uint8_t bytes[4];
    for (uint16_t i = 0; i < 4; ++i) bytes[i] = byte_at(static_cast<uint16_t>(pc + i));
    const flow f = flow_of(bytes);
    calling = f == flow::call || f == flow::restart;
    last_length = instruction_length(bytes);
    if (entering) last_sp = static_cast<uint16_t>(sp - 2); // when it itself runs
    last_pc = pc;
    began = t_states;
    line = &routines[stack.back().routine].lines[pc];
    ++line->second;
}

void profile::interrupt(uint8_t) {}

void profile::moved(bool) {
    line = nullptr;
    while (!stack.empty()) leave_one(began);
}

// The program that is put into memory and started by hand is a routine of its own.
void profile::redirected() {
    charge(kiv_t_states());
    began = kiv_t_states();
    while (!stack.empty()) leave_one(began);
}

profile profile::ended_now() const {
    profile p = *this;
    while (!p.stack.empty()) p.leave_one(p.began);
    return p;
}

namespace {

void sort_costs(std::vector<profile::spent> &costs) {
    std::stable_sort(costs.begin(), costs.end(), [](auto &a, auto &b) { return a.own > b.own; });
}

} // namespace

std::vector<profile::spent> profile::by_routine() const {
    std::vector<spent> costs;
    for (const routine &r : ended_now().routines)
        costs.push_back({r.address, r.name, r.own, r.with_calls, r.calls});
    sort_costs(costs);
    return costs;
}

std::vector<profile::spent> profile::by_address() const {
    std::vector<spent> costs;
    for (const routine &r : routines)
        for (const auto &[address, cost] : r.lines)
            costs.push_back({address, r.name, cost.first, cost.first, cost.second});
    sort_costs(costs);
    return costs;
}

std::string profile::callgrind() const {
    const std::vector<routine> all = ended_now().routines;
    std::string out = "# callgrind format\nversion: 1\ncreator: kiv\npositions: instr line\n"
                      "event: Ts : T-states\nevent: In : Instructions\nevents: Ts In\n\n";
    uint64_t t_states = 0, instructions = 0;
    for (size_t i = 0; i < all.size(); ++i) {
        const routine &r = all[i];
        const source_line *first = symbols.line_of(r.address);
        out += "fl=" + (first != nullptr ? first->file : std::string("memory")) + "\nfn=" + r.name + "\n";
        const auto number = [&](uint16_t address) {
            const source_line *l = symbols.line_of(address);
            return l != nullptr ? l->number : 0u;
        };
        for (const auto &[address, cost] : r.lines) {
            out += text_of("0x%X %u %llu %llu\n", address, number(address),
                           static_cast<unsigned long long>(cost.first),
                           static_cast<unsigned long long>(cost.second));
            t_states += cost.first;
            instructions += cost.second;
        }
        for (const auto &[key, call] : r.called) {
            const routine &callee = all[key.second];
            const source_line *l = symbols.line_of(callee.address);
            out += "cfi=" + (l != nullptr ? l->file : std::string("memory")) + "\ncfn=" + callee.name + "\n";
            out +=
                text_of("calls=%llu 0x%X %u\n0x%X %u %llu 0\n", static_cast<unsigned long long>(call.count),
                        callee.address, number(callee.address), key.first, number(key.first),
                        static_cast<unsigned long long>(call.t_states));
        }
        out += "\n";
    }
    return out + text_of("totals: %llu %llu\n", static_cast<unsigned long long>(t_states),
                         static_cast<unsigned long long>(instructions));
}

std::string profile::table(size_t count) const {
    const std::vector<spent> costs = by_routine();
    uint64_t all = 0;
    for (const spent &c : costs) all += c.own;
    std::string out = "   own      %    with calls      calls  routine\n";
    for (size_t i = 0; i < std::min(count, costs.size()); ++i) {
        const spent &c = costs[i];
        out += text_of("%10llu %5.1f %12llu %10llu  $%04X %s\n", static_cast<unsigned long long>(c.own),
                       all != 0 ? 100.0 * static_cast<double>(c.own) / static_cast<double>(all) : 0.0,
                       static_cast<unsigned long long>(c.with_calls),
                       static_cast<unsigned long long>(c.times), c.address, c.routine.c_str());
    }
    return out;
}

// ---- coverage ----------------------------------------------------------------------------------------

void coverage::step(uint16_t pc, uint64_t, bool) {
    const memory_bank bank = bank_at(pc);
    if (last == nullptr || bank != last_bank) {
        last = &counts[bank];
        last->resize(0x10000);
        last_bank = bank;
    }
    ++(*last)[pc];
}

uint64_t coverage::count(memory_bank bank, uint16_t address) const {
    uint64_t sum = 0;
    for (const auto &[b, of_bank] : counts)
        if (bank == memory_bank::any || bank == b) sum += of_bank[address];
    return sum;
}

namespace {

// Whether the source is an instruction: directives that lay down bytes are none.
bool is_instruction(const std::string &source) {
    std::string text;
    for (const char c : source) text += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const size_t colon = text.find(':');
    if (colon != std::string::npos && text.find_first_of(" \t\"'") > colon) text.erase(0, colon + 1);
    for (size_t at = 0; at < text.size();) {
        at = text.find_first_not_of(" \t", at);
        if (at == std::string::npos) break;
        const size_t end = std::min(text.find_first_of(" \t", at), text.size());
        const std::string word = text.substr(at, end - at);
        for (const char *data :
             {"DB",   "DW",  "DS",  "DM",  "DC",   "DZ",   "DEFB",   "DEFW",  "DEFS", "DEFM",
              "DEFC", ".DB", ".DW", ".DS", "BYTE", "WORD", "INCBIN", "BLOCK", "RB",   "RW"})
            if (word == data) return false;
        if (word[0] == ';' || word[0] == '"') break;
        at = end;
    }
    return true;
}

} // namespace

std::map<std::string, std::map<uint32_t, uint64_t>> coverage::by_file() const {
    std::map<std::string, std::map<uint32_t, uint64_t>> files;
    for (const auto &[address, line] : symbols.lines()) {
        const source_line &source = line.second;
        if (!is_instruction(source.text)) continue;
        uint64_t &hits = files[source.file][source.number];
        hits = std::max(hits, count(line.first, address));
    }
    return files;
}

std::string coverage::lcov() const {
    std::string out;
    for (const auto &[file, lines] : by_file()) {
        out += "TN:\nSF:" + file + "\n";
        size_t hit = 0;
        for (const auto &[number, hits] : lines) {
            out += text_of("DA:%u,%llu\n", number, static_cast<unsigned long long>(hits));
            hit += hits != 0;
        }
        out += text_of("LF:%zu\nLH:%zu\nend_of_record\n", lines.size(), hit);
    }
    return out;
}

std::string coverage::summary() const {
    size_t all = 0, hit = 0;
    for (const auto &[file, lines] : by_file())
        for (const auto &[number, hits] : lines) {
            ++all;
            hit += hits != 0;
        }
    if (all == 0) return "no lines are known: a listing is wanted";
    return text_of("%zu of %zu lines, %.1f %%", hit, all,
                   100.0 * static_cast<double>(hit) / static_cast<double>(all));
}
