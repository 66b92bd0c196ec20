// What the person does at the keyboard besides commands: keys by character, the page with the machine's
// keyboard, gamepads.
#include "app/form_scopes.h"
#include "app/keyboard_page.h"
#include "app/kiv_form.h"

#include "machine/kiv_machine.h"
#include "platform/texts.h"
#include "support/host_keys.h"

#include <algorithm>

void kiv_form::machine_key_pressed(uint32_t virtual_key, uint64_t lparam) {
    if (own.values[user_by_character] == 0 || virtual_key >= vk_matrix) return key_down(virtual_key);
    if ((lparam & platform::key_of_layout) != 0) return;
    const auto sign = static_cast<uint32_t>(lparam >> platform::key_sign_shift);
    at_machine([this, virtual_key, sign] { by_character.press(virtual_key, sign); });
}

void kiv_form::machine_key_released(uint32_t virtual_key) {
    if (own.values[user_by_character] == 0 || virtual_key >= vk_matrix) return key_up(virtual_key);
    at_machine([this, virtual_key] { by_character.release(virtual_key); });
}

// The CPU thread being parked: of keys that were down in another time, or before a dialog, nobody lets go.
void kiv_form::release_keys() {
    machine.reset_keyboard(machine);
    by_character.forget();
}

void kiv_form::toggle_keys_by_character() {
    {
        const pause_scope pause(*this);
        if (!pause) return;
        remap_cursor_keys(); // what is held now would be released as another key
    }
    flip(user_by_character);
    notify(platform::text(own.values[user_by_character] != 0 ? "キーは文字のとおり" : "キーは位置のとおり"));
}

bool kiv_form::is_key_down(uint32_t virtual_key) const { return is_key_held(key_place(virtual_key)); }

void kiv_form::toggle_keyboard() {
    if (window->keyboard_shown())
        window->show_keyboard(nullptr);
    else
        show_keyboard();
}

void kiv_form::show_keyboard() {
    const platform::keyboard_page page = make_keyboard_page(
        own.values[user_by_character] != 0, settings[setting_tenkeyless] != 0, lenient(user_back_deletes));
    window->show_keyboard(&page);
}

// ---- gamepads ----------------------------------------------------------------------------------------

// The key stays the one that was pressed, whatever the dialog makes of it meanwhile.
void kiv_form::pad_changed(uint32_t input, bool down) {
    if (input >= platform::pad_inputs) return;
    uint32_t &key = pad_keys_down[input];
    if (!down || key != 0) {
        if (key != 0) key_up(key);
        key = 0;
    }
    if (!down || deactivated) return;
    const int place = own.values[user_pad_up + input];
    if (place == user_pad_none) return;
    key = vk_matrix + static_cast<uint32_t>(place);
    key_down(key);
}

void kiv_form::pads_command() {
    const dialog_scope scope(*this, dialog_scope::take_focus);
    if (!scope) return;
    const std::vector<named_key> keys = names_of_keys();
    constexpr const char *labels[platform::pad_inputs] = {
        "上(&U)",      "下(&D)",      "左(&L)",   "右(&R)",   "ボタンA(&A)", "ボタンB(&B)",
        "ボタンX(&X)", "ボタンY(&Y)", "左肩(&E)", "右肩(&I)", "BACK(&K)",    "START(&T)"};
    platform::pad_dialog dialog;
    dialog.caption = platform::text("ゲームパッド");
    dialog.use_label = platform::text("ゲームパッドを使う(&G)");
    dialog.use = own.values[user_gamepads] != 0;
    for (const std::string &name : host.gamepads()) dialog.found += (dialog.found.empty() ? "" : ", ") + name;
    if (dialog.found.empty() && dialog.use) dialog.found = platform::text("ゲームパッドはつながっていません");
    for (const named_key &key : keys) dialog.keys.push_back(key.name);
    for (uint32_t input = 0; input < platform::pad_inputs; ++input) {
        const int place = own.values[user_pad_up + input];
        const auto chosen = std::find_if(keys.begin(), keys.end(), [&](const named_key &key) {
            return key.code == vk_matrix + static_cast<uint32_t>(place);
        });
        dialog.rows.push_back({platform::text(labels[input]),
                               chosen == keys.end() ? 0 : static_cast<size_t>(chosen - keys.begin())});
    }
    if (!host.pads(*window, dialog)) return;
    own.values[user_gamepads] = dialog.use;
    for (uint32_t input = 0; input < platform::pad_inputs; ++input) {
        const uint32_t code = keys[dialog.rows[input].key].code;
        own.values[user_pad_up + input] = code == 0 ? user_pad_none : static_cast<int>(code - vk_matrix);
    }
    apply_user_settings();
    save_user_settings();
}
