// The main window: a menu bar, and below it the picture, whose area is exactly the client area.
#pragma once

#include "platform/desktop/desktop_display.h"
#include "platform/desktop/key_map.h"
#include "platform/host.h"
#include <QtCore/QPoint>
#include <QtCore/QString>
#include <QtGui/QImage>
#include <atomic>
#include <deque>
#include <mutex>

class QAction;
class QEvent;
class QKeyEvent;
class QMenu;
class QPainter;
class QTimer;
class QWidget;

namespace platform {

class desktop_window : public host_window, public mode_switch {
  public:
    desktop_window(const window_options &options, window_listener &hears,
                   std::shared_ptr<screen_link> from_screen);
    ~desktop_window() override;

    void post(uint32_t message, uint64_t wparam, uint64_t lparam) override;
    void destroy() override;
    bool client_size(size2 &size) const override;
    point client_origin() const override;
    void invalidate(bool erase) override;
    void set_focus() override;
    painter *current_painter() override { return painting; }
    int show_cursor(bool show) override;
    bool shift_down() const override;
    void disable_input_method() override;
    bool set_framed(bool framed) override;
    void resize_client(int width, int height) override;
    void centre() override;
    void show() override;
    void notify(const std::string &text) override;
    bool has_menu_item(uint32_t id) const override;
    void insert_menu_item(int position, uint32_t id, const std::string &text) override;

    void enter_mode(int width, int height) override;
    void leave_mode() override;

    // Sends a message now; the listener's result, 0 when the window is gone.
    int64_t send(uint32_t message, uint64_t wparam, uint64_t lparam);
    // The owner for dialogs; null when the window is gone.
    QWidget *dialog_owner() const;
    // While a dialog runs, posted messages wait: the commands behind them would stop the emulation under it
    // or open a second one. Afterwards they are delivered in order.
    void begin_dialog();
    void end_dialog();

  private:
    class view_widget;
    class frame_widget;
    class receiver;

    struct key_stroke;
    bool key_event(QKeyEvent &e);
    key_stroke read_key(const QKeyEvent &e) const;
    void key_pressed(const key_stroke &k);
    void key_released(const key_stroke &k);
    void release_held_keys();
    void paint_view();
    void paint_notice(QPainter &on, const QRect &area);
    void deliver_paint(bool erase);
    void resize_canvas(int width, int height);
    void received(const message &m);
    void drain();
    void moved();
    void leave_full_screen();
    void fix_size();
    void follow_screen();
    void open_menu();

    window_listener &listener;
    std::shared_ptr<screen_link> link;
    std::unique_ptr<frame_widget> frame;
    view_widget *view = nullptr; // the frame's
    QMenu *menu = nullptr;       // the frame's; null until the first item
    std::vector<std::pair<uint32_t, QAction *>> items;

    mutable std::mutex receiver_mutex;
    std::unique_ptr<receiver> inbox; // null when the window is gone
    std::deque<message> waiting;
    int dialogs = 0;

    bool gone = false;
    int cursor_count = 0;
    int client_width, client_height;     // in window mode
    int mode_width = 0, mode_height = 0; // 0: window mode
    bool full_screen = false;
    point last_origin{0, 0};

    QImage canvas; // what the client area shows, unscaled
    bool paint_wanted = false, erase_wanted = false;
    bool listener_paints = false; // drew something at the last wm_paint, over the frame
    painter *painting = nullptr;
    QString notice;                // shown over the picture for a while
    QTimer *notice_time = nullptr; // the view's

    key_tracker keys{[this](uint32_t key) { return listener.is_command_key(key); }};
    bool in_key_event = false, key_event_shift = false;
};

} // namespace platform
