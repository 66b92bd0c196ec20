// The whole program on the host in memory, used as a person uses it: keys, dialogs, files, the log.
#include "app/program.h"

#include "app/kiv_assay.h"
#include "app/kiv_form.h"
#include "app/kiv_help.h"
#include "app/settings_file.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "platform/headless/headless_host.h"
#include "platform/instance_lock.h"
#include "platform/resources.h"
#include "resources/resources.h"
#include "tests/common/whole_program.h"

#include <chrono>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using platform::fault;

constexpr uint32_t vk_shift = 0x10, vk_end = 0x23, vk_left = 0x25;
constexpr uint32_t vk_f6 = 0x75, vk_f7 = 0x76, vk_f8 = 0x77, vk_f9 = 0x78, vk_f11 = 0x7A, vk_f12 = 0x7B;

// ---- the log -----------------------------------------------------------------------------------------

std::mutex log_mutex;
std::vector<std::string> log_lines;

void hear(const char *line) {
    const std::lock_guard lock(log_mutex);
    log_lines.emplace_back(line);
}

std::vector<std::string> heard() {
    const std::lock_guard lock(log_mutex);
    return log_lines;
}

bool heard_line(const std::string &part) {
    const std::vector<std::string> lines = heard();
    return std::any_of(lines.begin(), lines.end(),
                       [&](auto &l) { return l.find(part) != std::string::npos; });
}

// ---- the person --------------------------------------------------------------------------------------

struct gave_up {};

class whole_program : public testing::Test {
  protected:
    whole_program() : came_from(fs::current_path()) {
        write_test_roms(folder.path);
        fs::create_directory(folder / "run");
        fs::permissions(folder / "run", fs::perms::owner_all);
        setenv("XDG_RUNTIME_DIR", (folder / "run").c_str(), 1); // the instance lock of this test alone
        fs::current_path(folder.path);
        register_program_resources();
        log_lines.clear();
        set_trace_listener(hear);
        std::fill(std::begin(machine.ram), std::end(machine.ram), uint8_t{0}); // another test's screen
    }
    ~whole_program() override {
        set_trace_listener(nullptr);
        fs::current_path(came_from);
    }

