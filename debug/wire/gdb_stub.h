// The machine's side of the GDB remote protocol: what a client asks, done with the debug driver. It knows no
// wire: bytes come in by `receive` and are fetched from `output`; whoever holds it runs the driver's slices
// while `runs` says so and hands over what they end with (debug/wire/gdb_server.h does both).
//
// Two registers' orders are known among clients for this processor. One that tells its own abilities when it
// asks for ours (qSupported with arguments) is gdb and gets gdb's order, which its architecture z80 has; the
// others look registers up in the description, or take them as the VS Code extension for this processor does,
// which never asks for a description's registers.
#pragma once

#include "debug/debug_driver.h"
#include "debug/wire/gdb_packets.h"
#include <functional>
#include <map>
#include <string>
#include <string_view>

class gdb_stub {
  public:
    explicit gdb_stub(debug_driver &driver_) : driver(driver_) {}

    // What `monitor` says to a command line; empty: done.
    std::function<std::string(const std::string &command)> monitor;

    void attach(); // a client has come; the machine stands
    void detach(); // it has gone; its stop points go with it
    // What has come over the wire. Packets that wait for an earlier one's sake are worked on with the next
    // call, be it without bytes.
    void receive(std::string_view bytes);
    bool waits() const { return !going && reader.waiting() != 0; } // such a call is wanted
    std::string &output() { return out; }   // for the wire; what has been sent is cut off
    bool runs() const { return going; }     // the client has set the machine going
    bool leaves() const { return leaving; } // it wants to go, or talks nonsense: close when `output` is sent
    // The run that `runs` speaks of has come to an end.
    void has_stopped(const stop_report &report);
    void has_ended(uint8_t exit_code); // the machine is taken away
    // While a packet is worked on: takes more bytes in. True: an interrupt was among them, or before them.
    bool interrupted_by(std::string_view bytes);
    void say(const std::string &line); // to the client's terminal, while the machine runs

  private:
    struct watched {
        char type;
        uint64_t address, length;
        auto operator<=>(const watched &) const = default;
    };
    using answer = std::optional<std::string>; // of a packet; nothing: later, or never

    void work();
    void respond(const packet_event &event);
    void send(const std::string &data);
    answer handle(std::string_view packet);
    answer handle_query(std::string_view packet);
    answer handle_set(std::string_view packet);
    answer handle_v(std::string_view packet);
    answer handle_continue(std::string_view packet);
    answer step_within(std::string_view range);
    answer handle_back(std::string_view packet);
    std::string supported(std::string_view of_client);
    std::string description() const;
    std::string part_of(const std::string &whole, std::string_view offset_and_length) const;
    std::string read_registers() const;
    std::string write_registers(std::string_view hex);
    std::string read_register(std::string_view number) const;
    std::string write_register(std::string_view number_and_value);
    std::string read_memory(std::string_view range) const;
    std::string sum_memory(std::string_view range) const;
    std::string write_memory(std::string_view range_and_data, bool hexadecimal);
    std::string change_point(std::string_view packet);
    std::string run_monitor(std::string_view hex);
    answer go(aim_kind aim);
    answer set_going();
    std::string reason_for(const stop_report &report) const;
    std::string stop_answer(const stop_report &report) const;
    void stop(const stop_report &report);

    debug_driver &driver;
    packet_reader reader;
    std::string out;
    std::string last_sent;              // the packet, for a client that did not get it
    std::string last_stop;              // what ? is answered with
    std::map<watched, uint32_t> points; // of the client, with the driver's id
    bool going = false, leaving = false;
    bool interrupt_waits = false; // it came while the machine stood: the next run ends at once
    bool acknowledges = true;
    bool is_gdb = false, knows_break_kinds = false;
    size_t lines_left_out = 0;
};
