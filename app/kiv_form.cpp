#include "app/kiv_form.h"

#include "app/form_debugger.h"
#include "app/form_scopes.h"
#include "app/form_wire.h"
#include "app/kiv_help.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "machine/memory_dump.h"
#include "machine/tape_files.h"
#include "platform/file.h"
#include "platform/resources.h"
#include "resources/resources.h"
#include "support/host_keys.h"
#include "support/kel_fstream.h"
#include "support/log.h"

#include <cstdio>
#include <exception>
#include <filesystem>

namespace {

constexpr uint64_t repeated_key = uint64_t{1} << 30; // lparam of wm_key_down
constexpr char too_long_text[] = "パス名が長すぎます";

// "2.0.9" and a letter for the fourth number; empty when the program carries no version.
std::string version_text() {
    const platform::resource r =
        platform::find_resource(platform::resource_type::version, version_resource_id);
    if (r.data == nullptr || r.size < 8) return {};
    const auto number = [&r](int i) { return r.data[2 * i] | r.data[2 * i + 1] << 8; };
    constexpr const char *suffixes[] = {"", "A", "B", "C", "D", "E", "F"};
    const int fourth = number(3);
    char text[64];
    std::snprintf(text, sizeof text, "%d.%d.%d%s", number(0), number(1), number(2),
                  fourth <= 6 ? suffixes[fourth] : "");
    return text;
}

} // namespace

kiv_form::kiv_form(platform::host &on, const program_options &from_command_line)
    : host(on), options(from_command_line), own(read_user_settings(user_settings_path())) {
    the_main_window = this;
}

kiv_form::~kiv_form() {
    trace("ENTER ~kiv_form");
    cassette_on_output_failure(nullptr);
    sync_event.close();
    ack_event.close();
    the_main_window = nullptr;
    if (attached) { // after a failed boot; the window must not call what is gone
        attached = false;
        window->destroy();
    }
    trace("LEAVE ~kiv_form");
}

int kiv_form::create(const std::string &title, int x, int y, int width, int height) {
    apply_language(); // for what may go wrong from here on
    const std::string version = version_text();
    const std::string whole_title = version.empty() ? title : title + " [" + version + "]";
    window = host.create_window({whole_title, x, y, width, height, own.window_place, options.scale}, *this);
    if (window == nullptr) {
        trace("create: the host refuses a window");
        return 0;
    }
    attached = true; // messages before this one have had the default handling
    return 1;
}

void kiv_form::post(uint32_t message, uint64_t wparam, uint64_t lparam) {
    if (window != nullptr) window->post(message, wparam, lparam);
}

// ---- messages ----------------------------------------------------------------------------------------

int64_t kiv_form::window_proc(platform::host_window &, const platform::message &m, bool &handled) {
    if (!attached) {
        handled = false;
        return 0;
    }
    // A command that fails is over; the event loop goes on.
    try {
        return dispatch(m, handled);
    } catch (const kel_exception &) {
        const std::string why = platform::last_file_error();
        trace("window_proc: message 0x%X: a file could not be read or written: %s", m.id, why.c_str());
        tell_fault(why);
    } catch (const std::exception &e) {
        trace("window_proc: message 0x%X: %s", m.id, e.what());
        tell_fault(e.what());
    }
    return 0;
}