    // Runs the program on this thread while another one does what the person does, who closes it at last.
    int run(const std::function<void()> &person) {
        std::thread other([&] {
            try {
                wait_until("the window", [&] { return host.window() != nullptr; });
                wait_until("the first frame", [&] { return host.screen.shown().number != 0; });
                person();
                window().strike_key(vk_end);
            } catch (const gave_up &) {
                if (host.window() != nullptr) window().close_box();
            }
        });
        const int code = run_program(host);
        other.join();
        EXPECT_EQ(host.timer_resolutions(), 0);
        EXPECT_FALSE(host.has_begun());
        EXPECT_EQ(program.form, nullptr);
        return code;
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
        for (int i = 0; i < 4000 && screen_row(row) != text; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        if (screen_row(row) == text) return;
        ADD_FAILURE() << "row " << row << ": got " << screen_row(row) << ", expected " << text
                      << "; the CPU at " << std::hex << main_cpu.PC
                      << (program.cpu_thread->is_suspended() ? ", parked" : "");
        throw gave_up{};
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
        platform::headless_script script;
        script.open_file = script.save_file = [path](auto &, std::string &chosen) {
            chosen = path;
            return true;
        };
        host.set_script(script);
    }

    platform::headless_host host;
    temporary_folder folder;
    fs::path came_from;
};

// ---- from start to end -------------------------------------------------------------------------------

TEST_F(whole_program, OneDayWithEveryCommand) {
    const auto frames_go_on = [this] {
        const uint64_t shown = host.screen.shown().number;
        EXPECT_TRUE(host.screen.wait_for_frame(shown + 3, 5000)) << "frames after " << shown;
    };
    std::string settings_text;
    const int code = run([&] {
        wait_for_row(0, "READY");
        EXPECT_EQ(window().state().title, "Zun - Velmora [2.0.9]");
        EXPECT_FALSE(window().state().input_method);
        frames_go_on();

        // A key held down repeats in the host, and is one press for the machine.
        window().press_key('A');
        window().press_key('A');
        window().press_key('A');
        wait_for_row(1, "a");
        window().release_key('A');
        window().press_key(vk_shift);
        type('B', "aB");
        window().release_key(vk_shift);

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

        EXPECT_EQ(machine.pcg_glyphs_on, 0);
        strike(vk_f11);
        EXPECT_EQ(machine.pcg_glyphs_on, 1);
        strike(vk_f11);
        EXPECT_EQ(machine.pcg_glyphs_on, 0);

        strike(vk_f8);
        EXPECT_EQ(program.directx->isSoundOff(), 1u);

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

        for (int i = 0; i < 3; ++i) {
            strike_with_shift(vk_f12);
            EXPECT_EQ(host.screen.current_mode().width, i % 2 == 0 ? 640 : 0);
            EXPECT_EQ(window().state().cursor_count < 0, i % 2 == 0) << "the cursor";
            frames_go_on();
        }
        strike_with_shift(vk_f12);
        const platform::window_state state = window().state();
        EXPECT_TRUE(state.framed);
        EXPECT_EQ(state.width, 640);
        EXPECT_EQ(state.height, 400);
        EXPECT_FALSE(state.default_menu_items);
        EXPECT_EQ(state.menu,
                  (std::vector<std::pair<uint32_t, std::string>>{{2, "Kivについて"}, {1, "Kivの設定"}}));

        EXPECT_TRUE(window().choose_menu_item(menu_about));
        settle();
        EXPECT_TRUE(window().choose_menu_item(menu_settings)); // and cancelled
        settle();
        settings_text = get_file(folder / "KIV.INI");
        EXPECT_TRUE(host.sound.is_playing());
        frames_go_on();
        type('E', "e");
    });
    EXPECT_EQ(code, 0);
    EXPECT_FALSE(host.screen.is_open());
    EXPECT_FALSE(host.sound.is_open());
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
    EXPECT_EQ(dialogs.helps[0].caption, "Kivについて");
    EXPECT_EQ(dialogs.helps[0].text, help_text);
    ASSERT_EQ(dialogs.settings.size(), 1u);
    EXPECT_EQ(dialogs.settings[0].caption, "Kiv機能設定");

    EXPECT_EQ(first_missing(heard(), log_of_a_day), "");
}

// ---- settings ----------------------------------------------------------------------------------------

TEST_F(whole_program, SettingsAreAppliedAndWritten) {
    platform::settings_dialog shown_again;
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  platform::headless_script script;
                  script.settings = [](platform::settings_dialog &d) {
                      const int values[] = {50, 7, -30, 9};
                      for (size_t i = 0; i < d.sliders.size(); ++i) d.sliders[i].value = values[i];
                      for (auto &check : d.checks) check.checked = !check.checked;
                      return true;
                  };
                  host.set_script(script);
                  strike(vk_f7);
                  EXPECT_EQ(host.sound.volume(), -3000);
                  on_window_thread([] {
                      EXPECT_EQ(machine.dma_load, 50u);
                      EXPECT_EQ(machine.crt_standard, 1u);
                      EXPECT_EQ(machine.interlace, 1u);
                  });
                  EXPECT_EQ(program.cpu_thread->get_no_wait(), 1u);
                  EXPECT_EQ(machine.boot_rom, 0);
                  // The arrow keys are cursor keys now.
                  window().press_key(vk_left);
                  wait_until("the cursor key", [] { return machine.key_matrix[10] == 0xFB; });
                  window().release_key(vk_left);
                  script.settings = [&](platform::settings_dialog &d) {
                      shown_again = d;
                      d.sliders[0].value = 1;
                      return false;
                  };
                  host.set_script(script);
                  strike(vk_f7);
              }),
              0);
    const setting_values expected = {1, 7, -30, 9, 1, 50, 1, 0, 1, 1, 1, 0, 0};
    EXPECT_EQ(read_settings_file(folder / "KIV.INI"), expected) << get_file(folder / "KIV.INI");
    ASSERT_EQ(shown_again.sliders.size(), 4u);
    EXPECT_EQ(shown_again.sliders[2].value, -30);
    EXPECT_EQ(shown_again.sliders[3].value, 9);
    ASSERT_EQ(shown_again.checks.size(), 8u);
    const bool checked[] = {false, true, true, true, true, true, true, false};
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(shown_again.checks[i].checked, checked[i]) << shown_again.checks[i].label;
}

