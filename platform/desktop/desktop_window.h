// The main window: a menu bar, and below it the picture, enlarged from the client area's pixels.
#pragma once

#include "platform/desktop/desktop_display.h"
#include "platform/desktop/key_map.h"
#include "platform/desktop/picture_fit.h"
#include "platform/desktop/picture_scaler.h"
#include "platform/host.h"
#include <QtCore/QByteArray>
#include <QtCore/QPoint>
#include <QtCore/QRect>
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

class debugger_window;

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
    void bring_to_front() override;
    void copy_picture() override;
    bool save_picture(const std::string &path) override;
    void menus_changed() override;
    void set_view(const view_settings &settings) override;
    void set_scale(int factor) override;
    std::string place() const override;
    void show_keyboard(const keyboard_page *page) override;
    bool keyboard_shown() const override;
    void show_debugger(debugger_listener *hears, const std::string &layout) override;
    void debugger_changed(bool stopped) override;
    std::string debugger_layout() const override;

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
    class keyboard_widget;

    struct key_stroke;
    bool key_event(QKeyEvent &e);
    key_stroke read_key(const QKeyEvent &e) const;
    static uint64_t sign_of(const QKeyEvent &e);
    void key_pressed(const key_stroke &k);
    void key_released(const key_stroke &k);
    void release_held_keys();
    void paint_view();
    void paint_notice(QPainter &on, const QRect &area);
    void deliver_paint(bool erase);
    void resize_canvas(int width, int height);
    void place_picture();
    void ask_repaint();
    void refresh();
    void show_canvas();
    void received(const message &m);
    void drain();
    void moved();
    void drop(const std::string &path);
    void leave_full_screen();
    void follow_screen();
    void open_menu();
    void menu_closed();
    bool has_menus() const;
    void fill_menu(QMenu &menu, const std::vector<menu_item> &items);

    window_listener &listener;
    std::shared_ptr<screen_link> link;
    std::unique_ptr<frame_widget> frame;
    view_widget *view = nullptr;               // the frame's
    keyboard_widget *keyboard = nullptr;       // likewise, once it was asked for
    std::unique_ptr<debugger_window> debugger; // while there is one
    std::vector<QMenu *> menus;                // the menu bar's
    std::vector<QAction *> keys_of_menus;      // items that have keys of their own

    mutable std::mutex receiver_mutex;
    std::unique_ptr<receiver> inbox; // null when the window is gone
    std::deque<message> waiting;
    int dialogs = 0;

    bool gone = false;
    int cursor_count = 0;
    int client_width, client_height; // in window mode
    int first_scale;
    bool placed = false; // the person has the say now
    bool was_maximized = false;
    QRect normal_place;                  // before full screen, and
    QByteArray window_place;             // all that is remembered of it
    int mode_width = 0, mode_height = 0; // 0: window mode
    bool full_screen = false;
    point last_origin{0, 0};

    QImage canvas; // what the client area shows, unscaled
    view_settings looks;
    picture_scaler scaler;
    struct shape { // what the scaler is set up for
        placement at{};
        int width = 0, height = 0;
        crt_look look{};
        bool operator==(const shape &) const = default;
    } shown_shape;
    bool paint_wanted = false, erase_wanted = false;
    bool listener_paints = false; // drew something at the last wm_paint, over the frame
    painter *painting = nullptr;
    QString notice;                // shown over the picture for a while
    QTimer *notice_time = nullptr; // the view's

    key_tracker keys{[this](uint32_t key) { return listener.is_command_key(key); }};
    bool in_key_event = false, key_event_shift = false;
};

} // namespace platform
