// What a real screen shows, and keys as the X server sends them. Without Xvfb or xdotool these are skipped.
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <gtest/gtest.h>

namespace {

class DesktopScreen : public testing::Test {
  protected:
    void SetUp() override {
        server_program = QStandardPaths::findExecutable("Xvfb");
        if (server_program.isEmpty()) GTEST_SKIP() << "Xvfb is not installed: the screen was not looked at";
        ASSERT_TRUE(folder.isValid());
    }
    void TearDown() override {
        for (QProcess *p : {&program, &second, &server}) {
            if (p->state() == QProcess::NotRunning) continue;
            p->terminate();
            if (!p->waitForFinished(3000)) p->kill();
            p->waitForFinished(3000);
        }
    }
    void start_server(const char *size) {
        // The server says the display's number on descriptor 1 when it is ready.
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start(server_program,
                     {"-displayfd", "1", "-screen", "0", QString(size) + "x24", "-nolisten", "tcp"});
        ASSERT_TRUE(server.waitForStarted());
        ASSERT_TRUE(server.waitForReadyRead(20000));
        environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", ":" + QString::fromLatin1(server.readLine()).trimmed());
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("SDL_AUDIODRIVER", "dummy");
        environment.remove("WAYLAND_DISPLAY");
    }
    // Runs show_picture to its end; what it says, and the screen.
    QString show(const char *mode, QImage &screen) {
        const QString file = folder.filePath("screen.png");
        program.setProcessEnvironment(environment);
        program.setStandardErrorFile(QProcess::nullDevice());
        program.start(KIV_SHOW_PICTURE, {mode, file});
        EXPECT_TRUE(program.waitForFinished(30000));
        EXPECT_EQ(program.exitCode(), 0);
        screen = QImage(file).convertToFormat(QImage::Format_RGB32);
        return QString::fromLatin1(program.readAllStandardOutput());
    }
    static unsigned expected(int x, int y) {
        const auto n = static_cast<unsigned>((x + y * 3) & 0xFF);
        return (n % 7 * 40) << 16 | (n % 5 * 60) << 8 | n % 3 * 120;
    }
    // Every device pixel of the picture, enlarged by `factor`, its corner at (left, top).
    static void expect_picture(const QImage &screen, int left, int top, int factor) {
        ASSERT_GE(screen.width(), left + 640 * factor);
        ASSERT_GE(screen.height(), top + 400 * factor);
        int wrong = 0;
        for (int y = 0; y < 400 * factor; ++y)
            for (int x = 0; x < 640 * factor; ++x)
                if ((screen.pixel(left + x, top + y) & 0xFFFFFF) != expected(x / factor, y / factor) &&
                    ++wrong <= 3)
                    ADD_FAILURE() << "(" << x << ", " << y << ") " << std::hex
                                  << (screen.pixel(left + x, top + y) & 0xFFFFFF) << ", expected "
                                  << expected(x / factor, y / factor);
        EXPECT_EQ(wrong, 0) << "of " << 640 * 400 * factor * factor;
    }

    QString server_program;
    QTemporaryDir folder;
    QProcess server, program, second;
    QProcessEnvironment environment;
};

TEST_F(DesktopScreen, TheWindowStandsInTheMiddleAndShowsEveryPixel) {
    ASSERT_NO_FATAL_FAILURE(start_server("1400x1000"));
    for (const char *dpi : {"96", "154", "192"}) { // displays of higher density
        environment.insert("QT_FONT_DPI", dpi);
        QImage screen;
        const QString said = show("window", screen);
        int x = -1, y = -1, width = 0, height = 0;
        const auto line = said.mid(said.indexOf("client")).toStdString();
        ASSERT_EQ(std::sscanf(line.c_str(), "client %d %d screen %d %d", &x, &y, &width, &height), 4) << line;
        const int factor = *dpi == '9' ? 1 : 2;
        EXPECT_EQ(width * factor, 1400);
        EXPECT_NEAR(x * factor, (1400 - 640 * factor) / 2, 2);
        EXPECT_NEAR(y * factor, (1000 - 400 * factor) / 2, 30 * factor) << "with the menu bar above";
        expect_picture(screen, x * factor, y * factor, factor);
    }
}

TEST_F(DesktopScreen, FullScreenIsCentredEnlargedAndLeftAgain) {
    ASSERT_NO_FATAL_FAILURE(start_server("1366x868"));
    QImage screen;
    show("full", screen);
    ASSERT_EQ(screen.size(), QSize(1366, 868));
    expect_picture(screen, 43, 34, 2);
    for (const QPoint at :
         {QPoint(0, 0), QPoint(1365, 867), QPoint(42, 400), QPoint(700, 33), QPoint(700, 834)})
        EXPECT_EQ(screen.pixel(at) & 0xFFFFFF, 0u)
            << at.x() << ", " << at.y() << " is outside of the picture";
    const QString said = show("back", screen);
    int x = 0, y = 0;
    ASSERT_EQ(std::sscanf(said.mid(said.indexOf("client")).toStdString().c_str(), "client %d %d", &x, &y), 2);
    EXPECT_EQ(x, 363);
    expect_picture(screen, x, y, 1);
}

TEST_F(DesktopScreen, KeysAsTheServerSendsThem) {
    const QString xdotool = QStandardPaths::findExecutable("xdotool");
    if (xdotool.isEmpty()) GTEST_SKIP() << "xdotool is not installed: no keys were sent";
    ASSERT_NO_FATAL_FAILURE(start_server("800x600"));
    const auto start = [&](QProcess &p) {
        p.setProcessEnvironment(environment);
        p.setStandardErrorFile(QProcess::nullDevice());
        p.start(KIV_SHOW_PICTURE, {"keys"});
    };
    // What the program has said, once `until` is in it.
    QString said;
    const auto hears = [&](const char *until) {
        QElapsedTimer timer;
        timer.start();
        while (!said.contains(until) && timer.elapsed() < 20000)
            if (program.waitForReadyRead(100)) said += QString::fromLatin1(program.readAllStandardOutput());
        EXPECT_TRUE(said.contains(until)) << until << " not in: " << said.toStdString();
        const std::string all = said.replace('\n', ',').toStdString();
        said.clear();
        return all;
    };
    const auto keys = [&](QStringList what) {
        QProcess p;
        p.setProcessEnvironment(environment);
        p.start(xdotool, what);
        EXPECT_TRUE(p.waitForFinished(10000));
    };
    start(program);
    hears("active 1");
    keys({"key", "a", "bracketleft", "84" /* keypad 5 */, "grave", "Tab"});
    EXPECT_EQ(hears("up 09"), "down 41,up 41,down c0,up c0,down 65,up 65,down dc,up dc,down 09,up 09,");
    keys({"keydown", "shift", "key", "F12", "keyup", "shift"});
    EXPECT_EQ(hears("up 10"), "down 10 shift,down 7b shift,up 7b shift,up 10,");
    keys({"key", "F10", "Escape", "b"}); // through the menu
    EXPECT_EQ(hears("up 42"), "down 42,up 42,");
    // Another program takes the keyboard away from two keys that are held.
    keys({"keydown", "z", "keydown", "End"});
    hears("down 23");
    start(second);
    EXPECT_EQ(hears("active 0"), "up 5a,active 0,");
    keys({"keyup", "z", "keyup", "End"});
    keys({"key", "alt+F4"}); // the second ends, and the keyboard may stay with nobody
    EXPECT_TRUE(second.waitForFinished(10000));
    EXPECT_EQ(program.state(), QProcess::Running) << "letting go of End elsewhere closes nothing";
}

} // namespace
