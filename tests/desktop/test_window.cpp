// The window: messages, keys, picture, modes, menu.
#include "tests/desktop/host_fixture.h"

#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <thread>

using namespace platform;

namespace {

struct key {
    uint32_t evdev;
    int qt;
};
constexpr key key_a{30, Qt::Key_A}, key_shift{42, Qt::Key_Shift}, key_right_shift{54, Qt::Key_Shift},
    key_f6{64, Qt::Key_F6}, key_f12{88, Qt::Key_F12}, key_end{107, Qt::Key_End}, key_tab{15, Qt::Key_Tab},
    key_alt{56, Qt::Key_Alt}, key_right_alt{100, Qt::Key_Alt}, key_f4{62, Qt::Key_F4}, key_x{45, Qt::Key_X};

class DesktopWindow : public DesktopHost {
  protected:
    static void send_key(QEvent::Type type, key k, Qt::KeyboardModifiers with = {}, bool repeat = false,
                         bool scan_code = true) {
        QKeyEvent e(type, k.qt, with, scan_code ? k.evdev + 8 : 0, 0, 0, QString(), repeat);
        QApplication::sendEvent(view(), &e);
    }
    static void press(key k, Qt::KeyboardModifiers with = {}, bool repeat = false) {
        send_key(QEvent::KeyPress, k, with, repeat);
    }
    static void release(key k, Qt::KeyboardModifiers with = {}, bool repeat = false) {
        send_key(QEvent::KeyRelease, k, with, repeat);
    }

    // The picture's pixel at (x, y) as the window paints it.
    static QImage grab() { return view()->grab().toImage().convertToFormat(QImage::Format_RGB32); }
    static unsigned pixel(int x, int y) { return grab().pixel(x, y) & 0xFFFFFF; }

    std::unique_ptr<surface> primary, drawn;
    void start_display(bool full_screen, int width = 640, int height = 400, int depth = 8) {
        primary.reset();
        drawn.reset();
        display &d = host->get_display();
        if (full_screen) {
            window->set_framed(false);
            ASSERT_TRUE(d.set_cooperative_level(*window, true));
            ASSERT_TRUE(d.set_mode(width, height, depth));
        } else {
            window->set_framed(true);
            window->resize_client(640, 400);
            window->centre();
            window->show();
            ASSERT_TRUE(d.set_cooperative_level(*window, false));
        }
        primary = d.create_primary(full_screen);
        drawn =
            d.create_offscreen(full_screen ? width : 640, full_screen ? height : 400, surface_memory::video);
        ASSERT_TRUE(primary && drawn);
    }
    void show_frame(uint32_t colour) {
        std::thread render([&] {
            drawn->fill({0, 0, 2000, 2000}, colour);
            primary->copy_from(*drawn, {0, 0, 640, 400}, {}, false);
        });
        render.join();
        run_for(10);
    }
};

TEST_F(DesktopWindow, TheClientAreaIsThePictureAndTheMenuStandsOutsideOfIt) {
    window->insert_menu_item(0, 2, "Kivについて");
    window->insert_menu_item(1, 1, "Kivの設定");
    window->insert_menu_item(1, 1, "Kivの設定"); // toggling the screen does it again
    run_for(20);
    size2 size{};
    ASSERT_TRUE(window->client_size(size));
    EXPECT_TRUE(size.width == 640 && size.height == 400);
    EXPECT_EQ(view()->size() * view()->devicePixelRatio(), QSize(640, 400) * view()->devicePixelRatio());
    EXPECT_EQ(frame()->minimumSize(), frame()->maximumSize()) << "of fixed size";
    ASSERT_TRUE(frame()->menuBar()->isVisible());
    EXPECT_EQ(frame()->menuBar()->height() + 400, frame()->height());
    const QList<QAction *> items = frame()->menuBar()->actions().at(0)->menu()->actions();
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0]->text().toStdString(), "Kivについて");
    items[1]->trigger();
    run_for(10);
    EXPECT_EQ(listener.take(), "112 1 0");
}

TEST_F(DesktopWindow, PostedMessagesOfAnyThreadArriveInOrderAndAfterTheDialog) {
    std::thread other([&] {
        for (uint64_t i = 0; i < 100; ++i) window->post(wm_private + 2, i, 7);
    });
    other.join();
    run_for(10);
    ASSERT_EQ(listener.heard.size(), 100u);
    EXPECT_EQ(listener.heard[0], "402 0 7");
    EXPECT_EQ(listener.heard[99], "402 63 7");
    listener.heard.clear();

    size_t during = 1;
    QTimer::singleShot(10, view(), [&] { window->post(wm_private + 2, 1, 1), window->post(wm_close, 0, 0); });
    QTimer::singleShot(60, view(), [&] {
        during = listener.heard.size();
        QApplication::activeModalWidget()->close();
    });
    host->error_box(window, "text", "caption");
    EXPECT_EQ(during, 0u) << "held back while the dialog runs";
    listener.answer = [](host_window &, const message &) { return true; };
    run_for(10);
    EXPECT_EQ(listener.take(), "402 1 1, 10 0 0");
}

