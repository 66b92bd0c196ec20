// What a real screen shows, and keys as the X server sends them. Without Xvfb or xdotool these are skipped.
#include "tests/desktop/known_picture.h"
#include "tests/desktop/screen_fixture.h"

#include <QtGui/QImage>
#include <cmath>

namespace {

class PictureOnScreen : public DesktopScreen {
  protected:
    // Where the picture's first row stands, enlarged twice: a window's place in whole points may be between
    // the pixels of a denser screen.
    static QPoint corner_near(const QImage &screen, long left, long top) {
        for (int y = -2; y <= 2; ++y)
            for (int x = -2; x <= 2; ++x) {
                const QPoint at(static_cast<int>(left) + x, static_cast<int>(top) + y);
                bool same = true;
                for (int i = 0; i < 1280 && same; ++i)
                    for (int row = 0; row < 4; ++row)
                        same &= (screen.pixel(at.x() + i, at.y() + row) & 0xFFFFFF) ==
                                known_colour(known_index(i / 2, row / 2));
                if (same) return at;
            }
        return {static_cast<int>(left), static_cast<int>(top)};
    }
    // Every device pixel of the picture, enlarged by `factor`, its corner at (left, top).
    static void expect_picture(const QImage &screen, int left, int top, int factor) {
        ASSERT_TRUE(screen.rect().contains(QRect(left, top, 640 * factor, 400 * factor)));
        int wrong = 0;
        for (int y = 0; y < 400 * factor; ++y)
            for (int x = 0; x < 640 * factor; ++x)
                wrong += (screen.pixel(left + x, top + y) & 0xFFFFFF) !=
                         known_colour(known_index(x / factor, y / factor));
        EXPECT_EQ(wrong, 0) << "pixels of " << 640 * 400 * factor * factor;
    }
};

TEST_F(PictureOnScreen, EveryPixelIsShownInTheWindowInFullScreenAndBack) {
    ASSERT_NO_FATAL_FAILURE(start_server("1920x1200"));
    struct {
        const char *label, *variable, *value;
        double factor; // of the display's density
        const char *manager;
    } const cases[] = {
        {"no window manager", "QT_SCALE_FACTOR", "1", 1, nullptr},
        {"denser by a quarter", "QT_SCALE_FACTOR", "1.25", 1.25, nullptr},
        {"a window manager", "QT_SCALE_FACTOR", "1", 1, "openbox"},
        {"denser by half, with a window manager", "QT_SCALE_FACTOR", "1.5", 1.5, "openbox"},
        {"twice as dense, with a window manager", "QT_SCALE_FACTOR", "2", 2, "openbox"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.label);
        if (c.manager != nullptr && window_manager.state() == QProcess::NotRunning) {
            if (QStandardPaths::findExecutable(c.manager).isEmpty())
                GTEST_SKIP() << c.manager << " is not installed: seen without a window manager only";
            start(window_manager, c.manager, {"--startup", "echo ready"});
            ASSERT_TRUE(window_manager.waitForReadyRead(60000));
        }
        environment.insert(c.variable, c.value);
        start(program, KIV_SHOW_PICTURE, {"modes", folder.path()});
        environment.remove(c.variable);
        ASSERT_TRUE(program.waitForFinished(300000));
        int x[3], y[3], said = 0;
        for (const QByteArray &line : program.readAllStandardOutput().split('\n'))
            if (line.startsWith("client")) said += std::sscanf(line, "client %d %d", &x[said], &y[said]) == 2;
        ASSERT_EQ(said, 3);
        QImage screens[3];
        for (int i = 0; i < 3; ++i)
            screens[i] =
                QImage(folder.filePath(QString("%1.png").arg(i))).convertToFormat(QImage::Format_RGB32);
        for (const int i : {0, 2}) {
            EXPECT_NEAR(x[i] * c.factor, (1920 - 1280) / 2, 3 * c.factor);
            EXPECT_NEAR(y[i] * c.factor, (1200 - 800) / 2, 40 * c.factor) << "below the menu bar";
            const QPoint at =
                corner_near(screens[i], std::lround(x[i] * c.factor), std::lround(y[i] * c.factor));
            expect_picture(screens[i], at.x(), at.y(), 2);
        }
        expect_picture(screens[1], 0, 0, 3);
    }
}

TEST_F(DesktopScreen, KeysAsTheServerSendsThem) {
    if (QStandardPaths::findExecutable("xdotool").isEmpty())
        GTEST_SKIP() << "xdotool is not installed: no keys were sent";
    ASSERT_NO_FATAL_FAILURE(start_server("800x600"));
    // What the program says until `until` is in it.
    const auto hears = [&](const char *until, int milliseconds = 60000) {
        QByteArray said = program.readAllStandardOutput();
        while (!said.contains(until) && program.waitForReadyRead(milliseconds))
            said += program.readAllStandardOutput();
        return said.replace('\n', ',').toStdString();
    };
    start(program, KIV_SHOW_PICTURE, {"keys"});
    hears("active 1");
    xdotool({"key", "a", "bracketleft", "84" /* keypad 5 */, "grave", "Tab"});
    EXPECT_EQ(hears("up 09"), "down 41,up 41,down c0,up c0,down 65,up 65,down dc,up dc,down 09,up 09,");
    xdotool({"keydown", "shift", "key", "F12", "keyup", "shift"});
    EXPECT_EQ(hears("up 10"), "down 10 shift,down 7b shift,up 7b shift,up 10,");
    // Through the menu, which opens when the desktop has the time; then the letter is for the machine again.
    xdotool({"key", "F10"});
    std::string said;
    for (int tries = 0; tries < 60 && said.find("up 42") == std::string::npos; ++tries) {
        xdotool({"key", "Escape", "b"});
        said += hears("up 42", 1000);
    }
    EXPECT_TRUE(said.ends_with("down 42,up 42,") && said.find("79") == std::string::npos) << said;
    hears("none", 300); // the rest of what was sent
    // Another program takes the keyboard away from two keys that are held.
    xdotool({"keydown", "z", "keydown", "End"});
    hears("down 23");
    start(second, KIV_SHOW_PICTURE, {"keys"});
    EXPECT_EQ(hears("active 0"), "up 5a,active 0,");
    xdotool({"keyup", "z", "keyup", "End"});
    xdotool({"key", "alt+F4"}); // the second ends, and the keyboard may stay with nobody
    EXPECT_TRUE(second.waitForFinished(60000));
    EXPECT_EQ(program.state(), QProcess::Running) << "letting go of End elsewhere closes nothing";
}

} // namespace
