#include "tools/kiv_run_input.h"

#include "api/kiv.h"
#include "tools/kiv_run_options.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace {

constexpr char head[] = "kiv input 1";

} // namespace

void input_recorder::open(const std::string &path) {
    file.open(path);
    const std::string text = std::string(head) + "\n# frame row bit\n";
    file.write(text.data(), text.size());
    rows.fill(0xFF);
}

void input_recorder::look(uint64_t frame) {
    if (!is_open()) return;
    for (uint32_t row = 0; row < rows.size(); ++row) {
        const auto now = static_cast<uint8_t>(kiv_matrix_row(row));
        const uint8_t changed = now ^ rows[row];
        rows[row] = now;
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((changed >> bit & 1) == 0) continue;
            char line[64];
            const int size = std::snprintf(line, sizeof line, "%" PRIu64 " %u %u %s\n", frame, row, bit,
                                           (now >> bit & 1) ? "up" : "down");
            file.write(line, static_cast<size_t>(size));
        }
    }
}

void input_recorder::finish() {
    if (is_open()) file.finish();
}

void input_player::load(const std::string &text, const std::string &path) {
    opened = true;
    size_t number = 0;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        at = end + 1;
        ++number;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const auto bad = [&](const char *what) {
            throw run_failure(path + ": line " + std::to_string(number) + ": " + what);
        };
        if (number == 1) {
            if (line != head) bad("no record of input: it begins with 'kiv input 1'");
            continue;
        }
        if (line.find_first_not_of(" \t") == std::string::npos || line[0] == '#') continue;
        uint64_t frame = 0;
        unsigned row = 0, bit = 0;
        char word[8] = "", rest = '\0';
        if (line[0] < '0' || line[0] > '9' ||
            std::sscanf(line.c_str(), "%20" SCNu64 " %2u %1u %7s %c", &frame, &row, &bit, word, &rest) != 4)
            bad("FRAME ROW BIT down|up is wanted");
        const bool down = std::strcmp(word, "down") == 0;
        if (row > 11 || bit > 7 || (!down && std::strcmp(word, "up") != 0))
            bad("a row of 0-11, a bit of 0-7 and down or up are wanted");
        if (!changes.empty() && frame < changes.back().frame) bad("the frame is before the one above");
        changes.push_back({frame, static_cast<uint8_t>(row), static_cast<uint8_t>(bit), down});
    }
    if (number == 0) throw run_failure(path + ": empty, no record of input");
}

void input_player::play(uint64_t frame) {
    for (; next < changes.size() && changes[next].frame <= frame; ++next)
        kiv_matrix_key(changes[next].row, changes[next].bit, changes[next].down);
}
