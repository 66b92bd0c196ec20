// The whole program on the host in memory, used as a person uses it: keys, dialogs, files, the log.
#pragma once

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

namespace fs = std::filesystem;
using platform::fault;

struct gave_up {};

class WholeProgram : public testing::Test {
  protected:
    // Runs the program on this thread to a normal end; another one does what the person does once the machine
    // has booted, and closes it at last.
    void run(const std::function<void()> &person, const std::string &greeting = "READY") {
        std::fill(std::begin(machine.ram), std::end(machine.ram), uint8_t{0}); // READY of an earlier run
        const uint64_t frames_before = host.screen.shown().number;
        std::thread other([&] {
            try {
                wait_until("the window", [&] { return host.window() != nullptr; });
                wait_until("the first frame", [&] { return host.screen.shown().number != frames_before; });
                wait_until(greeting, [&] { return memory().find(greeting) != std::string::npos; });
                person();
                window().strike_key(vk_end);
            } catch (const gave_up &) {
                if (host.window() != nullptr) window().close_box();
            }
        });
        EXPECT_EQ(run_program(host, options), 0);
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

    // An item of a menu has done its work. False: it is not offered.
    bool choose_item(uint32_t id) {
        bool offered = false;
        on_window_thread([&] { offered = window().choose_menu_item(id); });
        settle();
        return offered;
    }
    void use_item(uint32_t id) { EXPECT_TRUE(choose_item(id)) << id; }

    platform::headless_window &window() { return *host.window(); }

    static std::string memory() {
        std::string all;
        for (const uint8_t &byte : machine.ram)
            all += static_cast<char>(__atomic_load_n(&byte, __ATOMIC_RELAXED));
        return all;
    }
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

    program_options options;
    platform::headless_script script;
    platform::headless_host host;
    program_folder folder;
};
