// A program for the tests that look at a real screen.
//
//   show_picture keys            says which keys arrive, until it is closed
//   show_picture screen FILE     saves what the screen shows
//   show_picture modes FOLDER    shows a known picture as the emulator would, in a window, in full screen and
//                                in a window again, each time saves the screen in FOLDER as 0.png to 2.png
//                                and says where the client area stands
#include "platform/desktop/desktop_host.h"
#include "support/host_keys.h"
#include "tests/desktop/known_picture.h"

#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPixmap>
#include <QtGui/QScreen>
#include <cstdio>
#include <utility>

using namespace platform;

namespace {

class shower : public window_listener {
  public:
    int64_t window_proc(host_window &w, const message &m, bool &handled) override {
        switch (m.id) {
        case wm_close: w.destroy(); break;
        case wm_destroy: host.post_quit(0); break;
        case wm_key_down:
        case wm_key_up:
            std::printf("%s %02x%s\n", m.id == wm_key_down ? "down" : "up", static_cast<unsigned>(m.wparam),
                        w.shift_down() ? " shift" : "");
            break;
        case wm_activate_app: std::printf("active %u\n", static_cast<unsigned>(m.wparam)); break;
        default: handled = false;
        }
        std::fflush(stdout);
        return 0;
    }

    bool is_command_key(uint32_t key) const override { return key == vk_end; }
    bool is_key_down(uint32_t) const override { return false; }
    void dropped(const std::string &) override {}

    std::vector<menu_item> menus() const override {
        return {{0,
                 "Kiv(&K)",
                 "",
                 true,
                 menu_item::plain,
                 false,
                 {{2, "Kivについて", "", true, menu_item::plain, false, {}}}}};
    }

    void show(bool full_screen) {
        display &d = host.get_display();
        d.restore_mode();
        window->set_framed(!full_screen);
        if (!full_screen) {
            window->resize_client(640, 400);
            window->menus_changed();
            window->centre();
            window->show();
        }
        d.set_cooperative_level(*window, full_screen);
        if (full_screen) d.set_mode(640, 400, 8);
        const auto primary = d.create_primary(full_screen);
        const auto drawn = d.create_offscreen(640, 400, surface_memory::video);
        uint32_t palette[256];
        for (uint32_t i = 0; i < 256; ++i) palette[i] = known_colour(i);
        primary->set_palette(palette);
        void *pixels;
        int pitch;
        if (drawn->lock(pixels, pitch) != display_result::ok) return;
        for (int i = 0; i < 640 * 400; ++i) {
            const uint32_t n = known_index(i % 640, i / 640);
            if (full_screen)
                static_cast<uint8_t *>(pixels)[i] = static_cast<uint8_t>(n);
            else
                static_cast<uint32_t *>(pixels)[i] = known_colour(n);
        }
        drawn->unlock();
        primary->copy_from(*drawn, {0, 0, 640, 400}, {0, 0, 640, 400}, full_screen);
        window->set_focus();
    }

    desktop_host host;
    host_window *window = host.create_window({"Kiv [2.0.9]", 0, 0, 640, 480}, *this);
};

} // namespace

int main(int argc, char **argv) {
    const QString what = argc > 1 ? argv[1] : "keys", where = argc > 2 ? argv[2] : "";
    shower s;
    const auto screen = [] { return QGuiApplication::primaryScreen()->grabWindow(0).toImage(); };
    if (what == "screen") return screen().save(where, "PNG") ? 0 : 1;
    // A stage is there when the screen differs from the one before and stands still for a second.
    QImage of_stage_before = screen(), seen;
    s.show(false);
    QTimer timer;
    int stage = 0, unchanged = 0;
    QObject::connect(&timer, &QTimer::timeout, [&] {
        const QImage now = screen();
        unchanged = now == std::exchange(seen, now) ? unchanged + 1 : 0;
        if (unchanged < 4 || now == of_stage_before) return;
        of_stage_before = now;
        unchanged = 0;
        now.save(where + QString("/%1.png").arg(stage++), "PNG");
        const point at = s.window->client_origin();
        std::printf("client %d %d\n", at.x, at.y);
        if (stage == 3)
            s.window->post(wm_close, 0, 0);
        else
            s.show(stage == 1);
    });
    if (what == "modes") timer.start(250);
    return s.host.run_message_loop();
}
