// Commands that look at the machine and those that change it.
#include "debug/console_commands.h"

#include "api/kiv.h"
#include "debug/assembler.h"
#include "debug/devices_text.h"
#include "debug/disassembler.h"
#include <algorithm>
#include <cinttypes>

using namespace console_text;
using command = debug_console::command;

namespace {

constexpr uint16_t dump_line = 16, dump_size = 128;
constexpr int listed_instructions = 12;

debug_driver &driver(debug_console &c) { return console_commands::driver(c); }
void print(debug_console &c, const std::string &line) { console_commands::print(c, line); }
void check(kiv_result result) {
    if (result != KIV_OK) fail(kiv_error_text());
}
uint8_t byte_at(uint16_t address) { return static_cast<uint8_t>(kiv_peek(KIV_AREA_CPU, address)); }
unsigned word_at(uint16_t address) {
    const unsigned high = byte_at(static_cast<uint16_t>(address + 1));
    return byte_at(address) | high << 8;
}

// ---- looking -----------------------------------------------------------------------------------------

void regs(debug_console &c, const std::string &) {
    const auto r = [](int index) { return kiv_get_register(index); };
    print(c, registers_line());
    print(c, text_of("AF'=%04X BC'=%04X DE'=%04X HL'=%04X I=%02X R=%02X IM=%u IFF1=%u IFF2=%u PC=%04X",
                     r(KIV_REG_AF_ALT), r(KIV_REG_BC_ALT), r(KIV_REG_DE_ALT), r(KIV_REG_HL_ALT), r(KIV_REG_I),
                     r(KIV_REG_R), r(KIV_REG_IM), r(KIV_REG_IFF1), r(KIV_REG_IFF2), r(KIV_REG_PC)));
}

void where(debug_console &c, const std::string &) {
    c.show_place();
    const std::vector<device_text> devices = devices_now();
    for (const auto &[what, text] : devices[0].lines) print(c, text_of("%s: %s", what.c_str(), text.c_str()));
}

void dis(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    uint16_t at = words.empty() ? console_commands::next_listing(c) : address_of(c, words[0]);
    const uint64_t count = count_of(c, words.size() > 1 ? words[1] : "", listed_instructions);
    const uint16_t pc = debug_driver::next_address();
    for (uint64_t i = 0; i < std::min<uint64_t>(count, 0x10000); ++i) {
        const std::string name = driver(c).symbols.name_of(at);
        if (!name.empty()) print(c, name + ":");
        uint8_t length = 0;
        std::string line = at == pc ? "> " : "  ";
        print(c, line += instruction_line(c, at, length));
        at = static_cast<uint16_t>(at + length);
    }
    console_commands::next_listing(c) = at;
}

void mem(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    place p{console_commands::dump_area(c), console_commands::next_dump(c)};
    if (!words.empty()) p = place_of(c, words[0]);
    const uint32_t whole = kiv_area_size(p.area);
    const uint64_t count =
        std::min<uint64_t>(count_of(c, words.size() > 1 ? words[1] : "", dump_size), whole - p.address);
    for (uint64_t done = 0; done < count; done += dump_line) {
        std::string hex, text;
        for (uint64_t i = done; i < std::min(count, done + dump_line); ++i) {
            const auto byte = static_cast<uint8_t>(kiv_peek(p.area, static_cast<uint32_t>(p.address + i)));
            hex += text_of("%02X ", byte);
            text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
        }
        print(c,
              text_of("%04X  %-48s %s", static_cast<unsigned>(p.address + done), hex.c_str(), text.c_str()));
    }
    console_commands::dump_area(c) = p.area;
    console_commands::next_dump(c) = static_cast<uint16_t>((p.address + count) % whole);
}

void stack(debug_console &c, const std::string &rest) {
    const uint64_t count = count_of(c, rest, 10);
    for (uint64_t i = 0; i < count; ++i) {
        const auto at = static_cast<uint16_t>(kiv_get_register(KIV_REG_SP) + 2 * i);
        const auto word = static_cast<uint16_t>(word_at(at));
        std::string line = text_of("%04X  %04X", at, word);
        if (behind_call(word)) line += "  returns to " + driver(c).symbols.place_of(word);
        print(c, line);
    }
}

void calls(debug_console &c, const std::string &) {
    print(c, "0  " + driver(c).symbols.place_of(debug_driver::next_address()));
    const auto sp = static_cast<uint16_t>(kiv_get_register(KIV_REG_SP));
    int depth = 0;
    for (uint32_t i = 0; i < 256 && sp + 2 * i < 0xFFFF && depth < 20; ++i) {
        const auto word = static_cast<uint16_t>(word_at(static_cast<uint16_t>(sp + 2 * i)));
        if (behind_call(word)) print(c, text_of("%d  ", ++depth) + driver(c).symbols.place_of(word));
    }
}

std::string shown(int64_t value) {
    std::string text =
        std::to_string(value) + text_of(" $%" PRIX64, static_cast<uint64_t>(value) & 0xFFFFFFFF);
    if (value >= 0 && value < 256) {
        text += " %";
        for (int bit = 7; bit >= 0; --bit) text += (value >> bit & 1) ? '1' : '0';
        if (value >= 0x20 && value < 0x7F) text += std::string(" '") + static_cast<char>(value) + "'";
    }
    return text;
}

void print_command(debug_console &c, const std::string &rest) { print(c, shown(value_of(c, rest))); }

void display(debug_console &c, const std::string &rest) {
    if (rest.empty()) {
        for (const auto &[text, value] : console_commands::displays(c))
            print(c, text + " = " + shown(value()));
        return;
    }
    console_commands::displays(c).emplace_back(rest, parse_expression(rest, driver(c).symbols));
    print(c, rest + " = " + shown(value_of(c, rest)));
}

void undisplay(debug_console &c, const std::string &rest) {
    auto &all = console_commands::displays(c);
    if (rest.empty()) return all.clear();
    if (std::erase_if(all, [&](const auto &d) { return d.first == rest; }) == 0) fail(rest + " is not shown");
}

void screen_command(debug_console &c, const std::string &) {
    const std::string text = screen();
    if (text.empty()) return print(c, "the text screen is off");
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        print(c, text.substr(at, end - at));
        at = end + 1;
    }
}

