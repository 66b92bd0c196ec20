// A debugger's client on a wire, and the machine behind it: one thread, in turns of a slice of the machine's
// time with a look at the wire between them.
//
//     gdb_server server(driver);
//     server.open(parse_gdb_place("2159"));
//     while (server.turn(80000)) {}
//
// One client at a time; another one is told so and sent away. While none is there the machine waits, or runs.
#pragma once

#include "debug/wire/gdb_stub.h"
#include "platform/wire.h"
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct gdb_place {
    bool standard_streams = false;
    std::string address; // empty: of this computer alone
    uint16_t port = 0;   // 0: a free one
};

// PORT, ADDRESS:PORT, [ADDRESS]:PORT, or - and stdio for the standard input and output. Throws debug_error.
gdb_place parse_gdb_place(const std::string &text);

class gdb_server {
  public:
    explicit gdb_server(debug_driver &driver_) : stub(driver_), driver(driver_) {}

    gdb_stub stub;           // for its monitor
    bool runs_alone = false; // while no client is there the machine runs, else it waits
    // Asked after each slice: the run is at its end, and a client is told so.
    std::function<bool()> is_over;
    std::function<void(const std::string &line)> on_word; // who came, who went

    void open(const gdb_place &place); // throws debug_error
    uint16_t port() const { return listener.port(); }
    // Waits for the wire, or runs so many T-states. False: the run is over, or nobody can come any more.
    bool turn(uint64_t t_states);
    void end(uint8_t exit_code); // says so to a client that waits for the machine, and closes
    // How a machine that ran alone has stopped by itself, once.
    std::optional<stop_report> take_stop() { return std::exchange(stopped_alone, std::nullopt); }

  private:
    void welcome();
    void refuse(platform::wire visitor);
    void drain();
    void hear();
    void tell();
    void lose(const char *how);
    bool machine_runs() const { return client.is_open() ? stub.runs() : runs_alone && !stands; }
    bool run(uint64_t t_states);
    bool wait(); // false: nobody comes
    void word(const std::string &line) const {
        if (on_word) on_word(line);
    }

    debug_driver &driver;
    platform::wire_listener listener;
    platform::wire client;
    std::vector<platform::wire> refused; // until they have gone
    bool standard = false;
    bool stands = false; // the processor has stopped while the machine ran alone
    std::optional<stop_report> stopped_alone;
};
