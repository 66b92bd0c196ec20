#include "debug/console.h"

#include "api/kiv.h"
#include "debug/console_commands.h"
#include "debug/disassembler.h"
#include "machine/kiv_machine.h"
#include <algorithm>
#include <set>

using namespace console_text;

namespace {

constexpr int deepest_script = 8;

constexpr std::pair<const char *, int32_t> areas[] = {
    {"cpu", KIV_AREA_CPU},       {"ram", KIV_AREA_RAM},
    {"main", KIV_AREA_MAIN_ROM}, {"nbasic", KIV_AREA_NBASIC_ROM},
    {"ext", KIV_AREA_EXT_ROM},   {"blue", KIV_AREA_BLUE},
    {"red", KIV_AREA_RED},       {"green", KIV_AREA_GREEN},
    {"font", KIV_AREA_FONT},     {"pcg", KIV_AREA_PCG}};

uint8_t byte_at(uint16_t address) { return static_cast<uint8_t>(kiv_peek(KIV_AREA_CPU, address)); }

// FILE or FILE:BANK.
std::pair<std::string, memory_bank> path_and_bank(const std::string &text) {
    const size_t colon = text.rfind(':');
    if (colon != std::string::npos)
        if (const auto bank = bank_named(text.substr(colon + 1))) return {text.substr(0, colon), *bank};
    return {text, memory_bank::any};
}

} // namespace

int32_t area_named(const std::string &name) {
    for (const auto &[text, area] : areas)
        if (name == text) return area;
    return -1;
}

const char *area_name(int32_t area) {
    for (const auto &[text, a] : areas)
        if (a == area) return text;
    return "";
}

// ---- text that a person wrote ------------------------------------------------------------------------

namespace console_text {

void fail(const std::string &text) { throw debug_error(text); }

std::vector<std::string> split(const std::string &text) {
    std::vector<std::string> words;
    for (size_t at = text.find_first_not_of(" \t"); at < text.size();
         at = text.find_first_not_of(" \t", at)) {
        size_t end;
        if (text[at] == '"') {
            end = text.find('"', at + 1);
            if (end == std::string::npos) fail("a closing \" is missing");
            words.push_back(text.substr(at + 1, end - at - 1));
            ++end;
        } else {
            end = std::min(text.find_first_of(" \t", at), text.size());
            words.push_back(text.substr(at, end - at));
        }
        at = end;
    }
    return words;
}

std::string first_word(const std::string &text, std::string &rest) {
    const size_t start = std::min(text.find_first_not_of(" \t"), text.size());
    const size_t end = std::min(text.find_first_of(" \t", start), text.size());
    const size_t next = std::min(text.find_first_not_of(" \t", end), text.size());
    std::string word = text.substr(start, end - start);
    rest = text.substr(next, text.find_last_not_of(" \t\r") + 1 - next);
    return word;
}

int64_t value_of(debug_console &c, const std::string &text) {
    if (text.empty()) fail("a value is missing");
    return parse_expression(text, console_commands::driver(c).symbols)();
}

uint16_t address_of(debug_console &c, const std::string &text) {
    if (text.empty()) fail("an address is missing");
    const int64_t value = value_of(c, text);
    if (value < -0x8000 || value > 0xFFFF) fail(text + " is no address");
    return static_cast<uint16_t>(value);
}

uint64_t count_of(debug_console &c, const std::string &text, uint64_t none) {
    if (text.empty()) return none;
    const int64_t value = value_of(c, text);
    if (value < 1) fail(text + ": a number from 1 on is wanted");
    return static_cast<uint64_t>(value);
}

range range_of(debug_console &c, const std::string &text, uint16_t highest) {
    const size_t dots = text.find(".."), comma = text.find(',');
    const auto checked = [&](int64_t first, int64_t last) {
        if (first < 0 || last < first || last > highest)
            fail(text + text_of(": from 0 to $%X is wanted", highest));
        return range{static_cast<uint16_t>(first), static_cast<uint16_t>(last)};
    };
    if (dots != std::string::npos)
        return checked(value_of(c, text.substr(0, dots)), value_of(c, text.substr(dots + 2)));
    if (comma == std::string::npos) {
        const int64_t first = value_of(c, text);
        return checked(first, first);
    }
    const int64_t first = value_of(c, text.substr(0, comma)), count = value_of(c, text.substr(comma + 1));
    if (count < 1 || count > 0x10000) fail(text + ": a number of bytes is wanted behind the comma");
    return checked(first, first + count - 1);
}

place place_of(debug_console &c, const std::string &text) {
    const size_t colon = text.find(':');
    if (colon == std::string::npos) return {KIV_AREA_CPU, address_of(c, text)};
    const int32_t area = area_named(text.substr(0, colon));
    if (area < 0)
        fail(text.substr(0, colon) + ": no such memory; cpu ram main nbasic ext blue red green font pcg");
    const uint16_t address = address_of(c, text.substr(colon + 1));
    if (address >= kiv_area_size(area))
        fail(text + text_of(": this memory has $%X bytes", kiv_area_size(area)));
    return {area, address};
}

std::vector<uint8_t> bytes_of(debug_console &c, const std::string &text) {
    std::vector<uint8_t> bytes;
    for (size_t at = text.find_first_not_of(" \t,"); at < text.size();
         at = text.find_first_not_of(" \t,", at)) {
        if (text[at] == '"') {
            const size_t end = text.find('"', at + 1);
            if (end == std::string::npos) fail("a closing \" is missing");
            bytes.insert(bytes.end(), text.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                         text.begin() + static_cast<std::ptrdiff_t>(end));
            at = end + 1;
            continue;
        }
        const size_t end = std::min(text.find_first_of(" \t,", at), text.size());
        const int64_t value = value_of(c, text.substr(at, end - at));
        if (value < -128 || value > 255) fail(text.substr(at, end - at) + " is no byte");
        bytes.push_back(static_cast<uint8_t>(value));
        at = end;
    }
    if (bytes.empty()) fail("bytes are missing");
    return bytes;
}

std::string instruction_line(debug_console &c, uint16_t address, uint8_t &length) {
    const symbol_table &symbols = console_commands::driver(c).symbols;
    const disassembled d =
        disassemble(address, byte_at, [&symbols](uint16_t a) { return symbols.name_of(a); });
    length = d.length;
    std::string bytes;
    for (int i = 0; i < d.length; ++i) bytes += text_of("%02X", d.bytes[i]);
    std::string line = text_of("%04X %-8s  %s", address, bytes.c_str(), d.text.c_str());
    std::string behind = d.note;
    if (const source_line *source = symbols.line_of(address); source != nullptr)
        behind += (behind.empty() ? "" : "; ") + source->file + ":" + std::to_string(source->number);
    if (!behind.empty()) line += std::string(line.size() < 36 ? 36 - line.size() : 1, ' ') + "; " + behind;
    return line;
}

std::string screen() {
    std::string text(kiv_text_screen(nullptr, 0), '\0');
    kiv_text_screen(text.data(), text.size() + 1);
    return text;
}

} // namespace console_text