TEST_F(DesktopWindow, ClosingAsksTheListenerAndAQuitEndsTheLoop) {
    listener.answer = [&](host_window &w, const message &m) {
        if (m.id == wm_destroy) host->post_quit(3);
        if (m.id == wm_private + 5) w.destroy();
        return true;
    };
    QTimer::singleShot(0, view(), [] { frame()->close(); });
    QTimer::singleShot(50, view(), [&] {
        EXPECT_EQ(listener.take(), "10 0 0");
        EXPECT_TRUE(frame()->isVisible()) << "the listener decides";
        window->post(wm_private + 5, 0, 0);
    });
    EXPECT_EQ(host->run_message_loop(), 3);
    EXPECT_EQ(listener.take(), "405 0 0, 2 0 0");
    size2 size;
    EXPECT_FALSE(window->client_size(size));
    window->post(wm_private + 1, 0, 0);
    run_for(10);
    EXPECT_EQ(listener.take(), "") << "a window that is gone hears nothing";
    host->post_quit(4);
    EXPECT_EQ(host->run_message_loop(), 4) << "posted before the loop";
}

TEST_F(DesktopWindow, KeysByTheirPlace) {
    press(key_a);
    press(key_a, {}, true);
    release(key_a, {}, true);
    release(key_a);
    EXPECT_EQ(listener.take(), "down 41, down 41 repeat, up 41");
    press(key_shift, {});
    press(key_f12, Qt::ShiftModifier);
    release(key_f12, Qt::ShiftModifier);
    release(key_shift, Qt::ShiftModifier);
    EXPECT_EQ(listener.take(), "down 10 shift, down 7B shift, up 7B shift, up 10");
    press(key_tab); // no change of the focus
    release(key_tab);
    EXPECT_EQ(listener.take(), "down 09, up 09");
    release(key_end); // pressed in another window
    EXPECT_EQ(listener.take(), "");
}

TEST_F(DesktopWindow, AltBelongsToTheDesktopExceptTheRightOne) {
    press(key_alt, {});
    press(key_x, Qt::AltModifier);
    release(key_x, Qt::AltModifier);
    release(key_alt, {});
    EXPECT_EQ(listener.take(), "");
    press(key_right_alt, {});
    press(key_x, Qt::AltModifier);
    release(key_x, Qt::AltModifier);
    release(key_right_alt, {});
    EXPECT_EQ(listener.take(), "down 1D, down 58, up 58, up 1D");
    // A command key that is let go with Alt held gives no command; a key of the machine does not stick.
    press(key_f6);
    press(key_a);
    listener.take();
    release(key_f6, Qt::AltModifier);
    release(key_a, Qt::AltModifier);
    EXPECT_EQ(listener.take(), "up 41");
    press(key_f4, Qt::AltModifier);
    run_for(10);
    EXPECT_EQ(listener.take().substr(0, 6), "10 0 0");
}

