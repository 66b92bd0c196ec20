// The menus: what is in them, and what their items do.
#include "app/kiv_form.h"

#include "app/form_debugger.h"
#include "app/form_scopes.h"
#include "app/form_wire.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/file.h"
#include "platform/texts.h"
#include "support/log.h"

#include <cstdio>

using platform::menu_item;
using platform::text;

namespace {

constexpr int greatest_scale = 6;
constexpr uint32_t tape_bytes_per_second = 120; // 1200 baud, ten bits a byte

menu_item item(uint32_t id, const char *japanese, const char *shortcut = "", bool enabled = true) {
    return {id, text(japanese), shortcut, enabled, menu_item::plain, false, {}};
}
menu_item check(uint32_t id, const char *japanese, bool checked, const char *shortcut = "") {
    return {id, text(japanese), shortcut, true, menu_item::check, checked, {}};
}
menu_item choice(uint32_t id, const std::string &label, bool chosen) {
    return {id, label, "", true, menu_item::choice, chosen, {}};
}
menu_item submenu(const char *japanese, std::vector<menu_item> items) {
    const bool enabled = !items.empty();
    if (!enabled) items.push_back(menu_item{}); // a menu all the same
    return {0, text(japanese), "", enabled, menu_item::plain, false, std::move(items)};
}
menu_item separator() { return {}; }

// In seconds and bytes, as in "12 / 305 s  (1459 / 36630)".
std::string tape_position() {
    const uint32_t at = machine.tape_position, size = machine.tape_size;
    char position[96];
    std::snprintf(position, sizeof position, "%u / %u s  (%u / %u)", at / tape_bytes_per_second,
                  size / tape_bytes_per_second, at, size);
    return position;
}

// "/home/a/games/x.cmt" as a menu shows it: the name, and no mnemonic made of what it holds.
std::string label_of(size_t number, const std::string &path) {
    std::string name = path.substr(path.rfind('/') + 1), shown = "&" + std::to_string(number + 1) + "  ";
    for (const char c : name) {
        shown += c;
        if (c == '&') shown += '&';
    }
    return shown;
}

} // namespace

// One row a command of the menus; `count` of them, told apart by `n`, for rows of items.
struct kiv_form::menu_command {
    uint32_t first, count;
    void (*run)(kiv_form &form, uint32_t n);
};

