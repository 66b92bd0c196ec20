#include "debug/symbols.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <vector>

namespace {

constexpr uint16_t farthest_name = 0x400; // from its address

bool is_name(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) ||
           std::string_view("_.@?$").find(c) != std::string_view::npos;
}

std::string lower(std::string_view text) {
    std::string result(text);
    for (char &c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

std::optional<uint32_t> digits(std::string_view text, int base) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::vector<std::string_view> words_of(std::string_view line) {
    std::vector<std::string_view> words;
    for (size_t at = 0; at < line.size();) {
        if (line[at] == ';') break;
        const size_t start = at;
        if (line[at] == '=' || line[at] == ':')
            ++at;
        else
            while (at < line.size() && std::string_view(" \t\r=:;").find(line[at]) == std::string_view::npos)
                ++at;
        if (at > start)
            words.push_back(line.substr(start, at - start));
        else
            ++at;
    }
    std::erase(words, ":");
    return words;
}

// name EQU number; name = number; DEFC name = number.
std::optional<std::pair<std::string, uint32_t>> symbol_of(std::string_view line) {
    std::vector<std::string_view> words = words_of(line);
    if (!words.empty() && lower(words[0]) == "defc") words.erase(words.begin());
    if (words.size() != 3 || (words[1] != "=" && lower(words[1]) != "equ")) return std::nullopt;
    const auto value = parse_number(words[2]);
    if (!value || !is_name(words[0][0])) return std::nullopt;
    return std::pair{std::string(words[0]), *value};
}

bool are_hex(std::string_view text) {
    return digits(text, 16).has_value() ||
           (text.size() > 8 && text.find_first_not_of("0123456789ABCDEFabcdef") == std::string_view::npos);
}

std::string_view take_word(std::string_view &line) {
    const size_t start = std::min(line.find_first_not_of(" \t"), line.size());
    const size_t end = std::min(line.find_first_of(" \t\r:", start), line.size());
    const std::string_view word = line.substr(start, end - start);
    line.remove_prefix(end);
    return word;
}

std::string_view trimmed(std::string_view text) {
    const size_t start = text.find_first_not_of(" \t\r");
    if (start == std::string_view::npos) return {};
    return text.substr(start, text.find_last_not_of(" \t\r") + 1 - start);
}

struct listed {
    uint16_t address;
    std::string_view source;
};

// ADDR:BYTES source, or [number] ADDR BYTES source, where the bytes may come apart.
std::optional<listed> listed_line(std::string_view line) {
    std::string_view rest = line;
    std::string_view word = take_word(rest);
    if (word.size() < 4 || !digits(word, 16) || (!rest.starts_with(":") && word.size() > 4)) {
        if (!digits(word, 10) && !(word.ends_with("+") && digits(word.substr(0, word.size() - 1), 10)))
            return std::nullopt;
        word = take_word(rest); // the line's number stood there
    }
    if (word.size() != 4) return std::nullopt;
    const auto address = digits(word, 16);
    if (!address) return std::nullopt;
    const bool bytes_in_one = rest.starts_with(":"); // pasmo's: DEFB behind them would pass for two more
    if (bytes_in_one) rest.remove_prefix(1);
    std::string_view behind = rest;
    size_t bytes = 0;
    for (std::string_view next = take_word(behind); next.size() >= 2 && next.size() % 2 == 0 && are_hex(next);
         next = take_word(behind)) {
        bytes += next.size() / 2;
        rest = behind;
        if (bytes_in_one) break;
    }
    if (bytes == 0) return std::nullopt;
    return listed{static_cast<uint16_t>(*address), trimmed(rest)};
}

template <class Line> void for_each_line(std::string_view text, Line line) {
    for (uint32_t number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        line(number, text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

bool seen(memory_bank bank, uint16_t address) { return bank == memory_bank::any || bank == bank_at(address); }

} // namespace

std::optional<uint32_t> parse_number(std::string_view text) {
    const std::string t = lower(text);
    const std::string_view v = t;
    if (v.starts_with("0x")) return digits(v.substr(2), 16);
    if (v.starts_with("$") || v.starts_with("#")) return digits(v.substr(1), 16);
    if (v.starts_with("%")) return digits(v.substr(1), 2);
    if (v.empty() || !std::isdigit(static_cast<unsigned char>(v[0]))) return std::nullopt;
    if (v.ends_with("h")) return digits(v.substr(0, v.size() - 1), 16);
    if (v.starts_with("0b") && v.size() > 2) return digits(v.substr(2), 2);
    return digits(v, 10);
}

size_t symbol_table::add_symbols(std::string_view text, memory_bank bank) {
    size_t count = 0;
    for_each_line(text, [&](uint32_t, std::string_view line) {
        const auto symbol = symbol_of(line);
        if (!symbol) return;
        ++count;
        add(symbol->first, static_cast<uint16_t>(symbol->second), bank);
    });
    return count;
}

size_t symbol_table::add_listing(std::string_view text, const std::string &file, memory_bank bank) {
    size_t count = 0;
    for_each_line(text, [&](uint32_t number, std::string_view line) {
        const auto found = listed_line(line);
        // What has no source of its own goes on with the bytes of the line above.
        if (!found || found->source.empty()) return;
        ++count;
        by_line.emplace(found->address,
                        std::pair{bank, source_line{file, number, std::string(found->source)}});
    });
    return count;
}

void symbol_table::add(const std::string &name, uint16_t value, memory_bank bank) {
    by_name[name] = {value, bank};
    by_address.emplace(value, std::pair{bank, name});
}

void symbol_table::clear() { *this = {}; }

std::optional<uint16_t> symbol_table::find(const std::string &name) const {
    const auto found = by_name.find(name);
    return found == by_name.end() ? std::nullopt : std::optional(found->second.first);
}

std::string symbol_table::name_of(uint16_t address) const {
    for (auto [at, end] = by_address.equal_range(address); at != end; ++at)
        if (seen(at->second.first, address)) return at->second.second;
    return {};
}

std::string symbol_table::place_of(uint16_t address) const {
    for (auto at = by_address.upper_bound(address); at != by_address.begin();) {
        --at;
        const auto distance = static_cast<uint16_t>(address - at->first);
        if (distance > farthest_name) break;
        if (!seen(at->second.first, address)) continue;
        return at->second.second + (distance == 0 ? "" : "+" + std::to_string(distance));
    }
    char text[8];
    std::snprintf(text, sizeof text, "$%04X", address);
    return text;
}

const source_line *symbol_table::line_of(uint16_t address) const {
    for (auto [at, end] = by_line.equal_range(address); at != end; ++at)
        if (seen(at->second.first, address)) return &at->second.second;
    return nullptr;
}