// ---- the console -------------------------------------------------------------------------------------

std::span<const console_commands::group> console_commands::all() {
    static const group groups[] = {{"Running", of_running()},
                                   {"Stopping", of_stopping()},
                                   {"Looking", of_looking()},
                                   {"Changing", of_changing()},
                                   {"Recording, scripts", of_recording()}};
    return groups;
}

debug_console::debug_console(debug_driver &driver_, console_host host_)
    : driver(driver_), host(std::move(host_)) {
    driver.on_log = [this](const std::string &line) { print(line); };
}

debug_console::~debug_console() {
    driver.on_log = nullptr;
    for (debug_observer *o : std::initializer_list<debug_observer *>{trace.get(), profiler.get(),
                                                                     covered.get(), fault_watch.get()})
        if (o != nullptr) driver.unlisten(*o);
}

const debug_console::command *debug_console::find(const std::string &name) const {
    for (const auto &group : console_commands::all())
        for (const command &candidate : group.commands)
            for (const std::string &n : split(candidate.names))
                if (n == name) return &candidate;
    // A beginning that only one command has.
    const command *only = nullptr;
    for (const auto &group : console_commands::all())
        for (const command &candidate : group.commands)
            if (split(candidate.names)[0].starts_with(name)) {
                if (only != nullptr) return nullptr;
                only = &candidate;
            }
    return only;
}

bool debug_console::execute(const std::string &line) {
    std::string rest;
    const std::string name = first_word(line, rest);
    if (name.empty() || name[0] == '#') return !has_quit;
    if (depth++ == 0)
        was_interrupted = false;
    else if (driver.on_work)
        driver.on_work(-1);
    try {
        const command *const found = find(name);
        if (found == nullptr) fail(name + ": no such command; help lists them");
        if (found->runs_machine && !may_run) fail(name + ": not from here");
        found->run(*this, rest);
    } catch (const debug_error &error) {
        ++failures;
        print(error.what());
    }
    --depth;
    was_interrupted |= driver.is_asked();
    return !has_quit;
}

bool debug_console::run_script(const std::string &path) {
    if (!host.read_file) fail("there are no files here");
    if (script_depth == deepest_script) fail(path + ": scripts within scripts go too deep");
    const std::string text = host.read_file(path);
    const int failures_before = failures;
    ++script_depth;
    int number = 0;
    for (size_t at = 0; at < text.size() && !has_quit && !was_interrupted;) {
        const size_t end = std::min(text.find('\n', at), text.size());
        ++number;
        const int before = failures;
        execute(text.substr(at, end - at));
        if (failures != before) {
            print(path + ":" + std::to_string(number) + ": " + text.substr(at, end - at));
            break;
        }
        at = end + 1;
    }
    --script_depth;
    return failures == failures_before;
}

