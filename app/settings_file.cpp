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

const setting_rule setting_rules[setting_count] = {
    {"z80_no_wait", 0, one_only, false},   {"dma_gain", 20, as_it_is, true},
    {"hard_volume", -4, as_it_is, false},  {"soft_volume", 1, as_it_is, false},
    {"use_videomem", 1, always_one, true}, {"dma_load", 100, as_it_is, true},
    {"sync_vblank", 0, one_only, true},    {"tenkeyless", 1, one_only, true},
    {"screensize", 0, not_zero, false},    {"txt_on_demand", 0, one_only, true},
    {"interlace", 0, one_only, true},      {"boot_rom", 1, not_zero, true},
    {"hires_crt", 1, one_only, true},
};

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
