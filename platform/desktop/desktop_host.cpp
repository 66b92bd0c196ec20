#include "platform/desktop/desktop_host.h"

#include "platform/desktop/close_signals.h"
#include "platform/desktop/desktop_dialogs.h"
#include "platform/desktop/desktop_display.h"
#include "platform/desktop/desktop_window.h"
#include "platform/desktop/gamepads.h"
#include "platform/resources.h"
#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtCore/QSocketNotifier>
#include <QtCore/QStandardPaths>
#include <QtCore/QTimer>
#include <QtCore/QTranslator>
#include <QtGui/QClipboard>
#include <QtGui/QIcon>
#include <QtGui/QPixmap>
#include <QtGui/QSessionManager>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <cstdlib>
#include <map>
#include <sys/prctl.h>

namespace platform {

namespace {

// While one window of ours gives the activation to another the application is inactive for a moment.
constexpr int inactive_after_ms = 50;

constexpr int looks_with_pads_ms = 4, looks_without_pads_ms = 500;

bool is_set(const char *variable) {
    const char *value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

// What the toolkit says while it looks for the desktop. It aborts when there is none; a person is told the
// reason, once, and the program ends as after any other failure.
std::string said_at_start;

void hear_start(QtMsgType type, const QMessageLogContext &, const QString &text) {
    if (type != QtFatalMsg) {
        if (!said_at_start.empty()) said_at_start += "; ";
        said_at_start += text.toStdString();
        return;
    }
    const char *display = std::getenv(is_set("WAYLAND_DISPLAY") ? "WAYLAND_DISPLAY" : "DISPLAY");
    std::fprintf(stderr, "kiv: The window cannot be shown on the desktop \"%s\": %s\n",
                 display != nullptr ? display : "", said_at_start.c_str());
    std::_Exit(1);
}

} // namespace

struct desktop_host::parts {
    int argc = 1;
    char name[4] = "kiv";
    char *argv[2] = {name, nullptr};
    close_signals signals_to_close;
    std::unique_ptr<QApplication> application;
    QTranslator of_qt, of_kiv;
    std::shared_ptr<screen_link> link = std::make_shared<screen_link>();
    desktop_display screen{link};
    desktop_sound sound;
    std::vector<std::unique_ptr<desktop_window>> windows;
    std::map<int, std::unique_ptr<QSocketNotifier>> watched;
    std::unique_ptr<platform::gamepads> pads; // while they are in use
    QTimer *pad_timer = nullptr;              // the application's
    bool active = false;                      // as last told to the windows
    bool quit = false;
    int quit_code = 0;

    void tell(uint32_t id, uint64_t wparam) {
        for (const auto &w : windows) w->send(id, wparam, 0);
    }
    // As by the close box. A dialog is cancelled: it would hold the request back until it is answered.
    void close_windows() {
        for (QWidget *w : QApplication::topLevelWidgets())
            if (auto *dialog = qobject_cast<QDialog *>(w); dialog != nullptr && dialog->isVisible())
                dialog->reject();
        for (const auto &w : windows) w->post(wm_close, 0, 0);
    }
    // Pads are looked at often while there are any: what they add to the time from press to picture is half
    // of that.
    void look_at_pads() {
        if (pads == nullptr) return;
        pads->look();
        const uint32_t now = active ? pads->held() : 0, changed = told_pads ^ now;
        for (uint32_t input = 0; changed >> input != 0; ++input)
            if ((changed >> input & 1) != 0)
                for (const auto &w : windows)
                    w->post((now >> input & 1) != 0 ? wm_pad_down : wm_pad_up, input, 0);
        told_pads = now;
        pad_timer->setInterval(pads->names().empty() ? looks_without_pads_ms : looks_with_pads_ms);
    }
    uint32_t told_pads = 0;
    void activation(bool now) {
        if (now == active) return;
        active = now;
        tell(wm_activate_app, now ? 1 : 0);
    }
};

// While it exists a dialog runs, and posted messages wait.
class desktop_host::dialog_scope {
  public:
    dialog_scope(parts &of, host_window *owned_by) : p(of), window(dynamic_cast<desktop_window *>(owned_by)) {
        for (const auto &w : p.windows) w->begin_dialog();
    }
    ~dialog_scope() {
        for (const auto &w : p.windows) w->end_dialog();
    }
    dialog_scope(const dialog_scope &) = delete;
    dialog_scope &operator=(const dialog_scope &) = delete;
    QWidget *owner() const { return window != nullptr ? window->dialog_owner() : nullptr; }