const kiv_form::menu_command kiv_form::menu_commands[] = {
    {menu_settings, 1, [](kiv_form &f, uint32_t) { f.settings_command(); }},
    {menu_about, 1, [](kiv_form &f, uint32_t) { f.about_command(); }},
    {menu_open, 1, [](kiv_form &f, uint32_t) { f.open_file(); }},
    {menu_recent, most_recent_files, [](kiv_form &f, uint32_t n) { f.open_recent(n); }},
    {menu_reset, 1, [](kiv_form &f, uint32_t) { f.reset_machine(); }},
    {menu_pause, 1, [](kiv_form &f, uint32_t) { f.toggle_pause(); }},
    {menu_rom_folder, 1, [](kiv_form &f, uint32_t) { f.choose_rom_folder(); }},
    {menu_quit, 1, [](kiv_form &f, uint32_t) { f.close_command(); }},
    {menu_save_dump, 1, [](kiv_form &f, uint32_t) { f.save_dump(); }},
    {menu_paste, 1, [](kiv_form &f, uint32_t) { f.paste(); }},
    {menu_state_save, state_slots, [](kiv_form &f, uint32_t n) { f.save_state(n); }},
    {menu_state_load, state_slots, [](kiv_form &f, uint32_t n) { f.load_state(n); }},
    {menu_state_quick_save, 1, [](kiv_form &f, uint32_t) { f.save_state(f.state_slot); }},
    {menu_state_quick_load, 1, [](kiv_form &f, uint32_t) { f.load_state(f.state_slot); }},
    {menu_state_undo, 1, [](kiv_form &f, uint32_t) { f.undo_load(); }},
    {menu_state_save_file, 1, [](kiv_form &f, uint32_t) { f.choose_state_file(true); }},
    {menu_state_load_file, 1, [](kiv_form &f, uint32_t) { f.choose_state_file(false); }},
    {menu_copy_text, 1, [](kiv_form &f, uint32_t) { f.copy_text(); }},
    {menu_copy_picture, 1, [](kiv_form &f, uint32_t) { f.copy_picture(); }},
    {menu_screenshot, 1, [](kiv_form &f, uint32_t) { f.screenshot(); }},
    {menu_tape_play, 1, [](kiv_form &f, uint32_t) { f.tape_command(tape_play); }},
    {menu_tape_stop, 1, [](kiv_form &f, uint32_t) { f.tape_command(tape_stop); }},
    {menu_tape_rewind, 1, [](kiv_form &f, uint32_t) { f.tape_command(tape_rewind); }},
    {menu_tape_eject, 1, [](kiv_form &f, uint32_t) { f.tape_command(tape_eject); }},
    {menu_fast_tape, 1, [](kiv_form &f, uint32_t) { f.choose(user_fast_tape, !f.lenient(user_fast_tape)); }},
    {menu_run_ahead, 3, [](kiv_form &f, uint32_t n) { f.choose(user_run_ahead, static_cast<int>(n)); }},
    {menu_tape_output, 1, [](kiv_form &f, uint32_t) { f.select_tape_output(); }},
    {menu_full_screen, 1, [](kiv_form &f, uint32_t) { f.change_screen(); }},
    {menu_scale, greatest_scale,
     [](kiv_form &f, uint32_t n) { f.window->set_scale(static_cast<int>(n) + 1); }},
    {menu_look, 3, [](kiv_form &f, uint32_t n) { f.choose(user_look, static_cast<int>(n)); }},
    {menu_four_thirds, 1, [](kiv_form &f, uint32_t) { f.flip(user_four_thirds); }},
    {menu_whole_factors, 1, [](kiv_form &f, uint32_t) { f.flip(user_whole_factors); }},
    {menu_messages, 1, [](kiv_form &f, uint32_t) { f.flip(user_messages); }},
    {menu_status, 1, [](kiv_form &f, uint32_t) { f.toggle_status(); }},
    {menu_pcg, 1, [](kiv_form &f, uint32_t) { f.toggle_pcg_glyphs(); }},
    {menu_sound, 1, [](kiv_form &f, uint32_t) { f.toggle_sound(); }},
    {menu_back_deletes, 1,
     [](kiv_form &f, uint32_t) { f.choose(user_back_deletes, !f.lenient(user_back_deletes)); }},
    {menu_halt_waits, 1,
     [](kiv_form &f, uint32_t) { f.choose(user_halt_waits, !f.lenient(user_halt_waits)); }},
    {menu_steps_over, 1,
     [](kiv_form &f, uint32_t) { f.choose(user_steps_over, !f.lenient(user_steps_over)); }},
    {menu_by_character, 1, [](kiv_form &f, uint32_t) { f.toggle_keys_by_character(); }},
    {menu_keyboard, 1, [](kiv_form &f, uint32_t) { f.toggle_keyboard(); }},
    {menu_pads, 1, [](kiv_form &f, uint32_t) { f.pads_command(); }},
    {menu_louder, 1, [](kiv_form &f, uint32_t) { f.change_volume(1); }},
    {menu_quieter, 1, [](kiv_form &f, uint32_t) { f.change_volume(-1); }},
    {menu_record_sound, 1, [](kiv_form &f, uint32_t) { f.toggle_recording(recording::kind::sound); }},
    {menu_record_video, 1, [](kiv_form &f, uint32_t) { f.toggle_recording(recording::kind::video); }},
    {menu_fast_forward, 1, [](kiv_form &f, uint32_t) { f.toggle_fast_forward(); }},
    {menu_speed, speed_count, [](kiv_form &f, uint32_t n) { f.choose_speed(speeds[n]); }},
    {menu_frame_forth, 1, [](kiv_form &f, uint32_t) { f.step_time(false); }},
    {menu_frame_back, 1, [](kiv_form &f, uint32_t) { f.step_time(true); }},
    {menu_rewind, 1, [](kiv_form &f, uint32_t) { f.toggle_rewind(); }},
    {menu_debugger, 1, [](kiv_form &f, uint32_t) { f.toggle_debugger(); }},
    {menu_language, 3, [](kiv_form &f, uint32_t n) { f.choose(user_language, static_cast<int>(n)); }},
};

