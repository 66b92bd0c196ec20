// A debugger on the machine that the window shows: the debug driver in the place of the CPU thread's own
// passes, against the same clock, and the console.
//
// The window thread uses it while the CPU thread is parked, except for what is said to be for any thread.
#pragma once

#include "api/lent_machine.h"
#include "cpu/z80_thread.h"
#include "debug/console.h"
#include "debug/debug_driver.h"
#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

class debug_session final : public pass_source, private machine_owner {
  public:
    // `stopped`: called on the CPU thread when a stop point or the end of a step has stopped the machine,
    // which then stands until it is told to go.
    debug_session(sound_slices &sounds, std::function<void()> stopped,
                  std::function<void(const std::string &path)> write_picture);
    ~debug_session(); // the machine is the window's own again
    debug_session(const debug_session &) = delete;
    debug_session &operator=(const debug_session &) = delete;

    debug_driver driver;

    // What it does as soon as the CPU thread is released.
    void go(aim_kind kind = aim_kind::none, uint16_t address = 0);
    bool stands() const { return standing; }
    // Where it has stopped and why, for a person; empty: nothing to say.
    const std::string &why() const { return reason; }
    // The person stops it here.
    void stop_here();
    stop_report back(aim_kind kind);
    void look_back(size_t count, const std::function<void(uint16_t pc, uint64_t t_states)> &look);
    // One line of the command language. What runs the machine runs it at once. False: `quit` was said.
    // `may_run`: such commands are not refused.
    bool execute(const std::string &line, bool may_run);
    // The same for a command that runs nothing; what was wrong with it.
    std::string command(const std::string &line);
    void show_stop();                                              // on the console
    const profile *profiled() const { return console.profiled(); } // null: none is taken
    bool profiling() const { return console.profiling(); }
    // Asked every few frames while a command or a way back takes its time, with the part of the past that has
    // been looked through, 0 to 1, or less than 0 where no end is known. False: it is to end.
    std::function<bool(double part)> goes_on;
    // For a client that drives `driver` by itself.
    void drive(const std::function<void()> &what);
    void set_going(); // it has aimed
    const stop_report &last() const { return last_stop; }
    // The window could not attend to the stop: it is told when the CPU thread is released.
    void tell_again() { told = false; }
    std::vector<std::string> complete(const std::string &line) const { return console.complete(line); }

    // ---- any thread
    std::vector<std::string> take_lines(); // of the console and of log points
    bool has_lines() const;
    // Before the next instruction, on the thread that runs the machine: keys, which history has to know of.
    void before_pass(std::function<void()> change);
    // Somebody has changed the machine; `another`: by a state, a tape, other ROMs.
    void changed(bool another = false) { change_seen |= another ? 3 : 1; }

    bool run_slice(uint32_t t_states, const std::function<void()> &frame_ended) override;

  private:
    sound_slices &sound() override { return slices; }
    bool takes_slice() override { return forwards; }
    void take_changes();
    void take(const stop_report &report);
    class recorder_scope;
    console_host make_host(std::function<void(const std::string &)> write_picture);

    sound_slices &slices;
    std::function<void()> tell_stop;
    debug_console console;
    bool standing = false;
    bool told = false;     // the window, of this stop
    bool forwards = false; // the CPU thread runs it
    stop_report last_stop;
    std::string reason;
    const std::function<void()> *at_frame = nullptr;
    mutable std::mutex mutex; // of what follows
    std::vector<std::function<void()>> changes;
    std::vector<std::string> lines;
    std::atomic<uint8_t> change_seen{0};
};
