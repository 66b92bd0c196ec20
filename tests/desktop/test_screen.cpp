// What a real screen shows, and keys as the X server sends them. Without Xvfb or xdotool these are skipped.
#include "tests/desktop/known_picture.h"
#include "tests/desktop/screen_fixture.h"

#include <QtGui/QImage>

namespace {

class PictureOnScreen : public DesktopScreen {
  protected:
    // Runs show_picture to its end: the screen, and where the client area's corner stands.
    QImage show(const char *mode, int &x, int &y) {
        const QString file = folder.filePath("screen.png");
        start(program, KIV_SHOW_PICTURE, {mode, file});
        EXPECT_TRUE(program.waitForFinished(60000));
        EXPECT_EQ(program.exitCode(), 0);
        const QByteArray said = program.readAllStandardOutput();
        EXPECT_EQ(std::sscanf(said.mid(said.indexOf("client")), "client %d %d", &x, &y), 2);
        return QImage(file).convertToFormat(QImage::Format_RGB32);
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

TEST_F(PictureOnScreen, TheWindowStandsInTheMiddleAndShowsEveryPixel) {
    ASSERT_NO_FATAL_FAILURE(start_server("1400x1000"));
    struct {
        const char *variable, *value; // displays of higher density
        int factor;
    } const cases[] = {{"QT_FONT_DPI", "96", 1}, {"QT_FONT_DPI", "154", 2}, {"QT_SCALE_FACTOR", "2", 2}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.variable << " " << c.value);
        environment.insert(c.variable, c.value);
        int x = -1, y = -1;
        const QImage screen = show("window", x, y);
        environment.remove(c.variable);
        EXPECT_NEAR(x * c.factor, (1400 - 640 * c.factor) / 2, 2);
        EXPECT_NEAR(y * c.factor, (1000 - 400 * c.factor) / 2, 30 * c.factor) << "with the menu bar above";
        expect_picture(screen, x * c.factor, y * c.factor, c.factor);
    }
}

TEST_F(PictureOnScreen, FullScreenIsCentredEnlargedAndLeftAgainWithAndWithoutAWindowManager) {
    ASSERT_NO_FATAL_FAILURE(start_server("1366x868"));
    for (const bool managed : {false, true}) {
        SCOPED_TRACE(managed);
        if (managed && QStandardPaths::findExecutable("openbox").isEmpty())
            GTEST_SKIP() << "openbox is not installed: seen without a window manager only";
        if (managed) start(window_manager, "openbox", {"--sm-disable"});
        int x = 0, y = 0;
        QImage screen = show("full", x, y);
        ASSERT_EQ(screen.size(), QSize(1366, 868));
        expect_picture(screen, 43, 34, 2);
        for (const QPoint at : {QPoint(0, 0), QPoint(1365, 867), QPoint(42, 400), QPoint(700, 33)})
            EXPECT_EQ(screen.pixel(at) & 0xFFFFFF, 0u) << at.x() << ", " << at.y() << " is outside";
        screen = show("back", x, y);
        EXPECT_NEAR(x, 363, 2);
        expect_picture(screen, x, y, 1);
    }
}

TEST_F(DesktopScreen, KeysAsTheServerSendsThem) {
    if (QStandardPaths::findExecutable("xdotool").isEmpty())
        GTEST_SKIP() << "xdotool is not installed: no keys were sent";
    ASSERT_NO_FATAL_FAILURE(start_server("800x600"));
    // What the program says until `until` is in it.
    const auto hears = [&](const char *until) {
        QByteArray said = program.readAllStandardOutput();
        while (!said.contains(until) && program.waitForReadyRead(60000))
            said += program.readAllStandardOutput();
        return said.replace('\n', ',').toStdString();
    };
    start(program, KIV_SHOW_PICTURE, {"keys"});
    hears("active 1");
    xdotool({"key", "a", "bracketleft", "84" /* keypad 5 */, "grave", "Tab"});
    EXPECT_EQ(hears("up 09"), "down 41,up 41,down c0,up c0,down 65,up 65,down dc,up dc,down 09,up 09,");
    xdotool({"keydown", "shift", "key", "F12", "keyup", "shift"});
    EXPECT_EQ(hears("up 10"), "down 10 shift,down 7b shift,up 7b shift,up 10,");
    xdotool({"key", "F10", "Escape", "b"}); // through the menu
    EXPECT_EQ(hears("up 42"), "down 42,up 42,");
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