int64_t kiv_form::dispatch(const platform::message &m, bool &handled) {
    switch (m.id) {
    case platform::wm_destroy:
        trace("WM_DESTROY");
        attached = false;
        host.post_quit(0);
        return 0;
    case platform::wm_move:
        if (program.directx != nullptr) program.directx->on_move();
        return 0;
    case platform::wm_paint: on_paint(); return 0;
    case platform::wm_close:
        if (in_dialog) return 0; // the dialog owns the keyboard and the mouse until it is answered
        trace("WM_CLOSE");
        exit();
        own.window_place = window->place();
        save_user_settings();
        window->destroy();
        return 0;
    case platform::wm_query_end_session:
        trace("WM_QUERYENDSESSION");
        // Under a dialog the machine is parked already; it ends with the dialog, which may still read the
        // sound's volume.
        if (in_dialog)
            session_ends = true;
        else
            exit();
        cassette_flush_output();
        return 1; // the session may end
    case platform::wm_erase_background: return erase_background(window->current_painter());
    case platform::wm_activate_app:
        trace("WM_ACTIVATEAPP");
        OnAppActivate(static_cast<int>(m.wparam));
        return 0;
    case platform::wm_key_down:
        if (!(m.lparam & repeated_key)) key_pressed(static_cast<uint32_t>(m.wparam), m.lparam);
        return 0;
    case platform::wm_key_up: key_released(static_cast<uint32_t>(m.wparam)); return 0;
    case platform::wm_pad_down: pad_changed(static_cast<uint32_t>(m.wparam), true); return 0;
    case platform::wm_pad_up: pad_changed(static_cast<uint32_t>(m.wparam), false); return 0;
    case platform::wm_sys_command: handled = run_menu_command(m.wparam & 0xFFFF); return 0;
    case WM_Z80START: start_emulation(); return 0;
    case WM_RECORDED: recorded(); return 0;
    case WM_TAPE_FAULT: tape_output_failed(); return 0;
    case WM_DEBUG_STOPPED:
        if (debugging)
            debugging->stopped();
        else if (wire)
            wire->stopped();
        return 0;
    case WM_Z80ABORT:
        trace("WM_Z80ABORT");
        on_z80_abort(static_cast<uint32_t>(m.wparam), static_cast<uint32_t>(m.lparam));
        return 0;
    default: handled = false; return 0;
    }
}

// Host keys that are commands, acted on when they are released.
struct kiv_form::key_command {
    uint32_t key;
    void (kiv_form::*plain)();
    void (kiv_form::*with_shift)();
};

const kiv_form::key_command kiv_form::key_commands[] = {
    {vk_pause, &kiv_form::close_command, &kiv_form::close_command},
    {vk_end, &kiv_form::close_command, &kiv_form::close_command},
    {vk_f6, &kiv_form::save_dump, &kiv_form::toggle_status},
    {vk_f7, &kiv_form::settings_command, &kiv_form::settings_command},
    {vk_f8, &kiv_form::toggle_sound, &kiv_form::toggle_sound},
    {vk_f9, &kiv_form::open_file, &kiv_form::select_tape_output},
    {vk_f11, &kiv_form::toggle_pcg_glyphs, &kiv_form::toggle_pcg_glyphs},
    {vk_f12, &kiv_form::reset_machine, &kiv_form::change_screen},
};

const kiv_form::key_command *kiv_form::command_of(uint32_t virtual_key) {
    for (const key_command &command : key_commands)
        if (command.key == virtual_key) return &command;
    return nullptr;
}

bool kiv_form::is_command_key(uint32_t virtual_key) const { return command_of(virtual_key) != nullptr; }

void kiv_form::key_pressed(uint32_t virtual_key, uint64_t lparam) {
    if (const key_command *command = command_of(virtual_key)) {
        const uint64_t bit = uint64_t{1} << (command - key_commands);
        shifted_presses = window->shift_down() ? shifted_presses | bit : shifted_presses & ~bit;
    }
    if (!time_key(virtual_key, true) && !stops_typing(virtual_key)) machine_key_pressed(virtual_key, lparam);
}

// Shift let go a moment before its command key still counts: the other command would be a surprise.
void kiv_form::key_released(uint32_t virtual_key) {
    const key_command *command = command_of(virtual_key);
    if (command == nullptr) {
        if (!time_key(virtual_key, false)) machine_key_released(virtual_key);
        return;
    }
    const uint64_t bit = uint64_t{1} << (command - key_commands);
    const bool shift = window->shift_down() || (shifted_presses & bit) != 0;
    shifted_presses &= ~bit;
    (this->*(shift ? command->with_shift : command->plain))();
}

void kiv_form::key_down(uint32_t virtual_key) {
    at_machine([virtual_key] { key_press(virtual_key); });
}

void kiv_form::key_up(uint32_t virtual_key) {
    at_machine([virtual_key] { key_release(virtual_key); });
}

// ---- painting and the cursor -------------------------------------------------------------------------

