// Surfaces in memory and their way to the window. No Qt in here: the window thread takes whole frames out of
// `screen_link` and paints them.
#pragma once

#include "platform/desktop/frame_box.h"
#include "platform/host.h"
#include <atomic>
#include <functional>
#include <mutex>

namespace platform {

// What the window shows, shared by the surfaces (render thread) and the window (window thread).
class screen_link {
  public:
    frame_box frames;
    // Asks the window thread for a repaint; from any thread. Set while there is a window.
    void set_repaint(std::function<void()> ask);
    bool ask_repaint();                   // false: there is no window
    std::atomic<double> refresh_rate{60}; // Hz, of the screen that the window is on

  private:
    std::mutex mutex;
    std::function<void()> repaint;
};

// Full screen and back, as the display asks the window for it. Window thread.
class mode_switch {
  public:
    virtual ~mode_switch() = default;
    virtual void enter_mode(int width, int height) = 0; // a full-screen mode of that size
    virtual void leave_mode() = 0;
};

class desktop_display : public display {
  public:
    explicit desktop_display(std::shared_ptr<screen_link> to_screen);
    ~desktop_display() override;

    bool set_cooperative_level(host_window &window, bool full_screen) override;
    bool set_mode(int width, int height, int depth) override;
    void restore_mode() override;
    std::unique_ptr<surface> create_primary(bool full_screen) override;
    std::unique_ptr<surface> create_offscreen(int width, int height, surface_memory where) override;
    bool wait_vertical_blank(bool begin) override;

  private:
    std::shared_ptr<screen_link> link;
    mode_switch *switcher = nullptr; // of the window of the cooperative level
    bool exclusive = false;          // full screen is allowed
    bool mode_set = false;
    int mode_width = 0, mode_height = 0, mode_depth = 0;
};

} // namespace platform
