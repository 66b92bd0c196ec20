// The whole program, from its start to its end.
#include "tests/app/program_fixture.h"

namespace {

// ---- from start to end -------------------------------------------------------------------------------

TEST_F(WholeProgram, OneDayWithEveryCommand) {
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

        for (const char *name :
             {"none/out.cmt", "out.cmt"}) { // a folder that is not there, and the current one
            choose(folder / name);
            strike_with_shift(vk_f9);
            window().press_key('9');
            wait_until("the tape output", [&] {
                return name[0] == 'o'
                           ? get_file(folder / name) == "HI"
                           : window().state().notices.back().find("none/out.cmt: ") != std::string::npos;
            });
            window().release_key('9');
        }

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
    ASSERT_EQ(dialogs.save_files.size(), 3u);
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
TEST_F(WholeProgram, SettingsAreShownAppliedAndWritten) {
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

TEST_F(WholeProgram, AnOkWithoutChangesLeavesEveryVolume) {
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

TEST_F(WholeProgram, ThePausePictureTilesTheWindowBehindADialog) {
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

TEST_F(WholeProgram, PathsThatCannotBeTakenLoseNothing) {
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
        setenv("XDG_DATA_HOME", "/sys/nothing", 1); // where nobody makes a folder
        on_window_thread([&] { EXPECT_TRUE(window().choose_menu_item(menu_state_quick_save)); });
        settle();
        const std::string why = window().state().notices.back();
        EXPECT_EQ(why.find("/sys/nothing/kiv/states/slot-1.kst: "), 0u) << why;
        EXPECT_EQ(why.find("No such file"), std::string::npos) << why << ": that is the point of saving";
        fs::remove(folder / "KIV.INI"); // and now cannot be written
        fs::create_directory(folder / "KIV.INI");
        at_settings([](auto &) { return true; });
        strike(vk_f7);
        fs::remove(folder / "KIV.INI");
    });
    EXPECT_EQ(host.dialogs().error_boxes[0].text, "パス名が長すぎます");
    const auto notices = window().state().notices;
    for (const char *file :
         {"dir.KIV/none/new.KIV: ", "dir.KIV: ", "old.KIV: 3 バイト: 最低 32576", "KIV.INI: "})
        EXPECT_TRUE(std::any_of(notices.begin(), notices.end(), [&](auto &n) {
            return n.find(file) != std::string::npos;
        })) << file;
    EXPECT_TRUE(folder.heard_line("dir.KIV/none/new.KIV"));
    EXPECT_TRUE(folder.heard_line("最低 32576"));
}

TEST_F(WholeProgram, ACommandThatFailsInItsDialogLeavesTheMachineRunning) {
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

// ---- activation, stops -------------------------------------------------------------------------------

TEST_F(WholeProgram, FullScreenPausesWhileInactiveAWindowDoesNot) {
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

TEST_F(WholeProgram, AStoppedProcessorEndsTheProgramWithItsMessage) {
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

TEST_F(WholeProgram, AScreenChangeThatFailsEndsTheEmulationAndKeepsTheWindow) {
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

TEST_F(WholeProgram, ALogLineIsCutToItsBuffer) {
    trace("%s.", std::string(2000, 'x').c_str());
    EXPECT_EQ(folder.heard(), std::vector{std::string(1023, 'x')});
}

TEST_F(WholeProgram, TheSessionMayEnd) {
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

TEST_F(WholeProgram, ALogOffUnderTheSettingsStoresTheRightVolume) {
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

TEST_F(WholeProgram, ASecondCopyEndsAtOnce) {
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

TEST_F(WholeProgram, TheFirstCopyComesToTheFront) {
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

TEST_F(WholeProgram, MissingImagesAreFoundInAnotherFolderAndRememberedThere) {
    fs::create_directory("elsewhere");
    for (const char *name : {"8801-zun.rom", "8801-kiv.rom", "8801-4th.rom"})
        fs::rename(name, fs::path("elsewhere") / name);
    put_file("8801-kiv.rom", std::string(40000, 'x'));
    int asked = 0;
    script.ask = [&](const platform::question_box &box) {
        ++asked;
        EXPECT_EQ(box.text, "ROMイメージファイル読み込み失敗");
        EXPECT_NE(box.detail.find("8801-kiv.rom: 40000 バイト: 上限は 32768\n8801-zun.rom: No such file"),
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

TEST_F(WholeProgram, SettingsThatCannotBeKeptAreUsed) {
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

TEST_F(WholeProgram, AFailedStartSaysWhyAndLeavesTheHostAsItWas) {
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

} // namespace
