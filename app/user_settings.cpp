#include "app/user_settings.h"

#include "platform/file.h"
#include "platform/profile.h"

#include <cstdlib>

namespace {

constexpr char section[] = "Kiv", recent_section[] = "Recent";

struct value_rule {
    const char *key;
    int fallback, highest, lowest = 0;
};

constexpr value_rule rules[user_setting_count] = {
    {"look", 0, 2},
    {"four_thirds", 0, 1},
    {"whole_factors", 0, 1},
    {"messages", 1, 1},
    {"language", 0, 2},
    {"halt_waits", 2, 2},
    {"steps_over", 2, 2},
    {"back_deletes", 2, 2},
    {"keys_by_character", 0, 1},
    {"volume", user_volume_highest, user_volume_highest},
    {"gamepads", 0, 1},
    {"speed", 100, 400, 25},
    {"run_ahead", 0, 2},
    {"fast_tape", 2, 2},
    // The ten-key's 8, 2, 4 and 6; space, Z, X, RETURN; SHIFT, CTRL; ESC, RETURN.
    {"pad_up", 8, user_pad_none},
    {"pad_down", 2, user_pad_none},
    {"pad_left", 4, user_pad_none},
    {"pad_right", 6, user_pad_none},
    {"pad_a", 78, user_pad_none},
    {"pad_b", 42, user_pad_none},
    {"pad_x", 40, user_pad_none},
    {"pad_y", 15, user_pad_none},
    {"pad_left_shoulder", 70, user_pad_none},
    {"pad_right_shoulder", 71, user_pad_none},
    {"pad_back", 79, user_pad_none},
    {"pad_start", 15, user_pad_none},
};

} // namespace

user_settings default_user_settings() {
    user_settings s{};
    for (size_t i = 0; i < user_setting_count; ++i) s.values[i] = rules[i].fallback;
    return s;
}

std::string user_settings_path() {
    const char *config = std::getenv("XDG_CONFIG_HOME"), *home = std::getenv("HOME");
    if (config != nullptr && config[0] == '/') return std::string(config) + "/kiv/kiv.ini";
    if (home != nullptr && home[0] == '/') return std::string(home) + "/.config/kiv/kiv.ini";
    return {};
}

user_settings read_user_settings(const std::string &path) {
    user_settings s = default_user_settings();
    if (path.empty()) return s;
    for (size_t i = 0; i < user_setting_count; ++i) {
        const int value = platform::profile_int(path, section, rules[i].key, rules[i].fallback);
        s.values[i] = value >= rules[i].lowest && value <= rules[i].highest ? value : rules[i].fallback;
    }
    s.window_place = platform::profile_string(path, section, "window");
    s.debugger_layout = platform::profile_string(path, section, "debugger");
    s.rom_folder = platform::profile_string(path, section, "roms");
    for (size_t i = 0; i < most_recent_files; ++i)
        if (std::string file = platform::profile_string(path, recent_section, std::to_string(i));
            !file.empty())
            s.recent.push_back(std::move(file));
    return s;
}

bool write_user_settings(const std::string &path, const user_settings &s) {
    if (path.empty() || !platform::make_folder_of(path)) return false;
    std::vector<std::pair<std::string, std::string>> values, files;
    for (size_t i = 0; i < user_setting_count; ++i)
        values.emplace_back(rules[i].key, std::to_string(s.values[i]));
    values.emplace_back("window", s.window_place);
    values.emplace_back("debugger", s.debugger_layout);
    values.emplace_back("roms", s.rom_folder);
    for (size_t i = 0; i < most_recent_files; ++i)
        files.emplace_back(std::to_string(i), i < s.recent.size() ? s.recent[i] : std::string());
    return platform::write_profile(path, section, values) &&
           platform::write_profile(path, recent_section, files);
}

void add_recent(user_settings &s, const std::string &file) {
    std::erase(s.recent, file);
    s.recent.insert(s.recent.begin(), file);
    if (s.recent.size() > most_recent_files) s.recent.resize(most_recent_files);
}