void devices(debug_console &c, const std::string &rest) {
    bool any = false;
    for (const device_text &d : devices_now()) {
        if (!rest.empty() && rest != d.name) continue;
        any = true;
        print(c, d.name);
        for (const auto &[what, text] : d.lines) print(c, text_of("  %-12s %s", what.c_str(), text.c_str()));
    }
    if (any) return;
    std::string names;
    for (const device_text &d : devices_now()) names += std::string(" ") + d.name;
    fail(rest + ": no such device;" + names);
}

void in_command(debug_console &c, const std::string &rest) {
    const range r = range_of(c, rest, 0xFF);
    for (unsigned p = r.first; p <= r.last; ++p)
        print(c, text_of("port $%02X: $%02X", p, kiv_port_peek(static_cast<uint16_t>(p))));
}

void find(debug_console &c, const std::string &rest) {
    std::string what;
    const std::string where = first_word(rest, what);
    const size_t colon = where.find(':');
    const int32_t area =
        colon == std::string::npos ? int32_t{KIV_AREA_CPU} : area_named(where.substr(0, colon));
    if (area < 0) fail(where + ": no such memory");
    const auto highest = static_cast<uint16_t>(kiv_area_size(area) - 1);
    const range r = range_of(c, colon == std::string::npos ? where : where.substr(colon + 1), highest);
    const std::vector<uint8_t> bytes = bytes_of(c, what);
    int found = 0;
    for (uint32_t at = r.first; at + bytes.size() <= r.last + 1u; ++at) {
        bool same = true;
        for (size_t i = 0; i < bytes.size() && same; ++i)
            same = kiv_peek(area, static_cast<uint32_t>(at + i)) == bytes[i];
        if (!same) continue;
        print(c, text_of("$%04X", at));
        if (++found == 100) return print(c, "and perhaps more");
    }
    if (found == 0) print(c, "not found");
}

