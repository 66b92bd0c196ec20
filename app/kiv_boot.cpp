// The boot: from an empty machine to a window that is about to start the emulation. Runs once, on the window
// thread, before any other thread of the program exists.
#include "app/kiv_form.h"

#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/host_clock.h"
#include "machine/kiv_machine.h"
#include "machine/machine_boot.h"
#include "machine/rom_loader.h"
#include "platform/resources.h"
#include "resources/resources.h"
#include "support/kel_fstream.h"
#include "support/log.h"

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
    if (!load_roms()) return failed("ROMイメージファイル読み込み失敗");
    if (!load_settings_file()) return failed("INIファイル読み込み失敗");
    if (!load_picture()) return failed("BMPリソース読み込み失敗");
    if (!load_font()) return failed("FNTリソース読み込み失敗");
    machine_get_ready();
    remap_cursor_keys();
    apply_user_settings();
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
    post(WM_Z80START, 0, 0);
    return 1;
}

int kiv_form::load_roms() {
    const std::string error = load_rom_images(options.roms);
    if (error.empty()) return 1;
    trace("load_roms: %s", error.c_str());
    return 0;
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
    machine.reset_keyboard(machine);
    map_cursor_keys(settings[setting_tenkeyless] != 0);
}