TEST_F(whole_program, AnOkWithoutChangesLeavesEveryVolume) {
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  int wanted = 0;
                  bool change = true;
                  platform::headless_script script;
                  script.settings = [&](platform::settings_dialog &d) {
                      if (change) d.sliders[2].value = wanted;
                      return true;
                  };
                  host.set_script(script);
                  for (wanted = 0; wanted >= -100; --wanted)
                      for (const bool now : {true, false}) {
                          change = now;
                          strike(vk_f7);
                          EXPECT_EQ(host.sound.volume(), wanted * 100);
                          EXPECT_EQ(read_settings_file(folder / "KIV.INI")[setting_hard_volume], wanted);
                      }
              }),
              0);
}

// Values far outside the dialog's ranges are kept, shown, and used without harm; an OK brings the sliders'
// ends.
TEST_F(whole_program, StrangeSettingsDoNoHarm) {
    const std::string text =
        "[Default]\nsoft_volume=33\nhard_volume=-2147483648\ndma_gain=500\ndma_load=2147483647\n";
    put_file(folder / "KIV.INI", text);
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  window().press_key('8'); // the beeper
                  EXPECT_TRUE(host.screen.wait_for_frame(host.screen.shown().number + 5, 5000));
                  strike(vk_f7); // cancelled
                  EXPECT_EQ(get_file(folder / "KIV.INI"), text);
                  platform::headless_script script;
                  script.settings = [](auto &) { return true; };
                  host.set_script(script);
                  strike(vk_f7);
              }),
              0);
    const auto shown = host.dialogs().settings.at(0).sliders;
    EXPECT_EQ(shown[0].value, 2147483647);
    EXPECT_EQ(shown[1].value, 500);
    const setting_values written = read_settings_file(folder / "KIV.INI");
    EXPECT_EQ(written[setting_dma_load], 100);
    EXPECT_EQ(written[setting_dma_gain], 40);
    EXPECT_EQ(written[setting_hard_volume], -100);
}

// ---- dialogs and painting ----------------------------------------------------------------------------

class counting_painter : public platform::painter {
  public:
    void fill(const platform::rectangle &, uint32_t) override { ++fills; }
    void draw(const platform::picture &image, int x, int y) override {
        EXPECT_EQ(image.width, 128);
        EXPECT_EQ(image.height, 128);
        places.emplace_back(x, y);
    }
    int fills = 0;
    std::vector<std::pair<int, int>> places;
};

