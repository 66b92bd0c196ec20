// Where the window stands and how large it is, full screen included.
#include "platform/desktop/desktop_window_parts.h"

#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QLayout>
#include <QtWidgets/QMenuBar>
#include <algorithm>
#include <cmath>

namespace platform {

namespace {

constexpr int full_screen_patience_ms = 300; // after which no window manager is thought to answer
constexpr double first_share = 0.8;          // of the desktop, that the first window takes at most
constexpr int least_width = 320, least_height = 200;

QScreen *screen_of(const QWidget &frame) {
    return frame.screen() != nullptr ? frame.screen() : QGuiApplication::primaryScreen();
}

} // namespace

bool desktop_window::client_size(size2 &size) const {
    if (gone) return false;
    size = {canvas.width(), canvas.height()};
    return true;
}

point desktop_window::client_origin() const {
    const QPoint at = view->mapToGlobal(QPoint(0, 0));
    return {at.x(), at.y()};
}

void desktop_window::drop(const std::string &path) {
    if (!gone && dialogs == 0) listener.dropped(path);
}

void desktop_window::moved() {
    const point origin = client_origin();
    if (origin.x == last_origin.x && origin.y == last_origin.y) return;
    last_origin = origin;
    send(wm_move, 0, 0);
}

void desktop_window::resize_client(int width, int height) {
    client_width = width;
    client_height = height;
    if (!full_screen) resize_canvas(width, height);
}

// The frame around a view that shows the picture enlarged by `factor` in the screen's own pixels; 0: by the
// largest whole number that leaves a fifth of the desktop free.
void desktop_window::set_scale(int factor) {
    const QScreen *screen = screen_of(*frame);
    if (gone || full_screen || screen == nullptr) return;
    const qreal ratio = frame->devicePixelRatioF();
    const int height = looks.four_thirds ? client_height * 6 / 5 : client_height;
    if (factor <= 0) {
        const QSize desktop = screen->availableSize() * ratio * first_share;
        factor = std::max(1, std::min(desktop.width() / client_width, desktop.height() / height));
    }
    if (frame->isMaximized()) frame->showNormal();
    const int bar = frame->menuBar()->isHidden() ? 0 : frame->menuBar()->sizeHint().height();
    // Rounded up: a view that is a pixel too large shows the whole picture, too.
    frame->resize(static_cast<int>(std::ceil(client_width * factor / ratio)),
                  static_cast<int>(std::ceil(height * factor / ratio)) + bar);
    if (!frame->isVisible()) return;
    // A larger window must not hang over the desktop's edge.
    const QRect desktop = screen->availableGeometry();
    const QPoint at = frame->pos();
    frame->move(
        std::max(desktop.left(), std::min(at.x(), desktop.right() + 1 - frame->frameGeometry().width())),
        std::max(desktop.top(), std::min(at.y(), desktop.bottom() + 1 - frame->frameGeometry().height())));
}

// Once: after that the window stays where the person has put it.
void desktop_window::centre() {
    if (full_screen || gone || placed) return;
    const QScreen *screen = screen_of(*frame);
    if (screen == nullptr) return;
    view->setMinimumSize(static_cast<int>(least_width / frame->devicePixelRatioF()),
                         static_cast<int>(least_height / frame->devicePixelRatioF()));
    set_scale(first_scale);
    const QRect desktop = screen->availableGeometry();
    const QSize border = frame->frameGeometry().size() - frame->geometry().size(); // title bar and edges
    const QSize size = frame->size() + border;
    frame->move(desktop.left() + std::max(0, (desktop.width() - size.width()) / 2),
                desktop.top() + std::max(0, (desktop.height() - size.height()) / 2));
    moved();
}

// Of the window, also while it fills the screen.
std::string desktop_window::place() const {
    return (full_screen ? window_place : frame->saveGeometry()).toBase64().toStdString();
}

void desktop_window::show() {
    if (gone) return;
    if (!full_screen && !frame->isVisible()) {
        frame->show();
        placed = true;
    }
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
    placed = true;
    was_maximized = frame->isMaximized();
    normal_place = frame->geometry();
    window_place = frame->saveGeometry();
    frame->menuBar()->hide();
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
    frame->menuBar()->setVisible(has_menus());
    if (was_maximized) {
        frame->showMaximized();
    } else {
        frame->showNormal();
        frame->setGeometry(normal_place);
    }
    moved();
}

void desktop_window::follow_screen() {
    const auto note = [this](const QScreen *screen) {
        if (screen != nullptr && screen->refreshRate() > 1) link->refresh_rate = screen->refreshRate();
        place_picture(); // its density may be another
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

void desktop_window::bring_to_front() {
    if (gone) return;
    frame->setWindowState(frame->windowState() & ~Qt::WindowMinimized);
    frame->show();
    frame->raise();
    set_focus();
}

int desktop_window::show_cursor(bool shown) {
    cursor_count += shown ? 1 : -1;
    view->setCursor(cursor_count >= 0 ? Qt::ArrowCursor : Qt::BlankCursor);
    return cursor_count;
}

} // namespace platform