std::vector<std::string> debug_console::complete(const std::string &line) const {
    const size_t start = line.find_last_of(" \t,([:") + 1; // npos + 1 is 0
    const std::string word = line.substr(start);
    std::set<std::string> found;
    if (line.find_first_not_of(" \t") >= start) {
        for (const auto &group : console_commands::all())
            for (const command &c : group.commands)
                if (const std::string name = split(c.names)[0]; name.starts_with(word)) found.insert(name);
    } else {
        for (const auto &[name, value] : driver.symbols.names())
            if (name.starts_with(word)) found.insert(name);
    }
    return {found.begin(), found.end()};
}

void debug_console::show_place() {
    const uint16_t pc = debug_driver::next_address();
    uint8_t length = 0;
    const std::string name = driver.symbols.place_of(pc);
    if (name[0] != '$') print(name + ":");
    print(instruction_line(*this, pc, length));
    if (const source_line *source = driver.symbols.line_of(pc); source != nullptr)
        print("     " + source->text);
    next_listing = pc;
    print(registers_line());
    for (const auto &[text, value] : displays)
        print(text + " = " + std::to_string(value()) +
              text_of(" $%llX", static_cast<unsigned long long>(value())));
}

void debug_console::show_stop(const stop_report &report) {
    was_interrupted |= report.kind == stop_kind::asked;
    if (const std::string text = describe(report); !text.empty()) print(text);
    show_place();
}

void console_commands::run(debug_console &c, aim_kind kind, uint16_t address) {
    c.driver.aim(kind, address);
    c.show_stop(c.driver.run());
}

// ---- recorders ---------------------------------------------------------------------------------------

void debug_console::trace_into(const std::string &path) {
    if (!host.grow_file) fail("there are no files here");
    console_commands::stop_recording(*this, "trace");
    trace = std::make_unique<instruction_trace>(driver.symbols, host.grow_file(path));
    driver.listen(*trace);
}

void debug_console::profile_into(const std::string &path) {
    console_commands::stop_recording(*this, "profile");
    profile_path = path;
    console_commands::profile_anew(*this);
    console_commands::profile_goes_on(*this, true);
}

void console_commands::profile_anew(debug_console &c) {
    const bool goes_on = c.profiling();
    if (goes_on) c.driver.unlisten(*c.profiler);
    c.profiler = std::make_unique<profile>(c.driver.symbols);
    if (goes_on) c.driver.listen(*c.profiler);
}

// A pause ends what runs: what comes behind it has other callers.
void console_commands::profile_goes_on(debug_console &c, bool on) {
    c.driver.unlisten(*c.profiler);
    if (on)
        c.driver.listen(*c.profiler);
    else
        c.profiler->moved(false);
    c.profile_pauses = !on;
}

void debug_console::coverage_into(const std::string &path) {
    console_commands::stop_recording(*this, "coverage");
    coverage_path = path;
    covered = std::make_unique<coverage>(driver.symbols);
    driver.listen(*covered);
}

void debug_console::watch_faults(uint8_t kinds, bool of_roms, bool stop, int32_t port_of_a_test) {
    console_commands::stop_recording(*this, "faults");
    fault_watch = std::make_unique<memory_faults>(driver.symbols, kinds, of_roms,
                                                  [this](const std::string &line) { print(line); });
    fault_watch->stops = stop;
    fault_watch->port_of_a_test = port_of_a_test;
    driver.listen(*fault_watch);
}

void console_commands::stop_recording(debug_console &c, const std::string &what) {
    const auto write = [&c](const std::string &path, const std::string &text) {
        if (path.empty()) return;
        if (!c.host.write_file) fail("there are no files here");
        c.host.write_file(path, text);
    };
    const auto ended = [&c, &what](auto &recorder, const char *name) {
        if (what != name || !recorder) return false;
        c.driver.unlisten(*recorder);
        return true;
    };
    if (ended(c.trace, "trace")) {
        c.trace->finish();
        c.trace.reset();
    }
    if (ended(c.profiler, "profile")) {
        const auto done = std::move(c.profiler);
        write(c.profile_path, done->callgrind());
    }
    if (ended(c.covered, "coverage")) {
        const auto done = std::move(c.covered);
        write(c.coverage_path, done->lcov());
    }
    if (ended(c.fault_watch, "faults")) c.fault_watch.reset();
}

void debug_console::finish_recorders() {
    for (const char *what : {"trace", "profile", "coverage"}) console_commands::stop_recording(*this, what);
}

void debug_console::load_symbols(const std::string &text) {
    if (!host.read_file) fail("there are no files here");
    const auto [path, bank] = path_and_bank(text);
    const size_t count = driver.symbols.add_symbols(host.read_file(path), bank);
    if (count == 0) fail(path + ": no symbol file of pasmo, sjasmplus or z88dk");
    print(std::to_string(count) + " symbols");
}

void debug_console::load_listing(const std::string &text) {
    if (!host.read_file) fail("there are no files here");
    const auto [path, bank] = path_and_bank(text);
    const size_t count = driver.symbols.add_listing(host.read_file(path), path, bank);
    if (count == 0) fail(path + ": no listing: its lines begin with address and bytes");
    print(std::to_string(count) + " lines");
}