TEST_F(whole_program, ThePausePictureTilesTheWindowBehindADialog) {
    counting_painter counter;
    platform::rgb_picture behind;
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  platform::headless_script script;
                  script.open_file = [&](auto &, std::string &) {
                      EXPECT_EQ(program.cpu_thread->is_suspended(), 1u);
                      EXPECT_FALSE(host.sound.is_playing());
                      behind = window().painted();
                      window().resize_client(641, 400);
                      program.form->draw_pause_picture(counter);
                      window().resize_client(640, 400);
                      return false;
                  };
                  host.set_script(script);
                  strike(vk_f9);
                  wait_until_running();
                  EXPECT_TRUE(host.sound.is_playing());
                  on_window_thread(
                      [] { EXPECT_EQ(machine.cassette_flags & cassette_stopped, cassette_stopped); });
              }),
              0);
    ASSERT_EQ(counter.places.size(), 6u * 4u);
    EXPECT_EQ(counter.places[1], std::make_pair(128, 0));
    EXPECT_EQ(counter.places.back(), std::make_pair(640, 384));
    ASSERT_EQ(behind.width, 640);
    size_t colours = 0;
    for (int y = 0; y < behind.height; ++y)
        for (int x = 0; x < behind.width; ++x) {
            ASSERT_EQ(behind.at(x, y), behind.at(x % 128, y % 128)) << x << "," << y;
            colours += behind.at(x, y) != behind.at(0, 0);
        }
    EXPECT_GT(colours, 1000u) << "a picture, not one colour";
}

TEST_F(whole_program, PathsThatCannotBeTakenLoseNothing) {
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  choose("/" + std::string(511, 'x'));
                  strike(vk_f6);
                  strike(vk_f9);
                  strike_with_shift(vk_f9);
                  EXPECT_EQ(host.dialogs().error_boxes.size(), 3u);

                  put_file(folder / "old.KIV", "old");
                  fs::create_directory(folder / "dir.KIV");
                  choose(folder / "dir.KIV/none/new.KIV");
                  strike(vk_f6);
                  choose(folder / "dir.KIV");
                  strike(vk_f6);
                  strike(vk_f9);
                  choose(folder / "old.KIV"); // too short for a dump
                  strike(vk_f9);
                  EXPECT_EQ(get_file(folder / "old.KIV"), "old");
                  choose(folder / "dir.KIV/tape.cmt"); // a dump by the folder's name
                  put_file(folder / "dir.KIV/tape.cmt", std::string(32576, '\x20'));
                  strike(vk_f9);
                  on_window_thread([] { EXPECT_EQ(machine.tape_image, nullptr); });
                  EXPECT_EQ(host.dialogs().error_boxes.size(), 3u) << "these failures are in the log only";
              }),
              0);
    EXPECT_EQ(host.dialogs().error_boxes[0].text, "パス名が長すぎます");
    EXPECT_TRUE(heard_line("dir.KIV/none/new.KIV"));
    EXPECT_TRUE(heard_line("fewer than 32576"));
}

// ---- activation, stops -------------------------------------------------------------------------------

TEST_F(whole_program, FullScreenPausesWhileInactiveAWindowDoesNot) {
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  window().activate(false);
                  settle();
                  EXPECT_EQ(program.cpu_thread->is_suspended(), 0u);
                  window().activate(true);
                  type('A', "a");

                  strike_with_shift(vk_f12);
                  EXPECT_LT(window().state().cursor_count, 0);
                  window().activate(false);
                  settle();
                  EXPECT_EQ(program.cpu_thread->is_suspended(), 1u);
                  EXPECT_FALSE(host.sound.is_playing());
                  EXPECT_GE(window().state().cursor_count, 0);
                  strike(vk_f12); // no reset now
                  EXPECT_EQ(screen_row(1), "a");
                  EXPECT_EQ(program.cpu_thread->is_suspended(), 1u);
                  window().press_key('B'); // held while the application comes back: released
                  window().activate(true);
                  settle();
                  wait_until_running();
                  EXPECT_EQ(machine.key_matrix[2], 0xFF);
                  EXPECT_LT(window().state().cursor_count, 0);
                  EXPECT_TRUE(host.sound.is_playing());
                  type('C', "ac");
              }),
              0);
    EXPECT_TRUE(heard_line("OnAppActivate: Activate without Surface"));
}

