// The window's life and its messages; its other subjects are in window_place.cpp, window_picture.cpp,
// window_menu.cpp and window_keys.cpp.
#include "platform/desktop/debugger_window.h"
#include "platform/desktop/desktop_window_parts.h"

#include <QtCore/QCoreApplication>
#include <QtWidgets/QLayout>
#include <QtWidgets/QMenuBar>

namespace platform {

namespace {

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

} // namespace

class desktop_window::receiver : public QObject {
  public:
    explicit receiver(desktop_window &w) : window_of(w) {}
    // From any thread; many at once are one.
    void ask_repaint() {
        if (!repaint_asked.exchange(true)) QCoreApplication::postEvent(this, new QEvent(repaint_event()));
    }

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
            window_of.refresh();
            return true;
        }
        return QObject::event(e);
    }

  private:
    desktop_window &window_of;
    std::atomic<bool> repaint_asked{false};
};

desktop_window::desktop_window(const window_options &options, window_listener &hears,
                               std::shared_ptr<screen_link> from_screen)
    : listener(hears), link(std::move(from_screen)), client_width(options.width),
      client_height(options.height), first_scale(options.scale) {
    inbox = std::make_unique<receiver>(*this);
    frame = std::make_unique<frame_widget>(*this);
    frame->setWindowTitle(QString::fromStdString(options.title));
    frame->menuBar()->setNativeMenuBar(false); // a desktop's own bar might not show the two items
    frame->menuBar()->hide();
    frame->setContextMenuPolicy(Qt::NoContextMenu);
    frame->layout()->setContentsMargins(0, 0, 0, 0);
    view = new view_widget(*this);
    frame->setCentralWidget(view);
    frame->move(options.x, options.y);
    placed = options.scale == 0 && !options.place.empty() &&
             frame->restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(options.place)));
    resize_canvas(client_width, client_height);
    receiver *to = inbox.get();
    link->set_repaint([to] { to->ask_repaint(); });
}

void desktop_window::ask_repaint() {
    if (inbox) inbox->ask_repaint();
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

} // namespace platform
