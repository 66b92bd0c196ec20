// A window in memory. Its messages are handed out by the host's message loop, on the thread that runs it.
#pragma once

#include "platform/host.h"
#include "tests/headless/fault_plan.h"
#include "tests/headless/headless_display.h"
#include <atomic>
#include <functional>
#include <mutex>
#include <set>

namespace platform {

// All that a person could see of a window besides its picture.
struct window_state {
    std::string title;
    int x = 0, y = 0;          // of the frame; the client area lies inside it
    int width = 0, height = 0; // client area
    bool framed = true, shown = false, gone = false;
    bool in_mode = false; // full screen: the client area is the screen
    int cursor_count = 0; // shown while 0 or above
    int focus_requests = 0;
    bool input_method = true;
    std::vector<std::string> notices;
    view_settings view;
    int scale = 0;
    int brought_to_front = 0;
    int pictures_copied = 0;
    bool keyboard_shown = false;
    debugger_listener *debugger = nullptr; // to be used on the window thread
    int debugger_changes = 0, debugger_stops = 0;
    keyboard_page keyboard; // as it was shown last
    std::vector<std::string> pictures_saved;
};

// Where a window's messages wait for the message loop.
class message_sink {
  public:
    virtual ~message_sink() = default;
    // From any thread.
    virtual void put(std::function<void()> deliver) = 0;
    virtual void wake() = 0; // something to paint
};

class headless_window : public host_window {
  public:
    headless_window(const window_options &options, window_listener &hears, message_sink &loop,
                    const headless_display &on, fault_plan &plan);

    // ---- for the test; from any thread unless said otherwise ----
    // Keys by virtual-key code. A press of a key that is down counts as its auto-repeat. Shift (0x10) is
    // reported by shift_down as it stood when the key was pressed or released.
    void press_key(uint32_t virtual_key);
    void release_key(uint32_t virtual_key);
    void strike_key(uint32_t virtual_key); // a press and a release
    void close_box();                      // a close request
    void end_session();                    // a log-off; the answer is in end_session_answer
    std::atomic<int64_t> end_session_answer{-1};
    // Another application comes to the front, or this one again. Keys that are down are released first.
    void activate(bool active);
    void drag_to(int x, int y);
    // Window thread is asked for the menus. False when they have no such item, or it is not to be chosen.
    bool choose_menu_item(uint32_t id);
    window_state state() const;
    // The client area after it was last painted; empty before.
    rgb_picture painted() const;
    uint64_t paints() const; // wm_paint messages answered
    // Window thread only: hands the message to the listener at once; its result.
    int64_t send(uint32_t id, uint64_t wparam, uint64_t lparam);

    // ---- for the host; window thread ----
    void enter_mode(int width, int height);
    void leave_mode();
    bool paint_if_wanted(); // false: nothing to paint

    // ---- for the program ----
    void post(uint32_t id, uint64_t wparam, uint64_t lparam) override;
    void destroy() override;
    bool client_size(size2 &size) const override;
    point client_origin() const override;
    void invalidate(bool erase) override;
    void set_focus() override;
    painter *current_painter() override;
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
    void menus_changed() override {}
    void set_view(const view_settings &settings) override;
    void set_scale(int factor) override;
    std::string place() const override;
    void show_keyboard(const keyboard_page *page) override;
    bool keyboard_shown() const override;
    void show_debugger(debugger_listener *heard, const std::string &layout) override;
    void debugger_changed(bool stopped) override;
    std::string debugger_layout() const override { return "layout"; }

  private:
    size2 client_size_locked() const;
    void put_message(const message &m, bool shift);
    void key_message(uint32_t id, uint32_t virtual_key);

    window_listener &listener;
    message_sink &sink;
    const headless_display &display;
    fault_plan &faults;

    mutable std::mutex mutex; // everything down to the painter
    window_state now;
    size2 mode{0, 0};
    std::set<uint32_t> keys_down;
    bool paint_wanted = false, erase_wanted = false;
    rgb_picture canvas;
    uint64_t paint_count = 0;
    bool shift_of_message = false;
    bool in_message = false;

    painter *painting = nullptr; // window thread
};

} // namespace platform
