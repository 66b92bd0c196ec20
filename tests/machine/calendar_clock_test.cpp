// The serial clock as a program reads it: commands by the strobe, bits by the shift clock.
#include "machine_fixture.h"

#include <ctime>

namespace {

class Calendar : public Machine {
  protected:
    enum : int { strobe = 0x02, shift_clock = 0x04, data_in = 0x08 };

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
            result[bit / 8] = static_cast<uint8_t>(result[bit / 8] | data() << bit % 8);
        return result;
    }
};

TEST_F(Calendar, TimeComesOutBitByBit) {
    EXPECT_EQ(read_register(3), (bytes{0x37, 0x05, 0x09, 0x31, 0xC0}));
    calendar_fix_time({2024, 9, 28, 23, 59, 60});
    EXPECT_EQ(read_register(3), (bytes{0x60, 0x59, 0x23, 0x28, 0x90}));
}

TEST_F(Calendar, RegisterHoldsTheTimeOfTheLastReset) {
    calendar_fix_time({2024, 2, 29, 12, 34, 56});
    // The output bit is that of no command yet, though the register begins with a 1.
    EXPECT_EQ(read_register(0), (bytes{0x36, 0x05, 0x09, 0x31, 0xC0}));
    machine.machine_reset(machine);
    EXPECT_EQ(read_register(0), (bytes{0x56, 0x34, 0x12, 0x29, 0x20}));
}

// What each command does to a shifting register 1 0 0 ..., whether the clock falls with the strobe or later.
TEST_F(Calendar, CommandsStartAndStopTheShifting) {
    calendar_fix_time({2003, 12, 31, 9, 5, 1});
    const struct {
        int command, together, later; // data after the fall: 1 unshifted, 0 shifted
    } cases[] = {{0, 1, 1}, {1, 0, 0}, {2, 1, 1}, {3, 1, 1}, {4, 0, 0}, {5, 0, 0}, {6, 0, 0}, {7, 0, 0}};
    for (const auto &c : cases) {
        for (const bool together : {true, false}) {
            command(3);
            pulse(); // not shifting yet
            command(1);
            for (const int idle : {0, 0, int{shift_clock}, int{shift_clock}}) out(0x40, idle); // no fall
            EXPECT_EQ(data(), 1);
            out(0x10, c.command);
            out(0x40, strobe | shift_clock);
            out(0x40, together ? 0 : shift_clock);
            out(0x40, 0);
            EXPECT_EQ(data(), together ? c.together : c.later)
                << "command " << c.command << " together " << together;
        }
    }
}

TEST_F(Calendar, DataIsShiftedInAndSetsNothing) {
    command(1);
    out(0x10, data_in | 1);
    for (int i = 0; i < 40; ++i) pulse();
    EXPECT_EQ(read_register(1), bytes(5, 0xFF));
    command(2); // time set
    EXPECT_EQ(read_register(3), (bytes{0x37, 0x05, 0x09, 0x31, 0xC0}));
}

TEST_F(Calendar, UnfixedClockShowsTheHostsTime) {
    calendar_use_host_time();
    const auto encoded = [](std::time_t at) {
        std::tm t{};
        localtime_r(&at, &t);
        const auto bcd = [](int n) { return static_cast<uint8_t>(n / 10 << 4 | n % 10); };
        return bytes{bcd(t.tm_sec), bcd(t.tm_min), bcd(t.tm_hour), bcd(t.tm_mday),
                     static_cast<uint8_t>((t.tm_mon + 1) << 4)};
    };
    bytes before, got, after;
    do { // until no second ended meanwhile
        before = encoded(std::time(nullptr));
        got = read_register(3);
        after = encoded(std::time(nullptr));
    } while (before != after);
    EXPECT_EQ(got, before);
}

} // namespace
