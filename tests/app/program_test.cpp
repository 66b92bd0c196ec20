// The whole program on the host in memory, used as a person uses it: keys, dialogs, files, the log.
#include "app/program.h"

#include "app/kiv_form.h"
#include "app/kiv_help.h"
#include "app/settings_file.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "machine/run_block.h"
#include "platform/instance_lock.h"
#include "platform/profile.h"
#include "platform/resources.h"
#include "support/host_keys.h"
#include "tests/common/whole_program.h"
#include "tests/headless/headless_host.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using platform::fault;

// ---- the person --------------------------------------------------------------------------------------

struct gave_up {};

class whole_program : public testing::Test {
  protected:
    // Runs the program on this thread to a normal end; another one does what the person does once the machine
    // has booted, and closes it at last.
    void run(const std::function<void()> &person) {
        std::fill(std::begin(machine.ram), std::end(machine.ram), uint8_t{0}); // READY of an earlier run
        const uint64_t frames_before = host.screen.shown().number;
        std::thread other([&] {
            try {
                wait_until("the window", [&] { return host.window() != nullptr; });
                wait_until("the first frame", [&] { return host.screen.shown().number != frames_before; });
                wait_for_row(0, "READY");
                person();
                window().strike_key(vk_end);
            } catch (const gave_up &) {
                if (host.window() != nullptr) window().close_box();
            }
        });
        EXPECT_EQ(run_program(host), 0);
        other.join();
        expect_nothing_left();
    }
    void expect_nothing_left() {
        EXPECT_EQ(host.timer_resolutions(), 0);
        EXPECT_FALSE(host.screen.is_open());
        EXPECT_FALSE(host.sound.is_open());
        EXPECT_EQ(program.form, nullptr);
    }