TEST_F(DesktopWindow, LosingTheFocusLetsGoOfEveryKeyAndGivesNoCommand) {
    press(key_a);
    press(key_shift);
    press(key_f6);
    press(key_end);
    listener.take();
    QFocusEvent lost(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
    QApplication::sendEvent(view(), &lost);
    EXPECT_EQ(listener.take(), "up 41, up 10");
    release(key_end);
    release(key_f6);
    release(key_a);
    EXPECT_EQ(listener.take(), "");
}

TEST_F(DesktopWindow, KeysWithoutAScanCodeGoByTheirSign) {
    const auto type = [](int qt, Qt::KeyboardModifiers with) {
        send_key(QEvent::KeyPress, {0, qt}, with, false, false);
        send_key(QEvent::KeyRelease, {0, qt}, with, false, false);
    };
    struct row {
        int qt;
        Qt::KeyboardModifiers with;
        unsigned virtual_key;
    };
    for (const row r :
         {row{Qt::Key_Q, {}, 'Q'}, row{Qt::Key_5, {}, '5'}, row{Qt::Key_5, Qt::KeypadModifier, 0x65},
          row{Qt::Key_At, Qt::ShiftModifier, 0xC0}, row{Qt::Key_Exclam, Qt::ShiftModifier, '1'},
          row{Qt::Key_yen, {}, 0xDC}, row{Qt::Key_Underscore, Qt::ShiftModifier, 0xE2},
          row{Qt::Key_F11, {}, 0x7A}, row{Qt::Key_Henkan, {}, 0x1C}, row{Qt::Key_Left, {}, 0x25}}) {
        type(r.qt, r.with);
        char expected[64];
        const char *shift = r.with & Qt::ShiftModifier ? " shift" : "";
        std::snprintf(expected, sizeof expected, "down %02X%s, up %02X%s", r.virtual_key, shift,
                      r.virtual_key, shift);
        EXPECT_EQ(listener.take(), expected);
    }
    send_key(QEvent::KeyPress, {0, Qt::Key_At}, Qt::ShiftModifier, false, false);
    send_key(QEvent::KeyRelease, {0, Qt::Key_2}, {}, false, false); // Shift went first
    EXPECT_EQ(listener.take(), "down C0 shift, up C0");
}

TEST_F(DesktopWindow, FramesAreShownAndAnInvalidWindowIsPaintedOverThem) {
    start_display(false);
    run_for(20);
    listener.take();
    show_frame(0x102030);
    EXPECT_EQ(pixel(0, 0), 0x102030u);
    EXPECT_EQ(pixel(639, 399), 0x102030u);
    EXPECT_EQ(listener.take(), "") << "a frame is no reason to paint";

    bool paused = true;
    const std::vector<uint32_t> tile(128 * 128, 0x00AA55);
    listener.answer = [&](host_window &w, const message &m) {
        if (m.id == wm_erase_background) w.current_painter()->fill({0, 0, 640, 400}, 0x000001);
        if (m.id == wm_paint && paused) w.current_painter()->draw({tile.data(), 128, 128}, 600, 0);
        return true;
    };
    window->invalidate(false);
    run_for(20);
    EXPECT_EQ(listener.take(), "F 0 0");
    EXPECT_EQ(pixel(599, 0), 0x102030u) << "without erasing the frame stays";
    EXPECT_EQ(pixel(639, 127), 0x00AA55u);
    EXPECT_EQ(window->current_painter(), nullptr);
    // A frame that was still on its way is painted over, too.
    show_frame(0x405060);
    EXPECT_EQ(pixel(0, 0), 0x405060u);
    EXPECT_EQ(pixel(600, 0), 0x00AA55u);
    window->invalidate(true);
    run_for(20);
    EXPECT_EQ(pixel(0, 0), 0x000001u);
    // When the emulation goes on, so does the picture.
    paused = false;
    show_frame(0x708090);
    EXPECT_EQ(pixel(600, 0), 0x708090u);
    listener.take();
    show_frame(0x708091);
    EXPECT_EQ(listener.take(), "");
}

TEST_F(DesktopWindow, FullScreenAndBack) {
    window->insert_menu_item(0, 2, "Kivについて");
    start_display(false);
    show_frame(0x112233);
    const QPoint before = frame()->pos();
    start_display(true, 640, 480, 8);
    run_for(400);
    EXPECT_TRUE(frame()->isFullScreen());
    EXPECT_FALSE(frame()->menuBar()->isVisible());
    const QSize screen = frame()->screen()->size();
    EXPECT_EQ(view()->size(), screen);
    EXPECT_EQ(pixel(screen.width() / 2, screen.height() / 2), 0x112233u)
        << "the old picture until the next frame";
    size2 size{};
    ASSERT_TRUE(window->client_size(size));
    EXPECT_TRUE(size.width == 640 && size.height == 480) << "painted in the mode's pixels";
    uint32_t palette[256] = {};
    palette[6] = 0x445566;
    primary->set_palette(palette);
    drawn->fill({0, 0, 640, 480}, 6);
    EXPECT_EQ(primary->copy_from(*drawn, {0, 0, 640, 480}, {}, true), display_result::ok);
    run_for(20);
    EXPECT_EQ(pixel(screen.width() / 2, screen.height() / 2), 0x445566u);
    EXPECT_EQ(pixel(0, 0), 0u) << "black around";
    host->get_display().restore_mode();
    start_display(false);
    show_frame(0x778899);
    run_for(400);
    EXPECT_FALSE(frame()->isFullScreen());
    EXPECT_EQ(view()->size(), QSize(640, 400));
    EXPECT_EQ(pixel(639, 399), 0x778899u);
    EXPECT_TRUE(frame()->menuBar()->isVisible());
    EXPECT_EQ(frame()->pos(), before);
    // A mode that ends without a window mode after it does not leave a black screen.
    start_display(true);
    host->get_display().restore_mode();
    run_for(50);
    EXPECT_FALSE(frame()->isFullScreen());
}

// The picture's way runs on while the window is toggled, painted and destroyed.
TEST_F(DesktopWindow, TogglingWhileFramesArrive) {
    start_display(false);
    std::atomic<bool> done{false};
    std::atomic<uint32_t> frames{0};
    const auto own_primary = host->get_display().create_primary(false);
    const auto own_drawn = host->get_display().create_offscreen(640, 400, surface_memory::video);
    std::thread render([&] {
        while (!done) {
            void *pixels;
            int pitch;
            if (own_drawn->lock(pixels, pitch) == display_result::ok) {
                static_cast<uint32_t *>(pixels)[frames % 256000] = frames;
                own_drawn->unlock();
            }
            own_primary->copy_from(*own_drawn, {0, 0, 640, 400}, {}, false);
            ++frames;
        }
    });
    for (int i = 0; i < 6; ++i) {
        start_display(i % 2 == 0);
        own_drawn->fill({0, 0, 640, 400}, 0);
        run_for(15);
    }
    window->destroy();
    run_for(15);
    const uint32_t so_far = frames;
    run_until([&] { return frames > so_far + 10; });
    done = true;
    render.join();
    EXPECT_GT(frames, so_far) << "the render thread is not held up";
}

} // namespace