bool kiv_form::run_menu_command(uint32_t id) {
    for (const menu_command &command : menu_commands) {
        if (id < command.first || id >= command.first + command.count) continue;
        command.run(*this, id - command.first);
        return true;
    }
    return false;
}

std::vector<menu_item> kiv_form::machine_menu() const {
    std::vector<menu_item> recent;
    for (size_t i = 0; i < own.recent.size(); ++i)
        recent.push_back({menu_recent + static_cast<uint32_t>(i),
                          label_of(i, own.recent[i]),
                          "",
                          true,
                          menu_item::plain,
                          false,
                          {}});
    std::vector<menu_item> speed_choices;
    for (uint32_t n = 0; n < speed_count; ++n)
        speed_choices.push_back(choice(menu_speed + n,
                                       "&" + std::to_string(n + 1) + "  " + std::to_string(speeds[n]) + " %",
                                       speed == speeds[n]));
    return {item(menu_open, "開く(&O)...", "F9"),
            submenu("最近使ったファイル(&R)", std::move(recent)),
            item(menu_rom_folder, "ROMフォルダ(&F)..."),
            separator(),
            item(menu_save_dump, "メモリダンプの保存(&D)...", "F6"),
            separator(),
            check(menu_pause, "一時停止(&P)", held, "Alt+P"),
            check(menu_fast_forward, "早送り(&Q)", fast_forward, "Alt+F"),
            submenu("速さ(&V)", std::move(speed_choices)),
            item(menu_frame_forth, "コマ送り(&N)", "Alt+N"),
            item(menu_frame_back, "コマ戻し(&B)", "Alt+Shift+N"),
            item(menu_reset, "リセット(&E)", "F12"),
            check(menu_debugger, "デバッガ(&G)", debugging != nullptr, "Alt+D"),
            separator(),
            item(menu_quit, "終了(&X)", "End")};
}

std::vector<menu_item> kiv_form::state_menu() const {
    std::vector<menu_item> save, load;
    for (uint32_t n = 0; n < state_slots; ++n) {
        const std::string time = state_time(n), label = "&" + std::to_string(n) + "  " + time;
        const auto picture = state_picture(n);
        save.push_back({menu_state_save + n, label, "", true, menu_item::plain, false, {}, picture});
        load.push_back({menu_state_load + n, label, "", !time.empty(), menu_item::plain, false, {}, picture});
    }
    return {item(menu_state_quick_save, "ステートの保存(&Q)", "Alt+Q"),
            item(menu_state_quick_load, "ステートの読み込み(&L)", "Alt+L", !state_time(state_slot).empty()),
            item(menu_state_undo, "読み込みの取り消し(&U)", "Alt+Z", !before_load.empty()),
            check(menu_rewind, "時間を巻き戻す(&W)", rewinding, "Alt+Left"),
            separator(),
            submenu("番号を選んで保存(&S)", std::move(save)),
            submenu("番号を選んで読み込み(&O)", std::move(load)),
            separator(),
            item(menu_state_save_file, "ファイルに保存(&F)..."),
            item(menu_state_load_file, "ファイルから読み込み(&R)...")};
}

std::vector<menu_item> kiv_form::edit_menu() const {
    return {item(menu_paste, "貼り付けて打つ(&V)", "Alt+Insert"),
            separator(),
            item(menu_copy_text, "画面の文字をコピー(&T)", "Alt+C"),
            item(menu_copy_picture, "画面の絵をコピー(&P)", "Alt+Shift+C"),
            separator(),
            item(menu_screenshot, "スクリーンショット(&S)", "Alt+I"),
            check(menu_record_video, "録画(&R)", is_recording(recording::kind::video), "Alt+Shift+W")};
}

std::vector<menu_item> kiv_form::tape_menu() const {
    const bool loaded = machine.tape_image != nullptr;
    std::string what = text("テープなし");
    if (loaded)
        what = label_of(0, tape_name.empty() ? text("ステートのテープ") : tape_name).substr(4) + "  " +
               tape_position();
    const bool stopped = (machine.cassette_flags & cassette_stopped) != 0;
    return {{0, what, "", false, menu_item::plain, false, {}},
            separator(),
            item(menu_open, "テープを入れる(&L)...", "F9"),
            item(menu_tape_play, "再生(&P)", "", loaded && stopped),
            item(menu_tape_stop, "停止(&S)", "", loaded && !stopped),
            item(menu_tape_rewind, "巻き戻し(&R)", "", loaded),
            item(menu_tape_eject, "取り出し(&E)", "", loaded),
            separator(),
            check(menu_fast_tape, "速く読み込む(&F)", lenient(user_fast_tape)),
            item(menu_tape_output, "録音先(&O)...", "Shift+F9")};
}

