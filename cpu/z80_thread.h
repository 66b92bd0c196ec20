// The CPU thread: runs the whole machine against real time, slice by slice, and parks on request so that the
// window thread may touch the machine.
//
// The window thread may change the machine, the CPU and the CPU's registers only between a `pause` that
// returned 1 and the next `resume_run`.
#pragma once

#include "display/kiv_render.h"
#include "platform/event.h"
#include "platform/timer.h"
#include "support/kel_thread.h"
#include "support/shared.h"
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

// Who is told of every frame's end, between two passes: on the CPU thread, or on the thread that steps.
class frame_watcher {
  public:
    virtual void frame_ended() = 0;
    // CPU thread, after that: the picture `frames` frames from now is to be shown at the next frame message.
    virtual void show_ahead(uint32_t frames) = 0;

  protected:
    ~frame_watcher() = default;
};

// Who runs the machine in place of the thread's own passes: a debugger.
class pass_source {
  public:
    // CPU thread: so many T-states, and no slice's end earlier; `frame_ended` is called behind every frame,
    // which is counted already. False: the machine stands, until the next pause and release.
    virtual bool run_slice(uint32_t t_states, const std::function<void()> &frame_ended) = 0;

  protected:
    ~pass_source() = default;
};

constexpr uint32_t full_speed = 100, any_speed = 0; // any_speed: as fast as the host goes

class z80_thread : public kel_thread, public emulated_clock {
  public:
    z80_thread();
    ~z80_thread() override; // ends both threads
    int create_thread(int suspended) override;
    // Asks the thread to end and waits for it; also when it is parked or has never been resumed.
    void stop() override;
    uint32_t resume_thread() override;
    void run() override;

    // Opens the events "SYNC" and "ACK", makes the render thread's object and the pacing timer. 1 or 0.
    virtual int init();
    // Window thread: 1 when the loop is parked between two passes, 0 when no thread runs.
    virtual int pause();
    virtual void resume_run();
    virtual void reset_cpu();                         // parked only
    virtual void request_stop();                      // the thread ends at its next look, or at its release
    virtual void set_pc_sp(uint16_t pc, uint16_t sp); // parked only
    virtual uint16_t get_register(int index);         // z80_register_index
    uint32_t take_elapsed_cycles() override;          // render thread
    uint32_t take_executed_cycles() override;         // render thread
    virtual uint32_t is_suspended() const;
    virtual uint32_t get_no_wait() const;
    virtual void set_no_wait(uint32_t value);
    virtual uint32_t get_dma_gain() const;
    virtual void set_dma_gain(uint32_t value); // stored only
    // Per cent of the machine's own speed, or any_speed; from any thread. The sound comes as fast or as slow
    // as the machine runs; at any speed it is silent.
    virtual void set_speed(uint32_t percent);
    // Frames that the picture is ahead of the machine, 0 at first; from any thread.
    virtual void set_run_ahead(uint32_t frames);
    // While the machine reads its tape it runs as fast as the host goes; from any thread.
    virtual void set_fast_tape(bool on);
    bool is_at_any_speed() const; // by its tape or by set_speed; from any thread
    // Before the thread is created.
    void watch_frames(frame_watcher *watcher);
    // Parked only: runs on the caller's thread, without a sound, to the next frame's end. False: the CPU has
    // stopped.
    virtual bool step_frame();
    void run_from(pass_source *runs); // parked only; null: the thread runs its own passes again

  protected:
    uint32_t start_delay_ms = 1000; // from the thread's start to the first instruction

  private:
    enum control_word : uint32_t { control_run = 0, control_pause = 1, control_stop = 2 };
    enum class body_state { none, created, starting, running, parked, ended };
    struct slice_clock;

    void run_machine();
    bool start_delay();
    bool answer_request();
    void await_request();
    void run_source(slice_clock &clock, uint64_t &charged);
    void finish_slice(slice_clock &clock, uint64_t charged);
    bool park(std::unique_lock<std::mutex> &lock);
    void end_frame();
    void end_slice();
    void follow_speed(slice_clock &clock);
    bool reads_tape();
    void show_frame(slice_clock &clock);
    bool frame_is_wanted(slice_clock &clock);
    void show_cycles(uint64_t charged);
    void sleep_towards(slice_clock &clock, uint64_t cycles);
    void wait_for_slice_end(slice_clock &clock, uint64_t cycles);
    static uint32_t next_stop();

    // The park protocol: request, acknowledgement and release under one mutex. `control` is also looked at
    // without it, so that a pass costs no lock.
    //
    // Two events and a word are not enough: a pause right after a resume would take the release back before
    // the parked loop has seen it, and both would wait for each other.
    std::mutex park_mutex;
    std::condition_variable park_changed;
    std::atomic<uint32_t> control{control_run};
    body_state body = body_state::none;
    bool released = false;                 // the park in progress, or the one requested, is over
    uint64_t parks = 0;                    // acknowledgements
    platform::event sync_event, ack_event; // signalled for whoever looks

    platform::waitable_timer pace_timer;
    // What the speed figures see of the clock. Within a slice the machine runs far ahead of real time; shown
    // are the moments when both agree.
    shared<uint64_t> elapsed_cycles{0};  // T-states charged in all, waits and DMA included
    shared<uint32_t> executed_cycles{0}; // T-states of instructions in all
    uint64_t elapsed_taken = 0;          // of these, what the render thread has taken
    uint32_t executed_taken = 0;
    shared<uint32_t> suspended{0};
    shared<uint32_t> dma_gain{20};
    shared<uint32_t> speed{full_speed};
    shared<uint32_t> frames_ahead{0};
    shared<uint32_t> fast_tape{0};
    shared<uint32_t> at_any_speed{0};
    uint32_t tape_seen = 0, tape_quiet = 0; // its position at a slice's end, and slices since it moved
    frame_watcher *watcher = nullptr;
    pass_source *source = nullptr; // changes while the thread is parked only
    std::unique_ptr<kiv_render> render;
};
