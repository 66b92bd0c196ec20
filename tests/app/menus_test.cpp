// What a person reaches by menus and keys: each does its work, and one thing.
#include "tests/app/program_fixture.h"

namespace {

// A letter reaches one item of its menu, and every item of a menu has one; a key does one thing.
TEST_F(WholeProgram, NoTwoItemsShareALetterOrAKey) {
    std::map<std::string, std::string> keys;
    const std::function<void(const std::vector<platform::menu_item> &, bool)> look = [&](auto &items,
                                                                                         bool bar) {
        std::map<char, std::string> letters;
        for (const platform::menu_item &item : items) {
            const size_t at = item.text.find('&');
            if (at != std::string::npos) {
                std::string &other = letters[static_cast<char>(std::toupper(item.text[at + 1]))];
                EXPECT_EQ(other, "") << item.text;
                other = item.text;
                if (bar) keys[std::string("Alt+") + item.text[at + 1]] = item.text;
            } else {
                EXPECT_TRUE(item.text.empty() || item.id == 0 || item.id <= menu_about) << item.text;
            }
            std::string &other = keys[item.shortcut];
            EXPECT_TRUE(item.shortcut.empty() || other.empty() || item.id == menu_open) << item.text << other;
            other = item.text;
            look(item.items, false);
        }
    };
    run([&] { on_window_thread([&] { look(program.form->menus(), true); }); });
}

TEST_F(WholeProgram, EveryMenuItemDoesItsWorkOnce) {
    put_file(folder / "song.cmt", "tape");
    run([&] {
        const auto own = [&](const char *key) {
            return platform::profile_string(folder / "config/kiv/kiv.ini", "Kiv", key);
        };
        EXPECT_FALSE(choose_item(menu_tape_rewind)) << "there is no tape";
        choose(folder / "song.cmt");
        EXPECT_TRUE(choose_item(menu_open));
        on_window_thread([] { machine.tape_position = 3; });
        EXPECT_TRUE(choose_item(menu_tape_rewind));
        EXPECT_EQ(machine.tape_position, 0u);
        EXPECT_TRUE(choose_item(menu_tape_stop));
        EXPECT_NE(machine.cassette_flags & cassette_stopped, 0);
        EXPECT_TRUE(choose_item(menu_tape_play));
        EXPECT_EQ(machine.cassette_flags & cassette_stopped, 0);
        EXPECT_TRUE(choose_item(menu_tape_eject));
        EXPECT_EQ(machine.tape_image, nullptr);
        EXPECT_TRUE(choose_item(menu_recent));
        EXPECT_EQ(machine.tape_size, 4u);

        EXPECT_TRUE(choose_item(menu_pause));
        expect_parked(true);
        strike(vk_f7); // a dialog, and cancelled
        strike(vk_f12);
        expect_parked(true);
        EXPECT_TRUE(choose_item(menu_pause));
        wait_until_running();
        expect_parked(false);
        wait_for_row(0, "READY");

        const struct {
            uint32_t id;
            const char *key, *value;
        } kept[] = {{menu_look + 2, "look", "2"},
                    {menu_four_thirds, "four_thirds", "1"},
                    {menu_whole_factors, "whole_factors", "1"},
                    {menu_messages, "messages", "0"},
                    {menu_back_deletes, "back_deletes", "1"},
                    {menu_halt_waits, "halt_waits", "1"},
                    {menu_steps_over, "steps_over", "1"},
                    {menu_by_character, "keys_by_character", "1"},
                    {menu_quieter, "volume", "9"},
                    {menu_language + 2, "language", "2"}};
        for (const auto &k : kept) {
            EXPECT_TRUE(choose_item(k.id));
            EXPECT_EQ(own(k.key), k.value) << k.key;
        }
        const platform::view_settings view = window().state().view;
        EXPECT_TRUE(view.look == platform::crt_look::tube && view.four_thirds && view.whole_factors);
        EXPECT_EQ(host.chosen_language, platform::language::english);
        EXPECT_EQ(host.sound.loud, 90);
        for (const auto &[item, steps] : {std::pair(menu_quieter, 9), {menu_louder, 10}})
            for (int n = 0; n <= steps; ++n) EXPECT_EQ(choose_item(item), n < steps) << item << ", " << n;
        EXPECT_FALSE(window().state().keyboard_shown);
        EXPECT_TRUE(choose_item(menu_keyboard));
        EXPECT_TRUE(window().state().keyboard_shown);
        EXPECT_TRUE(choose_item(menu_copy_text));
        EXPECT_EQ(host.copied().substr(0, host.copied().find('\n')), "READY");
        EXPECT_TRUE(choose_item(menu_copy_picture));
        for (int i = 0; i < 2; ++i) EXPECT_TRUE(choose_item(menu_screenshot));
        EXPECT_EQ(window().state().notices.back().find("pictures/kiv-"), std::string::npos) << "no messages";
        setenv("XDG_DATA_HOME", "/sys/nothing", 1); // where nobody makes a folder
        EXPECT_TRUE(choose_item(menu_state_quick_save));
        setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
        EXPECT_NE(window().state().notices.back().find("slot-1.kst: "), std::string::npos) << "but a fault";
        EXPECT_EQ(window().state().pictures_copied, 1);
        EXPECT_EQ(window().state().pictures_saved.size(), 2u);
        EXPECT_EQ(window().state().pictures_saved.at(0).find("pictures/kiv-"), 0u);
        EXPECT_TRUE(choose_item(menu_scale + 2));
        EXPECT_EQ(window().state().scale, 3);

        for (const uint32_t full : {1u, 0u}) {
            EXPECT_TRUE(choose_item(menu_full_screen));
            EXPECT_EQ(program.directx->is_full_screen(), full);
        }
        EXPECT_TRUE(choose_item(menu_sound));
        EXPECT_EQ(program.directx->isSoundOff(), 1u);
        EXPECT_TRUE(choose_item(menu_pcg));
        EXPECT_EQ(machine.pcg_glyphs_on, 1);
        EXPECT_TRUE(choose_item(menu_reset));
        EXPECT_EQ(machine.pcg_glyphs_on, 0);
        for (const uint32_t dialog : {menu_save_dump, menu_tape_output, menu_settings, menu_about})
            EXPECT_TRUE(choose_item(dialog));
        EXPECT_TRUE(choose_item(menu_status));
    });
    const platform::dialog_record dialogs = host.dialogs();
    EXPECT_EQ(dialogs.save_files.size(), 2u);
    EXPECT_EQ(dialogs.settings.size(), 2u);
    EXPECT_EQ(dialogs.helps.size(), 1u);
    EXPECT_EQ(platform::profile_string(folder / "config/kiv/kiv.ini", "Kiv", "window"), "here");
}

// Whatever is in the menus is chosen: a check turns over, a choice is the one chosen, and the machine goes
// on.
TEST_F(WholeProgram, EveryCheckTurnsOverAndEveryChoiceIsTaken) {
    run([&] {
        const std::set<uint32_t> elsewhere = {menu_quit, menu_record_sound, menu_record_video};
        std::vector<platform::menu_item> all;
        const std::function<void(const std::vector<platform::menu_item> &)> gather = [&](auto &items) {
            for (const auto &item : items) {
                if (item.id != 0) all.push_back(item);
                gather(item.items);
            }
        };
        const auto find = [&](uint32_t id) {
            all.clear();
            on_window_thread([&] { gather(program.form->menus()); });
            return *std::find_if(all.begin(), all.end(), [id](auto &item) { return item.id == id; });
        };
        put_file(folder / "a.cmt", "tape");
        choose(folder / "a.cmt");
        strike(vk_f9); // so that the tape's items can be chosen
        use_item(menu_state_save + 1);
        use_item(menu_state_load + 1);
        script.open_file = script.save_file = [](auto &, std::string &) { return false; };
        host.set_script(script); // dialogs are cancelled from here on
        find(menu_quit);
        size_t chosen = 0;
        for (const platform::menu_item &item : std::vector(all)) {
            if (elsewhere.contains(item.id) || !find(item.id).enabled) continue;
            SCOPED_TRACE(item.text);
            ++chosen;
            const bool before = find(item.id).checked;
            use_item(item.id);
            if (item.kind == platform::menu_item::choice) {
                EXPECT_TRUE(find(item.id).checked);
            } else if (item.kind == platform::menu_item::check) {
                EXPECT_NE(find(item.id).checked, before);
                use_item(item.id);
                EXPECT_EQ(find(item.id).checked, before);
            }
            if (item.id == menu_full_screen) use_item(item.id);
        }
        EXPECT_GT(chosen, 70u);
        if (find(menu_pause).checked) use_item(menu_pause); // a frame back paused it
        use_item(menu_reset);
        wait_until_running();
        wait_for_row(0, "READY");
    });
}

// A person with a US keyboard: signs that the machine has elsewhere, with Shift and without.
TEST_F(WholeProgram, KeysByCharacterGiveWhatThePersonsLayoutPrints) {
    const auto sign = [](char c) { return static_cast<uint64_t>(c) << platform::key_sign_shift; };
    const struct {
        uint32_t key;
        char character;
        bool shift;
        const char *row; // the ROM shows the mark of a key alone as if it were a small letter
    } strokes[] = {{'2', '@', true, "`"},      {'A', 'A', true, "`A"},     {vk_yen, '`', false, "`A@"},
                   {'B', 'b', false, "`A@b"},  {'C', 'X', false, "`A@bX"}, {'D', 0, false, "`A@bXd"},
                   {vk_f12, 0, false, nullptr}};
    run([&] {
        on_window_thread([&] { window().choose_menu_item(menu_by_character); });
        for (const auto &s : strokes) {
            if (s.row == nullptr) break;
            on_window_thread([&] {
                if (s.shift) window().send(platform::wm_key_down, vk_shift, 0);
                window().send(platform::wm_key_down, s.key, sign(s.character));
            });
            wait_for_row(1, s.row);
            on_window_thread([&] {
                window().send(platform::wm_key_up, s.key, 0);
                if (s.shift) window().send(platform::wm_key_up, vk_shift, 0);
            });
        }
        wait_until("all keys up", [] {
            return std::all_of(std::begin(machine.key_matrix), std::end(machine.key_matrix),
                               [](const auto &row) { return row == 0xFF; });
        });
        on_window_thread([&] { window().choose_menu_item(menu_by_character); });
    });
}

TEST_F(WholeProgram, ThePageAndTheGamepadPressTheMachinesKeys) {
    script.pads = [](platform::pad_dialog &dialog) {
        const auto letter = std::find(dialog.keys.begin(), dialog.keys.end(), "Q");
        dialog.use = true;
        dialog.rows[platform::pad_b].key = static_cast<size_t>(letter - dialog.keys.begin());
        dialog.rows[platform::pad_x].key = 0;
        return letter != dialog.keys.end();
    };
    host.set_script(script);
    run([&] {
        for (const uint32_t item : {menu_pads, menu_keyboard})
            on_window_thread([&] { window().choose_menu_item(item); });
        settle();
        EXPECT_TRUE(host.pads_used);
        const auto send = [&](uint32_t id, uint64_t what) {
            on_window_thread([&] { window().send(id, what, 0); });
        };
        for (const uint32_t input : {platform::pad_x, platform::pad_b}) send(platform::wm_pad_down, input);
        wait_for_row(1, "q");
        send(platform::wm_pad_up, platform::pad_b);
        send(platform::wm_pad_up, platform::pad_up); // that was never down
        // Every key of the page is held while it is clicked, and no two of them are one, but SHIFT and
        // RETURN.
        std::map<uint32_t, int> places;
        on_window_thread([] {
            program.cpu_thread->pause();
            machine.reset_keyboard(machine);
        });
        for (const platform::shown_key &key : window().state().keyboard.keys) {
            ++places[key.code];
            on_window_thread([&] {
                window().send(platform::wm_key_down, key.code, 0);
                EXPECT_TRUE(program.form->is_key_down(key.code)) << key.label;
                EXPECT_EQ(key.width > 0 && key.height > 0, true) << key.label;
                machine.reset_keyboard(machine);
            });
        }
        on_window_thread([] { program.cpu_thread->resume_run(); });
        EXPECT_EQ(places.size(), 88u) << "rows 0 to 10";
        for (const auto &[code, count] : places)
            EXPECT_EQ(count, code == vk_matrix + 15 || code == vk_matrix + 70 ? 2 : 1) << code;
        window().close_box();
    });
    EXPECT_EQ(platform::profile_string(folder / "config/kiv/kiv.ini", "Kiv", "pad_b"), "33");
}

TEST_F(WholeProgram, TextIsTypedAtTheMachinesPace) {
    std::string wanted;
    for (int i = 0; i < 60; ++i) wanted += "aBc"[i % 3];
    run([&] {
        host.copy_text(wanted + "\u3042");
        on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(menu_paste)); });
        wait_for_row(1, wanted);
        EXPECT_EQ(window().state().notices.back(), "1 文字は打てません");
        host.copy_text(std::string(2000, 'x'));
        on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(menu_paste)); });
        wait_until("the first of many", [&] { return screen_row(1).size() > wanted.size(); });
        strike(vk_escape);
        EXPECT_EQ(window().state().notices.back(), "打つのをやめました");
    });
}