    void wait_until(const std::string &what, const std::function<bool()> &condition) {
        for (int i = 0; i < 4000; ++i) {
            if (condition()) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        ADD_FAILURE() << "waited in vain for: " << what;
        throw gave_up{};
    }
    void on_window_thread(const std::function<void()> &f) {
        if (!host.run_on_window_thread(f)) throw gave_up{};
    }
    // Until the window thread has dealt with everything that came before.
    void settle() {
        on_window_thread([] {});
    }

    platform::headless_window &window() { return *host.window(); }

    static std::string screen_row(uint16_t row) {
        return text_row([](uint16_t at) { return __atomic_load_n(&machine.ram[at], __ATOMIC_RELAXED); }, row);
    }
    void wait_for_row(uint16_t row, const std::string &text) {
        wait_until("row " + std::to_string(row) + ": " + text, [&] { return screen_row(row) == text; });
    }
    // Holds a key until row 1 shows what it typed: a busy computer may take its time.
    void type(char key, const std::string &row) {
        window().press_key(static_cast<uint32_t>(key));
        wait_for_row(1, row);
        window().release_key(static_cast<uint32_t>(key));
    }
    void wait_until_running() {
        wait_until("the CPU thread", [] { return program.cpu_thread->is_suspended() == 0; });
    }
    void strike_with_shift(uint32_t key) {
        window().press_key(vk_shift);
        window().strike_key(key);
        window().release_key(vk_shift);
        settle();
    }
    void strike(uint32_t key) {
        window().strike_key(key);
        settle();
    }

    // The next file dialogs give this path.
    void choose(const std::string &path) {
        script.open_file = script.save_file = [path](auto &, std::string &chosen) {
            chosen = path;
            return true;
        };
        host.set_script(script);
    }
    // The next settings dialogs end with OK when `person` answers true.
    void at_settings(const std::function<bool(platform::settings_dialog &)> &person) {
        script.settings = person;
        host.set_script(script);
    }
    bool has_frames(uint64_t more) {
        return host.screen.wait_for_frame(host.screen.shown().number + more, 60000);
    }
    void expect_parked(bool parked) {
        EXPECT_EQ(program.cpu_thread->is_suspended(), parked ? 1u : 0u);
        EXPECT_EQ(host.sound.is_playing(), !parked);
    }

    platform::headless_script script;
    platform::headless_host host;
    program_folder folder;
};

// ---- from start to end -------------------------------------------------------------------------------

TEST_F(whole_program, OneDayWithEveryCommand) {
    std::string settings_text;
    run([&] {
        EXPECT_EQ(window().state().title, "Zun - Velmora [2.0.9]");
        EXPECT_FALSE(window().state().input_method);
        EXPECT_TRUE(std::equal(machine.font_rom, machine.font_rom + font_work_size, machine.font_work));

        // A key held down repeats in the host, and is one press for the machine.
        for (int i = 0; i < 3; ++i) window().press_key('A');
        wait_for_row(1, "a");
        window().release_key('A');
        window().press_key(vk_shift);
        type('B', "aB");
        window().release_key(vk_shift);
        // It stays down for two retraces at least, and what is pressed meanwhile is shifted.
        wait_until("Shift to be let go", [] { return (machine.key_matrix[8] & 0x40) != 0; });

        choose(folder / "game.KIV");
        strike(vk_f6);
        EXPECT_EQ(get_file(folder / "game.KIV").size(), 32612u);
        type('C', "aBc");
        strike(vk_f12);
        wait_for_row(1, "");
        wait_for_row(0, "READY");
        strike(vk_f9);
        wait_for_row(1, "aB"); // the dump's screen
        type('D', "aBd");      // and its program goes on

        put_file(folder / "song.cmt", "tape");
        choose(folder / "song.cmt");
        strike(vk_f9);
        on_window_thread([] {
            EXPECT_EQ(machine.tape_size, 4u);
            EXPECT_EQ(machine.cassette_flags & cassette_stopped, 0);
            machine.tape_position = 3;
        });
        // A reset rewinds the tape and lets go of the keys; the repeats of one that is still held stay away.
        window().press_key('D');
        strike(vk_f12);
        window().press_key('D');
        on_window_thread([] {
            EXPECT_EQ(machine.tape_position, 0u);
            EXPECT_EQ(machine.key_matrix[2], 0xFF);
        });
        window().release_key('D');
        wait_for_row(1, "");

        choose(folder / "out.cmt");
        strike_with_shift(vk_f9);
        window().press_key('9');
        wait_until("the tape output", [&] { return get_file(folder / "out.cmt") == "HI"; });
        window().release_key('9');

        for (const int on : {1, 0, 1}) {
            strike(vk_f11);
            EXPECT_EQ(machine.pcg_glyphs_on, on);
        }
        strike(vk_f8);
        EXPECT_EQ(program.directx->isSoundOff(), 1u);
        strike(vk_f12); // brings both back
        EXPECT_EQ(machine.pcg_glyphs_on, 0);
        EXPECT_EQ(program.directx->isSoundOff(), 0u);

        // The speed line fills the top left corner, beyond what READY covers.
        strike_with_shift(vk_f6);
        wait_until("the speed line", [&] {
            const platform::rgb_picture p = host.screen.shown().picture;
            for (int y = 0; y < 12; ++y)
                for (int x = 60; x < 200; ++x)
                    if (p.at(x, y) == 0xFFFFFF) return true;
            return false;
        });
        strike_with_shift(vk_f6);

        for (int i = 0; i < 4; ++i) {
            strike_with_shift(vk_f12);
            EXPECT_EQ(host.screen.current_mode().width, i % 2 == 0 ? 640 : 0);
            EXPECT_EQ(window().state().cursor_count < 0, i % 2 == 0) << "the cursor";
            EXPECT_TRUE(has_frames(3));
        }
        const platform::window_state state = window().state();
        EXPECT_TRUE(state.framed);
        EXPECT_EQ(state.width, 640);
        EXPECT_EQ(state.height, 400);
        on_window_thread([] {
            const auto given = program.form->menus().at(0).items;
            ASSERT_EQ(given.size(), 2u);
            EXPECT_EQ(given[0].text + ", " + given[1].text, "Kivについて, Kivの設定");
        });

        settings_text = get_file(folder / "KIV.INI");
        EXPECT_TRUE(window().choose_menu_item(menu_about));
        EXPECT_TRUE(window().choose_menu_item(menu_settings)); // and cancelled
        settle();
        EXPECT_TRUE(has_frames(3));
        expect_parked(false);
        type('E', "e");
    });
    EXPECT_EQ(get_file(folder / "KIV.INI"), settings_text);

    const platform::dialog_record dialogs = host.dialogs();
    EXPECT_TRUE(dialogs.error_boxes.empty());
    ASSERT_EQ(dialogs.save_files.size(), 2u);
    EXPECT_EQ(dialogs.save_files[0].title, "Kiv ﾌｧｲﾙの保存");
    EXPECT_EQ(dialogs.save_files[0].file_name, "dump");
    EXPECT_EQ(dialogs.save_files[1].title, "CMT ﾌｧｲﾙの保存先選択");
    EXPECT_EQ(dialogs.save_files[1].file_name, "cassette");
    ASSERT_EQ(dialogs.open_files.size(), 2u);
    EXPECT_EQ(dialogs.open_files[0].title, "Kiv ﾌｧｲﾙの選択");
    EXPECT_EQ(dialogs.open_files[0].patterns, (std::vector<std::string>{"*.KIV", "*.CMT"}));
    ASSERT_EQ(dialogs.helps.size(), 1u);
    EXPECT_EQ(dialogs.helps[0].text, std::string(help_text) + help_more);
    EXPECT_EQ(dialogs.settings.size(), 1u);
    EXPECT_EQ(first_missing(folder.heard(), log_of_a_day), "");
}

// ---- settings ----------------------------------------------------------------------------------------

// Values far outside the dialog's ranges are kept, shown, and used without harm; an OK brings the sliders'
// ends.
TEST_F(whole_program, SettingsAreShownAppliedAndWritten) {
    const std::string strange =
        "[Default]\nsoft_volume=33\nhard_volume=-2147483648\ndma_gain=500\ndma_load=2147483647\n";
    put_file(folder / "KIV.INI", strange);
    const auto written = [this] { return read_settings_file(folder / "KIV.INI"); };
    run([&] {
        window().press_key('8'); // the beeper
        EXPECT_TRUE(has_frames(5));
        strike(vk_f7); // cancelled
        EXPECT_EQ(get_file(folder / "KIV.INI"), strange);
        at_settings([](auto &) { return true; });
        strike(vk_f7);
        EXPECT_EQ(written(), (setting_values{0, 40, -100, 1, 1, 100, 0, 1, 0, 0, 0, 1, 1}));

        at_settings([](platform::settings_dialog &d) {
            const int values[] = {50, 7, -30, 9};
            for (size_t i = 0; i < d.sliders.size(); ++i) d.sliders[i].value = values[i];
            for (auto &check : d.checks) check.checked = !check.checked;
            return true;
        });
        strike(vk_f7);
        EXPECT_EQ(written(), (setting_values{1, 7, -30, 9, 1, 50, 1, 0, 1, 1, 1, 0, 0}));
        EXPECT_EQ(host.sound.volume(), -3000);
        EXPECT_EQ(program.cpu_thread->get_no_wait(), 1u);
        on_window_thread([] {
            EXPECT_EQ(machine.dma_load, 50u);
            EXPECT_EQ(machine.crt_standard, 1u);
            EXPECT_EQ(machine.interlace, 1u);
            EXPECT_EQ(machine.boot_rom, 0);
        });
        window().press_key(vk_left); // a cursor key now
        wait_until("the cursor key", [] { return machine.key_matrix[10] == 0xFB; });
        window().release_key(vk_left);
        at_settings([](auto &) { return false; });
        strike(vk_f7);
    });
    constexpr struct {
        int sliders[4];
        const char *checks;
    } expected[] = {{{2147483647, 500, -21474836, -32}, "10000001"}, // 33000 in 16 bits is negative
                    {{2147483647, 500, -21474836, -32}, "10000001"},
                    {{100, 40, -100, 1}, "10000001"},
                    {{50, 7, -30, 9}, "01111110"}};
    const auto shown = host.dialogs().settings;
    ASSERT_EQ(shown.size(), std::size(expected));
    for (size_t i = 0; i < shown.size(); ++i) {
        for (size_t j = 0; j < 4; ++j)
            EXPECT_EQ(shown[i].sliders.at(j).value, expected[i].sliders[j]) << i << j;
        std::string checks;
        for (const auto &check : shown[i].checks) checks += check.checked ? '1' : '0';
        EXPECT_EQ(checks, expected[i].checks) << i;
    }
}

TEST_F(whole_program, AnOkWithoutChangesLeavesEveryVolume) {
    run([&] {
        for (int wanted = 0; wanted >= -100; --wanted)
            for (const bool change : {true, false}) {
                at_settings([=](platform::settings_dialog &d) {
                    if (change) d.sliders[2].value = wanted;
                    return true;
                });
                strike(vk_f7);
                EXPECT_EQ(host.sound.volume(), wanted * 100);
                EXPECT_EQ(read_settings_file(folder / "KIV.INI")[setting_hard_volume], wanted);
            }
    });
}

// ---- dialogs and painting ----------------------------------------------------------------------------

TEST_F(whole_program, ThePausePictureTilesTheWindowBehindADialog) {
    platform::rgb_picture behind;
    run([&] {
        window().resize_client(641, 400); // one column more than five pictures
        script.open_file = [&](auto &, std::string &) {
            expect_parked(true);
            behind = window().painted();
            return false;
        };
        host.set_script(script);
        strike(vk_f9);
        wait_until_running();
        expect_parked(false);
        on_window_thread([] { EXPECT_NE(machine.cassette_flags & cassette_stopped, 0); });
    });
    ASSERT_EQ(behind.width, 641);
    kel_dib picture;
    ASSERT_TRUE(picture.load_resource(pause_resource_id));
    size_t wrong = 0;
    for (int y = 0; y < behind.height; ++y)
        for (int x = 0; x < behind.width; ++x) {
            const int row = picture.is_top_down() ? y % 128 : 127 - y % 128;
            const uint8_t two = picture.bits()[row * picture.stride() + x % 128 / 2];
            const palette_entry c = picture.palette_entries()[x % 2 == 0 ? two >> 4 : two & 15];
            wrong += behind.at(x, y) != static_cast<uint32_t>(c.red << 16 | c.green << 8 | c.blue);
        }
    EXPECT_EQ(wrong, 0u) << "pixels of the tiled picture";
}

TEST_F(whole_program, PathsThatCannotBeTakenLoseNothing) {
    run([&] {
        choose("/" + std::string(511, 'x'));
        strike(vk_f6);
        strike(vk_f9);
        strike_with_shift(vk_f9);
        EXPECT_EQ(host.dialogs().error_boxes.size(), 3u);

        put_file(folder / "old.KIV", "old");
        fs::create_directory(folder / "dir.KIV");
        for (const char *path : {"dir.KIV/none/new.KIV", "dir.KIV"}) {
            choose(folder / path);
            strike(vk_f6);
        }
        strike(vk_f9);
        choose(folder / "old.KIV"); // too short for a dump
        strike(vk_f9);
        EXPECT_EQ(get_file(folder / "old.KIV"), "old");
        on_window_thread([] { EXPECT_NE(machine.cassette_flags & cassette_stopped, 0); });
        choose(folder / "dir.KIV/tape.cmt"); // a dump by the folder's name
        put_file(folder / "dir.KIV/tape.cmt", std::string(32576, '\x20'));
        strike(vk_f9);
        on_window_thread([] { EXPECT_EQ(machine.tape_image, nullptr); });
        EXPECT_EQ(host.dialogs().error_boxes.size(), 3u) << "what needs no answer opens no box";
        fs::remove(folder / "KIV.INI"); // and now cannot be written
        fs::create_directory(folder / "KIV.INI");
        at_settings([](auto &) { return true; });
        strike(vk_f7);
        fs::remove(folder / "KIV.INI");
    });
    EXPECT_EQ(host.dialogs().error_boxes[0].text, "パス名が長すぎます");
    const auto notices = window().state().notices;
    for (const char *file :
         {"dir.KIV/none/new.KIV: ", "dir.KIV: ", "old.KIV: 3 bytes, fewer than 32576", "KIV.INI: "})
        EXPECT_TRUE(std::any_of(notices.begin(), notices.end(), [&](auto &n) {
            return n.find(file) != std::string::npos;
        })) << file;
    EXPECT_TRUE(folder.heard_line("dir.KIV/none/new.KIV"));
    EXPECT_TRUE(folder.heard_line("fewer than 32576"));
}

TEST_F(whole_program, ACommandThatFailsInItsDialogLeavesTheMachineRunning) {
    run([&] {
        script.save_file = script.open_file = [](auto &, std::string &) -> bool {
            throw std::runtime_error("out of order");
        };
        script.settings = [](auto &) -> bool { throw std::runtime_error("out of order"); };
        host.set_script(script);
        for (const uint32_t key : {vk_f6, vk_f7, vk_f9}) {
            strike(key);
            wait_until_running();
            expect_parked(false);
        }
        at_settings([](auto &) { return false; });
        strike(vk_f7);
        EXPECT_EQ(host.dialogs().settings.size(), 2u) << "dialogs open again";
    });
    EXPECT_TRUE(folder.heard_line("out of order"));
}

// A letter reaches one item of its menu, and every item of a menu has one; a key does one thing.
TEST_F(whole_program, NoTwoItemsShareALetterOrAKey) {
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

TEST_F(whole_program, EveryMenuItemDoesItsWorkOnce) {
    put_file(folder / "song.cmt", "tape");
    run([&] {
        const auto choose_item = [&](uint32_t id) {
            bool offered = false;
            on_window_thread([&] { offered = window().choose_menu_item(id); });
            settle();
            return offered;
        };
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
        EXPECT_TRUE(view.look == platform::crt_look::tube && view.four_thirds && view.whole_factors &&
                    !view.notices);
        EXPECT_EQ(host.chosen_language, platform::language::english);
        EXPECT_EQ(host.sound.loud, 90);
        EXPECT_FALSE(window().state().keyboard_shown);
        EXPECT_TRUE(choose_item(menu_keyboard));
        EXPECT_TRUE(window().state().keyboard_shown);
        EXPECT_TRUE(choose_item(menu_copy_text));
        EXPECT_EQ(host.copied().substr(0, host.copied().find('\n')), "READY");
        EXPECT_TRUE(choose_item(menu_copy_picture));
        for (int i = 0; i < 2; ++i) EXPECT_TRUE(choose_item(menu_screenshot));
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

// A person with a US keyboard: signs that the machine has elsewhere, with Shift and without.
TEST_F(whole_program, KeysByCharacterGiveWhatThePersonsLayoutPrints) {
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

TEST_F(whole_program, ThePageAndTheGamepadPressTheMachinesKeys) {
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

// What ffmpeg would get, what it says when it fails, and what is said when there is none.
TEST_F(whole_program, RecordingsHoldEveryPictureAndSample) {
    const std::string path_before = std::getenv("PATH"), tools = folder / "tools";
    fs::create_directory(tools);
    put_file(tools + "/ffmpeg", "#!/bin/sh\n"
                                "cd '" +
                                    folder.path +
                                    "'; cat <&3 >frames & cat <&4 >sound; wait\n"
                                    "[ ! -e broken ] || { echo 'No space left' >&2; exit 1; }\n");
    fs::permissions(tools + "/ffmpeg", fs::perms::owner_all);
    const auto last_notice = [&] {
        return window().state().notices.empty() ? "" : window().state().notices.back();
    };
    const auto toggle = [&](uint32_t id) {
        on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(id)); });
        settle();
    };
    const auto wait_for_notice = [&](const std::string &part) {
        wait_until(part, [&] { return last_notice().find(part) != std::string::npos; });
    };
    run([&] {
        setenv("PATH", (tools + ":" + path_before).c_str(), 1);
        toggle(menu_record_video);
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        toggle(menu_record_video);
        wait_for_notice(".mp4 に保存しました");
        const std::string frames = get_file(folder / "frames"), sound = get_file(folder / "sound");
        const double seconds = static_cast<double>(sound.size()) / 2 / sample_rate;
        const uint32_t frame = machine.line_clocks * machine.display_lines + machine.vblank_clocks;
        EXPECT_EQ(frames.size() % (640 * 400 * 4), 0u);
        EXPECT_GT(seconds, 0.3);
        EXPECT_NEAR(static_cast<double>(frames.size()) / (640 * 400 * 4), seconds * machine.clock_hz / frame,
                    2.5);
        EXPECT_NE(frames.find("\xFF\xFF\xFF"), std::string::npos) << "READY is white";
        put_file(folder / "broken", "");
        toggle(menu_record_video);
        toggle(menu_record_video);
        wait_for_notice("ffmpeg: No space left");
        setenv("PATH", "/nowhere", 1);
        toggle(menu_record_video);
        EXPECT_NE(last_notice().find("Debian"), std::string::npos) << last_notice();
        setenv("PATH", path_before.c_str(), 1);
        toggle(menu_speed + 7); // heard four times as high, recorded as it is
        toggle(menu_record_sound);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        toggle(menu_record_sound);
        wait_for_notice(".wav に保存しました");
        for (const auto &file : fs::directory_iterator(folder / "music")) {
            const std::string wave = get_file(file.path());
            EXPECT_EQ(wave.substr(0, 4) + wave.substr(36, 4), "RIFFdata");
            EXPECT_EQ((wave.size() - 44) % slice_bytes, 0u);
            EXPECT_GT(wave.size(), 44u + 5 * slice_bytes);
        }
    });
}

TEST_F(whole_program, TimeGoesBackwardsByFramesAndAtOtherSpeeds) {
    run([&] {
        const auto choose_item = [&](uint32_t id) {
            bool offered = false;
            on_window_thread([&] { offered = window().choose_menu_item(id); });
            settle();
            return offered;
        };
        const auto frames_in = [&](std::chrono::milliseconds time) {
            const auto frames = [&] {
                uint64_t n = 0;
                on_window_thread([&] {
                    program.cpu_thread->pause();
                    n = run_state.frames;
                    program.cpu_thread->resume_run();
                });
                return n;
            };
            const uint64_t from = frames();
            std::this_thread::sleep_for(time);
            return frames() - from;
        };
        type('A', "a");
        type('B', "ab");
        for (int i = 0; i < 5000 && screen_row(1) != "a"; ++i) EXPECT_TRUE(choose_item(menu_frame_back));
        EXPECT_EQ(screen_row(1), "a");
        expect_parked(true);
        const uint64_t frames = run_state.frames, shown = host.screen.shown().number;
        EXPECT_TRUE(choose_item(menu_frame_forth));
        EXPECT_EQ(run_state.frames, frames + 1);
        EXPECT_GT(host.screen.shown().number, shown);
        expect_parked(true);
        EXPECT_TRUE(choose_item(menu_frame_back));
        EXPECT_EQ(run_state.frames, frames);
        EXPECT_TRUE(choose_item(menu_pause));
        wait_until_running();
        std::this_thread::sleep_for(std::chrono::seconds(1)); // seen when it is passed again
        type('C', "ac");                                      // what came later is gone

        window().press_key(vk_scroll_lock);
        wait_for_row(1, "a");
        expect_parked(true);
        window().release_key(vk_scroll_lock);
        wait_until_running();
        expect_parked(false);
        type('D', "ad");
        EXPECT_TRUE(choose_item(menu_rewind));
        wait_until("the beginning", [&] {
            const auto notices = window().state().notices;
            return !notices.empty() && notices.back() == "これより前には戻れません";
        });
        strike_with_shift(vk_f6); // commands work meanwhile
        EXPECT_TRUE(choose_item(menu_rewind));
        wait_until_running();
        wait_for_row(0, "READY");

        EXPECT_TRUE(choose_item(menu_speed)); // 25 %
        const uint64_t slow = frames_in(std::chrono::milliseconds(600));
        EXPECT_EQ(host.sound.speed(), 25u);
        EXPECT_TRUE(choose_item(menu_speed + 7)); // 400 %
        EXPECT_GT(frames_in(std::chrono::milliseconds(600)), 3 * slow);
        EXPECT_EQ(host.sound.speed(), 400u);
        EXPECT_TRUE(choose_item(menu_fast_forward));
        wait_until("silence", [&] { return !host.sound.is_playing(); });
        EXPECT_GT(frames_in(std::chrono::milliseconds(600)), 3 * slow);
        EXPECT_TRUE(choose_item(menu_fast_forward));
        wait_until("the sound again", [&] { return host.sound.is_playing(); });
        EXPECT_TRUE(choose_item(menu_speed + 5)); // 200 %
    });
    run([&] { wait_until("the speed of the last time", [&] { return host.sound.speed() == 200; }); });
}

// Whatever is in the menus is chosen: a check turns over, a choice is the one chosen, and the machine goes
// on.
TEST_F(whole_program, EveryCheckTurnsOverAndEveryChoiceIsTaken) {
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
        const auto choose_item = [&](uint32_t id) {
            on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(id)) << id; });
            settle();
        };
        put_file(folder / "a.cmt", "tape");
        choose(folder / "a.cmt");
        strike(vk_f9); // so that the tape's items can be chosen
        choose_item(menu_state_save + 1);
        choose_item(menu_state_load + 1);
        script.open_file = script.save_file = [](auto &, std::string &) { return false; };
        host.set_script(script); // dialogs are cancelled from here on
        find(menu_quit);
        size_t chosen = 0;
        for (const platform::menu_item &item : std::vector(all)) {
            if (elsewhere.contains(item.id) || !find(item.id).enabled) continue;
            SCOPED_TRACE(item.text);
            ++chosen;
            const bool before = find(item.id).checked;
            choose_item(item.id);
            if (item.kind == platform::menu_item::choice) {
                EXPECT_TRUE(find(item.id).checked);
            } else if (item.kind == platform::menu_item::check) {
                EXPECT_NE(find(item.id).checked, before);
                choose_item(item.id);
                EXPECT_EQ(find(item.id).checked, before);
            }
            if (item.id == menu_full_screen) choose_item(item.id);
        }
        EXPECT_GT(chosen, 70u);
        if (find(menu_pause).checked) choose_item(menu_pause); // a frame back paused it
        choose_item(menu_reset);
        wait_until_running();
        wait_for_row(0, "READY");
    });
}