struct stop_case {
    char key;
    const char *text;
};
class stopped_processor : public whole_program, public testing::WithParamInterface<stop_case> {};
INSTANTIATE_TEST_SUITE_P(reasons, stopped_processor,
                         testing::Values(stop_case{'0', "$00CD にて HALT命令を検出につき終了。"},
                                         stop_case{'1', "$00CE にて未定義命令を検出につき終了。"}));

TEST_P(stopped_processor, EndsTheProgramWithItsMessage) {
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  window().press_key(static_cast<uint32_t>(GetParam().key));
                  wait_until("the message", [&] { return !host.dialogs().error_boxes.empty(); });
              }),
              0);
    const auto boxes = host.dialogs().error_boxes;
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].text, GetParam().text);
    EXPECT_EQ(boxes[0].caption, "Kivex");
    EXPECT_TRUE(boxes[0].has_owner);
    EXPECT_TRUE(heard_line(GetParam().text));
}

TEST_F(whole_program, AScreenChangeThatFailsEndsTheEmulationAndKeepsTheWindow) {
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  host.faults.set(fault::display_mode);
                  strike_with_shift(vk_f12);
                  EXPECT_FALSE(program.cpu_thread->is_running());
                  EXPECT_FALSE(window().state().gone);
                  // Nothing to pause: no dialog, no reset.
                  strike(vk_f6);
                  strike(vk_f7);
                  strike(vk_f9);
                  strike(vk_f12);
              }),
              0);
    const platform::dialog_record dialogs = host.dialogs();
    EXPECT_TRUE(dialogs.save_files.empty() && dialogs.open_files.empty() && dialogs.settings.empty());
    EXPECT_TRUE(heard_line("change_screen: exit by failed"));
}

TEST_F(whole_program, TheSessionMayEnd) {
    EXPECT_EQ(run([&] {
                  wait_for_row(0, "READY");
                  choose(folder / "out.cmt");
                  strike_with_shift(vk_f9);
                  window().press_key('9');
                  wait_until("the tape output", [&] { return get_file(folder / "out.cmt") == "HI"; });
                  window().end_session();
                  settle();
                  EXPECT_EQ(window().end_session_answer, 1);
                  EXPECT_FALSE(program.cpu_thread->is_running());
              }),
              0);
    EXPECT_EQ(
        first_missing(heard(), {"WM_QUERYENDSESSION", "exit: try stop z80 thread", "exit: terminating Kiv",
                                "WM_CLOSE", "exit: try stop z80 thread", "WM_DESTROY"}),
        "");
}

// ---- starts that fail --------------------------------------------------------------------------------

TEST_F(whole_program, ASecondCopyEndsAtOnce) {
    platform::instance_lock first;
    ASSERT_EQ(first.acquire("ZunMultiBootChecker"), platform::instance_lock::result::acquired);
    EXPECT_EQ(run_program(host), 1);
    EXPECT_EQ(heard(), std::vector<std::string>{"Zun 多重起動検知"});
    EXPECT_EQ(host.window(), nullptr);
}

