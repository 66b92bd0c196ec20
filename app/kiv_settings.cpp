// The settings between their file, their dialog and the objects that use them.
#include "app/kiv_form.h"

#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "support/kel_fstream.h"
#include "support/log.h"

#include <algorithm>

namespace {

constexpr char settings_file_name[] = "/KIV.INI";

} // namespace

int kiv_form::load_settings_file() {
    const std::string folder = platform::current_directory();
    if (folder.empty()) {
        settings_fault = platform::text("今のフォルダがなくなっています");
        trace("load_settings_file: %s", settings_fault.c_str());
        return 0;
    }
    ini_path = options.settings.empty() ? folder + settings_file_name : options.settings;
    if (ini_path.size() >= path_limit) {
        settings_fault = ini_path + ": " + platform::text("パス名が長すぎます");
        trace("load_settings_file: %s", settings_fault.c_str());
        return 0;
    }
    kel_fstream file;
    if (file.open(ini_path.c_str(), 0, 0)) {
        file.close();
        read_settings(settings_section);
        return 1;
    }
    const std::string not_opened = platform::last_file_error();
    if (!file.create_new(ini_path.c_str(), 0)) {
        const std::string not_made = platform::last_file_error();
        // Of a file that is there, what kept it from opening says more than that it exists.
        settings_fault = ini_path + ": " + (platform::file_exists(ini_path) ? not_opened : not_made);
        trace("load_settings_file: %s", settings_fault.c_str());
        return 0;
    }
    file.close();
    read_settings(settings_section);
    if (options.open_roms) settings[setting_tenkeyless] = 0; // the screen editor lives by the cursor keys
    write_settings(settings_section);
    return 1;
}

void kiv_form::read_settings(const char *section) {
    settings = read_settings_file(ini_path, section);
    apply_settings();
    machine.timing_reset(); // the monitor decides the raster
}

int kiv_form::write_settings(const char *section) {
    if (!keeps_settings) {
        tell_fault(platform::text("設定は保存されません"));
        return 0;
    }
    if (write_settings_file(ini_path, settings, section)) return 1;
    const std::string why = platform::last_file_error();
    trace("write_settings: %s: %s", ini_path.c_str(), why.c_str());
    tell_fault(ini_path + ": " + why);
    return 0;
}

// Every value to where it is used. Whoever uses one makes its use safe.
void kiv_form::apply_settings() {
    const auto value = [this](setting_index i) { return static_cast<uint32_t>(settings[i]); };
    z80_thread &cpu = *program.cpu_thread;
    kiv_directx &directx = *program.directx;
    machine.crt_standard = settings[setting_hires_crt] == 0;
    machine.boot_rom = static_cast<uint8_t>(settings[setting_boot_rom]);
    remap_cursor_keys();
    directx.set_screensize(static_cast<uint16_t>(settings[setting_screensize]));
    directx.set_sync_vblank(value(setting_sync_vblank));
    cpu.set_no_wait(value(setting_z80_no_wait));
    directx.set_txt_on_demand(value(setting_txt_on_demand));
    machine.interlace = value(setting_interlace);
    machine.select_scanline_colours(machine.interlace);
    machine.dma_load = value(setting_dma_load);
    cpu.set_dma_gain(value(setting_dma_gain));
}

// Once there is a sound side. What it makes of the values is what the dialog shows and the file gets: a
// decibel below what devices report, which is slightly above what was set, and the amplitude in its 16 bits.
void kiv_form::apply_volumes() {
    program.directx->setHardVolume(settings[setting_hard_volume]);
    program.directx->setSoftVolume(static_cast<int16_t>(settings[setting_soft_volume]));
    settings[setting_hard_volume] = program.directx->getHardVolume() - 1;
    settings[setting_soft_volume] = program.directx->getSoftVolume();
}

platform::settings_dialog kiv_form::make_settings_dialog() const {
    platform::settings_dialog d;
    d.caption = platform::text("Kiv機能設定");
    d.program_line = "Zun - PC-8801 Emulator";
    d.copyright_line = "Copyright (c) 2026 The Kiv authors";
    const auto put = [](auto &list, size_t place, const auto &control) {
        if (list.size() <= place) list.resize(place + 1);
        list[place] = control;
    };
    for (size_t i = 0; i < setting_count; ++i) {
        const setting_rule &rule = setting_rules[i];
        // A value may lie outside of its slider's range, as the file may hold any.
        if (rule.control == setting_control::slider)
            put(d.sliders, rule.place,
                platform::settings_slider{rule.label, rule.unit, rule.minimum, rule.maximum, settings[i]});
        else if (rule.control != setting_control::none)
            put(d.checks, rule.place,
                platform::settings_check{rule.label, (settings[i] != 0) !=
                                                         (rule.control == setting_control::inverted_check)});
    }
    return d;
}

void kiv_form::take_settings_dialog(const platform::settings_dialog &d) {
    for (size_t i = 0; i < setting_count; ++i) {
        const setting_rule &rule = setting_rules[i];
        if (rule.control == setting_control::slider) // which cannot stand outside of its range
            settings[i] = std::clamp(d.sliders.at(rule.place).value, rule.minimum, rule.maximum);
        else if (rule.control != setting_control::none)
            settings[i] =
                d.checks.at(rule.place).checked != (rule.control == setting_control::inverted_check);
    }
    apply_settings();
    apply_volumes();
}
