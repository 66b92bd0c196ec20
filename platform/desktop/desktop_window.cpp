#include "platform/desktop/desktop_window.h"

#include "platform/desktop/picture_fit.h"
#include "platform/desktop/qt_keys.h"
#include <QtCore/QTimer>
#include <QtGui/QCloseEvent>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLayout>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace platform {

namespace {

constexpr uint32_t evdev_offset = 8; // native scan codes are the kernel's key codes plus this
constexpr uint32_t left_alt_scan = 56 + evdev_offset, right_alt_scan = 100 + evdev_offset;
constexpr uint32_t no_scan_code = 0x10000; // ids of keys without one start here
constexpr uint64_t auto_repeat = 1 << 30;
constexpr int full_screen_patience_ms = 300; // after which no window manager is thought to answer

QEvent::Type message_event() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}
QEvent::Type repaint_event() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}
QEvent::Type drain_event() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

class posted_message : public QEvent {
  public:
    explicit posted_message(const message &text) : QEvent(message_event()), m(text) {}
    const message m;
};

class canvas_painter : public painter {
  public:
    explicit canvas_painter(QImage &canvas) : on(&canvas) {}
    void fill(const rectangle &area, uint32_t rgb) override {
        on.fillRect(QRect(area.left, area.top, area.right - area.left, area.bottom - area.top),
                    QColor::fromRgb(rgb));
        drew = true;
    }
    void draw(const picture &image, int x, int y) override {
        const QImage wrapped(reinterpret_cast<const uchar *>(image.pixels), image.width, image.height,
                             image.width * 4, QImage::Format_RGB32);
        on.drawImage(x, y, wrapped);
        drew = true;
    }
    bool drew = false;

  private:
    QPainter on;
};

} // namespace

// ---- the widgets: they hand everything on ------------------------------------------------------------

class desktop_window::view_widget : public QWidget {
  public:
    explicit view_widget(desktop_window &w) : window_of(w) {
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_OpaquePaintEvent);
        setAttribute(Qt::WA_NoSystemBackground);
    }

  protected:
    void paintEvent(QPaintEvent *) override { window_of.paint_view(); }
    bool focusNextPrevChild(bool) override { return false; } // Tab is a key of the machine
    bool event(QEvent *e) override {
        switch (e->type()) {
        case QEvent::ShortcutOverride:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            if (window_of.key_event(static_cast<QKeyEvent &>(*e))) return true;
            break;
        case QEvent::FocusOut: window_of.release_held_keys(); break;
        default: break;
        }
        return QWidget::event(e);
    }

  private:
    desktop_window &window_of;
};

class desktop_window::frame_widget : public QMainWindow {
  public:
    explicit frame_widget(desktop_window &w) : window_of(w) {}

  protected:
    void closeEvent(QCloseEvent *e) override {
        e->ignore();
        window_of.post(wm_close, 0, 0);
    }
    void moveEvent(QMoveEvent *e) override {
        QMainWindow::moveEvent(e);
        window_of.moved();
    }
    void changeEvent(QEvent *e) override {
        QMainWindow::changeEvent(e);
        if (e->type() == QEvent::ActivationChange) window_of.foreground = isActiveWindow();
    }
    void showEvent(QShowEvent *e) override {
        QMainWindow::showEvent(e);
        window_of.follow_screen();
    }

  private:
    desktop_window &window_of;
};

class desktop_window::receiver : public QObject {
  public:
    explicit receiver(desktop_window &w) : window_of(w) {}
    std::atomic<bool> repaint_asked{false};

  protected:
    bool event(QEvent *e) override {
        if (e->type() == message_event()) {
            window_of.received(static_cast<posted_message *>(e)->m);
            return true;
        }
        if (e->type() == drain_event()) {
            window_of.drain();
            return true;
        }
        if (e->type() == repaint_event()) {
            repaint_asked = false;
            window_of.view->update();
            return true;
        }
        return QObject::event(e);
    }

  private:
    desktop_window &window_of;
};

// ---- life --------------------------------------------------------------------------------------------

desktop_window::desktop_window(const window_options &options, window_listener &hears,
                               std::shared_ptr<screen_link> from_screen)
    : listener(hears), link(std::move(from_screen)), client_width(options.width),
      client_height(options.height) {
    inbox = std::make_unique<receiver>(*this);
    frame = std::make_unique<frame_widget>(*this);
    frame->setWindowTitle(QString::fromStdString(options.title));
    frame->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                          Qt::WindowCloseButtonHint);
    frame->menuBar()->setNativeMenuBar(false); // a desktop's own bar might not show the two items
    frame->menuBar()->hide();
    frame->setContextMenuPolicy(Qt::NoContextMenu);
    frame->layout()->setContentsMargins(0, 0, 0, 0);
    view = new view_widget(*this);
    frame->setCentralWidget(view);
    frame->move(options.x, options.y);
    resize_canvas(client_width, client_height);
    fix_size();
    receiver *to = inbox.get();
    link->set_repaint([to] {
        if (!to->repaint_asked.exchange(true)) QCoreApplication::postEvent(to, new QEvent(repaint_event()));
    });
}

