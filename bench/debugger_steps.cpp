// How long steps back take in the debugger's window, from the key's action to the painted window, at places
// spread over two minutes of history: of the demonstration, and of a program that fills the three planes as
// fast as the processor can. A desktop is wanted: xvfb-run build/release/bench/bench_debugger_steps.
#include "app/program.h"
#include "cpu/z80_thread.h"
#include "machine/run_block.h"
#include "platform/desktop/desktop_host.h"
#include "resources/resources.h"
#include "translations/translations.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>
#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDockWidget>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMainWindow>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <random>
#include <thread>

namespace {

constexpr uint64_t a_second = 3993600, depth = 119 * a_second;
constexpr int places = 60;

template <class F> auto ask(F f) { // on the window thread
    auto task = std::make_shared<std::packaged_task<decltype(f())()>>(f);
    auto answer = task->get_future();
    QMetaObject::invokeMethod(
        qApp, [task] { (*task)(); }, Qt::QueuedConnection);
    return answer.get();
}

void wait_until(const std::function<bool()> &condition) {
    while (!ask(condition)) std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

uint64_t now() { return __atomic_load_n(&run_state.cycles, __ATOMIC_RELAXED); }

QMainWindow *window(bool debugger) {
    for (QWidget *w : QApplication::topLevelWidgets())
        if (auto *f = qobject_cast<QMainWindow *>(w))
            if ((f->findChild<QDockWidget *>("registers") != nullptr) == debugger) return f;
    return nullptr;
}

void act(const char *key, bool in_debugger = true) {
    for (QAction *action : window(in_debugger)->findChildren<QAction *>())
        if (action->shortcut() == QKeySequence(QString::fromLatin1(key))) return action->trigger();
}

void say(const QString &text) {
    ask([text] {
        auto *line = window(true)->findChild<QDockWidget *>("console")->findChild<QLineEdit *>();
        line->setText(text);
        emit line->returnPressed();
    });
}

double milliseconds(const char *key) {
    return ask([key] {
        QElapsedTimer timer;
        timer.start();
        act(key);
        QCoreApplication::processEvents();
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    });
}

void measure(const char *name) {
    ask([] { act("F5"); }); // stops
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    std::mt19937_64 chance(1);
    std::vector<uint64_t> at;
    for (int i = 0; i < places; ++i) at.push_back(now() - chance() % depth);
    std::sort(at.rbegin(), at.rend()); // what is later is forgotten
    for (const bool with_past : {false, true}) {
        ask([=] { window(true)->findChild<QDockWidget *>(with_past ? "past" : "memory")->raise(); });
        std::printf("%s%s\n", name, with_past ? ", with the last 10,000 instructions shown" : "");
        std::map<std::string, std::vector<double>> taken;
        for (size_t i = with_past ? 1 : 0; i < at.size(); i += 2) {
            say("back-to " + QString::number(at[i]));
            for (const char *key : {"Alt+F11", "Alt+F10", "Alt+F8"}) {
                taken[key].push_back(milliseconds(key));
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
        }
        for (auto &[key, all] : taken) {
            std::sort(all.begin(), all.end());
            std::printf("  %-8s median %5.1f ms, worst %5.1f ms\n", key.c_str(), all[all.size() / 2],
                        all.back());
        }
        std::fflush(stdout);
    }
}

void person() {
    wait_until([] {
        return window(false) != nullptr && program.cpu_thread != nullptr &&
               program.cpu_thread->is_running() && program.cpu_thread->is_suspended() == 0 &&
               now() > 2 * a_second;
    });
    const auto two_minutes = [] {
        ask([] { program.cpu_thread->set_speed(any_speed); });
        const uint64_t end = now() + 121 * a_second;
        while (now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(20));
    };
    ask([] { act("Alt+D", false); });
    wait_until([] { return window(true) != nullptr; });
    say("type DEMO\\n");
    two_minutes();
    measure("the demonstration");
    // OUT ($5C),A; LD SP,$FE80; LD B,250; 32 times PUSH DE; DJNZ; INC D; INC E; the next plane; and again
    QString filling = "F3", one;
    for (int plane = 0; plane < 3; ++plane)
        filling += QString("D3%1 3180FE 06FA %2 10DE 14 1C")
                       .arg(0x5C + plane, 2, 16)
                       .arg(QString("D5").repeated(32));
    filling = filling.remove(u' ') + "C30190";
    for (qsizetype i = 0; i < filling.size(); i += 2) one += ",$" + filling.mid(i, 2);
    say("poke $9000 " + one.mid(1));
    say("set PC=$9000");
    ask([] { act("F5"); });
    two_minutes();
    measure("the three planes filled all the time");
    say("history");
    ask([] { window(true)->close(); });
    ask([] { window(false)->close(); });
}

} // namespace

int main() {
    QTemporaryDir folder;
    std::filesystem::current_path(folder.path().toStdString());
    for (const char *name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        setenv(name, folder.path().toUtf8(), 1);
    register_program_resources();
    register_translations();
    platform::desktop_host host;
    std::thread other(person);
    program_options options;
    options.roms = KIV_FIRMWARE_DIR;
    const int code = run_program(host, options);
    other.join();
    return code;
}