TEST_F(whole_program, AFailedStartSaysWhyAndLeavesTheHostAsItWas) {
    const auto remove = [](const char *name) { return [name] { fs::remove(name); }; };
    const auto make_folder = [](const char *name) {
        return [name] {
            fs::remove(name);
            fs::create_directory(name);
        };
    };
    const auto fails = [this](fault f) { return [this, f] { host.faults.set(f); }; };
    const auto without = [](platform::resource_type type, uint16_t id) {
        return [type, id] { platform::register_resource(type, id, {}); };
    };
    constexpr char rom[] = "ROMイメージファイル読み込み失敗", ini[] = "INIファイル読み込み失敗";
    const struct {
        std::string what;
        std::function<void()> before;
        std::string box;              // empty: none
        std::vector<std::string> log; // each is part of a line
        bool enters_loop = true;
    } cases[] = {
        {"no N-BASIC", remove("8801-kiv.rom"), rom, {"8801-kiv.rom: No such file"}},
        {"no expansion ROM", remove("8801-4th.rom"), rom, {"8801-4th.rom: No such file"}},
        {"32769 bytes",
         [] { put_file("8801-zun.rom", std::string(32769, 'x')); },
         rom,
         {"8801-zun.rom: 32769 bytes"}},
        {"a folder", make_folder("8801-zun.rom"), rom, {"8801-zun.rom: "}},
        {"settings are a folder", make_folder("KIV.INI"), ini, {"KIV.INI: "}},
        {"no font",
         without(platform::resource_type::font, font_resource_id),
         "FNTリソース読み込み失敗",
         {"FNT 104"}},
        {"no picture",
         without(platform::resource_type::bitmap, pause_resource_id),
         "BMPリソース読み込み失敗",
         {"BITMAP 101"}},
        {"no display",
         fails(fault::display_open),
         "",
         {"DirectX: DirectDrawCreate Failed", "DirectX初期化失敗"}},
        {"no sound buffer",
         fails(fault::sound_stream),
         "",
         {"ERROR DS:CreateSoundBuffer(2nd)失敗", "DirectX初期化失敗"}},
        {"no start", fails(fault::begin), "CoInitialize失敗", {"ERROR CoInitialize失敗"}, false},
        {"no class",
         fails(fault::register_class),
         "RegisterClassEx失敗",
         {"ERROR RegisterClassEx失敗"},
         false},
        {"no window", fails(fault::create_window), "CreateWindowEx失敗", {"ERROR CreateWindowEx失敗"}, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const auto font = platform::find_resource(platform::resource_type::font, font_resource_id);
        const auto picture = platform::find_resource(platform::resource_type::bitmap, pause_resource_id);
        log_lines.clear();
        const size_t boxes_before = host.dialogs().error_boxes.size();
        c.before();
        EXPECT_EQ(run_program(host), 1);
        EXPECT_EQ(host.timer_resolutions(), 0);
        EXPECT_FALSE(host.has_begun());
        EXPECT_FALSE(host.screen.is_open());
        EXPECT_FALSE(host.sound.is_open());
        const auto boxes = host.dialogs().error_boxes;
        ASSERT_EQ(boxes.size() - boxes_before, c.box.empty() ? 0u : 1u);
        if (!c.box.empty()) {
            EXPECT_EQ(boxes.back().text, c.box);
            EXPECT_EQ(boxes.back().caption, "Zun - Velmora");
            EXPECT_FALSE(boxes.back().has_owner);
        }
        for (const std::string &part : c.log) EXPECT_TRUE(heard_line(part)) << part;
        EXPECT_EQ(heard_line("LEAVE message Loop"), c.enters_loop);
        EXPECT_EQ(
            first_missing(heard(), {"------------------ Kiv end ------------------", "ENTER ~z80_thread",
                                    "LEAVE ~z80_thread", "ENTER ~kiv_form", "LEAVE ~kiv_form"}),
            "");
        platform::register_resource(platform::resource_type::font, font_resource_id, font);
        platform::register_resource(platform::resource_type::bitmap, pause_resource_id, picture);
        for (const auto f : {fault::display_open, fault::sound_stream, fault::begin, fault::register_class,
                             fault::create_window})
            host.faults.set(f, 0);
        for (const char *name : {"8801-zun.rom", "KIV.INI"}) fs::remove_all(name);
        write_test_roms(folder.path);
    }
}

TEST_F(whole_program, ADeletedFolderIsAFailedStart) {
    const std::string gone = folder / "gone";
    fs::create_directory(gone);
    fs::current_path(gone);
    fs::remove(gone);
    EXPECT_EQ(run_program(host), 1);
    fs::current_path(folder.path);
    ASSERT_EQ(host.dialogs().error_boxes.size(), 1u);
    EXPECT_TRUE(heard_line("8801-kiv.rom: "));
}

} // namespace
