// What the whole program is expected to do on whichever host it runs, with the test's firmware in the
// machine.
#pragma once

#include "app/kiv_assay.h"
#include "resources/resources.h"
#include "tests/common/test_rom.h"

#include <algorithm>
#include <mutex>
#include <vector>

// A folder for one test of the program: current, with the ROM images and the instance lock in it. While it
// exists, what the program logs is heard.
class program_folder : public temporary_folder {
  public:
    program_folder() {
        namespace fs = std::filesystem;
        fs::permissions(path, fs::perms::all); // for starts as somebody else
        write_test_roms(path);
        fs::create_directory(*this / "run");
        fs::permissions(*this / "run", fs::perms::owner_all);
        setenv("XDG_RUNTIME_DIR", (*this / "run").c_str(), 1);
        setenv("XDG_CONFIG_HOME", (*this / "config").c_str(), 1);
        setenv("XDG_DATA_HOME", (*this / "data").c_str(), 1);
        fs::current_path(path);
        register_program_resources();
        forget();
        set_trace_listener([](const char *line) {
            const std::lock_guard lock(log_mutex);
            lines.emplace_back(line);
        });
    }
    ~program_folder() {
        set_trace_listener(nullptr);
        std::filesystem::current_path(came_from);
    }
    static std::vector<std::string> heard() {
        const std::lock_guard lock(log_mutex);
        return lines;
    }
    static bool heard_line(const std::string &part) {
        const auto all = heard();
        return std::any_of(all.begin(), all.end(),
                           [&](auto &l) { return l.find(part) != std::string::npos; });
    }
    static void forget() {
        const std::lock_guard lock(log_mutex);
        lines.clear();
    }

  private:
    const std::filesystem::path came_from = std::filesystem::current_path();
    inline static std::mutex log_mutex;
    inline static std::vector<std::string> lines;
};

// The log of a day with a change to full screen, from the start to a close by the End key; other lines stand
// in between.
inline const std::vector<std::string> log_of_a_day = {
    "------------------ Kiv start ----------------",
    "ENTER message Loop",
    "IME禁止",
    "change_screen: try stop z80 thread",
    "change_screen: try stop direct sound",
    "change_screen: try reinit",
    "change_screen: restart",
    "WM_CLOSE",
    "exit: try stop z80 thread",
    "exit: terminating Kiv",
    "WM_DESTROY",
    "LEAVE message Loop",
    "------------------ Kiv end ------------------",
    "ENTER ~z80_thread",
    "ENTER ~Kiv_render_thread",
    "LEAVE ~Kiv_render_thread",
    "LEAVE ~z80_thread",
    "ENTER ~kiv_form",
    "LEAVE ~kiv_form",
};

// The first of `wanted` that is not found among the lines after the ones before it; empty when all are.
inline std::string first_missing(const std::vector<std::string> &lines,
                                 const std::vector<std::string> &wanted) {
    auto from = lines.begin();
    for (const std::string &w : wanted) {
        from = std::find(from, lines.end(), w);
        if (from == lines.end()) return w;
        ++from;
    }
    return {};
}

// The characters of a row of the firmware's text screen, without the blanks at its end.
template <class ByteAt> std::string text_row(ByteAt byte_at, uint16_t row) {
    std::string text;
    for (uint16_t i = 0; i < 80; ++i)
        text += static_cast<char>(byte_at(static_cast<uint16_t>(0xF3C8 + 120 * row + i)));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}
