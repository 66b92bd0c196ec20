// A display in memory: surfaces that are drawn into, modes that a filter accepts, and a
// screen that always shows one whole frame, for a test to look at.
#pragma once

#include "platform/host.h"
#include "tests/headless/fault_plan.h"
#include <functional>
#include <memory>

namespace platform {

class headless_window;

// Pixels 0x00RRGGBB, rows top first.
struct rgb_picture {
    int width = 0, height = 0;
    std::vector<uint32_t> pixels;

    uint32_t at(int x, int y) const { return pixels.at(static_cast<size_t>(y * width + x)); }
};

// The frame that the screen shows, and how it came there.
struct shown_frame {
    rgb_picture picture;
    uint64_t number = 0;     // frames copied to the screen so far; 0: none yet, the picture is empty
    rectangle destination{}; // in screen coordinates
    bool full_screen = false;
};

class headless_display : public display {
  public:
    explicit headless_display(fault_plan &plan);
    ~headless_display() override;

    // ---- for the test; from any thread ----
    // Pixels and bits a pixel (8 or 32) of the desktop; 1280 x 1024 x 32 at first.
    void set_desktop(int width, int height, int depth);
    size2 desktop_size() const;
    // Which full-screen modes there are; at first those of an ordinary display, at 8 and at 32 bits.
    void set_mode_filter(std::function<bool(int width, int height, int depth)> accepts);
    // Pictures a second, by which wait_vertical_blank is paced; 0 (at first): it returns at once.
    void set_refresh_rate(double hertz);
    shown_frame shown() const;
    // Waits until `number` frames have been shown. False when that takes longer.
    bool wait_for_frame(uint64_t number, uint32_t milliseconds) const;
    bool is_open() const;       // there are surfaces
    size2 current_mode() const; // 0 x 0 in window mode

    // ---- for the program ----
    bool set_cooperative_level(host_window &window, bool full_screen) override;
    bool set_mode(int width, int height, int depth) override;
    void restore_mode() override;
    std::unique_ptr<surface> create_primary(bool full_screen) override;
    std::unique_ptr<surface> create_offscreen(int width, int height, surface_memory where) override;
    bool wait_vertical_blank(bool begin) override;

    struct screen;

  private:
    fault_plan &faults;
    std::shared_ptr<screen> state;
};

} // namespace platform
