// A real screen: an X server of the test's own, and what runs on it. Without Xvfb the tests are skipped.
#pragma once

#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <gtest/gtest.h>

class DesktopScreen : public testing::Test {
  protected:
    void SetUp() override {
        if (QStandardPaths::findExecutable("Xvfb").isEmpty())
            GTEST_SKIP() << "Xvfb is not installed: the screen was not looked at";
    }
    void TearDown() override {
        for (QProcess *p : {&program, &second, &window_manager, &server}) {
            if (p->state() == QProcess::NotRunning) continue;
            p->terminate();
            if (!p->waitForFinished(3000)) p->kill();
            p->waitForFinished(3000);
        }
    }
    void start_server(const char *size) {
        // The server says the display's number on descriptor 1 when it is ready. It repeats no keys: on a
        // busy machine the repeats of one that is held look like new presses.
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start("Xvfb",
                     {"-displayfd", "1", "-screen", "0", QString(size) + "x24", "-nolisten", "tcp", "-r"});
        ASSERT_TRUE(server.waitForReadyRead(60000));
        environment.insert("DISPLAY", ":" + QString::fromLatin1(server.readLine()).trimmed());
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("SDL_AUDIODRIVER", "dummy");
    }
    void start(QProcess &p, const char *what, QStringList arguments) {
        p.setProcessEnvironment(environment);
        p.setStandardErrorFile(QProcess::nullDevice());
        p.start(what, arguments);
        ASSERT_TRUE(p.waitForStarted(-1));
    }
    // Keys and more, as xdotool's arguments; what it says.
    QString xdotool(QStringList arguments) {
        QProcess p;
        start(p, "xdotool", arguments);
        EXPECT_TRUE(p.waitForFinished(-1));
        return QString::fromUtf8(p.readAllStandardOutput());
    }

    QTemporaryDir folder;
    QProcess server, window_manager, program, second;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
};
