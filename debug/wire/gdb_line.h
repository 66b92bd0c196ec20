// One client of the GDB remote protocol on its wire, and the door that clients come through. Whoever holds
// them runs the machine (debug/wire/gdb_server.h, and the program with the window).
#pragma once

#include "debug/wire/gdb_stub.h"
#include "platform/wire.h"
#include <functional>
#include <string>
#include <vector>

struct gdb_place {
    bool standard_streams = false;
    std::string address; // empty: of this computer alone
    uint16_t port = 0;   // 0: a free one
};

// PORT, ADDRESS:PORT, [ADDRESS]:PORT, or - and stdio for the standard input and output. Throws debug_error.
gdb_place parse_gdb_place(const std::string &text);

constexpr int between_answers = 20; // ms, for a client that takes the answers of one delivery for one

class gdb_line {
  public:
    explicit gdb_line(debug_driver &driver);
    ~gdb_line();
    gdb_line(const gdb_line &) = delete;
    gdb_line &operator=(const gdb_line &) = delete;

    gdb_stub stub;

    void take(platform::wire visitor); // a client has come
    bool is_open() const { return client.is_open(); }
    const platform::wire &wire() const { return client; }
    // Work on what has come, and send what is to be said. What has become of the client, when it has gone.
    std::string hear();
    std::string tell();
    void end(uint8_t exit_code); // the machine is taken away: a client that waits for it is told
    void close();

  private:
    void look_for_interrupt();

    debug_driver &driver;
    std::function<void(double)> others_work; // driver.on_work of before
    platform::wire client;
    size_t heard_meanwhile = 0; // bytes, since the packet that is worked on has come
};

class gdb_door {
  public:
    void open(const gdb_place &place); // throws debug_error
    uint16_t port() const { return listener.port(); }
    platform::wire next() { return listener.accept(); } // not open: nobody has come
    void refuse(platform::wire visitor, const std::string &why);
    void drain(); // from time to time
    void close();
    const platform::wire_listener &listening() const { return listener; }
    const std::vector<platform::wire> &sent_away() const { return refused; } // until they have gone

  private:
    platform::wire_listener listener;
    std::vector<platform::wire> refused;
};
