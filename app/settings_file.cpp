#include "app/settings_file.h"

#include "platform/profile.h"

#include <cstdio>
#include <utility>
#include <vector>

namespace {

int as_it_is(int value) { return value; }
int one_only(int value) { return value == 1; } // 2 is off
int not_zero(int value) { return value != 0; } // 2 is on
int always_one(int) { return 1; }

} // namespace

using enum setting_control;

// clang-format off
const setting_rule setting_rules[setting_count] = {
    {"z80_no_wait",   0,   one_only,   false, check, 1, "NO Wait"},
    {"dma_gain",      20,  as_it_is,   true,  slider, 1, "DMA gain", "(T)", 1, 40},
    {"hard_volume",   -4,  as_it_is,   false, slider, 2, "Volume", "(dB)", -100, 0},
    {"soft_volume",   1,   as_it_is,   false, slider, 3, "Amplitude", "", 1, 18},
    {"use_videomem",  1,   always_one, true},
    {"dma_load",      100, as_it_is,   true,  slider, 0, "DMA load", "(T)", 0, 100},
    {"sync_vblank",   0,   one_only,   true,  check, 2, "Sync Vertical Blank"},
    {"tenkeyless",    1,   one_only,   true,  check, 0, "TEN-Keyless"},
    {"screensize",    0,   not_zero,   false, check, 3, "720x480"},
    {"txt_on_demand", 0,   one_only,   true,  check, 4, "Text diff-draw"},
    {"interlace",     0,   one_only,   true,  check, 5, "Interlace like"},
    {"boot_rom",      1,   not_zero,   true,  inverted_check, 6, "N-BASIC ROM BOOT"},
    {"hires_crt",     1,   one_only,   true,  check, 7, "HiRes CRT"},
};
// clang-format on

setting_values default_settings() {
    setting_values values{};
    for (size_t i = 0; i < setting_count; ++i) values[i] = setting_rules[i].read(setting_rules[i].fallback);
    return values;
}

setting_values read_settings_file(const std::string &path, const char *section) {
    const std::string name = section != nullptr ? section : settings_section;
    setting_values values{};
    for (size_t i = 0; i < setting_count; ++i) {
        const setting_rule &rule = setting_rules[i];
        values[i] = rule.read(platform::profile_int(path, name, rule.key, rule.fallback));
    }
    return values;
}

bool write_settings_file(const std::string &path, const setting_values &values, const char *section) {
    std::vector<std::pair<std::string, std::string>> entries;
    for (size_t i = 0; i < setting_count; ++i) {
        char text[64];
        if (setting_rules[i].is_unsigned)
            std::snprintf(text, sizeof text, "%u", static_cast<unsigned>(values[i]));
        else
            std::snprintf(text, sizeof text, "%d", values[i]);
        entries.emplace_back(setting_rules[i].key, text);
    }
    return platform::write_profile(path, section != nullptr ? section : settings_section, entries);
}