std::vector<menu_item> kiv_form::view_menu() const {
    std::vector<menu_item> scales;
    for (uint32_t n = 0; n < greatest_scale; ++n) {
        const std::string number = std::to_string(n + 1);
        scales.push_back(
            {menu_scale + n, "&" + number + "00 %", "Alt+" + number, true, menu_item::plain, false, {}});
    }
    const int look = own.values[user_look];
    return {item(menu_full_screen, "全画面(&F)", "Shift+F12"),
            submenu("大きさ(&S)", std::move(scales)),
            separator(),
            check(menu_four_thirds, "縦横比 4:3(&A)", own.values[user_four_thirds] != 0, "Alt+A"),
            check(menu_whole_factors, "整数倍のみ(&W)", own.values[user_whole_factors] != 0),
            submenu("ブラウン管(&C)", {choice(menu_look, text("なし(&N)"), look == 0),
                                       choice(menu_look + 1, text("走査線(&S)"), look == 1),
                                       choice(menu_look + 2, text("やわらかい管面(&T)"), look == 2)}),
            separator(),
            check(menu_keyboard, "本体のキーボード(&K)", window->keyboard_shown(), "Alt+B"),
            check(menu_pcg, "PCG-8100の文字(&P)", machine.pcg_glyphs_on != 0, "F11"),
            item(menu_status, "速度の表示(&I)", "Shift+F6"),
            check(menu_messages, "メッセージの表示(&M)", own.values[user_messages] != 0)};
}

std::vector<menu_item> kiv_form::sound_menu() const {
    const int volume = own.values[user_volume];
    return {check(menu_sound, "音を出す(&S)", program.directx->isSoundOff() == 0, "F8"),
            item(menu_louder, "音量を上げる(&U)", "Alt+Up", volume < user_volume_highest),
            item(menu_quieter, "音量を下げる(&D)", "Alt+Down", volume > 0), separator(),
            check(menu_record_sound, "録音(&R)", is_recording(recording::kind::sound), "Alt+W")};
}

std::vector<menu_item> kiv_form::settings_menu() const {
    const int language = own.values[user_language], ahead = own.values[user_run_ahead];
    return {item(menu_settings, "機能設定(&S)...", "F7"),
            separator(),
            check(menu_halt_waits, "HALTは割り込みを待つ(&H)", lenient(user_halt_waits)),
            check(menu_steps_over, "未定義命令を読み飛ばす(&U)", lenient(user_steps_over)),
            check(menu_back_deletes, "BackspaceをDELにする(&B)", lenient(user_back_deletes)),
            check(menu_by_character, "キーを文字で読む(&C)", own.values[user_by_character] != 0),
            item(menu_pads, "ゲームパッド(&G)..."),
            separator(),
            submenu("画面の先読み(&R)", {choice(menu_run_ahead, text("なし(&N)"), ahead == 0),
                                         choice(menu_run_ahead + 1, text("1 フレーム(&1)"), ahead == 1),
                                         choice(menu_run_ahead + 2, text("2 フレーム(&2)"), ahead == 2)}),
            submenu("言語 / Language(&L)",
                    {choice(menu_language, text("デスクトップに合わせる(&A)"), language == 0),
                     choice(menu_language + 1, "日本語(&J)", language == 1),
                     choice(menu_language + 2, "&English", language == 2)})};
}

// The two given items stand first and in their order.
std::vector<menu_item> kiv_form::menus() const {
    if (program.directx == nullptr) return {};
    return {submenu("Kiv(&K)", {item(menu_about, "Kivについて"), item(menu_settings, "Kivの設定")}),
            submenu("本体(&M)", machine_menu()),
            submenu("ステート(&X)", state_menu()),
            submenu("編集(&E)", edit_menu()),
            submenu("テープ(&T)", tape_menu()),
            submenu("表示(&V)", view_menu()),
            submenu("音(&U)", sound_menu()),
            submenu("設定(&S)", settings_menu()),
            submenu("ヘルプ(&H)", {item(menu_about, "キーと設定(&K)")})};
}