desktop_window::~desktop_window() {
    link->set_repaint(nullptr);
    gone = true;
    frame.reset(); // before the members that its widgets' events use
    const std::lock_guard lock(receiver_mutex);
    inbox.reset();
}

void desktop_window::destroy() {
    if (gone) return;
    send(wm_destroy, 0, 0);
    gone = true;
    foreground = false;
    link->set_repaint(nullptr);
    waiting.clear();
    // Hidden only: this may run inside one of its events. It ends with the host.
    frame->hide();
}

void desktop_window::post(uint32_t id, uint64_t wparam, uint64_t lparam) {
    const std::lock_guard lock(receiver_mutex);
    if (inbox) QCoreApplication::postEvent(inbox.get(), new posted_message({id, wparam, lparam}));
}

int64_t desktop_window::send(uint32_t id, uint64_t wparam, uint64_t lparam) {
    if (gone) return 0;
    bool handled = true;
    const int64_t result = listener.window_proc(*this, {id, wparam, lparam}, handled);
    if (!handled && id == wm_close) destroy();
    return result;
}

void desktop_window::received(const message &m) {
    if (gone) return;
    waiting.push_back(m);
    drain();
}

void desktop_window::drain() {
    while (!waiting.empty() && dialogs == 0) {
        const message m = waiting.front();
        waiting.pop_front();
        send(m.id, m.wparam, m.lparam);
    }
}

void desktop_window::begin_dialog() { ++dialogs; }

void desktop_window::end_dialog() {
    if (--dialogs == 0 && inbox) QCoreApplication::postEvent(inbox.get(), new QEvent(drain_event()));
}

QWidget *desktop_window::dialog_owner() const { return gone ? nullptr : frame.get(); }

// ---- place and size ----------------------------------------------------------------------------------

bool desktop_window::client_size(size2 &size) const {
    if (gone) return false;
    size = {canvas.width(), canvas.height()};
    return true;
}

point desktop_window::client_origin() const {
    const QPoint at = view->mapToGlobal(QPoint(0, 0));
    return {at.x(), at.y()};
}

void desktop_window::moved() {
    const point origin = client_origin();
    if (origin.x == last_origin.x && origin.y == last_origin.y) return;
    last_origin = origin;
    send(wm_move, 0, 0);
}

// The frame around a client area of fixed size.
void desktop_window::fix_size() {
    view->setFixedSize(client_width, client_height);
    frame->layout()->setSizeConstraint(QLayout::SetFixedSize);
    frame->layout()->activate();
}

void desktop_window::resize_client(int width, int height) {
    client_width = width;
    client_height = height;
    if (full_screen) return;
    resize_canvas(width, height);
    fix_size();
}

void desktop_window::centre() {
    if (full_screen || gone) return;
    const QScreen *screen = frame->screen() != nullptr ? frame->screen() : QGuiApplication::primaryScreen();
    if (screen == nullptr) return;
    const QRect desktop = screen->availableGeometry();
    const QSize border = frame->frameGeometry().size() - frame->geometry().size(); // title bar and edges
    const QSize size = frame->layout()->totalSizeHint() + border;
    frame->move(desktop.left() + std::max(0, (desktop.width() - size.width()) / 2),
                desktop.top() + std::max(0, (desktop.height() - size.height()) / 2));
    moved();
}

void desktop_window::show() {
    if (gone) return;
    if (!full_screen) frame->show();
    moved();
}

bool desktop_window::set_framed(bool framed) {
    if (gone) return false;
    // Without a frame there is only full screen, which the mode brings: a window that loses its frame and
    // then grows would be seen twice.
    if (framed && full_screen) leave_full_screen();
    return true;
}

void desktop_window::enter_mode(int width, int height) {
    if (gone) return;
    mode_width = width;
    mode_height = height;
    resize_canvas(width, height);
    if (full_screen) return;
    full_screen = true;
    frame->menuBar()->hide();
    // A window of fixed size stays as it is, whatever its state says.
    frame->layout()->setSizeConstraint(QLayout::SetNoConstraint);
    frame->setMinimumSize(0, 0);
    frame->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    view->setMinimumSize(1, 1);
    view->setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    frame->showFullScreen();
    QTimer::singleShot(full_screen_patience_ms, frame.get(), [this] {
        const QScreen *screen = frame->screen();
        if (!full_screen || gone || screen == nullptr || frame->geometry() == screen->geometry()) return;
        frame->setGeometry(screen->geometry());
        frame->raise();
    });
}

