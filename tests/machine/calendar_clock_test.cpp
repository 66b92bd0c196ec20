// The serial clock as a program reads it: commands by the strobe, bits by the shift clock.
#include "machine_fixture.h"

#include <ctime>

namespace {

class Calendar : public Machine {
  protected:
    enum : int { strobe = 0x02, shift_clock = 0x04 };

    static void command(int code) {
        out(0x10, code);
        out(0x40, strobe);
        out(0x40, 0);
    }
    static int data() { return in(0x40) >> 4 & 1; }
    static void pulse() {
        out(0x40, shift_clock);
        out(0x40, 0);
    }
    static bytes read_register(int first_command) {
        command(first_command);
        command(1);
        bytes result(5);
        for (size_t bit = 0; bit < 40; ++bit, pulse())
            result[bit / 8] |= static_cast<uint8_t>(data() << bit % 8);
        return result;
    }
};

TEST_F(Calendar, TimeComesOutBitByBit) {
    const struct {
        calendar_time time;
        bytes expected;
    } cases[] = {
        {{2003, 12, 31, 9, 5, 37}, {0x37, 0x05, 0x09, 0x31, 0xC0}},
        {{2024, 1, 1, 0, 0, 0}, {0x00, 0x00, 0x00, 0x01, 0x10}},
        {{2024, 9, 28, 23, 59, 60}, {0x60, 0x59, 0x23, 0x28, 0x90}},
    };
    for (const auto &c : cases) {
        calendar_fix_time(c.time);
        EXPECT_EQ(read_register(3), c.expected);
    }
}

TEST_F(Calendar, RegisterHoldsTheTimeOfTheLastReset) {
    calendar_fix_time({2024, 2, 29, 12, 34, 56});
    // The output bit is that of no command yet, though the register begins with a 1.
    EXPECT_EQ(read_register(0), (bytes{0x36, 0x05, 0x09, 0x31, 0xC0}));
    machine.machine_reset(machine);
    EXPECT_EQ(read_register(0), (bytes{0x56, 0x34, 0x12, 0x29, 0x20}));
}

TEST_F(Calendar, OnlyAFallingClockShiftsAndOnlyAfterTheShiftCommand) {
    calendar_fix_time({2003, 12, 31, 9, 5, 1}); // bits 1 0 0 ...
    command(3);
    EXPECT_EQ(data(), 1);
    pulse(); // not shifting yet
    EXPECT_EQ(data(), 1);
    command(1);
    out(0x40, 0);
    out(0x40, 0);
    out(0x40, shift_clock);
    out(0x40, shift_clock);
    EXPECT_EQ(data(), 1);
    out(0x40, 0);
    EXPECT_EQ(data(), 0);
    for (const int stop : {0, 2, 3}) { // hold, set and read end the shifting
        command(3);
        command(1);
        command(stop);
        pulse();
        EXPECT_EQ(data(), 1) << "after command " << stop;
    }
    for (const int none : {4, 5, 6, 7}) { // no commands: the shifting goes on
        command(3);
        command(1);
        command(none);
        pulse();
        EXPECT_EQ(data(), 0) << "after command " << none;
    }
}

// One write may bring both edges: strobe and clock fall together.
TEST_F(Calendar, StrobeAndClockFallTogether) {
    const struct {
        int command;
        int expected;
    } cases[] = {{1, 0}, {0, 1}, {5, 0}, {2, 1}};
    calendar_fix_time({2003, 12, 31, 9, 5, 1});
    for (const auto &c : cases) {
        command(3);
        command(1);
        out(0x10, c.command);
        out(0x40, strobe | shift_clock);
        out(0x40, 0);
        EXPECT_EQ(data(), c.expected) << "command " << c.command;
    }
}

TEST_F(Calendar, DataIsShiftedInAndSetsNothing) {
    command(1);
    out(0x10, 0x08 | 1);
    for (int i = 0; i < 40; ++i) pulse();
    EXPECT_EQ(bytes(machine.calendar_register, machine.calendar_register + 5), bytes(5, 0xFF));
    EXPECT_EQ(data(), 1);
    command(2); // time set
    EXPECT_EQ(read_register(3), (bytes{0x37, 0x05, 0x09, 0x31, 0xC0}));
}

TEST_F(Calendar, UnfixedClockShowsTheHostsTime) {
    calendar_use_host_time();
    const auto text = [](std::time_t at) {
        std::tm local{};
        localtime_r(&at, &local);
        char digits[16];
        std::strftime(digits, sizeof digits, "%S%M%H%d%m", &local);
        return std::string(digits);
    };
    const std::time_t before = std::time(nullptr);
    const bytes got = read_register(3);
    const std::time_t after = std::time(nullptr);
    char digits[16];
    std::snprintf(digits, sizeof digits, "%02X%02X%02X%02X%02d", got[0], got[1], got[2], got[3], got[4] >> 4);
    bool matches = false;
    for (std::time_t at = before; at <= after; ++at) matches = matches || digits == text(at);
    EXPECT_TRUE(matches) << "got " << digits << ", expected " << text(before);
}

} // namespace
