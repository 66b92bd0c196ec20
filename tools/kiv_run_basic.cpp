#include "tools/kiv_run_basic.h"

namespace {

constexpr uint64_t second = 55; // frames
constexpr uint64_t line_end_pause = second / 2, deck_patience = 10 * second;
constexpr uint64_t ok_patience = second, input_patience = 10 * second, still_patience = 60 * second;
constexpr uint64_t longest_run = 30 * 60 * second;

// The last row that is not empty.
std::string last_row(const std::string &screen) {
    const size_t end = screen.find_last_not_of('\n');
    if (end == std::string::npos) return {};
    const size_t start = screen.rfind('\n', end) + 1;
    return screen.substr(start, end + 1 - start);
}

} // namespace

std::string basic_session::type_now(uint64_t frame, size_t tape_position) {
    switch (stage) {
    case stage_load:
        if (frame < moved) return {};
        stage = stage_loading;
        moved = frame;
        return "CLOAD\n";
    case stage_loading:
        if (tape_position != position) {
            position = tape_position;
            moved = frame;
        }
        // Behind the last byte BASIC has a line left to put away.
        if (frame - moved < (position >= tape_size ? line_end_pause : deck_patience)) return {};
        stage = runs ? stage_run : stage_done;
        return {};
    case stage_run:
        stage = stage_done;
        started = moved = frame;
        return "RUN\n";
    case stage_done: break;
    }
    return {};
}

bool basic_session::over(uint64_t frame, const basic_view &view) {
    if (view.text != last.text || view.graphics != last.graphics) {
        last = view;
        moved = frame;
    }
    const std::string row = last_row(view.text);
    const uint64_t patience = row == "Ok"          ? ok_patience
                              : row.ends_with('?') ? input_patience // INPUT asks
                                                   : still_patience;
    return frame - moved >= patience || frame - started >= longest_run;
}