void kiv_form::on_paint() {
    if (program.cpu_thread == nullptr || !program.cpu_thread->is_suspended()) return;
    if (held && !in_dialog && !deactivated) return; // the machine's own picture stays
    if (platform::painter *painter = window->current_painter()) draw_pause_picture(*painter);
}

void kiv_form::draw_pause_picture(platform::painter &painter) {
    platform::size2 client;
    const int width = pause_picture.width(), height = pause_picture.height();
    if (!window->client_size(client) || width <= 0 || height <= 0) return;
    const platform::picture picture{pause_pixels.data(), width, height};
    for (int y = 0; y < client.height; y += height)
        for (int x = 0; x < client.width; x += width) painter.draw(picture, x, y);
}

int kiv_form::erase_background(platform::painter *painter) {
    platform::size2 client;
    if (painter == nullptr || !window->client_size(client)) return 0;
    painter->fill({0, 0, client.width, client.height}, 0x000000);
    return 1;
}

void kiv_form::show_cursor() {
    while (window->show_cursor(true) < 0) {
    }
}

void kiv_form::hide_cursor() {
    while (window->show_cursor(false) >= 0) {
    }
}

void kiv_form::show_cursor_if_full_screen() {
    if (program.directx->is_full_screen()) show_cursor();
}

void kiv_form::hide_cursor_if_full_screen() {
    if (program.directx->is_full_screen()) hide_cursor();
}

void kiv_form::set_full_screen_style(int, int) { window->set_framed(false); }

void kiv_form::set_window_style(int width, int height) {
    if (!window->set_framed(true)) trace("DirectX:  SetWindowLong Failed");
    window->resize_client(width, height);
    window->menus_changed();
    window->centre();
    window->show();
}

// ---- start, stop, activation -------------------------------------------------------------------------

int kiv_form::pause_machine() {
    if (program.cpu_thread == nullptr || !program.cpu_thread->pause()) return 0;
    cassette_flush_output();
    return 1;
}

void kiv_form::start_emulation() {
    if (program.cpu_thread == nullptr || program.directx == nullptr) {
        if (program.directx != nullptr) program.directx->release();
        window->destroy();
        return;
    }
    deactivated = 0;
    program.directx->restore_surfaces();
    speed = static_cast<uint32_t>(options.speed != 0 ? options.speed : own.values[user_speed]);
    program.cpu_thread->watch_frames(&history);
    apply_speed();
    if (!program.cpu_thread->create_thread(1)) trace("start_emulation: the host has no thread to give");
    program.cpu_thread->resume_thread();
    hide_cursor_if_full_screen();
    window->set_focus();
    if (options.full_screen) change_screen();
    use_file_of_command_line();
    open_wire();
}

void kiv_form::exit() {
    end_recording();
    trace("exit: try stop z80 thread");
    rewinding = false;
    if (debugging) {
        own.debugger_layout = window->debugger_layout();
        window->show_debugger(nullptr, {});
    }
    if (pause_machine()) {
        trace("exit: terminating Kiv");
        program.directx->stop();
        program.cpu_thread->request_stop();
        program.cpu_thread->resume_run();
        program.cpu_thread->stop();
        program.directx->release();
    }
    debugging.reset();
    wire.reset();
    cassette_flush_output(); // also when the thread had ended by itself
}

void kiv_form::OnAppActivate(int active) {
    if (program.cpu_thread == nullptr || !program.cpu_thread->is_running()) return;
    if (active) {
        if (deactivated == 1) {
            reactivate();
            trace("OnAppActivate: Activate without Surface");
        } else {
            trace("OnAppActivate: Activate");
        }
        return;
    }
    trace("OnAppActivate: Deactivate");
    // A dialog has parked the machine already and resumes it when it is answered.
    if (!program.directx->is_full_screen() || in_dialog) return;
    program.directx->stop();
    pause_machine();
    deactivated = 1;
    show_cursor_if_full_screen();
}

void kiv_form::reactivate() {
    hide_cursor_if_full_screen();
    window->set_focus();
    remap_cursor_keys();
    deactivated = 0;
    if (held) {
        kiv_directx::present_frame();
        return;
    }
    program.cpu_thread->resume_run();
    program.directx->play();
}

