// The settings between their file, their dialog and the objects that use them.
#include "app/kiv_form.h"

#include "app/kiv_assay.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "support/kel_fstream.h"

#include <algorithm>

namespace {

constexpr char settings_file_name[] = "/KIV.INI";

// The dialog's controls, in its order.
enum { slider_dma_load, slider_dma_gain, slider_hard_volume, slider_soft_volume };
enum {
    check_tenkeyless,
    check_no_wait,
    check_sync_vblank,
    check_screensize,
    check_txt_on_demand,
    check_interlace,
    check_nbasic,
    check_hires_crt
};

} // namespace

int kiv_form::load_settings_file() {
    const std::string folder = platform::current_directory();
    if (folder.empty()) {
        trace("load_settings_file: the current directory is gone");
        return 0;
    }
    ini_path = folder + settings_file_name;
    if (ini_path.size() >= path_limit) {
        trace("load_settings_file: %s: the path is too long", ini_path.c_str());
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
        trace("load_settings_file: %s: %s", ini_path.c_str(),
              platform::file_exists(ini_path) ? not_opened.c_str() : not_made.c_str());
        return 0;
    }
    file.close();
    read_settings(settings_section);
    write_settings(settings_section);
    return 1;
}

void kiv_form::read_settings(const char *section) {
    const setting_values v = read_settings_file(ini_path, section);
    z80_thread &cpu = *program.cpu_thread;
    kiv_directx &directx = *program.directx;
    cpu.set_no_wait(static_cast<uint32_t>(v[setting_z80_no_wait]));
    cpu.set_dma_gain(static_cast<uint32_t>(v[setting_dma_gain]));
    hard_volume = v[setting_hard_volume];
    soft_volume = v[setting_soft_volume];
    use_videomem = v[setting_use_videomem];
    machine.dma_load = static_cast<uint32_t>(v[setting_dma_load]);
    directx.set_sync_vblank(static_cast<uint32_t>(v[setting_sync_vblank]));
    tenkeyless = v[setting_tenkeyless];
    directx.set_screensize(static_cast<uint16_t>(v[setting_screensize]));
    directx.set_txt_on_demand(static_cast<uint32_t>(v[setting_txt_on_demand]));
    machine.interlace = static_cast<uint32_t>(v[setting_interlace]);
    machine.boot_rom = static_cast<uint8_t>(v[setting_boot_rom]);
    machine.crt_standard = v[setting_hires_crt] == 0;
    machine.timing_reset(); // the monitor decides the raster
}

int kiv_form::write_settings(const char *section) {
    const z80_thread &cpu = *program.cpu_thread;
    const kiv_directx &directx = *program.directx;
    setting_values v{};
    v[setting_z80_no_wait] = cpu.get_no_wait() != 0;
    v[setting_dma_gain] = static_cast<int>(cpu.get_dma_gain());
    v[setting_hard_volume] = hard_volume;
    v[setting_soft_volume] = soft_volume;
    v[setting_use_videomem] = use_videomem != 0;
    v[setting_dma_load] = static_cast<int>(machine.dma_load);
    v[setting_sync_vblank] = directx.get_sync_vblank() != 0;
    v[setting_tenkeyless] = tenkeyless != 0;
    v[setting_screensize] = directx.get_screensize() != 0;
    v[setting_txt_on_demand] = directx.get_txt_on_demand() != 0;
    v[setting_interlace] = machine.interlace != 0;
    v[setting_boot_rom] = machine.boot_rom;
    v[setting_hires_crt] = machine.crt_standard == 0;
    if (write_settings_file(ini_path, v, section)) return 1;
    trace("write_settings: %s: %s", ini_path.c_str(), platform::last_file_error().c_str());
    return 0;
}

// Devices report a volume slightly above the one that was set, which the truncation to whole decibels would
// otherwise raise by one.
int kiv_form::hard_volume_readback() const { return program.directx->getHardVolume() - 1; }

platform::settings_dialog kiv_form::make_settings_dialog() const {
    const z80_thread &cpu = *program.cpu_thread;
    const kiv_directx &directx = *program.directx;
    platform::settings_dialog d;
    d.caption = "Kiv機能設定";
    d.program_line = "Zun - PC-8801 Emulator";
    d.copyright_line = "Copyright (c) 2026 The Kiv authors";
    // The values in effect; the settings file may have set ones outside of the sliders' ranges.
    d.sliders = {
        {"DMA load", "(T)", 0, 100, static_cast<int>(machine.dma_load)},
        {"DMA gain", "(T)", 1, 40, static_cast<int>(cpu.get_dma_gain())},
        {"Volume", "(dB)", -100, 0, hard_volume_readback()},
        {"Amplitude", "", 1, 18, directx.getSoftVolume()},
    };
    d.checks = {
        {"TEN-Keyless", tenkeyless != 0},
        {"NO Wait", cpu.get_no_wait() != 0},
        {"Sync Vertical Blank", directx.get_sync_vblank() != 0},
        {"720x480", directx.get_screensize() == 1},
        {"Text diff-draw", directx.get_txt_on_demand() != 0},
        {"Interlace like", machine.interlace != 0},
        {"N-BASIC ROM BOOT", machine.boot_rom == 0},
        {"HiRes CRT", machine.crt_standard == 0},
    };
    return d;
}

void kiv_form::apply_settings_dialog(const platform::settings_dialog &d) {
    z80_thread &cpu = *program.cpu_thread;
    kiv_directx &directx = *program.directx;
    const auto checked = [&d](size_t i) { return static_cast<uint32_t>(d.checks.at(i).checked); };
    const auto position = [&d](size_t i) { // a slider cannot stand outside of its range
        const platform::settings_slider &s = d.sliders.at(i);
        return std::clamp(s.value, s.minimum, s.maximum);
    };
    machine.crt_standard = !checked(check_hires_crt);
    machine.boot_rom = static_cast<uint8_t>(!checked(check_nbasic));
    tenkeyless = d.checks.at(check_tenkeyless).checked;
    remap_cursor_keys();
    directx.set_screensize(static_cast<uint16_t>(checked(check_screensize)));
    directx.set_sync_vblank(checked(check_sync_vblank));
    cpu.set_no_wait(checked(check_no_wait));
    directx.set_txt_on_demand(checked(check_txt_on_demand));
    machine.interlace = checked(check_interlace);
    machine.select_scanline_colours(machine.interlace);
    machine.dma_load = static_cast<uint32_t>(position(slider_dma_load));
    cpu.set_dma_gain(static_cast<uint32_t>(position(slider_dma_gain)));
    directx.setHardVolume(position(slider_hard_volume));
    directx.setSoftVolume(position(slider_soft_volume));
}
