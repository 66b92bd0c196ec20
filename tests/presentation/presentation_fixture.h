// kiv_directx on the headless host, with a machine whose screen is white all over.
#pragma once

#include "app/kiv_assay.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "support/main_window.h"
#include "tests/headless/headless_host.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

using strings = std::vector<std::string>;

class presentation_test : public testing::Test, public main_window, public platform::window_listener {
  protected:
    presentation_test() : directx(new kiv_directx(host)) {
        host.create_window({"", 0, 0, 640, 400}, *this);
        the_main_window = this;
        machine_init(
            machine, [] { before_each_row(); }, [] {});
        machine.crtc_status = 0;
        machine.crtc_mono = 1;
        machine.crtc_reverse = 1;
        machine.cursor_enabled = 0;
        machine.select_attr_decoder(1);
        lines().clear();
        set_trace_listener([](const char *line) {
            static std::mutex mutex;
            const std::lock_guard lock(mutex);
            lines().emplace_back(line);
        });
    }
    ~presentation_test() override {
        for (const std::string &line : lines()) EXPECT_EQ(line.find("by force"), std::string::npos) << line;
        directx.reset();
        the_main_window = nullptr;
        set_trace_listener(nullptr);
        before_each_row = [] {};
        host_callbacks_listen({[] {}, [] {}, [](uint16_t, uint32_t) {}, [](uint32_t) {}, [] {}, [] {}});
    }
    void post(uint32_t, uint64_t, uint64_t) override {}
    void set_full_screen_style(int, int) override { host.window()->set_framed(false); }
    void set_window_style(int width, int height) override {
        host.window()->set_framed(true);
        host.window()->resize_client(width, height);
    }
    int64_t window_proc(platform::host_window &, const platform::message &m, bool &) override {
        if (m.id == platform::wm_move) directx->on_move();
        return 0;
    }

    bool is_command_key(uint32_t) const override { return false; }
    bool is_key_down(uint32_t) const override { return false; }
    void dropped(const std::string &) override {}
    std::vector<platform::menu_item> menus() const override { return {}; }
    int init(bool full_screen = false) {
        directx->set_full_screen(full_screen);
        return directx->init(*host.window(), 1);
    }
    // Only these full-screen modes, "640x480x8".
    void allow_modes(const strings &modes) {
        host.screen.set_mode_filter([=](int w, int h, int depth) {
            const std::string mode =
                std::to_string(w) + "x" + std::to_string(h) + "x" + std::to_string(depth);
            return std::count(modes.begin(), modes.end(), mode) != 0;
        });
    }
    static strings &lines() {
        static strings heard;
        return heard;
    }
    static long heard(const std::string &line) { return std::count(lines().begin(), lines().end(), line); }

    inline static std::function<void()> before_each_row = [] {};
    platform::headless_host host;
    std::unique_ptr<kiv_directx> directx;
};