void names(debug_console &c, const std::string &rest) {
    size_t count = 0;
    for (const auto &[name, value] : driver(c).symbols.names()) {
        if (!rest.empty() && name.find(rest) == std::string::npos) continue;
        print(c, text_of("$%04X ", value.first) + name +
                     (value.second == memory_bank::any ? "" : std::string(" in ") + bank_name(value.second)));
        ++count;
    }
    if (count == 0) print(c, "no symbols");
}

const command looking[] = {
    {"where", "", "where the machine stands, in its program and in the frame", where},
    {"regs r", "", "all registers", regs},
    {"dis u l", "[ADDRESS [N]]", "instructions; without an address those that follow", dis},
    {"mem m x", "[[AREA:]ADDRESS [N]]",
     "memory as hex and text; areas: cpu ram main nbasic ext blue red green font pcg", mem},
    {"stack", "[N]", "words on the stack, return addresses marked", stack},
    {"calls bt", "", "what looks like the calls that have not returned", calls},
    {"print p", "EXPRESSION", "a value", print_command},
    {"display", "[EXPRESSION]", "shows a value at every stop from now on; alone: those shown", display},
    {"undisplay", "[EXPRESSION]", "no longer", undisplay},
    {"screen", "", "the text screen", screen_command},
    {"devices dev", "[NAME]",
     "the devices: raster memory crtc dma interrupts pcg usart palette calendar keyboard", devices},
    {"in", "PORT[..PORT]", "what an IN would read, without what it does", in_command},
    {"find", "[AREA:]RANGE BYTES|\"TEXT\"", "where the bytes stand", find},
    {"names", "[PART]", "symbols, or those with the part in them", names},
};

// ---- changing ----------------------------------------------------------------------------------------

constexpr std::pair<const char *, int> register_names[] = {
    {"BC", KIV_REG_BC},      {"DE", KIV_REG_DE},      {"HL", KIV_REG_HL},      {"AF", KIV_REG_AF},
    {"BC'", KIV_REG_BC_ALT}, {"DE'", KIV_REG_DE_ALT}, {"HL'", KIV_REG_HL_ALT}, {"AF'", KIV_REG_AF_ALT},
    {"IX", KIV_REG_IX},      {"IY", KIV_REG_IY},      {"PC", KIV_REG_PC},      {"SP", KIV_REG_SP},
    {"I", KIV_REG_I},        {"R", KIV_REG_R},        {"IM", KIV_REG_IM},      {"IFF1", KIV_REG_IFF1},
    {"IFF2", KIV_REG_IFF2}};
struct half {
    const char *name;
    int index, shift;
};
constexpr half halves[] = {{"A", KIV_REG_AF, 8},   {"F", KIV_REG_AF, 0},   {"B", KIV_REG_BC, 8},
                           {"C", KIV_REG_BC, 0},   {"D", KIV_REG_DE, 8},   {"E", KIV_REG_DE, 0},
                           {"H", KIV_REG_HL, 8},   {"L", KIV_REG_HL, 0},   {"IXH", KIV_REG_IX, 8},
                           {"IXL", KIV_REG_IX, 0}, {"IYH", KIV_REG_IY, 8}, {"IYL", KIV_REG_IY, 0}};

bool set_register(debug_console &c, std::string name, int64_t value) {
    for (char &letter : name) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    for (const auto &[text, index] : register_names)
        if (name == text) {
            check(driver(c).set_register(index, static_cast<uint32_t>(value) & 0xFFFF));
            return true;
        }
    for (const half &h : halves)
        if (name == h.name) {
            const uint32_t whole = kiv_get_register(h.index) & ~(0xFFu << h.shift);
            check(driver(c).set_register(h.index, whole | (static_cast<uint32_t>(value) & 0xFF) << h.shift));
            return true;
        }
    return false;
}

