// What the window consists of: the frame and the view in it. Both hand everything on.
#pragma once

#include "platform/desktop/desktop_window.h"
#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QCloseEvent>
#include <QtGui/QDropEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QMainWindow>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QWidget>

namespace platform {

class desktop_window::view_widget : public QWidget {
  public:
    explicit view_widget(desktop_window &w) : window_of(w) {
        setFocusPolicy(Qt::StrongFocus);
        setAttribute(Qt::WA_OpaquePaintEvent);
        setAttribute(Qt::WA_NoSystemBackground);
    }

  protected:
    void paintEvent(QPaintEvent *) override { window_of.paint_view(); }
    void resizeEvent(QResizeEvent *) override { window_of.place_picture(); }
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
    explicit frame_widget(desktop_window &w) : window_of(w) { setAcceptDrops(true); }

  protected:
    void closeEvent(QCloseEvent *e) override {
        e->ignore();
        window_of.post(wm_close, 0, 0);
    }
    void dragEnterEvent(QDragEnterEvent *e) override {
        if (e->mimeData()->hasUrls()) e->acceptProposedAction();
    }
    void dropEvent(QDropEvent *e) override {
        for (const QUrl &url : e->mimeData()->urls())
            if (url.isLocalFile()) window_of.drop(url.toLocalFile().toStdString());
        e->acceptProposedAction();
    }
    void moveEvent(QMoveEvent *e) override {
        QMainWindow::moveEvent(e);
        window_of.moved();
    }
    void changeEvent(QEvent *e) override {
        QMainWindow::changeEvent(e);
        // By the window manager, too.
        if (e->type() == QEvent::WindowStateChange)
            menuBar()->setVisible(!isFullScreen() && window_of.has_menus());
    }
    void showEvent(QShowEvent *e) override {
        QMainWindow::showEvent(e);
        window_of.follow_screen();
    }

  private:
    desktop_window &window_of;
};

} // namespace platform