// ---- what the items do -------------------------------------------------------------------------------

void kiv_form::choose(user_setting which, int value) {
    own.values[which] = value;
    if (which == user_language) options.language.clear(); // the later choice counts
    apply_user_settings();
    save_user_settings();
}

// As the person has chosen, else as suits the ROM set: with our own the comfortable choice.
bool kiv_form::lenient(user_setting which) const {
    constexpr int as_suits = 2;
    return own.values[which] == as_suits ? options.open_roms : own.values[which] != 0;
}

void kiv_form::flip(user_setting which) { choose(which, own.values[which] == 0); }

void kiv_form::apply_language() {
    host.set_language(options.language == "en" ? platform::language::english
                      : options.language == "ja"
                          ? platform::language::japanese
                          : static_cast<platform::language>(own.values[user_language]));
}

void kiv_form::apply_user_settings() {
    platform::view_settings view;
    view.look = static_cast<platform::crt_look>(own.values[user_look]);
    view.four_thirds = own.values[user_four_thirds] != 0;
    view.whole_factors = own.values[user_whole_factors] != 0;
    window->set_view(view);
    map_back_key(lenient(user_back_deletes));
    host.use_gamepads(own.values[user_gamepads] != 0);
    host.get_sound().set_loudness(own.values[user_volume] * 100 / user_volume_highest);
    z80_lenient.halt_waits = lenient(user_halt_waits);
    z80_lenient.undefined_runs = lenient(user_steps_over);
    program.cpu_thread->set_run_ahead(static_cast<uint32_t>(own.values[user_run_ahead]));
    apply_language();
    if (window->keyboard_shown()) show_keyboard();
    apply_speed();
}

void kiv_form::save_user_settings() {
    const std::string path = user_settings_path();
    if (path.empty() || write_user_settings(path, own)) return;
    tell_fault(path + ": " + platform::last_file_error());
}

void kiv_form::copy_text() {
    std::string text;
    {
        const pause_scope pause(*this);
        if (!pause) return;
        text = program.directx->screen_text();
    }
    if (text.empty()) {
        notify(platform::text("文字の画面は出ていません"));
        return;
    }
    host.copy_text(text);
    notify(platform::text("画面の文字をコピーしました"));
}

void kiv_form::copy_picture() {
    window->copy_picture();
    notify(platform::text("画面の絵をコピーしました"));
}

// Into the person's pictures.
void kiv_form::screenshot() {
    const std::string path = dated_path(host.pictures_folder(), ".png");
    tell_saved(platform::make_folder_of(path) && window->save_picture(path), path, path);
}

// The machine stands still and its picture stays.
void kiv_form::toggle_pause() {
    if (in_dialog || deactivated) return;
    end_rewind();
    if (held) {
        if (wire_refuses()) return;
        if (debugging) debugging->session.go();
        resume_held();
        notify(text("再開"));
    } else if (pause_machine()) {
        held = true;
        program.directx->stop();
        if (debugging) debugging->stopped_by_hand();
        if (wire) wire->stopped_by_hand();
        notify(text("一時停止"));
    }
    window->menus_changed();
}

void kiv_form::tape_command(tape_action action) {
    const pause_scope pause(*this);
    if (!pause || machine.tape_image == nullptr) return;
    switch (action) {
    case tape_play: machine.cassette_set_stopped(1); break;
    case tape_stop: machine.cassette_set_stopped(0); break;
    case tape_rewind: machine.tape_position = 0; break;
    case tape_eject: cassette_eject(machine); break;
    }
    machine_changed(action == tape_eject);
    constexpr const char *done[] = {"テープ再生: ", "テープ停止: ", "テープ巻き戻し: "};
    notify(action == tape_eject ? text("テープを取り出しました") : text(done[action]) + tape_position());
}

void kiv_form::open_recent(uint32_t n) {
    if (n >= own.recent.size()) return;
    const std::string path = own.recent[n];
    const dialog_scope scope(*this, dialog_scope::release_keys);
    if (scope) machine.cassette_set_stopped(load_file(path));
}