// NAME=VALUE, [address]=VALUE, w[address]=VALUE, AREA[address]=VALUE.
void set(debug_console &c, const std::string &rest) {
    const size_t close = rest.find(']');
    const size_t equals = rest.find('=', close == std::string::npos ? 0 : close);
    if (equals == std::string::npos) fail("set NAME=VALUE or set [ADDRESS]=VALUE");
    std::string behind;
    std::string target = rest.substr(0, equals);
    target.erase(target.find_last_not_of(" \t") + 1);
    const int64_t value = value_of(c, rest.substr(equals + 1));
    const size_t open = target.find('[');
    if (open == std::string::npos) {
        if (!set_register(c, target, value)) fail(target + ": no such register");
        return;
    }
    const std::string area_text = target.substr(0, open);
    const uint16_t address = address_of(c, target.substr(open + 1, target.rfind(']') - open - 1));
    if (area_text == "port") return driver(c).port_out(address, static_cast<uint8_t>(value));
    const bool word = area_text == "w";
    const int32_t area = word || area_text.empty() ? int32_t{KIV_AREA_CPU} : area_named(area_text);
    if (area < 0) fail(area_text + ": no such memory");
    const uint8_t bytes[] = {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)};
    check(driver(c).write(area, address, bytes, word ? 2 : 1));
}

void poke(debug_console &c, const std::string &rest) {
    std::string what;
    const place p = place_of(c, first_word(rest, what));
    const std::vector<uint8_t> bytes = bytes_of(c, what);
    check(driver(c).write(p.area, p.address, bytes.data(), bytes.size()));
}

void fill(debug_console &c, const std::string &rest) {
    std::string what;
    const range r = range_of(c, first_word(rest, what));
    const std::vector<uint8_t> bytes = bytes_of(c, what);
    std::vector<uint8_t> all(r.last - r.first + 1u);
    for (size_t i = 0; i < all.size(); ++i) all[i] = bytes[i % bytes.size()];
    check(driver(c).write(KIV_AREA_CPU, r.first, all.data(), all.size()));
}

void asm_command(debug_console &c, const std::string &rest) {
    std::string what;
    const uint16_t address = address_of(c, first_word(rest, what));
    const std::vector<uint8_t> code = assemble(what, address, driver(c).symbols);
    if (code.empty()) fail("an instruction is missing");
    check(driver(c).write(KIV_AREA_CPU, address, code.data(), code.size()));
    uint8_t length = 0;
    print(c, instruction_line(c, address, length));
    print(c, text_of("next: $%04X", static_cast<unsigned>(address + code.size()) & 0xFFFF));
}

void out_command(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    if (words.size() != 2) fail("out PORT VALUE");
    const range port = range_of(c, words[0], 0xFF);
    driver(c).port_out(port.first, bytes_of(c, words[1])[0]);
}

void load(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    if (words.size() != 2) fail("load FILE [AREA:]ADDRESS");
    if (!console_commands::host(c).read_file) fail("there are no files here");
    const place p = place_of(c, words[1]);
    const std::string bytes = console_commands::host(c).read_file(words[0]);
    check(driver(c).write(p.area, p.address, bytes.data(), bytes.size()));
    print(c, text_of("%zu bytes at $%04X", bytes.size(), p.address));
}

void save(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    if (words.size() != 2) fail("save FILE [AREA:]RANGE");
    if (!console_commands::host(c).write_file) fail("there are no files here");
    const size_t colon = words[1].find(':');
    const int32_t area =
        colon == std::string::npos ? int32_t{KIV_AREA_CPU} : area_named(words[1].substr(0, colon));
    if (area < 0) fail(words[1] + ": no such memory");
    const range r = range_of(c, colon == std::string::npos ? words[1] : words[1].substr(colon + 1),
                             static_cast<uint16_t>(kiv_area_size(area) - 1));
    std::string bytes(r.last - r.first + 1u, '\0');
    check(kiv_read(area, r.first, bytes.data(), bytes.size()));
    console_commands::host(c).write_file(words[0], bytes);
}

void type(debug_console &c, const std::string &rest) {
    if (console_commands::host(c).type) return console_commands::host(c).type(rest);
    std::string text = rest;
    for (size_t at = 0; (at = text.find("\\n", at)) != std::string::npos;) text.replace(at, 2, "\n");
    check(kiv_type(text.c_str()));
}

void key(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    if (words.size() != 3 || (words[2] != "down" && words[2] != "up")) fail("key ROW BIT down|up");
    check(kiv_matrix_key(static_cast<uint32_t>(value_of(c, words[0])),
                         static_cast<uint32_t>(value_of(c, words[1])), words[2] == "down"));
}

