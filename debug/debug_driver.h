// The third driver of the machine, beside real time and as fast as it goes: the same passes, with what to
// stop at, and backwards. While it does not run, nothing of it is in the machine; while it runs, the
// processor's step, memory, port and interrupt functions are its own, which call the machine's.
//
// How a console, a window or a server of a wire protocol uses it:
//
//     driver.add(point);                       breakpoints and watchpoints, by id
//     driver.aim(aim_kind::over);              or driver.go_on()
//     stop_report why;
//     do why = driver.run_slice(80000);        20 ms of the machine, less than one of the host
//     while (why.kind == stop_kind::running && !(something from the wire));
//     driver.back(aim_kind::into);             a step back
//     kiv_get_register(KIV_REG_PC), kiv_read(KIV_AREA_CPU, ...)        looking needs no driver
//     driver.set_register(...), driver.write(KIV_AREA_RAM, ...)        changing does: history has to know
//
// Whoever changes the machine otherwise (a tape, a reset, a loaded state) says so with `changed` or
// `forget_history`. Keys may be struck and typed through api/kiv.h at any time.
//
// One at a time and one thread, but for ask_to_stop. A machine must have been booted.
#pragma once

#include "api/kiv.h"
#include "debug/debug_error.h"
#include "debug/debug_observer.h"
#include "debug/history.h"
#include "debug/stop_point.h"
#include "debug/symbols.h"
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// What a run goes to, unless a stop point ends it before.
enum class aim_kind : uint8_t {
    none,    // run on
    into,    // one instruction
    over,    // one instruction; a call, RST, block instruction or waiting HALT as a whole, interrupts passed
             // over
    out,     // behind the return of the routine; backwards: to its call
    frame,   // to the next picture
    address, // to an address
    outside, // to an instruction outside of a range: see aim_outside
};

class debug_driver {
  public:
    debug_driver();
    ~debug_driver();
    debug_driver(const debug_driver &) = delete;
    debug_driver &operator=(const debug_driver &) = delete;

    symbol_table symbols; // for conditions, log points and whoever shows addresses

    // ---- stop points
    // Checks it and takes it in; its id. Throws debug_error.
    uint32_t add(const stop_point &point);
    bool remove(uint32_t id);
    void remove_all();
    // In place of the one with this id, hits kept. False: there is none. Throws debug_error.
    bool replace(uint32_t id, const stop_point &point);
    bool enable(uint32_t id, bool on);
    const std::vector<stop_point> &points() const { return stop_points; }
    const stop_point *find(uint32_t id) const;

    // ---- forwards
    void aim(aim_kind kind, uint16_t address = 0, memory_bank bank = memory_bank::any);
    void go_on() { aim(aim_kind::none); }
    void aim_outside(uint16_t first, uint16_t last); // one instruction at least; first > last: just that
    void leave_here(); // a stop point at the instruction that comes next is not met before the machine moves
    // Runs `t_states` at most, to the aim or to a stop. While it answers stop_kind::running, the aim stands.
    stop_report run_slice(uint64_t t_states);
    // The same to the end: until it stops or somebody asks.
    stop_report run();
    stop_report run(aim_kind kind) { return aim(kind), run(); }
    // From any thread, from a signal's handler, too: the next run ends at once, the present one within a
    // frame of the machine, a way back within a few.
    void ask_to_stop() { asked.store(true, std::memory_order_relaxed); }
    bool is_asked() const { return asked.load(std::memory_order_relaxed); } // and nothing has ended yet
    void never_mind() { asked.store(false, std::memory_order_relaxed); }

    // ---- backwards, as far as history goes; what came later is forgotten
    void keep_history(const history_limits &limits);
    void keep_no_history();
    const history *past() const { return own_history.get(); } // null: none is kept
    // none: to where a stop point would last have stopped; memory and ports: before the access, so that it is
    // undone. stop_kind::beginning: there was none, and the machine stands at the oldest place known.
    stop_report back(aim_kind kind);
    bool in_the_past() const; // what runs now has run before
    // Shows the last `count` instructions before this instant, the oldest first: while `look` is called the
    // machine is as it was before each, and afterwards as it is now. Fewer where history ends.
    void look_back(size_t count, const std::function<void(uint16_t pc, uint64_t t_states)> &look);
    // To the last instruction that began not later than so many T-states since the boot.
    stop_report back_to(uint64_t t_states);

    // ---- changing the machine while it stands
    kiv_result write(int32_t area, uint32_t address, const void *data, size_t size);
    kiv_result set_register(int32_t index, uint32_t value);
    void port_out(uint16_t port, uint8_t value);
    void changed();        // somebody changed something else
    void forget_history(); // somebody put another machine in: a boot, a loaded state
    // Where the next instruction comes from: PC, or the routine of an accepted interrupt.
    static uint16_t next_address();

    // ---- who listens; none of them hears of what is run again to get backwards
    void listen(debug_observer &observer);
    void unlisten(debug_observer &observer);
    std::function<void(const std::string &line)> on_log; // a log point's text
    // After each piece of a run, with what kiv_run returned: sound and tape output are to be taken now; after
    // KIV_RUN_FRAME it is the time for keys and pictures. It may call ask_to_stop.
    std::function<void(int32_t ended_by)> on_run;
    // Now and then while the past is run again, with the part that has been looked through, 0 to 1, and
    // between the lines of scripts and repetitions (-1). It may call ask_to_stop.
    std::function<void(double part)> on_work;

    class machinery; // what the machine's slots reach; the driver's own

  private:
    friend class machinery;

    std::vector<stop_point> stop_points;
    std::vector<debug_observer *> observers;
    std::unique_ptr<history> own_history;
    std::unique_ptr<machinery> inner;
    std::atomic<bool> asked{false};
    uint32_t next_id = 1;
};
