// What the rooms below the program know of its main window.
#pragma once

#include <cstdint>

// To the main window when the CPU has stopped: wparam the instruction's address, lparam the z80_stop_reason.
constexpr uint32_t WM_Z80ABORT = 0x402;

class main_window {
  public:
    // Posts a message to the window; from any thread, never blocks.
    virtual void post(uint32_t message, uint64_t wparam, uint64_t lparam) = 0;
    // Window thread: the frame off, when full screen begins; the frame on and a client area of the given
    // size, centred, when window mode begins.
    virtual void set_full_screen_style(int width, int height) = 0;
    virtual void set_window_style(int width, int height) = 0;

  protected:
    ~main_window() = default;
};

// The program's window, set before any other thread starts; null where there is none.
extern main_window *the_main_window;
