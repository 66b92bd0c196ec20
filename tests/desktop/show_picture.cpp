// A program for the tests that look at a real screen: shows a known picture as the emulator would, saves what
// the screen then shows, and says where the picture stands.
//
//   show_picture window|full|back SCREENSHOT    back: to full screen and back again
//   show_picture keys                           says which key messages arrive, until it is closed
#include "platform/desktop/desktop_host.h"

#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QPixmap>
#include <QtGui/QScreen>
#include <cstdio>
#include <string>
#include <thread>

using namespace platform;

namespace {

class shower : public window_listener {
  public:
    explicit shower(desktop_host &h) : host(h) {}

    int64_t window_proc(host_window &w, const message &m, bool &handled) override {
        switch (m.id) {
        case wm_close: w.destroy(); break;
        case wm_destroy: host.post_quit(0); break;
        case wm_key_down:
        case wm_key_up:
            std::printf("%s %02x%s%s\n", m.id == wm_key_down ? "down" : "up", static_cast<unsigned>(m.wparam),
                        m.lparam != 0 ? " repeat" : "", w.shift_down() ? " shift" : "");
            std::fflush(stdout);
            break;
        case wm_sys_command: std::printf("menu %u\n", static_cast<unsigned>(m.wparam)); break;
        case wm_activate_app:
            std::printf("active %u\n", static_cast<unsigned>(m.wparam));
            std::fflush(stdout);
            break;
        default: handled = false;
        }
        return 0;
    }

    void start(bool full_screen) {
        primary.reset();
        drawn.reset();
        display &d = host.get_display();
        d.restore_mode();
        if (full_screen) {
            window->set_framed(false);
            d.set_cooperative_level(*window, true);
            d.set_mode(640, 400, 8);
        } else {
            window->set_framed(true);
            window->resize_client(640, 400);
            window->centre();
            window->show();
            window->insert_menu_item(0, 2, "Kivについて");
            window->insert_menu_item(1, 1, "Kivの設定");
            d.set_cooperative_level(*window, false);
        }
        primary = d.create_primary(full_screen);
        drawn = d.create_offscreen(640, 400, surface_memory::video);
        uint32_t palette[256];
        for (uint32_t i = 0; i < 256; ++i) palette[i] = colour(i);
        primary->set_palette(palette);
        window->set_focus();
    }

    // Columns of one pixel, rows of one pixel: any scaling that is not exact shows.
    static uint32_t colour(uint32_t n) { return (n % 7 * 40) << 16 | (n % 5 * 60) << 8 | n % 3 * 120; }
    void frame() {
        void *pixels;
        int pitch;
        surface_desc desc;
        if (drawn->lock(pixels, pitch) != display_result::ok || !drawn->describe(desc)) return;
        for (int y = 0; y < 400; ++y)
            for (int x = 0; x < 640; ++x) {
                const auto n = static_cast<uint32_t>((x + y * 3) & 0xFF);
                auto *row = static_cast<uint8_t *>(pixels) + y * pitch;
                if (desc.format.indexed8)
                    row[x] = static_cast<uint8_t>(n);
                else
                    reinterpret_cast<uint32_t *>(row)[x] = colour(n);
            }
        drawn->unlock();
        primary->copy_from(*drawn, {0, 0, 640, 400}, {0, 0, 640, 400}, desc.format.indexed8);
    }

    desktop_host &host;
    host_window *window = nullptr;
    std::unique_ptr<surface> primary, drawn;
};

} // namespace

int main(int argc, char **argv) {
    const std::string mode = argc > 1 ? argv[1] : "window", screenshot = argc > 2 ? argv[2] : "";
    desktop_host host;
    shower s(host);
    s.window = host.create_window({"Kiv [2.0.9]", 0, 0, 640, 480}, s);
    QObject context;
    s.start(false);
    if (mode == "keys") {
        s.frame();
        std::printf("ready\n");
        std::fflush(stdout);
    } else {
        QTimer::singleShot(200, &context, [&] { s.start(mode != "window"), s.frame(); });
        if (mode == "back") QTimer::singleShot(1000, &context, [&] { s.start(false), s.frame(); });
        QTimer::singleShot(mode == "back" ? 2000 : 1200, &context, [&] {
            QScreen *screen = QGuiApplication::primaryScreen();
            screen->grabWindow(0).save(QString::fromStdString(screenshot), "PNG");
            const point at = s.window->client_origin();
            std::printf("client %d %d screen %d %d\n", at.x, at.y, screen->geometry().width(),
                        screen->geometry().height());
            s.window->post(wm_close, 0, 0);
        });
    }
    return host.run_message_loop();
}