  private:
    parts &p;
    desktop_window *window;
};

std::string desktop_host::missing() {
    if (is_set("DISPLAY") || is_set("WAYLAND_DISPLAY") || is_set("QT_QPA_PLATFORM")) return {};
    return "There is no desktop to show the window on (neither DISPLAY nor WAYLAND_DISPLAY is set).";
}

desktop_host::desktop_host() : p(std::make_unique<parts>()) {
    const QtMessageHandler usual = qInstallMessageHandler(hear_start);
    p->application = std::make_unique<QApplication>(p->argc, p->argv);
    qInstallMessageHandler(usual);
    if (!said_at_start.empty()) std::fprintf(stderr, "kiv: %s\n", said_at_start.c_str());
    QApplication::setQuitOnLastWindowClosed(false); // the program says when
    QApplication::setApplicationName(QStringLiteral("kiv"));
    QApplication::setApplicationDisplayName(QString());
    set_language(language::of_desktop);

    QApplication *application = p->application.get();
    QObject::connect(application, &QGuiApplication::applicationStateChanged, application,
                     [this, application](Qt::ApplicationState state) {
                         if (state == Qt::ApplicationActive) {
                             p->activation(true);
                             return;
                         }
                         QTimer::singleShot(inactive_after_ms, application, [this] {
                             if (QGuiApplication::applicationState() != Qt::ApplicationActive)
                                 p->activation(false);
                         });
                     });
    if (p->signals_to_close.descriptor() >= 0) {
        auto *notifier =
            new QSocketNotifier(p->signals_to_close.descriptor(), QSocketNotifier::Read, application);
        QObject::connect(notifier, &QSocketNotifier::activated, application, [this] {
            p->signals_to_close.take();
            p->close_windows();
        });
    }
    // The session ends whatever the listener says: it has stopped the emulation by then, and nothing is
    // unsaved.
    QObject::connect(
        application, &QGuiApplication::commitDataRequest, application,
        [this](QSessionManager &manager) {
            manager.setRestartHint(QSessionManager::RestartNever);
            p->tell(wm_query_end_session, 0);
        },
        Qt::DirectConnection);
}

desktop_host::~desktop_host() {
    p->sound.close();
    p->windows.clear();
}

void desktop_host::add_icon(const picture &of_one_size) {
    const QImage image(reinterpret_cast<const uchar *>(of_one_size.pixels), of_one_size.width,
                       of_one_size.height, of_one_size.width * 4, QImage::Format_ARGB32);
    QIcon icon = QApplication::windowIcon();
    icon.addPixmap(QPixmap::fromImage(image.copy()));
    QApplication::setWindowIcon(icon);
}

// Threads made from here on wake as exactly as the kernel can; it counts in nanoseconds.
void desktop_host::begin_timer_resolution(uint32_t) { prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL); }
void desktop_host::end_timer_resolution(uint32_t) { prctl(PR_SET_TIMERSLACK, 0UL, 0UL, 0UL, 0UL); }

host_window *desktop_host::create_window(const window_options &options, window_listener &listener) {
    if (options.width <= 0 || options.height <= 0) return nullptr;
    p->windows.push_back(std::make_unique<desktop_window>(options, listener, p->link));
    return p->windows.back().get();
}

int desktop_host::run_message_loop() {
    // A quit that was posted before the loop counts.
    if (!p->quit) QApplication::exec();
    p->quit = false;
    return p->quit_code;
}

void desktop_host::post_quit(int code) {
    p->quit = true;
    p->quit_code = code;
    QCoreApplication::exit(code);
}

void desktop_host::every(uint32_t milliseconds, std::function<bool()> tick) {
    auto *timer = new QTimer(p->application.get());
    QObject::connect(timer, &QTimer::timeout, timer, [timer, tick = std::move(tick)] {
        if (!tick()) timer->deleteLater();
    });
    timer->start(static_cast<int>(milliseconds));
}

std::string desktop_host::clipboard_text() const {
    return QGuiApplication::clipboard()->text().toStdString();
}

void desktop_host::copy_text(const std::string &text) {
    QGuiApplication::clipboard()->setText(QString::fromStdString(text));
}

std::string desktop_host::pictures_folder() const {
    return QStandardPaths::writableLocation(QStandardPaths::PicturesLocation).toStdString();
}

std::string desktop_host::music_folder() const {
    return QStandardPaths::writableLocation(QStandardPaths::MusicLocation).toStdString();
}
std::string desktop_host::movies_folder() const {
    return QStandardPaths::writableLocation(QStandardPaths::MoviesLocation).toStdString();
}

void desktop_host::use_gamepads(bool on) {
    if (on == (p->pads != nullptr)) return;
    if (!on) {
        p->pad_timer->stop();
        p->pads.reset();
        for (uint32_t input = 0; p->told_pads >> input != 0; ++input)
            if ((p->told_pads >> input & 1) != 0)
                for (const auto &w : p->windows) w->post(wm_pad_up, input, 0);
        p->told_pads = 0;
        return;
    }
    p->pads = std::make_unique<platform::gamepads>();
    if (p->pad_timer == nullptr) {
        p->pad_timer = new QTimer(p->application.get());
        p->pad_timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(p->pad_timer, &QTimer::timeout, p->pad_timer, [this] { p->look_at_pads(); });
    }
    p->pad_timer->start(looks_with_pads_ms);
}

std::vector<std::string> desktop_host::gamepads() const {
    if (p->pads == nullptr) return {};
    p->pads->look();
    return p->pads->names();
}

void desktop_host::set_language(language which) {
    const QLocale::Language of_desktop = QLocale::system().language();
    const bool japanese =
        which == language::japanese ||
        (which == language::of_desktop && (of_desktop == QLocale::Japanese || of_desktop == QLocale::C));
    QCoreApplication::removeTranslator(&p->of_qt);
    QCoreApplication::removeTranslator(&p->of_kiv);
    set_text_translator(nullptr);
    if (japanese) {
        // For the texts inside the file dialog, where the desktop has them.
        if (p->of_qt.load(QStringLiteral("qtbase_ja"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QCoreApplication::installTranslator(&p->of_qt);
        return;
    }
    const resource english = find_resource(resource_type::translation, english_translation_id);
    if (english.data == nullptr || !p->of_kiv.load(english.data, static_cast<int>(english.size))) return;
    QCoreApplication::installTranslator(&p->of_kiv);
    set_text_translator(
        [](const char *source) { return QCoreApplication::translate("kiv", source).toStdString(); });
}

void desktop_host::error_box(host_window *owner, const std::string &text, const std::string &caption) {
    const dialog_scope scope(*p, owner);
    show_error_box(scope.owner(), text, caption);
}

int desktop_host::ask(host_window *owner, const question_box &box) {
    const dialog_scope scope(*p, owner);
    return show_question_box(scope.owner(), box);
}

bool desktop_host::choose_folder(host_window &owner, const std::string &title, std::string &path) {
    const dialog_scope scope(*p, &owner);
    std::string chosen = platform::choose_folder(scope.owner(), title);
    if (chosen.empty()) return false;
    path = std::move(chosen);
    return true;
}

void desktop_host::watch(int descriptor, std::function<void()> ready) {
    if (const auto old = p->watched.find(descriptor); old != p->watched.end()) {
        old->second->setEnabled(false);
        QSocketNotifier *const gone = old->second.release(); // it may be what calls
        gone->setParent(p->application.get());               // behind the last message, too
        gone->deleteLater();
        p->watched.erase(old);
    }
    if (!ready) return;
    auto notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(), std::move(ready));
    p->watched[descriptor] = std::move(notifier);
}

bool desktop_host::open_file(host_window &owner, const file_dialog_options &options, std::string &path) {
    const dialog_scope scope(*p, &owner);
    std::string chosen = choose_file(scope.owner(), options, false);
    if (chosen.empty()) return false;
    path = std::move(chosen);
    return true;
}

bool desktop_host::save_file(host_window &owner, const file_dialog_options &options, std::string &path) {
    const dialog_scope scope(*p, &owner);
    std::string chosen = choose_file(scope.owner(), options, true);
    if (chosen.empty()) return false;
    path = std::move(chosen);
    return true;
}

bool desktop_host::settings(host_window &owner, settings_dialog &dialog) {
    const dialog_scope scope(*p, &owner);
    return run_settings_dialog(scope.owner(), dialog);
}

bool desktop_host::pads(host_window &owner, pad_dialog &dialog) {
    const dialog_scope scope(*p, &owner);
    return run_pad_dialog(scope.owner(), dialog);
}

void desktop_host::help(host_window &owner, const help_dialog &dialog) {
    const dialog_scope scope(*p, &owner);
    run_help_dialog(scope.owner(), dialog);
}

std::unique_ptr<long_work> desktop_host::begin_work(host_window &owner, const std::string &text) {
    struct work final : long_work {
        work(parts &of, host_window &owned_by, const std::string &what)
            : scope(of, &owned_by), dialog(make_work_dialog(scope.owner(), what)) {}
        bool goes_on(double part) override { return dialog->goes_on(part); }
        const dialog_scope scope;
        const std::unique_ptr<long_work> dialog; // ends before
    };
    return std::make_unique<work>(*p, owner, text);
}

display &desktop_host::get_display() { return p->screen; }
sound_device &desktop_host::get_sound() { return p->sound; }

} // namespace platform