// What a person types, with the picture ahead, and without; recordings and the machine do not know of it.
TEST_F(whole_program, ThePictureRunsAhead) {
    run([&] {
        std::string typed;
        for (const uint32_t frames : {1u, 2u, 0u}) {
            on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(menu_run_ahead + frames)); });
            for (const char key : {'A', 'B'}) {
                typed += static_cast<char>(key + 0x20);
                type(key, typed);
            }
            strike(vk_f11);
            strike_with_shift(vk_f12); // full screen and back
            EXPECT_TRUE(has_frames(5));
        }
        EXPECT_EQ(machine.pcg_glyphs_on, 1);
        for (const bool on : {true, false})
            on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(menu_fast_tape)) << on; });
    });
}

TEST_F(whole_program, StatesGoBackAndForth) {
    run([&] {
        const auto choose_item = [&](uint32_t id) {
            bool offered = false;
            on_window_thread([&] { offered = window().choose_menu_item(id); });
            settle();
            return offered;
        };
        const auto noticed = [&](const std::string &part) {
            const auto notices = window().state().notices;
            return !notices.empty() && notices.back().find(part) != std::string::npos;
        };
        EXPECT_FALSE(choose_item(menu_state_load + 3)) << "nothing is saved there";
        EXPECT_FALSE(choose_item(menu_state_undo));
        type('A', "a");
        EXPECT_TRUE(choose_item(menu_state_save + 3));
        EXPECT_TRUE(noticed("ステート 3 に保存しました"));
        on_window_thread([] {
            const auto slots = program.form->menus().at(2).items.at(6).items;
            ASSERT_EQ(slots.size(), 10u);
            EXPECT_EQ(slots[2].shown, nullptr);
            ASSERT_NE(slots[3].shown, nullptr) << "what was on the screen";
            const auto &pixels = slots[3].shown->pixels;
            EXPECT_NE(std::count(pixels.begin(), pixels.end(), 0u), static_cast<long>(pixels.size()));
        });
        type('B', "ab");
        EXPECT_TRUE(choose_item(menu_state_load + 3));
        wait_for_row(1, "a");
        type('C', "ac"); // the machine goes on from there
        EXPECT_TRUE(choose_item(menu_state_undo));
        wait_for_row(1, "ab");
        EXPECT_TRUE(choose_item(menu_state_quick_load)); // the slot last used
        wait_for_row(1, "a");

        choose(folder / "mine.kst");
        EXPECT_TRUE(choose_item(menu_state_save_file));
        type('D', "ad");
        on_window_thread([&] { program.form->dropped(folder / "mine.kst"); });
        wait_for_row(1, "a");
        const std::string good = get_file(folder / "mine.kst");
        for (const std::string &bad :
             {std::string(), std::string("no state"), good.substr(0, good.size() / 2)}) {
            put_file(folder / "bad.kst", bad);
            choose(folder / "bad.kst");
            EXPECT_TRUE(choose_item(menu_state_load_file));
            EXPECT_TRUE(noticed("bad.kst: ")) << bad.size();
        }
        wait_until_running();
        EXPECT_EQ(screen_row(1), "a") << "the running machine is untouched";
        expect_parked(false);
    });
}