// Kiv BASIC reads a listing at either speed. What is typed is typed at the machine's own: at any other a key
// would be down for so long that it repeats.
TEST_F(WholeProgram, ATapeIsReadFastButNotWhileSomethingIsTyped) {
    for (const char *rom : {"8801-zun.rom", "8801-kiv.rom", "8801-4th.rom"})
        fs::copy_file(fs::path(KIV_FIRMWARE_DIR) / rom, folder / rom, fs::copy_options::overwrite_existing);
    const auto paste = [&](const std::string &text) {
        host.copy_text(text);
        use_item(menu_paste);
    };
    const auto wait_for_text = [&](const std::string &text) {
        wait_until(text, [&] { return memory().find(text) != std::string::npos; });
    };
    run(
        [&] {
            for (const int lines : {9, 99}) { // at the machine's speed 2 and 20 seconds
                std::string listing, last;
                for (int n = 1; n <= lines; ++n)
                    listing += last = std::to_string(10 * n) + " REM A LINE OF A TAPE\r\n";
                put_file(folder / "t.cmt", listing);
                choose(folder / "t.cmt");
                strike(vk_f9);
                paste("NEW\nCLS\nCLOAD\n");
                if (lines > 9) wait_until("silence", [&] { return !host.sound.is_playing(); });
                paste("PRINT \"DO\";\"NE\"\n");
                wait_for_text("DONE");
                paste("LIST\n");
                wait_for_text(last.substr(0, last.size() - 2));
                use_item(menu_fast_tape);
            }
        },
        "bytes free");
}

TEST_F(WholeProgram, ShiftCountsAtThePressOrAtTheRelease) {
    run([&] {
        const auto full_screen = [&] { return host.screen.current_mode().width != 0; };
        const struct {
            const char *name, *order; // S Shift, F the command key; small letters let go
            bool changes;
        } rows[] = {{"around", "SFfs", true},           {"let go too early", "SFsf", true},
                    {"pressed too late", "FSfs", true}, {"none", "Ff", false},
                    {"in between only", "FSsf", false}, {"before only", "SsFf", false}};
        for (const auto &r : rows) {
            const bool before = full_screen();
            for (const char *c = r.order; *c != 0; ++c) {
                const uint32_t key = *c == 'S' || *c == 's' ? vk_shift : vk_f12;
                *c < 'a' ? window().press_key(key) : window().release_key(key);
            }
            settle();
            EXPECT_EQ(full_screen() != before, r.changes) << r.name;
        }
    });
}

} // namespace
