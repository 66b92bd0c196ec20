// The calendar clock, a serial clock with the command set of the uPD1990A.
//   port 0x10 W  bits 0-2 command, bit 3 data in
//   port 0x40 W  bit 1 strobe, bit 2 shift clock
//   port 0x40 R  bit 4 data out
// Not emulated: setting the time (accepted, no effect), the day of the week (0), timing pulses.
#pragma once

#include <cstdint>

struct calendar_block {
    uint8_t calendar_register[5]; // 40 bits, least significant first
    uint8_t calendar_strobe;      // last port 0x40 bit 1 image: 0 or 2
    uint8_t calendar_clock;       // last port 0x40 bit 2 image: 0 or 4
    uint8_t calendar_shifting;    // 1 after a shift command
    void (*calendar_init)();
    void (*calendar_reset)();
    void (*calendar_port40)();
};

// A local date and time.
struct calendar_time {
    int year, month, day, hour, minute, second;
};

// Where the clock takes its time from.
enum calendar_source : uint8_t {
    calendar_of_host,  // asked each time; without a host that has been told, as calendar_standing
    calendar_standing, // shows `time` for ever
    calendar_running,  // goes on from `time` with the machine's own T-states
};

struct calendar_base {
    uint8_t source; // calendar_source
    calendar_time time;
    uint64_t start_cycles; // run_state.cycles when it was `time`
    uint64_t now_cycles;   // the same, at the end of the last frame
};

void calendar_use_host_time();
void calendar_fix_time(const calendar_time &time);
void calendar_start_at(const calendar_time &time);

// Who is asked for the host's local time.
void calendar_ask(calendar_time (*host_now)());

// The date and time `seconds` after `time`.
calendar_time calendar_after(const calendar_time &time, uint64_t seconds);

void calendar_init();