void kiv_form::on_z80_abort(uint32_t address, uint32_t reason) {
    program.directx->stop();
    const char *kind = "未実装命令";
    if (reason == stop_halt)
        kind = " HALT命令";
    else if (reason == stop_undefined)
        kind = "未定義命令";
    char number[8];
    std::snprintf(number, sizeof number, "%4.4X", address & 0xFFFF);
    // Where they stand is the language's affair.
    const auto filled = [&](std::string line, const std::string &what) {
        line.replace(line.find("%4.4X"), 5, number);
        return line.replace(line.find("%s"), 2, what);
    };
    constexpr char form[] = "$%4.4X にて%sを検出につき終了。";
    std::string text = filled(platform::text(form), platform::text(kind));
    // What would have helped.
    if (reason == stop_halt)
        text += "\n\n" + platform::text("メニュー「設定」の「HALTは割り込みを待つ」で続けられます。");
    else if (reason == stop_undefined)
        text += "\n\n" + platform::text("メニュー「設定」の「未定義命令を読み飛ばす」で続けられます。");
    trace("%s", filled(form, kind).c_str());
    window->show_cursor(true);
    window->invalidate(false);
    host.error_box(window, text, "Kivex");
    post(platform::wm_close, 0, 0);
}

// ---- commands ----------------------------------------------------------------------------------------

void kiv_form::notify(const std::string &text) {
    trace("notice: %s", text.c_str());
    if (own.values[user_messages] != 0) window->notify(text);
}

void kiv_form::tell_fault(const std::string &text) {
    trace("fault: %s", text.c_str());
    window->notify(text);
}

void kiv_form::tell_saved(bool saved, const std::string &path, const std::string &name) {
    if (saved)
        notify(name + platform::text(" に保存しました"));
    else
        tell_fault(path + ": " + platform::last_file_error());
}

void kiv_form::come_to_front() {
    if (attached) window->bring_to_front();
}

void kiv_form::close_command() { post(platform::wm_close, 0, 0); }

void kiv_form::toggle_status() {
    if (program.directx != nullptr) program.directx->toggle_status();
}

void kiv_form::toggle_sound() {
    if (program.directx == nullptr) return;
    program.directx->toggleSound();
    notify(platform::text(program.directx->isSoundOff() != 0 ? "サウンド OFF" : "サウンド ON"));
}

void kiv_form::toggle_pcg_glyphs() {
    if (in_dialog) return;
    {
        // The CPU thread may be ahead of the machine, and comes back to what was before.
        std::optional<pause_scope> pause;
        if (!deactivated) pause.emplace(*this);
        machine.pcg_glyphs_on = machine.pcg_glyphs_on == 0;
    }
    machine_changed();
    notify(platform::text(machine.pcg_glyphs_on != 0 ? "PCG-8100 ON" : "PCG-8100 OFF"));
}

void kiv_form::reset_machine() {
    if (deactivated || in_dialog) return;
    const pause_scope pause(*this);
    if (!pause) return;
    program.directx->clearPCM();
    program.directx->setSoundOff(0);
    remap_cursor_keys();
    machine.machine_reset(machine);
    machine.pcg_glyphs_on = 0;
    machine.tape_position = 0;
    program.cpu_thread->reset_cpu();
    machine_changed();
}

void kiv_form::change_screen() {
    if (in_dialog) return;
    trace("change_screen: try stop z80 thread");
    pause_scope pause(*this);
    if (!pause) return;
    trace("change_screen: try stop direct sound");
    trace("change_screen: try reinit");
    window->show_cursor(program.directx->is_full_screen() != 0);
    if (!program.directx->toggle_screen()) {
        trace("change_screen: exit by failed");
        pause.end();
        return;
    }
    trace("change_screen: restart");
    window->show_cursor(program.directx->is_full_screen() == 0);
    window->set_focus();
}

bool kiv_form::refuse_long_path(const char *command, const std::string &path) {
    if (path.size() < path_limit) return false;
    trace("%s: a path of %zu bytes is too long", command, path.size());
    host.error_box(window, platform::text(too_long_text), program_title);
    return true;
}

