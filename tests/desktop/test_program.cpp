// The real program on the desktop, used as a person uses it: inside this process, where the machine can be
// looked at while its own dialogs run, and as a process of its own on a real screen.
#include "api/kiv.h"
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "display/kiv_directx.h"
#include "machine/kiv_machine.h"
#include "tests/common/whole_program.h"
#include "tests/desktop/host_fixture.h"
#include "tests/desktop/screen_fixture.h"

#include <QtCore/QThread>
#include <QtGui/QAction>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableWidget>
#include <future>
#include <sstream>
#include <thread>
#include <utility>

namespace {

// The kernel's codes of the keys.
constexpr uint32_t kb_9 = 10, kb_0 = 11, kb_e = 18, kb_a = 30, kb_d = 32, kb_c = 46, kb_b = 48, kb_shift = 42,
                   kb_f6 = 64, kb_f7 = 65, kb_f8 = 66, kb_f9 = 67, kb_f10 = 68, kb_f11 = 87, kb_f12 = 88,
                   kb_end = 107;

constexpr char open_title[] = "Kiv ﾌｧｲﾙの選択", save_title[] = "Kiv ﾌｧｲﾙの保存",
               tape_title[] = "CMT ﾌｧｲﾙの保存先選択", settings_title[] = "Kiv機能設定",
               help_title[] = "Kivについて", main_title[] = "Zun - Velmora [2.0.9]";

struct gave_up {};

class DesktopProgram : public platform::DesktopHost {
  protected:
    void SetUp() override { set_environment(); }

    // Runs the program on this thread while another does what the person does; the exit code.
    int run(const std::function<void()> &person) {
        host = std::make_unique<platform::desktop_host>();
        std::atomic<bool> ended{false};
        std::thread other([&] {
            try {
                person();
            } catch (const gave_up &) {
                while (!ended) { // out of whatever is open
                    QMetaObject::invokeMethod(qApp, [] {
                        if (QWidget *dialog = QApplication::activeModalWidget())
                            dialog->close();
                        else if (frame() != nullptr)
                            frame()->close();
                    });
                    std::this_thread::sleep_for(std::chrono::milliseconds(50));
                }
            }
        });
        const int code = run_program(*host);
        ended = true;
        other.join();
        return code;
    }
    // On the window thread, whether a dialog runs or not; the result.
    template <class F> static auto ask(F f) {
        auto task = std::make_shared<std::packaged_task<decltype(f())()>>(f);
        auto answer = task->get_future();
        QMetaObject::invokeMethod(
            qApp, [task] { (*task)(); }, Qt::QueuedConnection);
        if (answer.wait_for(std::chrono::minutes(1)) == std::future_status::ready) return answer.get();
        ADD_FAILURE() << "the window thread does not answer";
        throw gave_up{};
    }
    static void wait_until(const std::string &what, const std::function<bool()> &condition) {
        for (int i = 0; i < 6000; ++i) {
            if (ask(condition)) return;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        ADD_FAILURE() << "waited in vain for: " << what;
        throw gave_up{};
    }
    static void wait_for_row(uint16_t row, const std::string &text) {
        const auto ram = [](uint16_t at) { return __atomic_load_n(&machine.ram[at], __ATOMIC_RELAXED); };
        wait_until("row " + std::to_string(row) + ": " + text, [&] { return text_row(ram, row) == text; });
    }
    static void wait_until_running() {
        wait_until("the machine to run", [] {
            return QApplication::activeModalWidget() == nullptr && program.cpu_thread != nullptr &&
                   program.cpu_thread->is_running() && program.cpu_thread->is_suspended() == 0;
        });
    }

    // Keys reach the window as the platform sends them.
    void send(QEvent::Type type, uint32_t key) {
        if (key == kb_shift) shift = type == QEvent::KeyPress ? Qt::ShiftModifier : Qt::NoModifier;
        ask([=, this] {
            QCoreApplication::postEvent(view(), new QKeyEvent(type, Qt::Key_unknown, shift, key + 8, 0, 0));
        });
    }
    void strike(uint32_t key) {
        send(QEvent::KeyPress, key);
        send(QEvent::KeyRelease, key);
    }
    void strike_with_shift(uint32_t key) {
        send(QEvent::KeyPress, kb_shift);
        strike(key);
        send(QEvent::KeyRelease, kb_shift);
    }
    // Holds a key until row 1 shows what it typed.
    void type(uint32_t key, const std::string &row) {
        send(QEvent::KeyPress, key);
        wait_for_row(1, row);
        send(QEvent::KeyRelease, key);
    }

    // The dialog of that title, once it is there.
    static void wait_for_dialog(const char *title) {
        wait_until(title, [title] {
            const QWidget *dialog = QApplication::activeModalWidget();
            return dialog != nullptr && dialog->isVisible() && dialog->windowTitle() == title;
        });
    }
    // Keys for what has the keyboard in it, menus included; a text's characters one by one.
    static void press(int key, const QString &text = {}) {
        ask([=] {
            QWidget *to = QApplication::activePopupWidget();
            if (to == nullptr) to = QApplication::activeModalWidget();
            if (to == nullptr) return;
            if (to->focusWidget() != nullptr) to = to->focusWidget();
            for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
                QCoreApplication::postEvent(to, new QKeyEvent(type, key, Qt::NoModifier, text));
        });
    }
    static void answer(const char *title, const char *text, int key) {
        wait_for_dialog(title);
        for (const QChar c : QString(text)) press(Qt::Key_unknown, c);
        press(key);
        wait_until_running();
    }
    // On the window thread.
    static size_t white_pixels() {
        const QImage picture = view()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        size_t n = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) n += picture.pixel(x, y) == 0xFFFFFFFF;
        return n;
    }

