// kiv --gdb: debuggers of the GDB remote protocol on the machine that the form runs. While one is attached
// the CPU thread runs the machine by its session, and the debugger's window stays closed; while none is,
// nothing of this is in the machine.
//
// All of it runs on the window thread, which parks the CPU thread for whatever a client says.
#pragma once

#include "app/debug_session.h"
#include "app/kiv_form.h"
#include "debug/wire/gdb_line.h"

class kiv_form::wire_debugger {
  public:
    wire_debugger(kiv_form &f, const std::string &place); // throws debug_error
    ~wire_debugger();                                     // a client is told; the CPU thread has ended
    wire_debugger(const wire_debugger &) = delete;
    wire_debugger &operator=(const wire_debugger &) = delete;

    uint16_t port() const { return door.port(); }
    debug_session *session() { return visit ? &visit->session : nullptr; } // null: nobody is attached

    void stopped();         // the message from the CPU thread
    void stopped_by_hand(); // the person has stopped it, and it is parked

  private:
    struct attached_client {
        explicit attached_client(kiv_form &f);
        debug_session session;
        gdb_line line;
    };
    void watch(int descriptor, void (wire_debugger::*ready)());
    void welcome();
    bool begin(platform::wire visitor); // false: there is no machine to debug
    void hear();
    bool tick(); // false: nothing is left to look after
    void start_ticks();
    std::string monitored(const std::string &line);
    template <class Do> void at_work(Do what);
    void follow(const std::string &gone);
    void tell_lines();
    void leave(const std::string &how);

    kiv_form &form;
    gdb_door door;
    std::unique_ptr<attached_client> visit;
    int client_descriptor = -1;
    bool ticks = false;
    bool silent = true;     // until the machine runs for longer than a step
    bool seen_late = false; // the picture is older than what a client did
};
