// The thirteen settings as one table: key, default, reading and writing rule, and the row of the settings
// dialog. Knows the file and the dialog's words, not the objects that use the values.
#pragma once

#include <array>
#include <cstddef>
#include <string>

// In the order of reading and writing.
enum setting_index : size_t {
    setting_z80_no_wait,  // 1: memory wait states are not charged
    setting_dma_gain,     // kept only
    setting_hard_volume,  // decibels
    setting_soft_volume,  // beeper amplitude in thousands
    setting_use_videomem, // always 1
    setting_dma_load,     // per cent
    setting_sync_vblank,
    setting_tenkeyless,    // 1: the arrow keys stand in for the ten-key 4, 8, 6, 2
    setting_screensize,    // 1: only 720 x 480 in full screen
    setting_txt_on_demand, // kept only
    setting_interlace,     // 1: odd lines at half brightness
    setting_boot_rom,      // 1 Zun-BASIC, 0 N-BASIC
    setting_hires_crt,     // 1: 24 kHz monitor, 400 lines
    setting_count
};

using setting_values = std::array<int, setting_count>;

constexpr char settings_section[] = "Default";

enum class setting_control { none, slider, check, inverted_check }; // an inverted one is checked for 0

struct setting_rule {
    const char *key;
    int fallback;           // when the key is missing
    int (*read)(int value); // what a value of the file becomes
    bool is_unsigned;       // written "%u" instead of "%d"
    // In the dialog.
    setting_control control = setting_control::none;
    size_t place = 0; // among the controls of its kind
    const char *label = "", *unit = "";
    int minimum = 0, maximum = 0; // of a slider
};
extern const setting_rule setting_rules[setting_count];

setting_values default_settings();

// Missing keys, and a missing file, give the defaults. Values are not checked for range beyond the rules:
// whoever uses one makes its use safe. A null section is "Default".
setting_values read_settings_file(const std::string &path, const char *section = nullptr);

// Writes all thirteen keys in one rewrite of the file. False: the file is as it was, and last_file_error says
// why.
bool write_settings_file(const std::string &path, const setting_values &values,
                         const char *section = nullptr);