    program_folder folder;
    Qt::KeyboardModifiers shift;
};

TEST_F(DesktopProgram, OneDayWithEveryCommand) {
    put_file(folder / "song.cmt", "tape");
    const int code = run([&] {
        wait_until("the window", [] { return frame() != nullptr; });
        wait_until_running();
        wait_for_row(0, "READY");
        EXPECT_EQ(ask([] { return frame()->windowTitle(); }), main_title);
        type(kb_a, "a");
        send(QEvent::KeyPress, kb_shift);
        type(kb_b, "aB");
        send(QEvent::KeyRelease, kb_shift);

        strike(kb_f6);
        answer(save_title, "game", Qt::Key_Return);
        EXPECT_EQ(get_file(folder / "game.KIV").size(), 32612u);
        type(kb_c, "aBc");
        strike(kb_f12);
        wait_for_row(1, "");
        strike(kb_f9);
        answer(open_title, "game.KIV", Qt::Key_Return);
        wait_for_row(1, "aB");
        type(kb_d, "aBd"); // its program goes on

        strike(kb_f9);
        answer(open_title, "song.cmt", Qt::Key_Return);
        EXPECT_EQ(ask([] { return machine.tape_size; }), 4u);
        EXPECT_EQ(ask([] { return machine.cassette_flags & cassette_stopped; }), 0);
        strike(kb_f9);
        answer(open_title, "", Qt::Key_Escape);
        EXPECT_NE(ask([] { return machine.cassette_flags & cassette_stopped; }), 0);
        strike_with_shift(kb_f9);
        answer(tape_title, "out", Qt::Key_Return);
        send(QEvent::KeyPress, kb_9);
        wait_until("the tape output", [&] { return get_file(folder / "out.CMT") == "HI"; });
        send(QEvent::KeyRelease, kb_9);

        strike(kb_f11);
        wait_until("the PCG's glyphs", [] { return machine.pcg_glyphs_on == 1; });
        strike(kb_f8);
        wait_until("silence", [] { return program.directx->isSoundOff() == 1; });
        const size_t text = ask(white_pixels);
        EXPECT_GT(text, 100u) << "READY and what was typed";
        strike_with_shift(kb_f6);
        wait_until("the speed line", [&] { return white_pixels() > text + 200; });
        strike_with_shift(kb_f6);
        wait_until("no speed line", [&] { return white_pixels() == text; });

        for (const bool full : {true, false}) {
            strike_with_shift(kb_f12);
            wait_until("the change of the screen", [=] { return frame()->isFullScreen() == full; });
            wait_until_running();
            wait_until("its picture", [] { return white_pixels() > 100; });
        }

        // The settings: the first slider one to the left, then down to "Interlace like".
        strike(kb_f7);
        wait_for_dialog(settings_title);
        press(Qt::Key_Left);
        for (int i = 0; i < 9; ++i) press(Qt::Key_Tab);
        press(Qt::Key_Space, " ");
        answer(settings_title, "", Qt::Key_Return);
        const std::string settings = get_file(folder / "KIV.INI");
        EXPECT_NE(settings.find("dma_load=99"), std::string::npos) << settings;
        EXPECT_NE(settings.find("interlace=1"), std::string::npos) << settings;
        EXPECT_EQ(ask([] { return machine.interlace; }), 1u);

        for (const char *title : {help_title, settings_title}) { // the menu's items
            strike(kb_f10);
            wait_until("the menu", [] { return QApplication::activePopupWidget() != nullptr; });
            if (title == settings_title) press(Qt::Key_Down);
            press(Qt::Key_Return);
            answer(title, "", Qt::Key_Escape);
        }
        EXPECT_EQ(get_file(folder / "KIV.INI"), settings);

        type(kb_e, "aBde");
        strike(kb_end);
    });
    EXPECT_EQ(code, 0);
    EXPECT_EQ(first_missing(folder.heard(), log_of_a_day), "");
}

TEST_F(DesktopProgram, ErrorsAreShownUntilTheyAreRead) {
    const auto read_box = [](const char *title, const char *text) {
        wait_for_dialog(title);
        EXPECT_EQ(ask([] {
                      return qobject_cast<QMessageBox *>(QApplication::activeModalWidget())->text();
                  }).section(u'\n', 0, 0),
                  text);
        press(Qt::Key_Return);
    };
    EXPECT_EQ(run([&] {
                  wait_until("the window", [] { return frame() != nullptr; });
                  wait_until_running();
                  send(QEvent::KeyPress, kb_0);
                  read_box("Kivex", "$00CD にて HALT命令を検出につき終了。");
              }),
              0);
    host.reset();
    std::filesystem::remove(folder / "8801-4th.rom");
    EXPECT_EQ(run([&] { read_box("Zun - Velmora", "ROMイメージファイル読み込み失敗"); }), 1);
}

// ---- the debugger's window ---------------------------------------------------------------------------

class DebuggersWindow : public DesktopProgram {
  protected:
    // What follows on the window thread.
    template <class Widget> static Widget *in(const char *dock) { // the listing without one
        QWidget *const within =
            dock != nullptr ? debugger()->findChild<QWidget *>(dock) : debugger()->centralWidget();
        return within->findChild<Widget *>();
    }
    static void click(const char *dock, int row, int column, bool twice = false) {
        auto *table = in<QTableWidget>(dock);
        table->scrollToItem(table->item(row, column));
        const QPointF at = table->visualItemRect(table->item(row, column)).center();
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease}) {
            QMouseEvent e(type, at, table->viewport()->mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, {});
            QCoreApplication::sendEvent(table->viewport(), &e);
            if (type == QEvent::MouseButtonRelease && !std::exchange(twice, false)) break;
        }
    }
    static void enter(QLineEdit *into, const QString &text) {
        into->setText(text);
        QKeyEvent e(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QCoreApplication::sendEvent(into, &e);
    }
    static void edit(const char *dock, int row, int column, const QString &text) {
        click(dock, row, column, true);
        enter(in<QTableWidget>(dock)->findChild<QLineEdit *>(), text);
    }
    static void press_key(const char *sequence, QWidget *of = debugger()) {
        for (QAction *action : of->findChildren<QAction *>())
            if (action->shortcut() == QKeySequence(sequence) && action->isEnabled()) return action->trigger();
        ADD_FAILURE() << sequence;
    }
    static void send_key(QEvent::Type type, uint32_t key) {
        QCoreApplication::postEvent(view(), new QKeyEvent(type, Qt::Key_unknown, {}, key + 8, 0, 0));
    }
    static QString cell(const char *dock, int row, int column) {
        const QTableWidgetItem *item = in<QTableWidget>(dock)->item(row, column);
        return item != nullptr ? item->text() : QString();
    }
    static QString state() { return debugger()->statusBar()->findChild<QLabel *>()->text(); }
    static void raise(const char *dock) { debugger()->findChild<QDockWidget *>(dock)->raise(); }
};

