// The boot: from an empty machine to a window that is about to start the emulation. Runs once, on the window
// thread, before any other thread of the program exists.
#include "app/kiv_form.h"

#include "api/snapshot.h"
#include "app/form_scopes.h"
#include "app/program.h"
#include "app/rom_report.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/host_clock.h"
#include "machine/kiv_machine.h"
#include "machine/machine_boot.h"
#include "machine/rom_loader.h"
#include "machine/tape_files.h"
#include "platform/file.h"
#include "platform/resources.h"
#include "resources/resources.h"
#include "support/kel_fstream.h"
#include "support/log.h"

#include <cstdio>

namespace {

// Where the machine's two callbacks find the section; set before machine_init.
platform::critical_section *video_lock_section = nullptr;

void video_lock() { video_lock_section->enter(); }
void video_unlock() { video_lock_section->leave(); }

} // namespace

int kiv_form::initialize() {
    const auto failed = [this](const char *text) {
        show_failure(host, text);
        return 0;
    };
    trace("IME禁止");
    window->disable_input_method();
    use_host_clock();
    video_lock_section = &video_section;
    machine_power_on(directx_host_callbacks(), video_lock, video_unlock);
    if (!load_roms_or_ask() || !load_settings_or_ask()) return 0;
    if (!load_picture()) return failed("BMPリソース読み込み失敗");
    if (!load_font()) return failed("FNTリソース読み込み失敗");
    machine_get_ready();
    apply_user_settings();
    remap_cursor_keys();
    sync_event = platform::event::create("SYNC");
    ack_event = platform::event::create("ACK");
    if (!program.cpu_thread->init()) {
        trace("Z80スレッド初期化失敗");
        return 0;
    }
    if (!program.directx->init(*window, static_cast<uint32_t>(settings[setting_use_videomem]))) {
        trace("DirectX初期化失敗");
        return 0;
    }
    apply_volumes();
    if (!options.tape.empty()) machine.cassette_set_stopped(load_file(options.tape));
    cassette_on_output_failure([](const std::string &path, const std::string &reason) {
        kiv_form &form = *program.form;
        {
            const std::lock_guard lock(form.tape_fault_mutex);
            form.tape_fault = path + ": " + reason;
        }
        form.post(WM_TAPE_FAULT, 0, 0);
    });
    post(WM_Z80START, 0, 0);
    return 1;
}

int kiv_form::load_roms() {
    const std::string error = load_rom_images(rom_folder);
    if (error.empty()) return 1;
    trace("load_roms: %s", error.c_str());
    return 0;
}

// Where the start looks for the images: what the command line says; else the current directory, if any of
// them is there, else the folder that was chosen once.
std::string kiv_form::rom_folder_of_start() const {
    if (options.open_roms) return open_rom_folder();
    if (!options.roms.empty()) return options.roms;
    return any_rom_in("") || own.rom_folder.empty() ? "" : own.rom_folder;
}

int kiv_form::load_roms_or_ask() {
    rom_folder = rom_folder_of_start();
    while (!load_roms()) {
        const std::string report = rom_report(rom_folder);
        std::fprintf(stderr, "kiv: %s\n", report.c_str());
        const std::string open_set = open_rom_folder();
        platform::question_box box{platform::text("ROMイメージファイル読み込み失敗"),
                                   program_title,
                                   report,
                                   {platform::text("フォルダを選ぶ(&F)...")}};
        if (!open_set.empty()) box.buttons.push_back(platform::text("付属のROMで起動(&S)"));
        const int answer = host.ask(nullptr, box);
        if (answer == 0) return 0;
        if (answer == 2) {
            rom_folder = open_set;
            options.open_roms = true;
        } else if (host.choose_folder(*window, platform::text("ROMイメージのフォルダ"), rom_folder)) {
            own.rom_folder = rom_folder;
            options.open_roms = false;
            save_user_settings();
        }
    }
    return 1;
}

int kiv_form::load_settings_or_ask() {
    if (load_settings_file()) return 1;
    std::fprintf(stderr, "kiv: %s\n", settings_fault.c_str());
    if (host.ask(nullptr, {platform::text("INIファイル読み込み失敗"),
                           program_title,
                           settings_fault,
                           {platform::text("保存せずに続ける(&C)")}}) == 0)
        return 0;
    keeps_settings = false;
    read_settings(settings_section); // what can be read of it
    return 1;
}

// For the machine that runs: new images, and the reset that they need.
void kiv_form::choose_rom_folder() {
    std::string folder;
    {
        const dialog_scope scope(*this, dialog_scope::take_focus);
        if (!scope || !host.choose_folder(*window, platform::text("ROMイメージのフォルダ"), folder)) return;
    }
    use_rom_folder(folder);
}

void kiv_form::use_rom_folder(const std::string &folder) {
    {
        const pause_scope pause(*this);
        if (!pause) return;
        if (const std::string wrong = load_rom_images(folder); !wrong.empty()) {
            const std::string fault = rom_fault(folder);
            tell_fault(fault.empty() ? wrong : fault);
            load_roms(); // what may have been overwritten
            return;
        }
        snapshot_roms_changed();
        machine_changed(true);
        rom_folder = own.rom_folder = folder;
        save_user_settings();
    }
    reset_machine();
    notify(platform::text("ROMを替えました"));
}

int kiv_form::load_picture() {
    if (!pause_picture.load_resource(pause_resource_id)) {
        trace("load_picture: BITMAP %d is missing or no bitmap", pause_resource_id);
        return 0;
    }
    const int width = pause_picture.width(), height = pause_picture.height(),
              depth = pause_picture.bit_count();
    if (depth > 8) {
        trace("load_picture: BITMAP %d has %d bits a pixel, not indices of colours", pause_resource_id,
              depth);
        return 0;
    }
    // The host draws rows of 0x00RRGGBB, top first; the bitmap has indices, as a rule bottom row first.
    pause_pixels.assign(static_cast<size_t>(width) * static_cast<size_t>(height), 0);
    for (int y = 0; y < height; ++y) {
        const int stored = pause_picture.is_top_down() ? y : height - 1 - y;
        const uint8_t *row = pause_picture.bits() + stored * pause_picture.stride();
        for (int x = 0; x < width; ++x) {
            const int shift = 8 - depth - x * depth % 8;
            const int index = row[x * depth / 8] >> shift & ((1 << depth) - 1);
            if (index >= pause_picture.colour_count()) continue;
            const palette_entry &c = pause_picture.palette_entries()[index];
            pause_pixels[static_cast<size_t>(y * width + x)] =
                static_cast<uint32_t>(c.red << 16 | c.green << 8 | c.blue);
        }
    }
    return 1;
}

int kiv_form::load_font() {
    const platform::resource font = platform::find_resource(platform::resource_type::font, font_resource_id);
    if (font.data == nullptr || font.size < font_size) {
        trace("load_font: FNT %d is missing or too short", font_resource_id);
        return 0;
    }
    machine_put_font(font.data);
    return 1;
}

void kiv_form::remap_cursor_keys() {
    release_keys();
    map_cursor_keys(settings[setting_tenkeyless] != 0);
    map_back_key(lenient(user_back_deletes));
}
