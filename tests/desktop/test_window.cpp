// The window: messages, signals, keys, picture, modes, menu.
#include "platform/desktop/picture_fit.h"
#include "tests/desktop/host_fixture.h"

#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <csignal>
#include <sstream>
#include <thread>

using namespace platform;

namespace {

class DesktopWindow : public DesktopHost {
  protected:
    // Plays keys and takes what the listener heard. Each is + or -, the kernel's code of the key, and
    // letters: r an auto-repeat, s with Shift, a with Alt. "out" takes the focus away.
    std::string play(const std::string &keys) {
        std::istringstream words(keys);
        for (std::string word; words >> word;) {
            if (word == "out") {
                QFocusEvent lost(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
                QApplication::sendEvent(view(), &lost);
                continue;
            }
            const auto has = [&](char flag) { return word.find(flag) != std::string::npos; };
            Qt::KeyboardModifiers with;
            with.setFlag(Qt::ShiftModifier, has('s'));
            with.setFlag(Qt::AltModifier, has('a'));
            send_key(word[0] == '+', Qt::Key_unknown, with, has('r'),
                     static_cast<uint32_t>(std::stoi(word.substr(1))) + 8);
        }
        return listener.take();
    }
    static void send_key(bool press, int qt, Qt::KeyboardModifiers with, bool repeat, uint32_t scan_code) {
        QKeyEvent e(press ? QEvent::KeyPress : QEvent::KeyRelease, qt, with, scan_code, 0, 0, QString(),
                    repeat);
        QApplication::sendEvent(view(), &e);
    }

    // The picture's pixel at (x, y) as the window paints it.
    static unsigned pixel(int x, int y) {
        return view()->grab().toImage().convertToFormat(QImage::Format_RGB32).pixel(x, y) & 0xFFFFFF;
    }

    std::unique_ptr<surface> primary, drawn;
    void start_display(bool full_screen, int width = 640, int height = 400) {
        primary.reset();
        drawn.reset();
        display &d = host->get_display();
        d.restore_mode();
        window->set_framed(!full_screen);
        if (!full_screen) {
            window->resize_client(width, height);
            window->centre();
            window->show();
        }
        ASSERT_TRUE(d.set_cooperative_level(*window, full_screen));
        ASSERT_EQ(d.set_mode(width, height, 8), full_screen);
        primary = d.create_primary(full_screen);
        drawn = d.create_offscreen(width, height, surface_memory::video);
        ASSERT_TRUE(primary && drawn);
    }
    void show_frame(uint32_t colour) {
        std::thread([&] {
            drawn->fill({0, 0, 2000, 2000}, colour);
            primary->copy_from(*drawn, {0, 0, 2000, 2000}, {}, false);
        }).join();
        run_for(10);
    }
};

TEST_F(DesktopWindow, PostedMessagesArriveInOrderAndAfterTheDialog) {
    std::thread([&] {
        for (uint64_t i = 0; i < 100; ++i) window->post(wm_private + 2, i, 7);
    }).join();
    run_for(10);
    ASSERT_EQ(listener.heard.size(), 100u);
    EXPECT_EQ(listener.heard[99], "402 63 7");
    listener.heard.clear();
    QTimer::singleShot(10, view(), [&] { window->post(wm_private + 2, 1, 1), frame()->close(); });
    QTimer::singleShot(60, view(), [&] {
        EXPECT_EQ(listener.take(), "") << "held back while the dialog runs";
        QApplication::activeModalWidget()->close();
    });
    // The listener decides what becomes of a close request.
    listener.answer = [&](host_window &w, const message &m) {
        if (m.id == wm_destroy) host->post_quit(3);
        if (m.id == wm_private + 5) w.destroy();
        return true;
    };
    host->error_box(window, "text", "caption");
    run_for(10);
    EXPECT_EQ(listener.take(), "402 1 1, 10 0 0");
    EXPECT_TRUE(frame()->isVisible());
    window->post(wm_private + 5, 0, 0);
    EXPECT_EQ(host->run_message_loop(), 3);
    window->post(wm_private + 1, 0, 0);
    run_for(10);
    EXPECT_EQ(listener.take(), "405 0 0, 2 0 0") << "a window that is gone hears nothing";
    host->post_quit(4);
    EXPECT_EQ(host->run_message_loop(), 4) << "posted before the loop";
}

// Ctrl-C, `kill`, a terminal that closes, a log-off: as the close box, also out of a dialog.
TEST_F(DesktopWindow, SignalsCloseTheWindowUnlessTheyWereIgnoredFromTheStart) {
    listener.answer = [](host_window &, const message &) { return true; };
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(number);
        raise(number);
        EXPECT_TRUE(run_until([&] { return !listener.heard.empty(); }));
        EXPECT_EQ(listener.take(), "10 0 0");
        QTimer::singleShot(10, view(), [=] { raise(number); });
        settings_dialog dialog{"caption", "", "", {}, {}};
        EXPECT_FALSE(host->settings(*window, dialog)) << "cancelled";
        EXPECT_TRUE(run_until([&] { return !listener.heard.empty(); }));
        EXPECT_EQ(listener.take(), "10 0 0");
    }
    host.reset();
    EXPECT_EXIT(raise(SIGTERM), testing::KilledBySignal(SIGTERM), "") << "without a desktop: as ever";
    std::signal(SIGHUP, SIG_IGN); // by nohup
    SetUp();
    raise(SIGHUP);
    run_for(20);
    EXPECT_EQ(listener.take(), "");
    std::signal(SIGHUP, SIG_DFL);
}

TEST_F(DesktopWindow, KeysByTheirPlace) {
    struct {
        const char *label, *keys, *heard;
    } const rows[] = {
        {"A, repeated", "+30 +30r -30r -30", "down 41, down 41 repeat, up 41"},
        {"Shift+F12", "+42s +88s -88s -42", "down 10 shift, down 7B shift, up 7B shift, up 10"},
        {"both Shift keys", "+42s +54s -42s -54", "down 10 shift, down 10 shift, up 10"},
        {"End, pressed in another window", "-107", ""},
        {"left Alt belongs to the desktop", "+56 +45a -45a -56", ""},
        {"right Alt is GRPH", "+100 +45a -45a -100", "down 1D, down 58, up 58, up 1D"},
        {"with Alt F6 gives no command and A does not stick", "+64 +30 -64a -30a", "down 75, down 41, up 41"},
        {"losing the focus lets go of A and Shift and gives no command",
         "+30 +42 +54 +64 +107 out -107 -64 -30 -42",
         "down 41, down 10, down 10, down 75, down 23, up 41, up 10"},
    };
    for (const auto &r : rows) EXPECT_EQ(play(r.keys), r.heard) << r.label;
    play("+62a -62a"); // Alt+F4
    run_for(10);
    EXPECT_EQ(listener.take().substr(0, 6), "10 0 0");
}

TEST_F(DesktopWindow, KeysWithoutAScanCodeGoByTheirSign) {
    struct {
        int pressed;
        Qt::KeyboardModifiers with;
        const char *heard;
        int released = pressed;
    } const rows[] = {
        {Qt::Key_5, Qt::KeypadModifier, "down 65, up 65"},
        {Qt::Key_Exclam, Qt::ShiftModifier, "down 31 shift, up 31 shift"},
        {Qt::Key_F11, {}, "down 7A, up 7A"},
        {Qt::Key_Henkan, {}, "down 1C, up 1C"},
        {Qt::Key_At, Qt::ShiftModifier, "down C0 shift, up C0 shift", Qt::Key_2}, // the sign has changed
    };
    for (const auto &r : rows) {
        send_key(true, r.pressed, r.with, false, 0);
        send_key(false, r.released, r.with, false, 0);
        EXPECT_EQ(listener.take(), r.heard);
    }
}

TEST_F(DesktopWindow, AnInvalidWindowIsPaintedOverTheFrames) {
    start_display(false);
    run_for(20);
    listener.take();
    show_frame(0x102030);
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
    show_frame(0x405060); // still on its way when the emulation was paused: painted over, too
    EXPECT_EQ(pixel(599, 0), 0x405060u);
    EXPECT_EQ(pixel(600, 0), 0x00AA55u);
    window->invalidate(true);
    run_for(20);
    EXPECT_EQ(pixel(599, 0), 0x000001u);
    paused = false;
    show_frame(0x708090);
    EXPECT_EQ(pixel(600, 0), 0x708090u) << "the emulation goes on, and so does the picture";
}

TEST_F(DesktopWindow, FullScreenAndBack) {
    listener.menu_bar = {submenu("Kiv(&K)", {item(2, "Kivについて")})};
    for (int i = 0; i < 2; ++i) window->menus_changed(); // every window mode does
    EXPECT_EQ(frame()->menuBar()->actions().at(0)->menu()->actions().size(), 1);
    window->set_scale(1);
    start_display(false);
    show_frame(0x112233);
    const QPoint before = frame()->pos();
    start_display(true, 640, 480);
    EXPECT_FALSE(host->get_display().set_mode(1024, 768, 8));
    EXPECT_FALSE(host->get_display().set_mode(640, 480, 16));
    run_for(400);
    const QSize screen = frame()->screen()->size();
    EXPECT_TRUE(frame()->isFullScreen() && view()->size() == screen);
    const auto middle = [&] { return pixel(screen.width() / 2, screen.height() / 2); };
    EXPECT_EQ(middle(), 0x112233u) << "the old picture until the next frame";
    size2 size{};
    ASSERT_TRUE(window->client_size(size));
    EXPECT_TRUE(size.width == 640 && size.height == 480) << "painted in the mode's pixels";
    uint32_t palette[256] = {};
    palette[6] = 0x445566;
    primary->set_palette(palette);
    show_frame(6);
    EXPECT_EQ(middle(), 0x445566u);
    EXPECT_EQ(pixel(0, 0), 0u) << "black around";
    start_display(false);
    run_for(400);
    EXPECT_FALSE(frame()->isFullScreen());
    EXPECT_TRUE(view()->size() == QSize(640, 400) && frame()->pos() == before);
    EXPECT_EQ(frame()->menuBar()->height() + 400, frame()->height())
        << "the menu stands outside of the picture";
    // By the window manager's own command the picture fills the screen, too.
    frame()->showFullScreen();
    run_for(50);
    EXPECT_TRUE(frame()->menuBar()->isHidden());
    EXPECT_EQ(pixel(1, view()->height() / 2), pixel(view()->width() / 2, view()->height() / 2));
    frame()->showNormal();
    run_for(50);
    EXPECT_FALSE(frame()->menuBar()->isHidden());
    // A mode that ends without a window mode after it does not leave a black screen.
    start_display(true);
    host->get_display().restore_mode();
    run_for(50);
    EXPECT_FALSE(frame()->isFullScreen());
}

TEST_F(DesktopWindow, TheWindowIsAsLargeAsThePersonWantsAndComesBackSo) {
    start_display(false);
    show_frame(0x102030);
    for (const QSize size : {QSize(320, 200), QSize(500, 700), QSize(1500, 400), QSize(2560, 1440)}) {
        frame()->resize(size);
        run_for(10);
        EXPECT_EQ(pixel(view()->width() / 2, view()->height() / 2), 0x102030u);
        const placement at = fit_picture(640, 400, 400, view()->width(), view()->height(), false);
        EXPECT_EQ(pixel(at.x, at.y), 0x102030u) << "the picture's first corner at " << size.width();
        EXPECT_EQ(pixel(at.x + at.width - 1, at.y + at.height - 1), 0x102030u) << "and its last one";
    }
    view_settings looks;
    looks.four_thirds = true;
    window->set_view(looks);
    window->set_scale(1);
    run_for(10);
    EXPECT_EQ(view()->size(), QSize(640, 480));
    frame()->setGeometry(100, 80, 700, 500);
    const std::string place = window->place();
    host_window *again = host->create_window({"again", 0, 0, 640, 480, place}, listener);
    again->resize_client(640, 400);
    again->centre();
    again->show();
    run_for(20);
    QWidget *second = QApplication::topLevelWidgets().back();
    for (QWidget *w : QApplication::topLevelWidgets())
        if (w->windowTitle() == "again") second = w;
    EXPECT_EQ(second->size(), QSize(700, 500));
}

TEST_F(DesktopWindow, MenusDoTheirWorkOnce) {
    menu_item second = item(22, "Second", "Alt+P");
    second.kind = menu_item::check;
    second.checked = true;
    listener.menu_bar = {submenu("&One", {item(21, "&First", "F9"), second, {}, item(0, "says only")}),
                         submenu("&Two", {submenu("&More", {item(31, "&Inner")})})};
    for (int i = 0; i < 3; ++i) window->menus_changed();
    run_for(10);
    listener.take();
    const auto menus = frame()->menuBar()->actions();
    ASSERT_EQ(menus.size(), 2);
    const auto first = menus[0]->menu()->actions();
    ASSERT_EQ(first.size(), 4);
    EXPECT_EQ(first[0]->text(), "&First\tF9");
    EXPECT_TRUE(first[1]->isChecked() && !first[3]->isEnabled());
    first[0]->trigger();
    menus[1]->menu()->actions().at(0)->menu()->actions().at(0)->trigger();
    run_for(10);
    EXPECT_EQ(listener.take(), "112 15 0, 112 1F 0");
    // By the keyboard alone: F10, down, Return; the key of an item; neither reaches the machine.
    play("+68 -68");
    ASSERT_TRUE(run_until([] { return QApplication::activePopupWidget() != nullptr; }));
    for (const int key : {Qt::Key_Down, Qt::Key_Return})
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
            if (QWidget *menu = QApplication::activePopupWidget()) {
                QKeyEvent e(type, key, Qt::NoModifier);
                QApplication::sendEvent(menu, &e);
            }
    run_for(20);
    EXPECT_EQ(listener.take(), "112 16 0");
}

// The picture's way runs on while the window is toggled, painted and destroyed.
TEST_F(DesktopWindow, TogglingWhileFramesArrive) {
    start_display(false);
    std::atomic<bool> done{false};
    std::atomic<uint32_t> frames{0};
    const auto own_primary = std::move(primary), own_drawn = std::move(drawn);
    std::thread render([&] {
        for (; !done; ++frames) {
            void *pixels;
            int pitch;
            if (own_drawn->lock(pixels, pitch) == display_result::ok) {
                static_cast<uint32_t *>(pixels)[frames % 256000] = frames;
                own_drawn->unlock();
            }
            own_primary->copy_from(*own_drawn, {0, 0, 640, 400}, {}, false);
        }
    });
    for (int i = 0; i < 6; ++i) {
        start_display(i % 2 == 0);
        own_drawn->fill({0, 0, 640, 400}, 0);
        run_for(15);
    }
    window->destroy();
    const uint32_t so_far = frames;
    EXPECT_TRUE(run_until([&] { return frames > so_far + 10; })) << "the render thread is not held up";
    done = true;
    render.join();
}

} // namespace