TEST_F(DebuggersWindow, StopsStepsEditsGoesBackAndLetsGo) {
    constexpr uint8_t begins[] = {0xE5, 0x7A, 0xFE, 0x30}; // the routine for a key that went down
    const auto found =
        std::search(std::begin(test_rom), std::end(test_rom), std::begin(begins), std::end(begins));
    const auto address = [&](int behind) {
        return QString::number(found - std::begin(test_rom) + behind, 16).toUpper().rightJustified(4, u'0');
    };
    const auto stands_at = [](const QString &pc) {
        return state().startsWith("停止中") && cell("registers", 0, 1) == pc;
    };
    const auto row_of = [](const char *dock, int column, const QString &text) {
        for (int row = 0; row < in<QTableWidget>(dock)->rowCount(); ++row)
            if (cell(dock, row, column).startsWith(text)) return row;
        return -1;
    };
    const struct {
        const char *name;
        std::function<void()> does;
        std::function<bool()> shows;
    } steps[] = {
        {"an address is looked up", [&] { enter(in<QLineEdit>(nullptr), "$" + address(0)); },
         [&] { return state() == "実行中" && cell(nullptr, 0, 1).startsWith(address(0)); }},
        {"a breakpoint by a click", [&] { click(nullptr, 0, 0); }, [] { return cell(nullptr, 0, 0) == "●"; }},
        {"it stops there", [&] { send_key(QEvent::KeyPress, kb_a); }, [&] { return stands_at(address(0)); }},
        {"its hit is counted", [] { raise("points"); }, [] { return cell("points", 0, 1).endsWith("(1)"); }},
        {"a step", [] { press_key("F11"); }, [&] { return stands_at(address(1)); }},
        {"a step back", [] { press_key("Alt+F11"); }, [&] { return stands_at(address(0)); }},
        {"a register", [&] { edit("registers", row_of("registers", 0, "BC"), 1, "1234+1"); },
         [] { return kiv_get_register(KIV_REG_BC) == 1235; }},
        {"a wrong one", [&] { edit("registers", row_of("registers", 0, "BC"), 1, "nowhere"); },
         [&] {
             return debugger()->statusBar()->currentMessage() != "" && kiv_get_register(KIV_REG_BC) == 1235;
         }},
        {"a flag", [] { in<QCheckBox>("registers")->click(); },
         [] {
             return in<QCheckBox>("registers")->isChecked() == ((kiv_get_register(KIV_REG_AF) & 0x80) != 0);
         }},
        {"memory is found",
         [] {
             raise("memory");
             enter(in<QLineEdit>("memory"), "$E100");
         },
         [] { return cell("memory", 0, 0) == "E100"; }},
        {"memory as digits", [] { edit("memory", 0, 3, "5A"); },
         [] { return machine.ram[0xE102] == 0x5A && cell("memory", 0, 17)[2] == u'Z'; }},
        {"memory as text",
         [] { edit("memory", 0, 17, QString("Kiv") + QChar(0xFF76) + cell("memory", 0, 17).mid(4)); },
         [] { return std::memcmp(machine.ram + 0xE100, "Kiv\xB6", 4) == 0 && cell("memory", 0, 1) == "4B"; }},
        {"the profile runs",
         [] {
             raise("profile");
             in<QPushButton>("profile")->click();
         },
         [] { return in<QPushButton>("profile")->text().startsWith("停止"); }},
        {"out of the routine", [] { press_key("Shift+F11"); },
         [&] { return state().startsWith("停止中") && in<QTableWidget>("profile")->rowCount() > 0; }},
        {"back to where it stopped", [] { press_key("Alt+F5"); }, [&] { return stands_at(address(0)); }},
        {"no breakpoint",
         [&] {
             raise("points");
             in<QTableWidget>("points")->setCurrentCell(0, 1);
             in<QPushButton>("points")->click();
         },
         [] { return in<QTableWidget>("points")->rowCount() == 0; }},
        {"the console", [&] { enter(in<QLineEdit>("console"), "p 6*7"); },
         [] { return in<QPlainTextEdit>("console")->toPlainText().contains("42 $2A"); }},
        {"Escape ends what takes long",
         [] {
             auto *person = new QTimer(debugger());
             QObject::connect(person, &QTimer::timeout, person, [person] {
                 QWidget *const dialog = QApplication::activeModalWidget();
                 if (dialog == nullptr) return;
                 person->deleteLater();
                 QKeyEvent e(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
                 QCoreApplication::sendEvent(dialog, &e);
             });
             person->start(20);
             enter(in<QLineEdit>("console"), "until 0");
         },
         [] { return in<QPlainTextEdit>("console")->toPlainText().contains("interrupted"); }},
        {"it runs on",
         [&] {
             send_key(QEvent::KeyRelease, kb_a);
             press_key("F5");
         },
         [] { return state() == "実行中"; }},
    };
    EXPECT_EQ(run([&] {
                  wait_until_running();
                  wait_for_row(0, "READY");
                  ask([] { press_key("Alt+D", frame()); });
                  wait_until("the debugger", [] { return debugger() != nullptr; });
                  for (const auto &step : steps) {
                      ask(step.does);
                      wait_until(step.name, step.shows);
                  }
                  ask([] { debugger()->close(); });
                  wait_until("no debugger", [] { return debugger() == nullptr; });
                  wait_until_running();
                  strike(kb_f12);
                  wait_for_row(1, "");
                  type(kb_b, "b");
                  strike(kb_end);
              }),
              0);
}

// ---- the process on a real screen --------------------------------------------------------------------

class ProgramOnScreen : public DesktopScreen {
  protected:
    void SetUp() override {
        DesktopScreen::SetUp();
        if (IsSkipped()) return;
        if (QStandardPaths::findExecutable("xdotool").isEmpty())
            GTEST_SKIP() << "xdotool is not installed: the program was not used on a screen";
        write_test_roms(path(""));
        ASSERT_NO_FATAL_FAILURE(start_server("800x600"));
        environment.insert("XDG_RUNTIME_DIR", folder.path());
        environment.insert("XDG_CONFIG_HOME", folder.path());
        environment.insert("KIV_TRACE", folder.filePath("trace.txt"));
        program.setWorkingDirectory(folder.path());
        start(program, KIV_PROGRAM, {});
    }
    std::string path(const char *name) const { return folder.filePath(name).toStdString(); }
    std::vector<std::string> log() const {
        std::vector<std::string> lines;
        std::istringstream text(get_file(path("trace.txt")));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        return lines;
    }
    template <class Done> static void wait_until(const std::string &what, Done done) {
        QElapsedTimer timer;
        timer.start();
        while (!done()) {
            if (timer.elapsed() > 60000) throw std::runtime_error("waited in vain for: " + what);
            QThread::msleep(50);
        }
    }
    QImage screen() {
        QProcess p;
        start(p, KIV_SHOW_PICTURE, {"screen", folder.filePath("screen.png")});
        EXPECT_TRUE(p.waitForFinished(-1));
        return QImage(folder.filePath("screen.png")).convertToFormat(QImage::Format_RGB32);
    }
    // Where two screens differ.
    static QRect difference(const QImage &a, const QImage &b) {
        QRect box;
        for (int y = 0; y < a.height(); ++y)
            for (int x = 0; x < a.width(); ++x)
                if (a.pixel(x, y) != b.pixel(x, y)) box |= QRect(x, y, 1, 1);
        return box;
    }
    // Holds a key of the machine until the screen shows what it typed, which is one character.
    QRect type(const char *key) {
        const QImage before = screen();
        QRect typed;
        xdotool({"keydown", key});
        wait_until(key, [&] { return !(typed = difference(before, screen())).isEmpty(); });
        xdotool({"keyup", key});
        EXPECT_LE(typed.width(), 8);
        EXPECT_LE(typed.height(), 16);
        return typed;
    }
    void wait_for_focus(const QString &title) {
        wait_until(title.toStdString(), [&] {
            return xdotool({"getwindowfocus", "getwindowname"}).trimmed() == title;
        });
    }
    // Keys into the dialog of that title; then the main window has the keyboard again.
    void answer(const char *title, const QStringList &keys) {
        wait_for_focus(title);
        xdotool(keys);
        wait_for_focus(main_title);
    }
};

TEST(ProgramStart, WithoutADesktopItSaysSoInOneLine) {
    const temporary_folder place;
    const struct {
        const char *desktop, *said;
    } rows[] = {{"DISPLAY=:4711", "kiv: The window cannot be shown on the desktop \":4711\""},
                {"-u DISPLAY", "kiv: There is no desktop to show the window on"}};
    for (const auto &r : rows) {
        const std::string command = std::string("cd '") + place.path +
                                    "'; env -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM " + r.desktop +
                                    " '" KIV_PROGRAM "' >said 2>&1";
        const int status = std::system(command.c_str());
        const std::string said = get_file(place / "said");
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
        EXPECT_EQ(said.rfind(r.said, 0), 0u) << said;
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    }
}

TEST_F(ProgramOnScreen, OneDayWithEveryCommand) {
    const auto type_name = [](const char *name) {
        return QStringList{"type", "--args", "1", name, "key", "Return"};
    };
    wait_until("the window", [&] { return first_missing(log(), {"OnAppActivate: Activate"}).empty(); });

    // The machine writes on its tape as soon as it has booted: then READY is on the screen.
    xdotool({"keydown", "shift", "key", "F9", "keyup", "shift"});
    answer(tape_title, type_name("out"));
    xdotool({"keydown", "9"});
    wait_until("the tape output", [&] { return get_file(path("out.CMT")) == "HI"; });
    xdotool({"keyup", "9"});
    QImage ready = screen();
    wait_until("a picture that stays",
               [&] { return difference(ready, std::exchange(ready, screen())).isEmpty(); });

    const QRect small_a = type("a");
    xdotool({"keydown", "shift"});
    const QRect large_b = type("b");
    xdotool({"keyup", "shift"});
    EXPECT_NEAR(large_b.left() - small_a.left(), 8, 3) << "the next column";
    const auto shows_ready = [&] {
        wait_until("READY alone", [&] { return difference(ready, screen()).isEmpty(); });
    };
    const auto save = [&](const char *name) {
        xdotool({"key", "F6"});
        answer(save_title, type_name(name));
        const std::string dump = get_file(path(name) + ".KIV");
        EXPECT_EQ(dump.size(), 32612u);
        return text_row([&dump](uint16_t at) { return dump.at(at - 0x8000u); }, 1);
    };

    EXPECT_EQ(save("game"), "aB");
    xdotool({"key", "F12"});
    shows_ready();
    xdotool({"key", "F9"});
    answer(open_title, type_name("game.KIV"));
    EXPECT_EQ(save("again"), "aB");
    xdotool({"key", "F12"});
    shows_ready();
    xdotool({"key", "F9"});
    answer(open_title, type_name("out.CMT"));
    shows_ready();

    for (const char *key : {"F6", "F12"}) { // the speed line, full screen
        xdotool({"keydown", "shift", "key", key, "keyup", "shift"});
        wait_until("the change", [&] { return difference(ready, screen()).width() > 100; });
        xdotool({"keydown", "shift", "key", key, "keyup", "shift"});
        shows_ready();
    }

    xdotool({"key", "F7"});
    answer(settings_title, {"key", "Left", "Tab", "Tab", "Tab", "Tab", "Tab", "space", "Return"});
    const std::string settings = get_file(path("KIV.INI"));
    EXPECT_NE(settings.find("dma_load=99"), std::string::npos) << settings;
    EXPECT_NE(settings.find("z80_no_wait=1"), std::string::npos) << settings;
    xdotool({"key", "F10", "Return"}); // the menu's first item
    answer(help_title, {"key", "Escape"});
    shows_ready();

    xdotool({"key", "End"});
    ASSERT_TRUE(program.waitForFinished(60000));
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    EXPECT_EQ(first_missing(log(), log_of_a_day), "");
    EXPECT_EQ(get_file(path("KIV.INI")), settings);
}

} // namespace
