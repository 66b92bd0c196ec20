// Where the window stands and how large it is, full screen included.
#include "platform/desktop/desktop_window_parts.h"

#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QScreen>
#include <QtGui/QWindow>
#include <QtWidgets/QLayout>
#include <QtWidgets/QMenuBar>
#include <algorithm>

namespace platform {

namespace {

constexpr int full_screen_patience_ms = 300; // after which no window manager is thought to answer

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

} // namespace platform
