// What a person has chosen for Kiv itself, whatever folder it runs in: ~/.config/kiv/kiv.ini (XDG). The
// machine's thirteen settings stay in KIV.INI.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

enum user_setting : size_t {
    user_look,          // platform::crt_look
    user_four_thirds,   // 1: the monitor's proportions, 0: square pixels
    user_whole_factors, // 1: the picture is enlarged by whole numbers only
    user_messages,      // 1: messages on the picture
    user_language,      // platform::language
    user_halt_waits,    // 1: HALT waits for an interrupt, 0: it ends the program, 2: as suits the ROM set
    user_steps_over,    // likewise: undefined instructions are stepped over, or end the program
    user_back_deletes,  // 1: Backspace is the machine's DEL, 0: its STOP, 2: as suits the ROM set
    user_by_character,  // 1: keys by what the layout prints, 0: by their place
    user_volume,        // 0 to user_volume_highest, beside the machine's own
    user_gamepads,      // 1: gamepads are used
    user_speed,         // per cent of the machine's own
    user_run_ahead,     // frames that the picture is ahead, 0 to 2
    user_fast_tape, // 1: tapes are read as fast as the host goes, 0: at their speed, 2: as suits the ROM set
    user_pad_up,    // and what follows, a pad_input each: row * 8 + bit of the key, or user_pad_none
    user_pad_last = user_pad_up + 11,
    user_setting_count
};

constexpr int user_volume_highest = 10, user_pad_none = 88;

constexpr size_t most_recent_files = 8;

struct user_settings {
    std::array<int, user_setting_count> values;
    std::string window_place;        // as the host gave it; empty: none yet
    std::string debugger_layout;     // likewise
    std::string rom_folder;          // chosen in place of the current directory; empty: none
    std::vector<std::string> recent; // files, the newest first
};

user_settings default_user_settings();

// Where they are kept; empty without a home folder.
std::string user_settings_path();

// Missing and impossible values take their defaults.
user_settings read_user_settings(const std::string &path);

// False: the file is as it was, and last_file_error says why. Makes the folder.
bool write_user_settings(const std::string &path, const user_settings &settings);

// Puts `file` first, once.
void add_recent(user_settings &settings, const std::string &file);
