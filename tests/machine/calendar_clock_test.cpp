// The serial clock as a program reads it: commands by the strobe, bits by the shift clock.
#include "machine/host_clock.h"
#include "machine_fixture.h"

#include <ctime>

namespace {

struct Calendar : Machine {
    enum : int { strobe = 0x02, shift_clock = 0x04, data_in = 0x08 };

    static void command(int code) { out({{0x10, code}, {0x40, strobe}, {0x40, 0}}); }
    static int data() { return in(0x40) >> 4 & 1; }
    static void pulse() { out({{0x40, shift_clock}, {0x40, 0}}); }
    static bytes read_register(int first_command) {
        command(first_command);
        command(1);
        bytes result(5);
        for (size_t bit = 0; bit < 40; ++bit, pulse())
            result[bit / 8] = static_cast<uint8_t>(result[bit / 8] | data() << bit % 8);
        return result;
    }
};

TEST_F(Calendar, HoldsTheTimeOfTheLastResetOrRead) {
    const bytes fixed = {0x37, 0x05, 0x09, 0x31, 0xC0};
    calendar_fix_time({2024, 2, 28, 23, 59, 60});
    EXPECT_EQ(data(), 0) << "no command has put the register's first bit out yet";
    EXPECT_EQ(read_register(2), fixed) << "time set only shows what was there";
    EXPECT_EQ(read_register(3), (bytes{0x60, 0x59, 0x23, 0x28, 0x20}));
    command(1);
    out(0x10, data_in | 1);
    for (int i = 0; i < 40; ++i) pulse();
    EXPECT_EQ(read_register(1), bytes(5, 0xFF)) << "what was shifted in";
    calendar_fix_time({2003, 12, 31, 9, 5, 37});
    machine.machine_reset(machine);
    EXPECT_EQ(read_register(2), fixed);

    use_host_clock();
    calendar_use_host_time();
    std::time_t now;
    do { // until no second ended meanwhile
        now = std::time(nullptr);
        command(3);
    } while (now != std::time(nullptr));
    const std::tm t = *std::localtime(&now);
    const int shown[] = {t.tm_sec, t.tm_min, t.tm_hour, t.tm_mday};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(machine.calendar_register[i], shown[i] + shown[i] / 10 * 6);
    EXPECT_EQ(machine.calendar_register[4], (t.tm_mon + 1) * 16);
}

// A command is taken when the strobe falls, once: not when it rises or stays.
TEST_F(Calendar, OnlyTheFallingStrobeTakesACommand) {
    calendar_fix_time({2003, 12, 31, 9, 5, 37});
    command(3);
    out(0x10, 3);
    calendar_fix_time({2024, 2, 28, 23, 59, 58});
    for (const int level : {0, +strobe, +strobe}) {
        out(0x40, level);
        EXPECT_EQ(machine.calendar_register[0], 0x37) << "strobe " << level;
    }
    out(0x40, 0);
    EXPECT_EQ(machine.calendar_register[0], 0x58);
}

// What each command does to a shifting register 1 0 0 ..., whether the clock falls with the strobe or later.
TEST_F(Calendar, CommandsStartAndStopTheShifting) {
    calendar_fix_time({2003, 12, 31, 9, 5, 1});
    constexpr int after_fall[8] = {1, 0, 1, 1, 0, 0, 0, 0}; // by command: 1 unshifted, 0 shifted
    for (int i = 0; i < 16; ++i) {
        const bool together = i >= 8;
        command(3);
        pulse(); // not shifting yet
        command(1);
        out({{0x40, 0}, {0x40, 0}, {0x40, shift_clock}, {0x40, shift_clock}}); // no fall
        EXPECT_EQ(data(), 1);
        out({{0x10, i % 8}, {0x40, strobe | shift_clock}});
        out({{0x40, together ? 0 : shift_clock}, {0x40, 0}});
        EXPECT_EQ(data(), after_fall[i % 8]) << "command " << i % 8 << " together " << together;
    }
}

} // namespace
