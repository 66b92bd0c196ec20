#include "debug/wire/gdb_stub.h"

#include "api/kiv.h"
#include <algorithm>
#include <cstdio>
#include <span>

namespace {

constexpr size_t most_waiting = 256;       // packets of a client that does not wait for answers
constexpr size_t most_unsent = 256 * 1024; // bytes, before lines are left out
constexpr char unknown[] = "";             // by the protocol: this packet is not known
constexpr char malformed[] = "E01", no_such_place[] = "E02", refused[] = "E03";

// Signals as the protocol numbers them.
enum signal_number : uint8_t { signal_interrupt = 2, signal_illegal = 4, signal_trap = 5 };

struct wire_register {
    const char *name, *type;
    int index, high; // KIV_REG_...; high: of the high byte, or -1
    uint8_t bytes;
};
constexpr int time_register = -2; // T-states since the boot; nobody sets it

constexpr wire_register pair(const char *name, const char *type, int index) {
    return {name, type, index, -1, 2};
}
constexpr wire_register ir{"ir", "uint16", KIV_REG_R, KIV_REG_I, 2};
constexpr wire_register af = pair("af", "af_flags", KIV_REG_AF), bc = pair("bc", "uint16", KIV_REG_BC),
                        de = pair("de", "data_ptr", KIV_REG_DE), hl = pair("hl", "data_ptr", KIV_REG_HL),
                        sp = pair("sp", "data_ptr", KIV_REG_SP), pc = pair("pc", "code_ptr", KIV_REG_PC),
                        ix = pair("ix", "data_ptr", KIV_REG_IX), iy = pair("iy", "data_ptr", KIV_REG_IY),
                        af_alt = pair("af'", "af_flags", KIV_REG_AF_ALT),
                        bc_alt = pair("bc'", "uint16", KIV_REG_BC_ALT),
                        de_alt = pair("de'", "data_ptr", KIV_REG_DE_ALT),
                        hl_alt = pair("hl'", "data_ptr", KIV_REG_HL_ALT);

constexpr wire_register order_of_gdb[] = {
    af,
    bc,
    de,
    hl,
    sp,
    pc,
    ix,
    iy,
    af_alt,
    bc_alt,
    de_alt,
    hl_alt,
    ir,
    // Beyond those of its architecture.
    {"im", "uint8", KIV_REG_IM, -1, 1},
    {"iff1", "uint8", KIV_REG_IFF1, -1, 1},
    {"iff2", "uint8", KIV_REG_IFF2, -1, 1},
    {"tstates", "uint64", time_register, -1, 8},
};
// Without IR: a client that does not know it sets it to 0 when it sets another.
constexpr wire_register order_of_others[] = {
    af, bc, de, hl, af_alt, bc_alt, de_alt, hl_alt, ix, iy, sp, pc,
};

std::span<const wire_register> registers_for(bool is_gdb) {
    return is_gdb ? std::span<const wire_register>(order_of_gdb)
                  : std::span<const wire_register>(order_of_others);
}

// While an interrupt's routine is about to be entered, it is what comes next, whatever PC says.
uint16_t place() {
    return kiv_stop_reason() != KIV_STOP_NONE ? static_cast<uint16_t>(kiv_stop_address())
                                              : debug_driver::next_address();
}

uint64_t value_of(const wire_register &r) {
    if (r.index == time_register) return kiv_t_states();
    if (r.index == KIV_REG_PC) return place();
    const uint32_t low = kiv_get_register(r.index);
    return r.high < 0 ? low : kiv_get_register(r.high) << 8 | (low & 0xFF);
}

std::string wire_value(const wire_register &r) {
    std::string bytes;
    for (unsigned i = 0; i < r.bytes; ++i) bytes += static_cast<char>(value_of(r) >> 8 * i);
    return hex_of(bytes);
}

// Values that are there already stay untouched, so that setting one of many registers changes that one.
void set_value(debug_driver &driver, const wire_register &r, std::string_view bytes) {
    uint64_t value = 0;
    for (unsigned i = 0; i < r.bytes; ++i) value |= uint64_t{static_cast<uint8_t>(bytes[i])} << 8 * i;
    if (r.index == time_register || value == value_of(r)) return;
    driver.set_register(r.index, static_cast<uint32_t>(r.high < 0 ? value : value & 0xFF));
    if (r.high >= 0) driver.set_register(r.high, static_cast<uint32_t>(value >> 8));
}

// Addresses beyond 0xFFFF are areas of memory whatever the processor sees: the area's number, then 16 bits.
struct memory_place {
    int32_t area;
    uint32_t address;
    size_t room; // to the area's end
};

std::optional<memory_place> place_of(uint64_t address) {
    const uint64_t area = address >> 16;
    if (area > KIV_AREA_PCG) return std::nullopt;
    const uint32_t size = kiv_area_size(static_cast<int32_t>(area)), at = address & 0xFFFF;
    if (at >= size) return std::nullopt;
    return memory_place{static_cast<int32_t>(area), at, size - at};
}

// The memory of an area for a stop point, and where the processor sees it.
bool put_range(stop_point &point, uint64_t address, uint64_t length) {
    struct seen_bank {
        memory_bank bank;
        uint16_t at;
    };
    constexpr seen_bank banks[] = {
        {memory_bank::any, 0},      {memory_bank::ram, 0},        {memory_bank::main, 0},
        {memory_bank::nbasic, 0},   {memory_bank::ext, 0x6000},   {memory_bank::blue, 0xC000},
        {memory_bank::red, 0xC000}, {memory_bank::green, 0xC000},
    };
    const uint64_t area = address >> 16, first = address & 0xFFFF;
    if (area >= std::size(banks)) return false;
    const seen_bank &seen = banks[area];
    const uint64_t last = first + std::max<uint64_t>(length, 1) - 1 + seen.at;
    if (length > 0x10000 || last > 0xFFFF) return false;
    point.first = static_cast<uint16_t>(first + seen.at);
    point.last = static_cast<uint16_t>(last);
    point.bank = seen.bank;
    return true;
}

bool cut_char(std::string_view &text, char c) {
    if (text.empty() || text.front() != c) return false;
    text.remove_prefix(1);
    return true;
}

bool cut_text(std::string_view &text, std::string_view start) {
    if (!text.starts_with(start)) return false;
    text.remove_prefix(start.size());
    return true;
}

// ADDRESS,LENGTH, both cut off.
bool cut_range(std::string_view &text, uint64_t &address, uint64_t &length) {
    const auto first = cut_number(text);
    if (!first || !cut_char(text, ',')) return false;
    const auto second = cut_number(text);
    if (!second) return false;
    address = *first;
    length = *second;
    return true;
}

std::string text_of(const char *format, auto... values) {
    char text[64];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

// Nothing of it is read-only for a debugger: where ROM is seen, RAM lies under it. The second range goes to
// the end of 64 bits, for the areas and because gdb, looking for return addresses on the stack, reads three
// bytes in front of address 1.
constexpr char memory_map[] = "<?xml version=\"1.0\"?><memory-map>"
                              "<memory type=\"ram\" start=\"0x0\" length=\"0x10000\"/>"
                              "<memory type=\"ram\" start=\"0x10000\" length=\"0xffffffffffff0000\"/>"
                              "</memory-map>";

} // namespace

// ---- the client --------------------------------------------------------------------------------------

void gdb_stub::attach() {
    detach();
    reader.clear();
    out.clear();
    last_sent.clear();
    leaving = is_gdb = knows_break_kinds = interrupt_waits = false;
    acknowledges = true;
    lines_left_out = 0;
    last_stop.clear();
}

void gdb_stub::detach() {
    for (const auto &[key, id] : points) driver.remove(id);
    points.clear();
    going = false;
}

void gdb_stub::receive(std::string_view bytes) {
    reader.take(bytes);
    if (going && reader.take_interrupt()) {
        // The machine stands between two slices. What came with the interrupt is left for later: some clients
        // take the answers of one delivery for one.
        stop({.kind = stop_kind::asked});
        return;
    }
    work();
    if (reader.waiting() > most_waiting || reader.held() > 4 * longest_packet) {
        send("E.too many packets at once");
        leaving = true;
    }
}

void gdb_stub::work() {
    while (!going && !leaving) {
        const auto event = reader.next();
        if (!event) return;
        respond(*event);
        if (going && reader.take_interrupt()) return stop({.kind = stop_kind::asked});
    }
}

void gdb_stub::respond(const packet_event &event) {
    using is = packet_event::is;
    switch (event.what) {
    case is::interrupt: interrupt_waits = true; return;
    case is::again: out += last_sent; return;
    case is::too_long:
        if (acknowledges) out += '+';
        return send("E.the packet is too long");
    case is::spoilt:
        if (acknowledges) {
            out += '-';
            return;
        }
        break; // the wire is said to be good
    case is::packet: break;
    }
    if (acknowledges) out += '+';
    if (const answer reply = handle(event.data)) send(*reply);
}

void gdb_stub::send(const std::string &data) {
    last_sent = packet_of(data);
    out += last_sent;
}

void gdb_stub::say(const std::string &line) {
    if (!is_gdb || !going) return;
    if (out.size() > most_unsent) {
        ++lines_left_out;
        return;
    }
    if (lines_left_out != 0) send("O" + hex_of(std::to_string(lines_left_out) + " lines left out\n"));
    lines_left_out = 0;
    send("O" + hex_of(line + "\n"));
}

// ---- packets -----------------------------------------------------------------------------------------

gdb_stub::answer gdb_stub::handle(std::string_view packet) {
    if (packet.empty()) return unknown;
    const std::string_view rest = packet.substr(1);
    switch (packet.front()) {
    case '?':
        if (last_stop.empty()) last_stop = stop_answer({.kind = stop_kind::aim});
        return last_stop;
    case 'g': return read_registers();
    case 'G': return write_registers(rest);
    case 'p': return read_register(rest);
    case 'P': return write_register(rest);
    case 'm': return read_memory(rest);
    case 'M': return write_memory(rest, true);
    case 'X': return write_memory(rest, false);
    case 'Z':
    case 'z': return change_point(packet);
    case 'c':
    case 's':
    case 'C':
    case 'S': return handle_continue(packet);
    case 'i': return go(aim_kind::over); // of a client for this processor: past a call or a block instruction
    case 'b': return handle_back(packet);
    case 'H':
    case 'T':
    case '!': return "OK"; // there is one thread, and it stays
    case 'R':
        kiv_reset();
        driver.changed();
        return std::nullopt;
    case 'D': leaving = true; return "OK";
    case 'k': leaving = true; return std::nullopt;
    case 'q': return handle_query(packet);
    case 'Q': return handle_set(packet);
    case 'v': return handle_v(packet);
    default: return unknown;
    }
}

gdb_stub::answer gdb_stub::handle_query(std::string_view packet) {
    if (packet == "qSupported") return supported({});
    if (cut_text(packet, "qSupported:")) return supported(packet);
    if (cut_text(packet, "qXfer:features:read:target.xml:")) return part_of(description(), packet);
    if (cut_text(packet, "qXfer:memory-map:read::")) return part_of(memory_map, packet);
    if (packet.starts_with("qXfer:features:read:")) return "E00"; // an annex that there is not
    if (cut_text(packet, "qRcmd,")) return run_monitor(packet);
    if (cut_text(packet, "qCRC:")) return sum_memory(packet);
    if (packet == "qC") return "QC1";
    if (packet == "qfThreadInfo") return "m1";
    if (packet == "qsThreadInfo") return "l";
    if (packet.starts_with("qThreadExtraInfo,")) return hex_of("Z80");
    if (packet == "qAttached" || packet.starts_with("qAttached:")) return "1"; // leave it alive
    if (packet.starts_with("qSymbol:")) return "OK";                           // none are wanted
    return unknown;
}

gdb_stub::answer gdb_stub::handle_set(std::string_view packet) {
    if (packet != "QStartNoAckMode") return unknown;
    acknowledges = false;
    return "OK";
}

gdb_stub::answer gdb_stub::handle_v(std::string_view packet) {
    if (packet == "vCont?") return "vCont;c;C;s;S;r";
    if (packet.starts_with("vKill")) {
        leaving = true;
        return "OK";
    }
    if (!cut_text(packet, "vCont;")) return unknown;
    if (packet.empty()) return malformed;
    // The first action that names the only thread, or none. A signal cannot be given to this machine.
    switch (packet.front()) {
    case 'c':
    case 'C': return go(aim_kind::none);
    case 's':
    case 'S': return go(aim_kind::into);
    case 'r': return step_within(packet.substr(1));
    default: return malformed;
    }
}

// FIRST,END: steps as long as they stay there. The end is not of it.
gdb_stub::answer gdb_stub::step_within(std::string_view range) {
    const auto first = cut_number(range);
    if (!first || !cut_char(range, ',')) return malformed;
    const auto end = cut_number(range);
    if (!end) return malformed;
    if (*first > 0xFFFF || *end > 0x10000) return no_such_place;
    if (*first < *end)
        driver.aim_outside(static_cast<uint16_t>(*first), static_cast<uint16_t>(*end - 1));
    else
        driver.aim(aim_kind::into);
    return set_going();
}

// cADDRESS, sADDRESS, Csignal;ADDRESS, Ssignal;ADDRESS; the address may be missing.
gdb_stub::answer gdb_stub::handle_continue(std::string_view packet) {
    const char what = packet.front();
    packet.remove_prefix(1);
    if (what == 'C' || what == 'S') {
        if (!cut_number(packet) || (!packet.empty() && !cut_char(packet, ';'))) return malformed;
    }
    if (!packet.empty()) {
        const auto address = cut_number(packet);
        if (!address || !packet.empty()) return malformed;
        if (*address > 0xFFFF) return no_such_place;
        if (*address != place()) driver.set_register(KIV_REG_PC, static_cast<uint32_t>(*address));
    }
    return go(what == 'c' || what == 'C' ? aim_kind::none : aim_kind::into);
}

gdb_stub::answer gdb_stub::handle_back(std::string_view packet) {
    if (packet != "bs" && packet != "bc") return unknown;
    if (driver.past() == nullptr) return refused;
    going = true; // for what is said meanwhile
    stop(driver.back(packet == "bs" ? aim_kind::into : aim_kind::none));
    return std::nullopt;
}

std::string gdb_stub::supported(std::string_view of_client) {
    is_gdb = !of_client.empty();
    knows_break_kinds = of_client.find("swbreak+") != std::string_view::npos;
    std::string all = "PacketSize=4000;QStartNoAckMode+;qXfer:features:read+;qXfer:memory-map:read+;"
                      "vContSupported+";
    if (knows_break_kinds) all += ";swbreak+;hwbreak+";
    if (driver.past() != nullptr) all += ";ReverseStep+;ReverseContinue+";
    return all;
}

// Some clients have room for 1022 bytes of it.
std::string gdb_stub::description() const {
    std::string xml = "<?xml version=\"1.0\"?><target version=\"1.0\"><architecture>z80</architecture>"
                      "<feature name=\"org.gnu.gdb.z80.cpu\">";
    if (is_gdb) {
        xml += "<flags id=\"af_flags\" size=\"2\">";
        constexpr const char *flags[] = {"C", "N", "PV", "F3", "H", "F5", "Z", "S"};
        for (unsigned bit = 0; bit < 8; ++bit)
            xml += "<field name=\"" + std::string(flags[bit]) +
                   text_of("\" start=\"%u\" end=\"%u\"/>", bit, bit);
        xml += "</flags>";
    }
    for (const wire_register &r : registers_for(is_gdb)) {
        xml += "<reg name=\"" + std::string(r.name) + text_of("\" bitsize=\"%u\"", r.bytes * 8u);
        if (is_gdb) xml += " type=\"" + std::string(r.type) + "\"";
        xml += "/>";
    }
    return xml + "</feature></target>";
}

std::string gdb_stub::part_of(const std::string &whole, std::string_view offset_and_length) const {
    uint64_t offset = 0, length = 0;
    if (!cut_range(offset_and_length, offset, length) || !offset_and_length.empty()) return malformed;
    if (offset > whole.size()) return malformed;
    const std::string part = whole.substr(offset, length);
    return (offset + part.size() < whole.size() ? "m" : "l") + part;
}

std::string gdb_stub::run_monitor(std::string_view hex) {
    const auto command = bytes_of_hex(hex);
    if (!command) return malformed;
    if (!monitor) return unknown;
    const std::string text = monitor(*command);
    return text.empty() ? "OK" : hex_of(text);
}

// ---- registers and memory ----------------------------------------------------------------------------

std::string gdb_stub::read_registers() const {
    std::string all;
    for (const wire_register &r : registers_for(is_gdb)) all += wire_value(r);
    return all;
}

// As many as there are bytes for.
std::string gdb_stub::write_registers(std::string_view hex) {
    const auto bytes = bytes_of_hex(hex);
    if (!bytes) return malformed;
    std::string_view left = *bytes;
    for (const wire_register &r : registers_for(is_gdb)) {
        if (left.size() < r.bytes) break;
        set_value(driver, r, left);
        left.remove_prefix(r.bytes);
    }
    return "OK";
}

std::string gdb_stub::read_register(std::string_view number) const {
    const auto index = cut_number(number);
    if (!index || !number.empty() || *index >= registers_for(is_gdb).size()) return malformed;
    return wire_value(registers_for(is_gdb)[*index]);
}

std::string gdb_stub::write_register(std::string_view number_and_value) {
    const auto index = cut_number(number_and_value);
    if (!index || !cut_char(number_and_value, '=') || *index >= registers_for(is_gdb).size())
        return malformed;
    const wire_register &r = registers_for(is_gdb)[*index];
    const auto bytes = bytes_of_hex(number_and_value);
    if (!bytes || bytes->size() < r.bytes) return malformed;
    if (r.index == time_register) return refused;
    set_value(driver, r, *bytes);
    return "OK";
}

// As the processor sees it addresses go round at 0xFFFF: a client looks in front of 0x0001, too. What lies
// behind the end of an area is left out.
std::string gdb_stub::read_memory(std::string_view range) const {
    uint64_t address = 0, length = 0;
    if (!cut_range(range, address, length) || !range.empty() || length == 0) return malformed;
    const auto from = place_of(address);
    if (!from) return no_such_place;
    const bool round = from->area == KIV_AREA_CPU;
    std::string bytes;
    bytes.resize(std::min<uint64_t>(length, round ? 0x10000 : from->room));
    for (size_t i = 0; i < bytes.size(); ++i) {
        const size_t at = from->address + i;
        bytes[i] = static_cast<char>(kiv_peek(from->area, static_cast<uint32_t>(round ? at & 0xFFFF : at)));
    }
    return hex_of(bytes);
}

// The sum by which a client compares a program with its file: CRC-32, highest bit first, from all ones.
std::string gdb_stub::sum_memory(std::string_view range) const {
    uint64_t address = 0, length = 0;
    if (!cut_range(range, address, length) || !range.empty()) return malformed;
    const auto from = place_of(address);
    if (!from || length > from->room) return no_such_place;
    uint32_t sum = 0xFFFFFFFF;
    for (uint32_t i = 0; i < length; ++i) {
        sum ^= static_cast<uint32_t>(kiv_peek(from->area, from->address + i)) << 24;
        for (int bit = 0; bit < 8; ++bit) sum = sum << 1 ^ ((sum >> 31) != 0 ? 0x04C11DB7u : 0u);
    }
    return text_of("C%x", sum);
}

// As the processor writes: under a ROM lies RAM.
std::string gdb_stub::write_memory(std::string_view range_and_data, bool hexadecimal) {
    uint64_t address = 0, length = 0;
    if (!cut_range(range_and_data, address, length) || !cut_char(range_and_data, ':')) return malformed;
    const std::optional<std::string> bytes =
        hexadecimal ? bytes_of_hex(range_and_data) : std::string(range_and_data);
    if (!bytes || bytes->size() != length) return malformed;
    if (length == 0) return "OK"; // a client tries whether the packet is known
    const auto to = place_of(address);
    if (!to || length > to->room) return no_such_place;
    return driver.write(to->area, to->address, bytes->data(), bytes->size()) == KIV_OK ? "OK" : no_such_place;
}

// ---- stop points -------------------------------------------------------------------------------------

// ZTYPE,ADDRESS,LENGTH and z likewise; twice the same is once.
std::string gdb_stub::change_point(std::string_view packet) {
    const bool to_set = packet.front() == 'Z';
    if (packet.size() < 3 || packet[1] < '0' || packet[1] > '4' || packet[2] != ',')
        return packet.size() < 3 || packet[2] != ',' ? malformed : unknown;
    watched key{packet[1], 0, 0};
    packet.remove_prefix(3);
    if (!cut_range(packet, key.address, key.length) || !packet.empty()) return malformed;
    if (key.type <= '1') key.length = 1; // said is what the instruction would be replaced with
    stop_point point;
    if (!put_range(point, key.address, key.length)) return no_such_place;
    if (const auto old = points.find(key); old != points.end()) {
        if (to_set) return "OK";
        driver.remove(old->second);
        points.erase(old);
    }
    if (!to_set) return "OK";
    if (key.type >= '2') point.kind = stop_kind::memory;
    if (key.type >= '2')
        point.access = key.type == '2'   ? access_write
                       : key.type == '3' ? access_read
                                         : access_read | access_write;
    points[key] = driver.add(point);
    return "OK";
}

// ---- running -----------------------------------------------------------------------------------------

gdb_stub::answer gdb_stub::go(aim_kind aim) {
    driver.aim(aim);
    return set_going();
}

gdb_stub::answer gdb_stub::set_going() {
    going = true;
    if (interrupt_waits) stop({.kind = stop_kind::asked});
    return std::nullopt;
}

// The reason of a stop as the protocol names it; empty where it has no name for it.
std::string gdb_stub::reason_for(const stop_report &r) const {
    if (r.kind == stop_kind::beginning) return "replaylog:begin;";
    const auto own =
        std::find_if(points.begin(), points.end(), [&](const auto &p) { return p.second == r.id; });
    const char type = own == points.end() ? char{0} : own->first.type;
    if (r.kind == stop_kind::memory) {
        const bool both = type == '4';
        const char *const name = both ? "awatch" : (r.access & access_write) ? "watch" : "rwatch";
        // Of an area: as the client named it.
        const uint64_t area = own == points.end() ? 0 : own->first.address & ~uint64_t{0xFFFF};
        uint64_t address = r.address;
        if (area != 0) address = own->first.address + (r.address - driver.find(r.id)->first);
        return name + text_of(":%llx;", static_cast<unsigned long long>(address));
    }
    if (r.kind == stop_kind::address && knows_break_kinds && own != points.end())
        return type == '0' ? "swbreak:;" : "hwbreak:;";
    return {};
}

std::string gdb_stub::stop_answer(const stop_report &r) const {
    uint8_t number = signal_trap;
    if (r.kind == stop_kind::asked) number = signal_interrupt;
    if (r.kind == stop_kind::processor && kiv_stop_reason() != KIV_STOP_HALT) number = signal_illegal;
    std::string text = text_of("T%02x", number) + reason_for(r);
    // Where it stands goes with it, by the numbers of the client's order.
    const std::span<const wire_register> all = registers_for(is_gdb);
    for (size_t i = 0; i < all.size(); ++i)
        if (all[i].index == KIV_REG_SP || all[i].index == KIV_REG_PC)
            text += text_of("%02zx:", i) + wire_value(all[i]) + ";";
    return text + "thread:1;";
}

void gdb_stub::stop(const stop_report &r) {
    const bool own =
        std::any_of(points.begin(), points.end(), [&](const auto &p) { return p.second == r.id; });
    const bool known =
        own || r.kind == stop_kind::aim || r.kind == stop_kind::asked || r.kind == stop_kind::beginning;
    if (!known) say(describe(r));
    going = interrupt_waits = false;
    last_stop = stop_answer(r);
    send(last_stop);
}

void gdb_stub::has_stopped(const stop_report &report) {
    if (going) stop(report);
}

bool gdb_stub::interrupted_by(std::string_view bytes) {
    reader.take(bytes);
    return reader.take_interrupt();
}

void gdb_stub::has_ended(uint8_t exit_code) {
    if (going) send(text_of("W%02x", exit_code));
    going = false;
    leaving = true;
}
