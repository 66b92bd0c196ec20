#include "app/debugger_look.h"

#include "api/kiv.h"
#include "debug/console_commands.h"
#include "debug/devices_text.h"
#include "debug/disassembler.h"
#include "platform/texts.h"

#include <algorithm>

using namespace platform;

namespace {

const debugger_register register_list[] = {
    {"PC", KIV_REG_PC, 4, 0},      {"SP", KIV_REG_SP, 4, 0},      {"AF", KIV_REG_AF, 4, 0},
    {"BC", KIV_REG_BC, 4, 0},      {"DE", KIV_REG_DE, 4, 0},      {"HL", KIV_REG_HL, 4, 0},
    {"IX", KIV_REG_IX, 4, 0},      {"IY", KIV_REG_IY, 4, 0},      {"AF'", KIV_REG_AF_ALT, 4, 0},
    {"BC'", KIV_REG_BC_ALT, 4, 0}, {"DE'", KIV_REG_DE_ALT, 4, 0}, {"HL'", KIV_REG_HL_ALT, 4, 0},
    {"I", KIV_REG_I, 2, 0},        {"R", KIV_REG_R, 2, 0},        {"IM", KIV_REG_IM, 1, 0},
    {"IFF1", KIV_REG_IFF1, 1, 0},  {"IFF2", KIV_REG_IFF2, 1, 0}};

constexpr int stack_words = 24, rows_before_pc = 6;
constexpr int area_count = KIV_AREA_PCG + 1;
constexpr size_t most_costs = 1000;

debug_words words() { return platform::texts_are_japanese() ? japanese_words : nullptr; }

uint8_t byte_at(uint16_t address) { return static_cast<uint8_t>(kiv_peek(KIV_AREA_CPU, address)); }

debugger_line line_at(const debug_driver &driver, uint16_t address, uint8_t &length) {
    const disassembled d =
        disassemble(address, byte_at, [&](uint16_t a) { return driver.symbols.name_of(a); });
    debugger_line line;
    line.address = address;
    line.label = driver.symbols.name_of(address);
    for (int i = 0; i < d.length; ++i) line.bytes += console_text::text_of("%02X", d.bytes[i]);
    line.text = d.text;
    line.note = debug_teller{words()}.say(d.note.c_str());
    if (const source_line *source = driver.symbols.line_of(address); source != nullptr)
        line.note += (line.note.empty() ? "" : "; ") + source->text;
    for (const stop_point &p : driver.points())
        if (p.kind == stop_kind::address && address >= p.first && address <= p.last &&
            line.point != debugger_line::point_on)
            line.point = p.enabled ? debugger_line::point_on : debugger_line::point_off;
    length = d.length;
    return line;
}

// An address some instructions in front of `pc`, from which decoding leads to it.
uint16_t listing_before(uint16_t pc, int rows) {
    for (int back = rows * 4; back > 0; --back) {
        std::vector<uint16_t> starts;
        int at = -back;
        while (at < 0) {
            starts.push_back(static_cast<uint16_t>(pc + at));
            uint8_t bytes[4];
            for (int i = 0; i < 4; ++i) bytes[i] = byte_at(static_cast<uint16_t>(pc + at + i));
            at += instruction_length(bytes);
        }
        if (at == 0 && static_cast<int>(starts.size()) >= rows)
            return starts[starts.size() - static_cast<size_t>(rows)];
    }
    return pc;
}

void list_stack(const debug_driver &driver, debugger_look &look) {
    const uint32_t sp = kiv_get_register(KIV_REG_SP);
    for (uint32_t i = 0; i < stack_words; ++i) {
        const auto at = static_cast<uint16_t>(sp + 2 * i);
        const auto word = static_cast<uint16_t>(byte_at(at) | byte_at(static_cast<uint16_t>(at + 1)) << 8);
        look.stack.push_back(
            {at, word, console_text::behind_call(word) ? driver.symbols.place_of(word) : std::string()});
    }
}

void list_profile(const debug_session &session, bool by_address, debugger_look &look) {
    look.profiling = session.profiling();
    if (session.profiled() == nullptr) return;
    const symbol_table &symbols = session.driver.symbols;
    const auto costs = by_address ? session.profiled()->by_address() : session.profiled()->by_routine();
    for (const profile::spent &c : costs) look.profiled += c.own;
    for (const profile::spent &c : costs) {
        if (look.profile.size() == most_costs) break;
        const source_line *source = symbols.line_of(c.address);
        look.profile.push_back({c.address, by_address ? symbols.place_of(c.address) : c.routine,
                                source != nullptr ? source->text : std::string(), c.own, c.with_calls,
                                c.times});
    }
}

} // namespace

void look_at_machine(debug_session &session, const debugger_request &at, debugger_look &look) {
    debug_driver &driver = session.driver;
    look.pc = debug_driver::next_address();
    for (debugger_register r : register_list) {
        r.value = kiv_get_register(r.index);
        look.registers.push_back(std::move(r));
    }
    uint16_t address =
        at.follow ? listing_before(look.pc, std::min(rows_before_pc, at.listing_rows / 3)) : at.listing_at;
    for (int i = 0; i < at.listing_rows; ++i) {
        uint8_t length = 1;
        look.listing.push_back(line_at(driver, address, length));
        address = static_cast<uint16_t>(address + length);
    }
    for (int area = 0; area < area_count; ++area)
        look.areas.push_back({area_name(area), kiv_area_size(area)});
    if (const uint32_t whole = kiv_area_size(at.area); at.memory_at < whole) {
        look.memory.resize(std::min(at.memory_size, whole - at.memory_at));
        kiv_read(at.area, at.memory_at, look.memory.data(), look.memory.size());
    }
    if (at.stack) list_stack(driver, look);
    if (at.points)
        for (const stop_point &p : driver.points())
            look.points.push_back({p.id, p.enabled, describe(p), p.hits});
    std::vector<device_text> devices = devices_now(words());
    const auto &raster = devices[0].lines; // its line and the frame stand first
    look.place = raster[0].first + " " + raster[0].second + "  " + raster[1].first + " " + raster[1].second;
    if (at.devices)
        for (device_text &d : devices) look.devices.push_back({d.name, std::move(d.lines)});
    if (at.profile != debugger_request::no_profile)
        list_profile(session, at.profile == debugger_request::by_address, look);
    if (at.past != 0)
        session.look_back(at.past, [&](uint16_t pc, uint64_t) {
            uint8_t length = 1;
            debugger_line line = line_at(driver, pc, length);
            line.note = registers_line();
            look.past.push_back(std::move(line));
        });
}
