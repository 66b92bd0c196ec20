#include "platform/profile.h"

#include "platform/file.h"
#include <algorithm>
#include <climits>
#include <optional>
#include <string_view>

namespace platform {

namespace {

constexpr int64_t largest_profile = 16 << 20; // bytes; a file beyond this is no profile

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
constexpr std::string_view blanks = " \t\v\f\r";

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// ASCII only: a key in another script is compared byte for byte.
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool same_name(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return lower(x) == lower(y); });
}

std::optional<std::string> whole_file(const std::string &path) {
    const file_handle handle = open_file(path, true);
    if (handle == invalid_file) return {};
    std::string text;
    const int64_t size = file_size(handle);
    int64_t got = size < 0 || size > largest_profile ? -1 : 0;
    if (got == 0) {
        text.resize(static_cast<size_t>(size));
        got = size == 0 ? 0 : read_file(handle, text.data(), text.size());
    }
    close_file(handle);
    if (got != size) return {};
    return text;
}

// A profile as its lines, each with its line end, so that what is not touched is written as it was read.
class profile_text {
  public:
    explicit profile_text(std::string_view text) {
        if (text.starts_with(byte_order_mark)) {
            mark = byte_order_mark;
            text.remove_prefix(byte_order_mark.size());
        }
        while (!text.empty()) {
            const size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
            lines.emplace_back(text.substr(0, end));
            text.remove_prefix(end);
        }
        line_end = !lines.empty() && lines[0].ends_with("\r\n") ? "\r\n" : "\n";
    }

    std::string text() const {
        std::string all = mark;
        for (const std::string &line : lines) all += line;
        return all;
    }

    std::optional<std::string_view> value(std::string_view section, std::string_view key) const {
        const size_t at = find_key(section_body(section), key);
        if (at == lines.size()) return {};
        return trimmed(std::string_view(lines[at]).substr(lines[at].find('=') + 1, value_bytes(lines[at])));
    }

    void set_value(const std::string &section, const std::string &key, const std::string &new_value) {
        range body = section_body(section);
        const size_t at = find_key(body, key);
        if (at != lines.size()) {
            lines[at].replace(lines[at].find('=') + 1, value_bytes(lines[at]), new_value);
            return;
        }
        if (body.begin == 0) body = add_section(section);
        // Behind the section's last line, before the blank ones that set it off from the next.
        size_t place = body.end;
        while (place > body.begin && trimmed_line(place - 1).empty()) place--;
        insert_line(place, key + '=' + new_value);
    }

  private:
    struct range {
        size_t begin, end;
    }; // begin 0: no such section, for a body follows its header line

    std::string_view trimmed_line(size_t at) const {
        std::string_view line = lines[at];
        if (line.ends_with('\n')) line.remove_suffix(1);
        return trimmed(line);
    }

    std::optional<std::string_view> section_name(size_t at) const {
        const std::string_view line = trimmed_line(at);
        const size_t close = line.find(']');
        if (!line.starts_with('[') || close == std::string_view::npos) return {};
        return trimmed(line.substr(1, close - 1));
    }

    // The first section of that name: the one that is read is the one that is written.
    range section_body(std::string_view name) const {
        for (size_t at = 0; at < lines.size(); at++) {
            const auto found = section_name(at);
            if (!found || !same_name(*found, name)) continue;
            size_t end = at + 1;
            while (end < lines.size() && !section_name(end)) end++;
            return {at + 1, end};
        }
        return {0, 0};
    }

    size_t find_key(range body, std::string_view key) const {
        for (size_t at = body.begin; at < body.end; at++) {
            const std::string_view line = trimmed_line(at);
            const size_t equals = line.find('=');
            if (equals == std::string_view::npos) continue;
            if (same_name(trimmed(line.substr(0, equals)), key)) return at;
        }
        return lines.size();
    }

    // From behind the equals sign to the line's end or to the blanks before a comment there.
    static size_t value_bytes(const std::string &line) {
        const size_t from = line.find('=') + 1;
        size_t end = line.size();
        if (line.ends_with('\n')) end--;
        for (size_t at = from; at + 1 < end; at++)
            if (blanks.find(line[at]) != std::string_view::npos && line[at + 1] == ';') end = at;
        while (end > from && blanks.find(line[end - 1]) != std::string_view::npos) end--;
        return end - from;
    }

    void insert_line(size_t at, const std::string &line) {
        if (at > 0 && !lines[at - 1].ends_with('\n')) lines[at - 1] += line_end;
        lines.insert(lines.begin() + static_cast<ptrdiff_t>(at), line + line_end);
    }

    range add_section(const std::string &name) {
        if (!lines.empty()) insert_line(lines.size(), "");
        insert_line(lines.size(), '[' + name + ']');
        return {lines.size(), lines.size()};
    }

    std::string mark;
    std::vector<std::string> lines;
    std::string line_end;
};

int leading_integer(std::string_view text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        value = std::min<int64_t>(value * 10 + (c - '0'), int64_t{INT_MAX} + 1);
    }
    return static_cast<int>(negative ? -value : std::min<int64_t>(value, INT_MAX));
}

std::string_view unquoted(std::string_view text) {
    const bool quoted =
        text.size() >= 2 && text.front() == text.back() && (text.front() == '"' || text.front() == '\'');
    return quoted ? text.substr(1, text.size() - 2) : text;
}

} // namespace

int profile_int(const std::string &path, const std::string &section, const std::string &key, int fallback) {
    const auto text = whole_file(path);
    if (!text) return fallback;
    const profile_text profile(*text);
    const auto value = profile.value(section, key);
    return value ? leading_integer(trimmed(unquoted(*value))) : fallback;
}

std::string profile_string(const std::string &path, const std::string &section, const std::string &key) {
    const auto text = whole_file(path);
    if (!text) return {};
    const profile_text profile(*text);
    const auto value = profile.value(section, key);
    return value ? std::string(trimmed(unquoted(*value))) : std::string();
}

bool write_profile(const std::string &path, const std::string &section,
                   const std::vector<std::pair<std::string, std::string>> &values) {
    std::string old;
    if (file_exists(path)) {
        const auto text = whole_file(path);
        if (!text) return false;
        old = *text;
    }
    profile_text profile(old);
    for (const auto &[key, value] : values) profile.set_value(section, key, value);
    const std::string text = profile.text();
    return atomic_write(path, text.data(), text.size());
}

} // namespace platform
