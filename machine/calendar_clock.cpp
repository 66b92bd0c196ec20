#include "machine/kiv_machine.h"

#include <ctime>

namespace {

enum calendar_command : uint8_t { register_hold = 0, register_shift = 1, time_set = 2, time_read = 3 };

constexpr uint8_t port10_command = 0x07;
constexpr uint8_t port10_data = 0x08;
constexpr uint8_t port40_strobe = 0x02;
constexpr uint8_t port40_clock = 0x04;
constexpr uint8_t sys_status_after_reset = 0x0D;

bool time_is_fixed = false;
calendar_time fixed_time;

calendar_time host_time() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

uint8_t bcd(int value) { return static_cast<uint8_t>(value % 100 / 10 * 16 + value % 10); }

void load_time() {
    const calendar_time now = time_is_fixed ? fixed_time : host_time();
    machine.calendar_register[0] = bcd(now.second);
    machine.calendar_register[1] = bcd(now.minute);
    machine.calendar_register[2] = bcd(now.hour);
    machine.calendar_register[3] = bcd(now.day);
    machine.calendar_register[4] = static_cast<uint8_t>(now.month * 16);
}

void update_output() {
    machine.sys_status &= static_cast<uint8_t>(~status_calendar_out);
    if (machine.calendar_register[0] & 1) machine.sys_status |= status_calendar_out;
}

void shift() {
    for (int i = 0; i < 5; ++i) {
        const uint8_t above =
            i < 4 ? machine.calendar_register[i + 1] & 1 : (machine.port10 & port10_data) != 0;
        machine.calendar_register[i] = static_cast<uint8_t>(machine.calendar_register[i] >> 1 | above << 7);
    }
    update_output();
}

// The register shifts on the falling edge of the clock.
void clock_step(uint8_t clock) {
    if (clock == machine.calendar_clock) return;
    machine.calendar_clock = clock;
    if (clock == 0) shift();
}

// Runs the command in port 0x10 on a falling strobe. True when the write's clock edge still counts.
bool run_command() {
    switch (machine.port10 & port10_command) {
    case register_hold: machine.calendar_shifting = 0; return false;
    case register_shift: machine.calendar_shifting = 1; return true;
    case time_set:
        machine.calendar_shifting = 0;
        update_output();
        return false;
    case time_read:
        machine.calendar_shifting = 0;
        load_time();
        update_output();
        return false;
    default: return machine.calendar_shifting != 0;
    }
}

void calendar_port40() {
    const uint8_t strobe = machine.port40 & port40_strobe;
    const uint8_t clock = machine.port40 & port40_clock;
    const bool strobe_fell = strobe == 0 && machine.calendar_strobe != 0;
    machine.calendar_strobe = strobe;
    if (strobe_fell ? run_command() : machine.calendar_shifting != 0)
        clock_step(clock);
    else
        machine.calendar_clock = clock;
}

void calendar_reset() {
    machine.calendar_strobe = machine.calendar_clock = machine.calendar_shifting = 0;
    machine.sys_status = sys_status_after_reset;
    load_time();
}

} // namespace

void calendar_use_host_time() { time_is_fixed = false; }

void calendar_fix_time(const calendar_time &time) {
    fixed_time = time;
    time_is_fixed = true;
}

void calendar_init() {
    machine.calendar_reset = calendar_reset;
    machine.calendar_port40 = calendar_port40;
    calendar_reset();
}