void setting(debug_console &c, const std::string &rest) {
    const auto words = split(rest);
    int32_t value = 0;
    if (words.empty()) {
        for (uint32_t i = 0; kiv_setting_key(i) != nullptr; ++i) {
            check(kiv_get_setting(kiv_setting_key(i), &value));
            print(c, std::string(kiv_setting_key(i)) + " " + std::to_string(value));
        }
        return;
    }
    if (words.size() != 2) fail("setting KEY VALUE");
    check(kiv_set_setting(words[0].c_str(), static_cast<int32_t>(value_of(c, words[1]))));
    driver(c).changed();
}

void tape(debug_console &c, const std::string &rest) {
    if (rest == "out") {
        kiv_tape_eject();
    } else {
        if (!console_commands::host(c).read_file) fail("there are no files here");
        const std::string bytes = console_commands::host(c).read_file(rest);
        check(kiv_tape_insert(bytes.data(), bytes.size()));
    }
    driver(c).forget_history(); // its snapshots know their tape by its checksum
}

void save_state(debug_console &c, const std::string &rest) {
    if (rest.empty()) fail("a file is missing");
    if (!console_commands::host(c).write_file) fail("there are no files here");
    std::string state(kiv_snapshot_size(KIV_SNAPSHOT_WHOLE), '\0');
    kiv_snapshot_save(KIV_SNAPSHOT_WHOLE, state.data(), state.size());
    console_commands::host(c).write_file(rest, state);
}

void load_state(debug_console &c, const std::string &rest) {
    if (rest.empty()) fail("a file is missing");
    if (!console_commands::host(c).read_file) fail("there are no files here");
    const std::string state = console_commands::host(c).read_file(rest);
    if (kiv_snapshot_load(state.data(), state.size()) != KIV_OK) fail(rest + ": " + kiv_error_text());
    driver(c).forget_history();
    c.show_place();
}

void load_dump(debug_console &c, const std::string &rest) {
    if (!console_commands::host(c).read_file) fail("there are no files here");
    const std::string dump = console_commands::host(c).read_file(rest);
    if (kiv_dump_load(dump.data(), dump.size()) != KIV_OK) fail(rest + ": " + kiv_error_text());
    driver(c).changed();
    c.show_place();
}

const command changing[] = {
    {"set", "TARGET=VALUE", "a register, [ADDRESS], w[ADDRESS], AREA[ADDRESS] or port[PORT]", set},
    {"poke", "[AREA:]ADDRESS BYTES|\"TEXT\"", "writes bytes", poke},
    {"fill", "RANGE BYTES", "writes the bytes over and over", fill},
    {"asm a", "ADDRESS INSTRUCTION", "assembles one line", asm_command},
    {"out-port o", "PORT VALUE", "a real OUT", out_command},
    {"load", "FILE [AREA:]ADDRESS", "a file's bytes into memory", load},
    {"save", "FILE [AREA:]RANGE", "memory into a file", save},
    {"type", "TEXT", "keys to type; \\n is RETURN", type, false},
    {"key", "ROW BIT down|up", "a key of the matrix", key},
    {"setting", "[KEY VALUE]", "the machine's settings", setting},
    {"tape", "FILE|out", "a tape into the deck; ends the history", tape},
    {"save-state", "FILE", "the whole machine", save_state},
    {"load-state", "FILE", "goes on from there; ends the history", load_state},
    {"load-dump", "FILE", "a memory dump", load_dump},
};

} // namespace

bool console_text::behind_call(uint16_t address) {
    uint8_t bytes[4];
    for (const int back : {3, 1}) {
        for (int i = 0; i < 4; ++i) bytes[i] = byte_at(static_cast<uint16_t>(address - back + i));
        const flow f = flow_of(bytes);
        if ((back == 3 && f == flow::call) || (back == 1 && f == flow::restart)) return true;
    }
    return false;
}

std::span<const command> console_commands::of_looking() { return looking; }
std::span<const command> console_commands::of_changing() { return changing; }
