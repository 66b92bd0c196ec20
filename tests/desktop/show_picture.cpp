// A program for the tests that look at a real screen: shows a known picture as the emulator would, and says
// which keys arrive and where the picture stands.
//
//   show_picture window|full|back SCREENSHOT    back: to full screen and back again; then it ends
//   show_picture screen SCREENSHOT              saves only what the screen shows
//   show_picture keys                           until it is closed
#include "platform/desktop/desktop_host.h"
#include "tests/desktop/known_picture.h"

#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QPixmap>
#include <QtGui/QScreen>
#include <cstdio>
#include <string>

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
            std::printf("%s %02x%s%s\n", m.id == wm_key_down ? "down" : "up", static_cast<unsigned>(m.wparam),
                        m.lparam != 0 ? " repeat" : "", w.shift_down() ? " shift" : "");
            break;
        case wm_activate_app: std::printf("active %u\n", static_cast<unsigned>(m.wparam)); break;
        default: handled = false;
        }
        std::fflush(stdout);
        return 0;
    }

    void show(bool full_screen) {
        primary.reset();
        drawn.reset();
        display &d = host.get_display();
        d.restore_mode();
        window->set_framed(!full_screen);
        if (!full_screen) {
            window->resize_client(640, 400);
            window->centre();
            window->show();
            window->insert_menu_item(0, 2, "Kivについて");
        }
        d.set_cooperative_level(*window, full_screen);
        if (full_screen) d.set_mode(640, 400, 8);
        primary = d.create_primary(full_screen);
        drawn = d.create_offscreen(640, 400, surface_memory::video);
        uint32_t palette[256];
        for (uint32_t i = 0; i < 256; ++i) palette[i] = known_colour(i);
        primary->set_palette(palette);
        window->set_focus();
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
    }

    desktop_host host;
    host_window *window = host.create_window({"Kiv [2.0.9]", 0, 0, 640, 480}, *this);
    std::unique_ptr<surface> primary, drawn;
};

} // namespace

int main(int argc, char **argv) {
    const std::string mode = argc > 1 ? argv[1] : "keys", screenshot = argc > 2 ? argv[2] : "";
    shower s;
    const auto save_screen = [&] {
        return QGuiApplication::primaryScreen()->grabWindow(0).save(QString::fromStdString(screenshot),
                                                                    "PNG");
    };
    if (mode == "screen") return save_screen() ? 0 : 1;
    QObject context;
    s.show(false);
    if (mode != "keys") {
        QTimer::singleShot(200, &context, [&] { s.show(mode != "window"); });
        if (mode == "back") QTimer::singleShot(1000, &context, [&] { s.show(false); });
        QTimer::singleShot(mode == "back" ? 2000 : 1200, &context, [&] {
            save_screen();
            const point at = s.window->client_origin();
            std::printf("client %d %d\n", at.x, at.y);
            s.window->post(wm_close, 0, 0);
        });
    }
    return s.host.run_message_loop();
}