// The mode ends; the window is framed again right after, or stays to the end, or nothing more happens to it.
// Only in the last case it leaves full screen by itself.
void desktop_window::leave_mode() {
    mode_width = mode_height = 0;
    QTimer::singleShot(0, frame.get(), [this] {
        if (full_screen && mode_width == 0 && !gone) leave_full_screen();
    });
}

void desktop_window::leave_full_screen() {
    full_screen = false;
    mode_width = mode_height = 0;
    resize_canvas(client_width, client_height);
    frame->showNormal();
    frame->menuBar()->setVisible(menu != nullptr);
    fix_size();
    moved();
}

void desktop_window::follow_screen() {
    const auto note = [this](const QScreen *screen) {
        if (screen != nullptr && screen->refreshRate() > 1) link->refresh_rate = screen->refreshRate();
    };
    QWindow *window = frame->windowHandle();
    if (window == nullptr) return;
    note(window->screen());
    QObject::disconnect(window, &QWindow::screenChanged, frame.get(), nullptr);
    QObject::connect(window, &QWindow::screenChanged, frame.get(), note);
}

void desktop_window::set_focus() {
    if (gone) return;
    frame->activateWindow();
    view->setFocus(Qt::OtherFocusReason);
}

int desktop_window::show_cursor(bool shown) {
    cursor_count += shown ? 1 : -1;
    view->setCursor(cursor_count >= 0 ? Qt::ArrowCursor : Qt::BlankCursor);
    return cursor_count;
}

// ---- picture -----------------------------------------------------------------------------------------

// The picture stays in the middle until the next frame, so that a change of mode shows no empty screen.
void desktop_window::resize_canvas(int width, int height) {
    if (canvas.width() == width && canvas.height() == height) return;
    QImage resized(width, height, QImage::Format_RGB32);
    resized.fill(Qt::black);
    if (!canvas.isNull())
        QPainter(&resized).drawImage((width - canvas.width()) / 2, (height - canvas.height()) / 2, canvas);
    canvas = resized;
    paint_wanted = true;
    view->update();
}

void desktop_window::invalidate(bool erase) {
    if (gone) return;
    paint_wanted = true;
    erase_wanted |= erase;
    view->update();
}

void desktop_window::deliver_paint(bool erase) {
    canvas_painter on(canvas);
    painting = &on;
    if (erase) send(wm_erase_background, 0, 0);
    on.drew = false;
    send(wm_paint, 0, 0);
    painting = nullptr;
    listener_paints = on.drew;
}

void desktop_window::paint_view() {
    bool new_frame = false;
    if (const boxed_frame *newest = link->frames.take_newest();
        newest != nullptr && newest->width == canvas.width() && newest->height == canvas.height()) {
        for (int y = 0; y < newest->height; ++y)
            std::memcpy(canvas.scanLine(y), newest->pixels.data() + static_cast<ptrdiff_t>(y) * newest->width,
                        static_cast<size_t>(newest->width) * 4);
        new_frame = true;
    }
    // A frame that was on its way when the window was asked to paint must not cover what the listener
    // painted.
    if (paint_wanted || (new_frame && listener_paints)) {
        const bool erase = erase_wanted;
        paint_wanted = erase_wanted = false;
        deliver_paint(erase);
    }
    const qreal ratio = view->devicePixelRatioF();
    const int width = static_cast<int>(std::lround(view->width() * ratio));
    const int height = static_cast<int>(std::lround(view->height() * ratio));
    const placement at = fit_picture(canvas.width(), canvas.height(), width, height);
    QPainter on(view);
    on.scale(1 / ratio, 1 / ratio); // device pixels
    if (at.width != width || at.height != height) {
        on.fillRect(0, 0, width, at.y, Qt::black);
        on.fillRect(0, at.y + at.height, width, height - at.y - at.height, Qt::black);
        on.fillRect(0, at.y, at.x, at.height, Qt::black);
        on.fillRect(at.x + at.width, at.y, width - at.x - at.width, at.height, Qt::black);
    }
    on.setRenderHint(QPainter::SmoothPixmapTransform, at.width < canvas.width());
    on.drawImage(QRect(at.x, at.y, at.width, at.height), canvas);
}

// ---- menu --------------------------------------------------------------------------------------------

