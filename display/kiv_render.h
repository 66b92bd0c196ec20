// The render thread: one composed and presented frame for each frame message, however many are waiting, and
// once a second the speed figures.
#pragma once

#include "support/kel_thread.h"
#include "support/shared.h"
#include <cstdint>

// Messages to the render thread.
enum render_message : uint32_t {
    render_quit = 0x401,
    render_frame = 0x402,
};

// Where the render thread learns of the emulated time that has gone by.
class emulated_clock {
  public:
    virtual uint32_t take_elapsed_cycles() = 0;  // T-states since the last call, waits and DMA included
    virtual uint32_t take_executed_cycles() = 0; // of instructions alone

  protected:
    ~emulated_clock() = default;
};

// The figures of the last whole period, for the speed line. Written by the render thread only.
extern shared<double> stat_sys_mhz; // all T-states, in MHz
extern shared<double> stat_cpu_mhz; // T-states of executed instructions, in MHz
extern shared<int32_t> stat_fps;    // frames a second
extern shared<double> stat_lpf;     // text rows a frame

// One period of the figures.
struct speed_period {
    uint32_t frames, rows, elapsed_ms;
    uint32_t sys_cycles, cpu_cycles;
};
void publish_speed(const speed_period &period);

class kiv_render : public kel_thread {
  public:
    explicit kiv_render(emulated_clock &cpu_clock);
    ~kiv_render() override; // asks the thread to quit and waits for it
    void run() override;

  private:
    void quit();
    void draw(speed_period &period, uint32_t &last_ms);

    emulated_clock &clock;
};
