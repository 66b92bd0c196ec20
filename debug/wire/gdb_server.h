// A debugger's client on a wire, and the machine behind it: one thread, in turns of a slice of the machine's
// time with a look at the wire between them.
//
//     gdb_server server(driver);
//     server.open(parse_gdb_place("2159"));
//     while (server.turn(80000)) {}
//
// One client at a time; another one is told so and sent away. While none is there the machine waits, or runs.
#pragma once

#include "debug/wire/gdb_line.h"
#include <functional>
#include <optional>
#include <string>
#include <utility>

class gdb_server {
  public:
    explicit gdb_server(debug_driver &driver_) : line(driver_), driver(driver_) {}

    gdb_stub &stub() { return line.stub; } // for its monitor
    bool runs_alone = false;               // while no client is there the machine runs, else it waits
    // Asked after each slice: the run is at its end, and a client is told so.
    std::function<bool()> is_over;
    std::function<void(const std::string &line)> on_word; // who came, who went

    void open(const gdb_place &place); // throws debug_error
    uint16_t port() const { return door.port(); }
    // Waits for the wire, or runs so many T-states. False: the run is over, or nobody can come any more.
    bool turn(uint64_t t_states);
    void end(uint8_t exit_code); // says so to a client that waits for the machine, and closes
    // How a machine that ran alone has stopped by itself, once.
    std::optional<stop_report> take_stop() { return std::exchange(stopped_alone, std::nullopt); }

  private:
    void welcome();
    bool machine_runs() const { return line.is_open() ? line.stub.runs() : runs_alone && !stands; }
    bool run(uint64_t t_states);
    bool wait(); // false: nobody comes
    void word(const std::string &text) const {
        if (on_word && !text.empty()) on_word(text);
    }

    gdb_line line;
    gdb_door door;
    debug_driver &driver;
    bool standard = false;
    bool stands = false; // the processor has stopped while the machine ran alone
    std::optional<stop_report> stopped_alone;
};
