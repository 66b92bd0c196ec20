// The thirteen settings as the settings file keeps them: one table with key, default, reading rule and
// writing rule. Knows the file only, not the objects that use the values.
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

struct setting_rule {
    const char *key;
    int fallback;           // when the key is missing
    int (*read)(int value); // what a value of the file becomes
    bool is_unsigned;       // written "%u" instead of "%d"
};
extern const setting_rule setting_rules[setting_count];

setting_values default_settings();

// Missing keys, and a missing file, give the defaults. Values are not checked for range beyond the rules:
// whoever uses one makes its use safe. A null section is "Default".
setting_values read_settings_file(const std::string &path, const char *section = nullptr);

// Writes all thirteen keys in one rewrite of the file. False: the file is as it was.
bool write_settings_file(const std::string &path, const setting_values &values,
                         const char *section = nullptr);