TEST_F(whole_program, TextIsTypedAtTheMachinesPace) {
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

TEST_F(whole_program, ShiftCountsAtThePressOrAtTheRelease) {
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

// ---- activation, stops -------------------------------------------------------------------------------

TEST_F(whole_program, FullScreenPausesWhileInactiveAWindowDoesNot) {
    run([&] {
        window().activate(false);
        settle();
        expect_parked(false);
        window().activate(true);
        type('A', "a");

        strike_with_shift(vk_f12);
        window().activate(false);
        settle();
        expect_parked(true);
        EXPECT_GE(window().state().cursor_count, 0);
        strike(vk_f12); // no reset now
        EXPECT_EQ(screen_row(1), "a");
        expect_parked(true);
        window().press_key('B'); // held while the application comes back: released
        window().activate(true);
        settle();
        wait_until_running();
        expect_parked(false);
        EXPECT_EQ(machine.key_matrix[2], 0xFF);
        EXPECT_LT(window().state().cursor_count, 0);
        type('C', "ac");
    });
    EXPECT_TRUE(folder.heard_line("OnAppActivate: Activate without Surface"));
}

TEST_F(whole_program, AStoppedProcessorEndsTheProgramWithItsMessage) {
    constexpr const char *texts[] = {"$00CD にて HALT命令を検出につき終了。",
                                     "$00CE にて未定義命令を検出につき終了。"};
    for (const char key : {'0', '1'}) {
        run([&] {
            window().press_key(static_cast<uint32_t>(key));
            wait_until("the message", [&] { return host.dialogs().error_boxes.size() > key - '0' + 0u; });
        });
        const auto box = host.dialogs().error_boxes.back();
        EXPECT_EQ(box.text.substr(0, box.text.find('\n')), texts[key - '0']);
        EXPECT_NE(box.text.find(key == '0' ? "HALTは" : "読み飛ばす"), std::string::npos)
            << "names the setting";
        EXPECT_EQ(box.caption, "Kivex");
        EXPECT_TRUE(box.has_owner);
        EXPECT_TRUE(folder.heard_line(texts[key - '0']));
    }
}

TEST_F(whole_program, AScreenChangeThatFailsEndsTheEmulationAndKeepsTheWindow) {
    run([&] {
        host.faults.set(fault::display_mode);
        strike_with_shift(vk_f12);
        EXPECT_FALSE(program.cpu_thread->is_running());
        EXPECT_FALSE(window().state().gone);
        for (const uint32_t key : {vk_f6, vk_f7, vk_f9, vk_f12})
            strike(key); // nothing to pause: nothing done
    });
    const platform::dialog_record dialogs = host.dialogs();
    EXPECT_TRUE(dialogs.save_files.empty() && dialogs.open_files.empty() && dialogs.settings.empty());
    EXPECT_TRUE(folder.heard_line("change_screen: exit by failed"));
}

TEST_F(whole_program, ALogLineIsCutToItsBuffer) {
    trace("%s.", std::string(2000, 'x').c_str());
    EXPECT_EQ(folder.heard(), std::vector{std::string(1023, 'x')});
}

TEST_F(whole_program, TheSessionMayEnd) {
    run([&] {
        window().end_session();
        settle();
        EXPECT_EQ(window().end_session_answer, 1);
        EXPECT_FALSE(program.cpu_thread->is_running());
    });
    EXPECT_EQ(first_missing(folder.heard(),
                            {"WM_QUERYENDSESSION", "exit: try stop z80 thread", "exit: terminating Kiv",
                             "WM_CLOSE", "exit: try stop z80 thread", "WM_DESTROY"}),
              "");
}

TEST_F(whole_program, ALogOffUnderTheSettingsStoresTheRightVolume) {
    run([&] {
        at_settings([&](platform::settings_dialog &d) {
            EXPECT_EQ(window().send(platform::wm_query_end_session, 0, 0), 1);
            d.sliders[2].value = -20;
            return true;
        });
        strike(vk_f7);
        EXPECT_EQ(read_settings_file(folder / "KIV.INI")[setting_hard_volume], -20);
        EXPECT_FALSE(program.cpu_thread->is_running()) << "ended with the dialog";
    });
}

// ---- starts that fail --------------------------------------------------------------------------------

TEST_F(whole_program, ASecondCopyEndsAtOnce) {
    platform::instance_lock first;
    ASSERT_EQ(first.acquire("ZunMultiBootChecker"), platform::instance_lock::result::acquired);
    EXPECT_EQ(run_program(host), 1);
    EXPECT_EQ(folder.heard(), std::vector<std::string>{"Zun 多重起動検知"});
    EXPECT_EQ(host.window(), nullptr);
    pollfd called{first.call_descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&called, 1, 0), 1) << "the first copy is told";
    first.take_call();
    EXPECT_EQ(poll(&called, 1, 0), 0);
}

TEST_F(whole_program, TheFirstCopyComesToTheFront) {
    run([&] {
        EXPECT_TRUE(platform::instance_lock::call_first("ZunMultiBootChecker"));
        wait_until("the window in front", [&] { return window().state().brought_to_front > 0; });
    });
    EXPECT_FALSE(platform::instance_lock::call_first("ZunMultiBootChecker")) << "nobody is there any more";
}

// Mode bits mean nothing to the administrator: while it exists the test is somebody else.
struct without_privileges {
    without_privileges() {
        if (was == 0 && seteuid(65534) != 0) ADD_FAILURE() << "cannot become somebody else";
    }
    ~without_privileges() {
        if (was == 0 && seteuid(0) != 0) ADD_FAILURE() << "cannot come back";
    }
    const uid_t was = geteuid();
};

TEST_F(whole_program, MissingImagesAreFoundInAnotherFolderAndRememberedThere) {
    fs::create_directory("elsewhere");
    for (const char *name : {"8801-zun.rom", "8801-kiv.rom", "8801-4th.rom"})
        fs::rename(name, fs::path("elsewhere") / name);
    put_file("8801-kiv.rom", std::string(40000, 'x'));
    int asked = 0;
    script.ask = [&](const platform::question_box &box) {
        ++asked;
        EXPECT_EQ(box.text, "ROMイメージファイル読み込み失敗");
        EXPECT_NE(box.detail.find("8801-kiv.rom: 40000 bytes, more than 32768\n8801-zun.rom: No such file"),
                  std::string::npos)
            << box.detail;
        return 1;
    };
    script.choose_folder = [&](std::string &path) { // cancelled first: the box comes again
        path = folder / "elsewhere";
        return asked == 2;
    };
    host.set_script(script);
    run([] {});
    EXPECT_EQ(asked, 2);
    fs::remove("8801-kiv.rom");
    run([] {});
    EXPECT_EQ(asked, 2) << "the folder is remembered";
}

TEST_F(whole_program, SettingsThatCannotBeKeptAreUsed) {
    fs::create_directory("KIV.INI");
    script.ask = [](auto &) { return 1; };
    host.set_script(script);
    run([&] {
        at_settings([](auto &) { return true; });
        strike(vk_f7);
        EXPECT_EQ(window().state().notices.back(), "設定は保存されません");
    });
    EXPECT_EQ(host.dialogs().questions.at(0).text, "INIファイル読み込み失敗");
}

TEST_F(whole_program, AFailedStartSaysWhyAndLeavesTheHostAsItWas) {
    const auto remove = [](const char *name) { return [name] { fs::remove(name); }; };
    const auto make_folder = [](const char *name) {
        return [name] {
            fs::remove(name);
            fs::create_directory(name);
        };
    };
    const auto mode = [](const char *name, unsigned bits) {
        return [=] { fs::permissions(name, static_cast<fs::perms>(bits)); };
    };
    const auto fails = [this](fault f) { return [this, f] { host.faults.set(f); }; };
    const auto without = [](platform::resource_type type, uint16_t id) {
        return [type, id] { platform::register_resource(type, id, {}); };
    };
    constexpr char rom[] = "ROMイメージファイル読み込み失敗", ini[] = "INIファイル読み込み失敗";
    const struct {
        std::string what;
        std::function<void()> before;
        std::string box; // empty: none
        std::string log; // part of a line
        bool enters_loop = true;
    } cases[] = {
        {"no N-BASIC", remove("8801-kiv.rom"), rom, "8801-kiv.rom: No such file"},
        {"no expansion ROM", remove("8801-4th.rom"), rom, "8801-4th.rom: No such file"},
        {"too long", [] { put_file("8801-zun.rom", std::string(32769, 'x')); }, rom,
         "8801-zun.rom: 32769 bytes"},
        {"a folder", make_folder("8801-zun.rom"), rom, "8801-zun.rom: "},
        {"not to be read", mode("8801-zun.rom", 0), rom, "8801-zun.rom: Permission denied"},
        {"settings are a folder", make_folder("KIV.INI"), ini, "KIV.INI: "},
        {"settings not to be written",
         [] {
             put_file("KIV.INI", "[Default]\n");
             fs::permissions("KIV.INI", static_cast<fs::perms>(0444));
         },
         ini, "KIV.INI: Permission denied"},
        {"no settings to be made", mode(".", 0555), ini, "KIV.INI: Permission denied"},
        {"a folder that is gone",
         [] {
             fs::create_directory("gone");
             fs::current_path("gone");
             fs::remove(fs::current_path());
         },
         rom, "8801-kiv.rom: "},
        {"no font", without(platform::resource_type::font, font_resource_id), "FNTリソース読み込み失敗",
         "FNT 104"},
        {"no picture", without(platform::resource_type::bitmap, pause_resource_id), "BMPリソース読み込み失敗",
         "BITMAP 101"},
        {"no display", fails(fault::primary), "", "DirectX:  dd->CreateSurface(Primary) Failed"},
        {"no sound buffer", fails(fault::sound_stream), "", "ERROR DS:CreateSoundBuffer(2nd)失敗"},
        {"no window", fails(fault::create_window), "CreateWindowEx失敗", "ERROR CreateWindowEx失敗", false},
    };
    const auto font = platform::find_resource(platform::resource_type::font, font_resource_id);
    const auto picture = platform::find_resource(platform::resource_type::bitmap, pause_resource_id);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        folder.forget();
        const size_t boxes_before = host.dialogs().error_boxes.size();
        c.before();
        {
            const without_privileges now;
            EXPECT_EQ(run_program(host), 1);
        }
        expect_nothing_left();
        const auto boxes = host.dialogs().error_boxes;
        ASSERT_EQ(boxes.size() - boxes_before, c.box.empty() ? 0u : 1u);
        if (!c.box.empty()) {
            EXPECT_EQ(boxes.back().text, c.box);
            EXPECT_EQ(boxes.back().caption, "Zun - Velmora");
            EXPECT_FALSE(boxes.back().has_owner);
        }
        EXPECT_TRUE(folder.heard_line(c.log)) << c.log;
        EXPECT_EQ(folder.heard_line("DirectX初期化失敗"), c.box.empty());
        EXPECT_EQ(folder.heard_line("LEAVE message Loop"), c.enters_loop);
        EXPECT_EQ(first_missing(folder.heard(),
                                {"------------------ Kiv end ------------------", "ENTER ~z80_thread",
                                 "LEAVE ~z80_thread", "ENTER ~kiv_form", "LEAVE ~kiv_form"}),
                  "");
        platform::register_resource(platform::resource_type::font, font_resource_id, font);
        platform::register_resource(platform::resource_type::bitmap, pause_resource_id, picture);
        for (const auto f : {fault::primary, fault::sound_stream, fault::create_window})
            host.faults.set(f, 0);
        fs::current_path(folder.path);
        fs::permissions(".", fs::perms::all);
        for (const char *name : {"8801-zun.rom", "KIV.INI"}) fs::remove_all(name);
        write_test_roms(folder.path);
    }
}

