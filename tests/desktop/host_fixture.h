// A desktop host without a desktop, and a listener that notes what it hears.
#pragma once

#include "platform/desktop/desktop_host.h"
#include "support/host_keys.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtGui/QImage>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QWidget>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace platform {

inline menu_item item(uint32_t id, const std::string &text, const std::string &shortcut = {}) {
    menu_item made;
    made.id = id;
    made.text = text;
    made.shortcut = shortcut;
    return made;
}
inline menu_item submenu(const std::string &text, std::vector<menu_item> items) {
    menu_item made = item(0, text);
    made.items = std::move(items);
    return made;
}

class noting_listener : public window_listener {
  public:
    std::vector<std::string> heard;
    std::function<bool(host_window &, const message &)> answer; // true: handled

    int64_t window_proc(host_window &window, const message &m, bool &handled) override {
        char line[64];
        switch (m.id) {
        case wm_key_down:
        case wm_key_up:
            std::snprintf(line, sizeof line, "%s %02X%s%s", m.id == wm_key_down ? "down" : "up",
                          static_cast<unsigned>(m.wparam), m.lparam != 0 ? " repeat" : "",
                          window.shift_down() ? " shift" : "");
            break;
        case wm_move: return 0; // how often is the platform's affair
        default:
            std::snprintf(line, sizeof line, "%X %llX %llX", m.id, static_cast<unsigned long long>(m.wparam),
                          static_cast<unsigned long long>(m.lparam));
        }
        heard.push_back(line);
        handled = answer && answer(window, m);
        return 0;
    }
    bool is_command_key(uint32_t key) const override { return key == vk_end || key == vk_f6; }
    bool is_key_down(uint32_t) const override { return false; }
    void dropped(const std::string &path) override { heard.push_back("dropped " + path); }
    std::vector<menu_item> menu_bar;
    std::vector<menu_item> menus() const override { return menu_bar; }
    std::string take() {
        std::string all;
        for (const std::string &line : heard) all += (all.empty() ? "" : ", ") + line;
        heard.clear();
        return all;
    }
};

class DesktopHost : public testing::Test {
  protected:
    static void set_environment() {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        setenv("SDL_AUDIODRIVER", "dummy", 1);
    }
    void SetUp() override {
        set_environment();
        host = std::make_unique<desktop_host>();
        window = host->create_window({"Kiv [2.0.9]", 0, 0, 640, 480}, listener);
        ASSERT_NE(window, nullptr);
        ASSERT_TRUE(window->set_framed(true));
        window->resize_client(640, 400);
        window->centre();
        window->show();
        window->set_focus();
        run_for(20);
        listener.heard.clear();
    }
    void TearDown() override { host.reset(); }

    static void run_for(int ms) {
        QElapsedTimer timer;
        timer.start();
        do QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        while (timer.elapsed() < ms);
        QCoreApplication::sendPostedEvents();
    }
    // Runs until `done` or for two seconds.
    template <class Done> static bool run_until(Done done) {
        for (int i = 0; i < 200; ++i) {
            if (done()) return true;
            run_for(10);
        }
        return done();
    }
    static QMainWindow *debugger() { // null: it is not open
        for (QWidget *w : QApplication::topLevelWidgets())
            if (w->findChild<QDockWidget *>("registers") != nullptr && w->isVisible())
                return qobject_cast<QMainWindow *>(w);
        return nullptr;
    }
    static QMainWindow *frame() {
        for (QWidget *w : QApplication::topLevelWidgets())
            if (auto *f = qobject_cast<QMainWindow *>(w); f != nullptr && f != debugger()) return f;
        return nullptr;
    }
    static QWidget *view() { return frame()->centralWidget(); }

    std::unique_ptr<desktop_host> host;
    noting_listener listener;
    host_window *window = nullptr;
};

} // namespace platform