bool desktop_window::has_menu_item(uint32_t id) const {
    return std::any_of(items.begin(), items.end(), [=](const auto &item) { return item.first == id; });
}

void desktop_window::insert_menu_item(int position, uint32_t id, const std::string &text) {
    if (gone || has_menu_item(id)) return;
    if (menu == nullptr) {
        menu = frame->menuBar()->addMenu(QStringLiteral("Kiv(&K)"));
        // A menu left by Escape would leave the keyboard with the menu bar.
        QObject::connect(menu, &QMenu::aboutToHide, view, [this] {
            QTimer::singleShot(0, view, [this] { view->setFocus(Qt::MenuBarFocusReason); });
        });
        frame->menuBar()->setVisible(!full_screen);
        if (!full_screen) frame->layout()->activate();
        centre(); // the bar has made the window taller
    }
    auto *action = new QAction(QString::fromStdString(text), menu);
    // Posted, so that the menu has closed and given the keyboard back before the command runs.
    QObject::connect(action, &QAction::triggered, menu, [this, id] { post(wm_sys_command, id, 0); });
    const auto place = static_cast<size_t>(std::clamp(position, 0, static_cast<int>(items.size())));
    menu->insertAction(place < items.size() ? items[place].second : nullptr, action);
    items.insert(items.begin() + static_cast<ptrdiff_t>(place), {id, action});
}

void desktop_window::open_menu() {
    if (menu == nullptr || full_screen) return;
    const QMenuBar *bar = frame->menuBar();
    menu->popup(bar->mapToGlobal(bar->actionGeometry(menu->menuAction()).bottomLeft()));
    if (!items.empty()) menu->setActiveAction(items.front().second);
}

// ---- keyboard ----------------------------------------------------------------------------------------

void desktop_window::disable_input_method() { view->setAttribute(Qt::WA_InputMethodEnabled, false); }

// During a key message as of that key, as pressing and letting go may both be past when it is handled.
bool desktop_window::shift_down() const {
    if (in_key_event) return key_event_shift;
    return (QGuiApplication::queryKeyboardModifiers() & Qt::ShiftModifier) != 0;
}

void desktop_window::release_held_keys() {
    for (const uint32_t key : keys.release_all()) send(wm_key_up, key, 0);
}

// True: dealt with.
bool desktop_window::key_event(QKeyEvent &e) {
    const uint32_t scan = e.nativeScanCode();
    const uint32_t virtual_key = scan >= evdev_offset
                                     ? virtual_key_of_evdev(scan - evdev_offset)
                                     : virtual_key_of_qt(e.key(), (e.modifiers() & Qt::KeypadModifier) != 0);
    const bool is_alt = scan == left_alt_scan || (scan == 0 && virtual_key == vk_menu);
    // Alt belongs to the desktop, except the right one, which stands in for a key of the machine.
    const bool with_alt = (e.modifiers() & Qt::AltModifier) != 0 && !keys.is_id_held(right_alt_scan) &&
                          scan != right_alt_scan && !is_alt;
    if (e.type() == QEvent::ShortcutOverride) {
        // Else Alt alone would open the menu and stick there, and keys would be taken for shortcuts.
        if (with_alt) return false;
        e.accept();
        return true;
    }
    e.accept();
    if (is_alt || virtual_key == 0) return true;
    const uint32_t id = scan != 0 ? scan : no_scan_code + virtual_key;

    const auto tell = [&](uint32_t m, uint32_t key, uint64_t lparam) {
        in_key_event = true;
        key_event_shift = (e.modifiers() & Qt::ShiftModifier) != 0;
        send(m, key, lparam);
        in_key_event = false;
    };

    if (e.type() == QEvent::KeyPress) {
        if (with_alt) {
            if (virtual_key == vk_f4 && !e.isAutoRepeat()) post(wm_close, 0, 0);
        } else if (virtual_key == vk_f10) {
            if (!e.isAutoRepeat()) open_menu();
        } else if (!e.isAutoRepeat()) {
            tell(wm_key_down, virtual_key, keys.press(id, virtual_key) ? 0 : auto_repeat);
        } else if (keys.is_id_held(id)) {
            tell(wm_key_down, virtual_key, auto_repeat);
        }
        return true;
    }
    if (e.isAutoRepeat()) return true;
    if (scan == 0 && !keys.is_id_held(id)) {
        // Pressed as one sign and let go as another, as Shift changed in between.
        for (const uint32_t key : keys.release_from(no_scan_code)) tell(wm_key_up, key, 0);
        return true;
    }
    const uint32_t released = keys.release(id);
    if (released != 0 && !(with_alt && is_command_key(released))) tell(wm_key_up, released, 0);
    return true;
}

} // namespace platform
