#include "tools/kiv_run_basic.h"

#include <sstream>
#include <vector>

namespace {

constexpr uint64_t second = 55; // frames
constexpr uint64_t ok_pause = 5, deck_patience = 10 * second;
constexpr uint64_t ok_patience = second, input_patience = 10 * second;
constexpr uint64_t longest_run = 30 * 60 * second, longest_music = 5 * 60 * second;

std::vector<std::string> rows_of(const std::string &screen) {
    std::vector<std::string> rows;
    std::istringstream in(screen);
    for (std::string row; std::getline(in, row);) rows.push_back(row);
    return rows;
}

bool stands_below_ok(int row, const std::string &screen) {
    const std::vector<std::string> rows = rows_of(screen);
    return row > 0 && static_cast<size_t>(row) <= rows.size() && rows[static_cast<size_t>(row) - 1] == "Ok";
}

} // namespace

std::string basic_session::type_now(uint64_t frame, const deck_view &deck) {
    switch (stage) {
    case stage_load:
        if (frame < moved) return {};
        stage = stage_loading;
        moved = frame;
        return "CLOAD\n";
    case stage_loading:
        // BASIC switches the motor off when it has all, or has found a fault.
        if (deck.position != position || deck.motor != motor) {
            position = deck.position;
            motor = deck.motor;
            moved = frame;
        }
        if (frame - moved < (position > 0 && !motor ? ok_pause : deck_patience)) return {};
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
    if (view.text != last.text || view.graphics != last.graphics || view.cursor_row != last.cursor_row) {
        last = view;
        shown = frame;
        moved = frame;
    } else if (view.sounds && frame - shown < longest_music) {
        moved = frame;
    }
    if (frame - started >= longest_run) return true;
    if (view.cursor_row < 0) return false; // it works, however still the screen stands
    return frame - moved >= (stands_below_ok(view.cursor_row, view.text) ? ok_patience : input_patience);
}

std::string basic_session::complaint(const std::string &screen) {
    std::string said;
    bool answers = false; // the rows from the last CLOAD to its Ok
    for (const std::string &row : rows_of(screen)) {
        if (row == "CLOAD") said.clear();
        answers = row == "CLOAD" || (answers && row != "Ok");
        if (answers && row != "CLOAD" && !row.empty() && !row.starts_with("Found:"))
            said += (said.empty() ? "" : "; ") + row;
    }
    return said;
}
