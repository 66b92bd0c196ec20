#include "machine/kiv_machine.h"
#include "machine/run_block.h"

namespace {

enum calendar_command : uint8_t { register_hold = 0, register_shift = 1, time_set = 2, time_read = 3 };

constexpr uint8_t port10_command = 0x07;
constexpr uint8_t port10_data = 0x08;
constexpr uint8_t port40_strobe = 0x02;
constexpr uint8_t port40_clock = 0x04;
constexpr uint8_t sys_status_after_reset = 0x0D;

calendar_time (*ask_host)() = nullptr;

calendar_time time_now() {
    const calendar_base &base = run_state.calendar;
    switch (base.source) {
    case calendar_of_host: return ask_host != nullptr ? ask_host() : base.time;
    case calendar_running:
        return calendar_after(base.time, (base.now_cycles - base.start_cycles) / default_clock_hz);
    default: return base.time;
    }
}

uint8_t bcd(int value) { return static_cast<uint8_t>(value % 100 / 10 * 16 + value % 10); }

int days_of(int month, int year) {
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[(month - 1) % 12];
}

void load_time() {
    const calendar_time now = time_now();
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

void calendar_use_host_time() { run_state.calendar.source = calendar_of_host; }

void calendar_fix_time(const calendar_time &time) { run_state.calendar = {calendar_standing, time, 0, 0}; }

void calendar_start_at(const calendar_time &time) {
    run_state.calendar = {calendar_running, time, run_state.cycles, run_state.cycles};
}

void calendar_ask(calendar_time (*host_now)()) { ask_host = host_now; }

calendar_time calendar_after(const calendar_time &time, uint64_t seconds) {
    constexpr uint64_t day = 24 * 60 * 60;
    calendar_time t = time;
    seconds += static_cast<uint64_t>((t.hour * 60 + t.minute) * 60 + t.second);
    for (uint64_t days = seconds / day; days > 0; --days) {
        if (++t.day <= days_of(t.month, t.year)) continue;
        t.day = 1;
        if (++t.month <= 12) continue;
        t.month = 1;
        ++t.year;
    }
    const auto left = static_cast<int>(seconds % day);
    t.hour = left / 3600;
    t.minute = left / 60 % 60;
    t.second = left % 60;
    return t;
}

void calendar_init() {
    machine.calendar_reset = calendar_reset;
    machine.calendar_port40 = calendar_port40;
    calendar_reset();
}