void kiv_form::save_dump() {
    const dialog_scope scope(*this, dialog_scope::plain);
    if (!scope) return;
    platform::file_dialog_options dialog;
    dialog.title = platform::text("Kiv ﾌｧｲﾙの保存");
    dialog.filter_name = platform::text("Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ");
    dialog.patterns = {"*.KIV"};
    dialog.file_name = "dump";
    dialog.default_extension = "KIV";
    dialog.confirm_overwrite = true;
    std::string path;
    if (!host.save_file(*window, dialog, path) || refuse_long_path("save_dump", path)) return;
    tell_saved(memory_dump_save(path, main_cpu), path, path);
}

void kiv_form::open_file() {
    const dialog_scope scope(*this, dialog_scope::erase | dialog_scope::release_keys);
    if (!scope) return;
    platform::file_dialog_options dialog;
    dialog.title = platform::text("Kiv ﾌｧｲﾙの選択");
    dialog.filter_name = platform::text("Kiv ﾌﾟﾛｸﾞﾗﾑﾌｧｲﾙ");
    dialog.patterns = {"*.KIV", "*.CMT"};
    dialog.file_name = "*.kiv;*.cmt";
    dialog.default_extension = "KIV";
    dialog.must_exist = true;
    std::string path;
    machine.cassette_set_stopped(host.open_file(*window, dialog, path) && load_file(path));
}

// Why a file was not loaded, which may be its size.
static std::string load_fault(const std::string &path, bool dump) {
    std::error_code error;
    const uintmax_t size = std::filesystem::file_size(path, error);
    if (!error && dump && size < dump_minimum)
        return std::to_string(size) + platform::text(" バイト: 最低 ") + std::to_string(dump_minimum);
    if (!error && !dump && size >= UINT32_MAX)
        return std::to_string(size) + platform::text(" バイト: 上限は ") + std::to_string(UINT32_MAX - 1);
    return platform::last_file_error();
}

// A dump, where the path says so anywhere, folders included; else a tape.
bool kiv_form::load_file(const std::string &path) {
    if (refuse_long_path("open_file", path)) return false;
    const bool dump = path.find(".KIV") != std::string::npos || path.find(".kiv") != std::string::npos;
    if (!(dump ? memory_dump_load(path, main_cpu) : cassette_load_tape(path))) {
        tell_fault(path + ": " + load_fault(path, dump));
        return false;
    }
    if (!dump) tape_names[cassette_tape_checksum()] = path;
    machine_changed(!dump);
    add_recent(own, path);
    save_user_settings();
    window->menus_changed();
    notify(path.substr(path.rfind('/') + 1) +
           platform::text(dump ? " を読み込みました" : " をテープに入れました"));
    return true;
}

void kiv_form::select_tape_output() {
    const dialog_scope scope(*this, dialog_scope::erase);
    if (!scope) return;
    platform::file_dialog_options dialog;
    dialog.title = platform::text("CMT ﾌｧｲﾙの保存先選択");
    dialog.filter_name = platform::text("CMT 出力ﾌｧｲﾙ");
    dialog.patterns = {"*.CMT"};
    dialog.file_name = "cassette";
    dialog.default_extension = "CMT";
    dialog.confirm_overwrite = true;
    // A cancelled dialog leaves the name that it began with.
    std::string path;
    if (!host.save_file(*window, dialog, path)) path = dialog.file_name;
    if (refuse_long_path("select_tape_output", path) || cassette_set_output(path)) return;
    trace("select_tape_output: %s cannot be taken", path.c_str());
    tell_fault(path + ": " + platform::last_file_error());
}

void kiv_form::tape_output_failed() {
    const std::lock_guard lock(tape_fault_mutex);
    tell_fault(tape_fault);
}

void kiv_form::settings_command() {
    const dialog_scope scope(*this, dialog_scope::take_focus);
    if (!scope) return;
    platform::settings_dialog dialog = make_settings_dialog();
    if (!host.settings(*window, dialog)) return;
    take_settings_dialog(dialog);
    machine_changed();
    write_settings(settings_section);
}

void kiv_form::about_command() {
    const dialog_scope scope(*this, dialog_scope::take_focus);
    if (scope) host.help(*window, make_help_dialog());
}