// ---- the debugger ------------------------------------------------------------------------------------

TEST_F(whole_program, TheDebuggerStopsStepsGoesBackAndLetsGo) {
    using act = platform::debugger_action;
    constexpr uint8_t begins[] = {0xE5, 0x7A, 0xFE, 0x30}; // the routine for a key that went down
    const auto typed = static_cast<uint16_t>(
        std::search(std::begin(test_rom), std::end(test_rom), std::begin(begins), std::end(begins)) -
        std::begin(test_rom));
    run([&] {
        const auto item = [&](uint32_t id) {
            on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(id)) << id; });
            settle();
        };
        const auto debugger = [&](const std::function<void(platform::debugger_listener &)> &use) {
            on_window_thread([&] {
                platform::debugger_listener *const d = window().state().debugger;
                ASSERT_NE(d, nullptr);
                use(*d);
            });
        };
        const auto look = [&] {
            platform::debugger_look l;
            debugger([&](auto &d) {
                EXPECT_TRUE(d.debugger_looks({.listing_rows = 20, .stack = true, .points = true}, l));
            });
            return l;
        };
        const auto do_and_stop = [&](const std::function<void()> &what) {
            const int stops = window().state().debugger_stops;
            what();
            wait_until("a stop", [&] { return window().state().debugger_stops == stops + 1; });
            expect_parked(true);
            return look();
        };
        const auto step = [&](act a) {
            return do_and_stop([&] { debugger([&](auto &d) { d.debugger_acts(a, 0); }); });
        };
        const auto acts = [&](act a) { debugger([&](auto &d) { d.debugger_acts(a, 0); }); };
        const auto said = [&](const std::string &line) {
            std::string all;
            debugger([&](auto &d) {
                d.debugger_lines();
                if (!line.empty()) d.debugger_command(line);
                for (const std::string &l : d.debugger_lines()) all += l + "\n";
            });
            return all;
        };
        type('Z', "z");
        item(menu_debugger);
        EXPECT_TRUE(look().running);
        wait_until_running();
        expect_parked(false);
        debugger([&](auto &d) {
            d.debugger_toggles_point(typed);
            EXPECT_NE(d.debugger_adds_point("nowhere"), "");
        });

        platform::debugger_look l = do_and_stop([&] { window().press_key('A'); });
        EXPECT_EQ(l.pc, typed);
        EXPECT_EQ(l.why, "breakpoint (1)");
        EXPECT_FALSE(l.running);
        EXPECT_EQ(screen_row(1), "z");
        ASSERT_EQ(l.points.size(), 1u);
        EXPECT_EQ(l.points[0].hits, 1u);
        const auto here = std::find_if(l.listing.begin(), l.listing.end(),
                                       [&](const auto &line) { return line.address == typed; });
        ASSERT_NE(here, l.listing.end());
        EXPECT_EQ(here->text, "PUSH HL");
        EXPECT_EQ(here->point, platform::debugger_line::point_on);
        EXPECT_NE(here, l.listing.begin()) << "what leads there is shown, too";
        const uint16_t behind = l.stack[0].value;
        EXPECT_NE(l.stack[0].text, "") << "a return address";

        l = step(act::into);
        EXPECT_EQ(l.pc, typed + 1);
        EXPECT_EQ(l.stack[1].value, behind);
        l = step(act::out);
        EXPECT_EQ(l.pc, behind);
        EXPECT_EQ(screen_row(1), "za");
        window().release_key('A');

        acts(act::back_over); // undone
        EXPECT_EQ(look().pc, behind - 3);
        EXPECT_EQ(screen_row(1), "z");
        EXPECT_EQ(step(act::go_or_stop).pc, typed);
        debugger([&](auto &d) { // the letter that is shown
            EXPECT_EQ(d.debugger_sets_register(1, 0x1200), "");
            EXPECT_EQ(d.debugger_writes(0, 0xE010 + 11, 0xFF), "");
        });
        EXPECT_EQ(step(act::out).pc, behind);
        EXPECT_EQ(screen_row(1), "zb");
        EXPECT_NE(said("regs").find("PC="), std::string::npos);
        EXPECT_NE(said("back-go").find("breakpoint (1)"), std::string::npos);
        EXPECT_EQ(look().pc, typed);
        EXPECT_EQ(screen_row(1), "z");

        // What is done otherwise while it stands leaves it standing, and ends the past where it must.
        item(menu_state_save + 5);
        strike(vk_f12);
        expect_parked(true);
        EXPECT_EQ(look().pc, 0);
        EXPECT_EQ(step(act::frame).running, false);
        item(menu_state_load + 5);
        EXPECT_EQ(look().pc, typed);
        acts(act::back_into);
        EXPECT_EQ(look().why, "the history begins here");
        EXPECT_EQ(look().pc, typed);
        const uint64_t frames = run_state.frames;
        EXPECT_TRUE(do_and_stop([&] { item(menu_frame_forth); }).why.empty());
        EXPECT_EQ(run_state.frames, frames + 1);
        item(menu_frame_back);
        item(menu_pause); // goes on
        wait_until_running();
        expect_parked(false);
        item(menu_pause);
        expect_parked(true);
        EXPECT_FALSE(look().running);

        // A dialog in front of which the machine stops; the stop is told behind it.
        debugger([&](auto &d) { d.debugger_acts(act::go_or_stop, 0); });
        script.settings = [&](auto &) {
            window().press_key('C');
            return false;
        };
        host.set_script(script);
        EXPECT_EQ(do_and_stop([&] { strike(vk_f7); }).pc, typed);

        // Closed, the machine goes on, over what was a breakpoint.
        debugger([](auto &d) { d.debugger_closed("there"); });
        settle();
        EXPECT_EQ(window().state().debugger, nullptr);
        window().release_key('C');
        wait_until_running();
        expect_parked(false);
        wait_for_row(1, "zbc");
        type('D', "zbcd");

        // A processor that has stopped is a stop like another, and can be taken back.
        item(menu_debugger);
        EXPECT_EQ(do_and_stop([&] { window().press_key('0'); }).why, "the processor has stopped: HALT");
        window().release_key('0');
        acts(act::back_into);
        EXPECT_EQ(look().why, "");
        acts(act::back_out);
        acts(act::go_or_stop);
        // and the end of the program closes the debugger
    });
    EXPECT_NE(platform::profile_string(folder / "config/kiv/kiv.ini", "Kiv", "debugger"), "");
}

} // namespace
