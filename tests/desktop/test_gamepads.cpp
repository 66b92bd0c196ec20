// Gamepads: a virtual one of SDL's, and what the window hears of it; the page with the keyboard under the
// mouse.
#define SDL_MAIN_HANDLED
#include "tests/desktop/host_fixture.h"

#include <QtGui/QMouseEvent>
#include <SDL.h>

namespace platform {

namespace {

using DesktopGamepads = DesktopHost;

TEST_F(DesktopGamepads, APadIsHeardWhileTheyAreUsed) {
    EXPECT_EQ(SDL_WasInit(SDL_INIT_JOYSTICK), 0u) << "not before it is asked for";
    host->use_gamepads(true);
    const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_GAMECONTROLLER, SDL_CONTROLLER_AXIS_MAX,
                                                SDL_CONTROLLER_BUTTON_MAX, 0);
    ASSERT_GE(index, 0) << SDL_GetError();
    ASSERT_TRUE(run_until([&] { return host->gamepads().size() == 1; }));
    SDL_Joystick *stick = SDL_JoystickFromInstanceID(SDL_JoystickGetDeviceInstanceID(index));
    ASSERT_NE(stick, nullptr);
    const auto heard_after = [&](const std::function<void()> &change) {
        listener.take();
        change();
        run_until([&] { return !listener.heard.empty(); });
        run_for(20);
        return listener.take();
    };
    EXPECT_EQ(heard_after([&] { SDL_JoystickSetVirtualButton(stick, SDL_CONTROLLER_BUTTON_A, 1); }),
              "120 4 0");
    EXPECT_EQ(heard_after([&] { SDL_JoystickSetVirtualAxis(stick, SDL_CONTROLLER_AXIS_LEFTX, -30000); }),
              "120 2 0");
    EXPECT_EQ(heard_after([&] { SDL_JoystickSetVirtualAxis(stick, SDL_CONTROLLER_AXIS_LEFTX, 9000); }),
              "121 2 0");
    EXPECT_EQ(heard_after([&] { host->use_gamepads(false); }), "121 4 0") << "nothing stays held";
    EXPECT_EQ(SDL_WasInit(SDL_INIT_JOYSTICK), 0u);
    EXPECT_TRUE(host->gamepads().empty());
}

TEST_F(DesktopGamepads, ThePageIsClicked) {
    keyboard_page page;
    page.title = "keys";
    page.keys = {{0x101, 0, 0, 4, 4, "A", "", shown_key::plain},
                 {0x102, 4, 0, 4, 4, "SHIFT", "", shown_key::until_next},
                 {0x103, 8, 0, 4, 4, "CAPS", "", shown_key::turning}};
    window->show_keyboard(&page);
    run_for(20);
    EXPECT_TRUE(window->keyboard_shown());
    QWidget *shown = nullptr;
    for (QWidget *w : QApplication::topLevelWidgets())
        if (w->windowTitle() == "keys") shown = w;
    ASSERT_NE(shown, nullptr);
    const auto click = [&](int key, Qt::MouseButton button = Qt::LeftButton) {
        const QPointF at(shown->width() * (2 * key + 1) / 6.0, shown->height() / 4.0);
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            QMouseEvent e(type, at, at, button, type == QEvent::MouseButtonPress ? button : Qt::NoButton, {});
            QCoreApplication::sendEvent(shown, &e);
        }
        run_for(10);
        return listener.take();
    };
    listener.take();
    EXPECT_EQ(click(0), "down 101, up 101");
    EXPECT_EQ(click(1), "down 102") << "held until another key was clicked";
    EXPECT_EQ(click(2), "down 103") << "likewise until it is clicked again";
    EXPECT_EQ(click(0), "down 101, up 101, up 102");
    EXPECT_EQ(click(2), "up 103");
    EXPECT_EQ(click(0, Qt::RightButton), "down 101");
    window->show_keyboard(nullptr);
    run_for(20);
    EXPECT_EQ(listener.take(), "up 101") << "a page that goes holds nothing";
    EXPECT_FALSE(window->keyboard_shown());
}

} // namespace

} // namespace platform
