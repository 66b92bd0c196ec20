// Recordings, speeds, frames back and forth, states.
#include "tests/app/program_fixture.h"

namespace {

// What ffmpeg would get, what it says when it fails, and what is said when there is none.
TEST_F(WholeProgram, RecordingsHoldEveryPictureAndSample) {
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
    const auto wait_for_notice = [&](const std::string &part) {
        wait_until(part, [&] { return last_notice().find(part) != std::string::npos; });
    };
    run([&] {
        setenv("PATH", (tools + ":" + path_before).c_str(), 1);
        use_item(menu_record_video);
        std::this_thread::sleep_for(std::chrono::milliseconds(700));
        use_item(menu_record_video);
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
        use_item(menu_record_video);
        use_item(menu_record_video);
        wait_for_notice("ffmpeg: No space left");
        setenv("PATH", "/nowhere", 1);
        use_item(menu_record_video);
        EXPECT_NE(last_notice().find("Debian"), std::string::npos) << last_notice();
        setenv("PATH", path_before.c_str(), 1);
        use_item(menu_speed + 7); // heard four times as high, recorded as it is
        use_item(menu_record_sound);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        use_item(menu_record_sound);
        wait_for_notice(".wav に保存しました");
        for (const auto &file : fs::directory_iterator(folder / "music")) {
            const std::string wave = get_file(file.path());
            EXPECT_EQ(wave.substr(0, 4) + wave.substr(36, 4), "RIFFdata");
            EXPECT_EQ((wave.size() - 44) % slice_bytes, 0u);
            EXPECT_GT(wave.size(), 44u + 5 * slice_bytes);
        }
    });
}

TEST_F(WholeProgram, TimeGoesBackwardsByFramesAndAtOtherSpeeds) {
    run([&] {
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

        // Back over a change of tapes: what lay in the deck then lies in it again, under its name.
        for (const char *name : {"one.cmt", "other.cmt"}) {
            put_file(folder / name, std::string(name) + name);
            choose(folder / name);
            strike(vk_f9);
            EXPECT_TRUE(has_frames(2));
        }
        EXPECT_TRUE(choose_item(menu_tape_eject));
        for (const uint32_t size : {18u, 14u}) {
            for (int i = 0; i < 500 && machine.tape_size != size; ++i)
                EXPECT_TRUE(choose_item(menu_frame_back));
            EXPECT_EQ(machine.tape_size, size);
            on_window_thread([&] {
                const std::string tape = program.form->menus().at(4).items.at(0).text;
                EXPECT_EQ(tape.starts_with(size == 14 ? "one.cmt" : "other.cmt"), true) << tape;
            });
        }
        EXPECT_EQ(std::string(reinterpret_cast<char *>(machine.tape_image), 14), "one.cmtone.cmt");
        EXPECT_TRUE(choose_item(menu_pause));
        wait_until_running();

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

// What a person types, with the picture ahead, and without; recordings and the machine do not know of it.
TEST_F(WholeProgram, ThePictureRunsAhead) {
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

TEST_F(WholeProgram, StatesGoBackAndForth) {
    run([&] {
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

} // namespace
