// Tape and USART through their ports, with real files.
#include "machine_fixture.h"

#include "app/kiv_assay.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <sys/stat.h>

namespace {

std::vector<std::string> lines; // logged

class Cassette : public Machine {
  protected:
    void SetUp() override {
        Machine::SetUp();
        lines.clear();
        set_trace_listener([](const char *line) { lines.emplace_back(line); });
    }
    void TearDown() override {
        cassette_set_output("");
        set_trace_listener(nullptr);
        Machine::TearDown();
    }

    void insert(const bytes &tape) { ASSERT_TRUE(cassette_load_tape(write_file("tape.cmt", tape))); }

    static void receiver_on() {
        out(0x21, 0x4E); // mode
        out(0x21, 0x04);
    }
    // Everything that the deck needs to feed by interrupt; the CPU refuses interrupts.
    void start_deck(const bytes &tape) {
        SetUp();
        insert(tape);
        receiver_on();
        machine.cassette_set_stopped(1);
        out(0x30, 0x08);
        out(0xE6, 0x04);
    }
    static void pass(uint32_t cycles) {
        main_cpu.step_cycles = cycles;
        machine.machine_step(machine, main_cpu);
    }
    static bool ready() { return (in(0x21) & 0x02) != 0; }
};

TEST_F(Cassette, PolledReadsTakeTheTapeAndWrap) {
    EXPECT_EQ(in(0x20), 0xFF); // no tape
    insert({0x10, 0x20, 0x30});
    for (const int expected : {0x10, 0x20, 0x30, 0x10, 0x20}) EXPECT_EQ(in(0x20), expected);
    insert({}); // a tape without bytes
    for (int i = 0; i < 3; ++i) EXPECT_EQ(in(0x20), 0xFF);
    EXPECT_EQ(machine.tape_position, 0u);
}

// Each line follows on the one before. -1: nothing written, or no data read.
TEST_F(Cassette, UsartCommandsStatusAndData) {
    insert({0x10, 0x20, 0x30, 0x40});
    const struct {
        const char *what;
        int port, value, status, data;
    } steps[] = {
        {"mode instruction, whatever it says", 0x23, 0xFF, 0x85, -1},
        {"receiver on", 0x2F, 0x04, 0x87, 0x10},
        {"receiver off", 0x21, 0x00, 0x85, 0x20},
        {"error reset discards the next polled byte", 0x21, 0x14, 0x87, 0xFF},
        {"only that one", -1, 0, 0x87, 0x30},
        {"error reset again", 0x21, 0x14, 0x87, -1},
        {"internal reset", 0x21, 0x44, 0x85, -1},
        {"so this is a mode; the discard has stayed", 0x21, 0x04, 0x85, 0xFF},
        {"error reset", 0x21, 0x14, 0x87, -1},
        {"by interrupt a read drops the discard and takes no tape", 0xE6, 0x04, 0x85, 0xFF},
        {"polled again", 0xE6, 0x00, 0x87, 0x40},
    };
    for (const auto &step : steps) {
        if (step.port >= 0) out(step.port, step.value);
        EXPECT_EQ(in(0x21), step.status) << step.what;
        if (step.data >= 0) {
            EXPECT_EQ(in(0x20), step.data) << step.what;
        }
    }
    out(0xE6, 0x04);
    machine.usart_receive(main_cpu, 0x11);
    EXPECT_EQ(in(0x21), 0x87);
    machine.usart_receive(main_cpu, 0x22);
    EXPECT_EQ(in(0x21), 0x97); // overrun, shown until error reset
    EXPECT_EQ(in(0x20), 0x22);
    EXPECT_EQ(in(0x21), 0x95);
    out(0x21, 0x14);
    EXPECT_EQ(in(0x21), 0x85);
}

// The byte comes with the pass that completes 33280 T-states, however long passes are.
TEST_F(Cassette, DeckFeedsEvery33280TStates) {
    for (const uint32_t cycles : {1u, 7u, 33280u, 20000u}) {
        start_deck({0xA1, 0xA2, 0xA3});
        const uint32_t passes = (33280 + cycles - 1) / cycles;
        for (const int expected : {0xA1, 0xA2, 0xA3, 0xA1}) {
            for (uint32_t i = 1; i < passes; ++i) pass(cycles);
            EXPECT_FALSE(ready()) << cycles << " T-states a pass";
            pass(cycles);
            EXPECT_TRUE(ready()) << cycles << " T-states a pass";
            EXPECT_EQ(machine.interrupt_pending, 1);
            machine.interrupt_pending = 0; // taken
            EXPECT_EQ(in(0x20), expected) << cycles << " T-states a pass";
        }
    }
}

TEST_F(Cassette, AnUnreadByteHoldsTheNextOneBack) {
    start_deck({0xA1, 0xA2});
    pass(33280);
    machine.interrupt_pending = 0;
    for (int i = 0; i < 200000; ++i)
        pass(33280);           // the countdown runs on for half an hour and must not turn over
    EXPECT_EQ(in(0x21), 0x87); // no overrun
    EXPECT_EQ(in(0x20), 0xA1);
    pass(1);
    EXPECT_EQ(in(0x20), 0xA2);
    pass(33280); // the request not yet taken stops the countdown
    machine.interrupt_pending = 0;
    pass(33279);
    EXPECT_FALSE(ready());
    pass(1);
    EXPECT_TRUE(ready());
}

TEST_F(Cassette, DeckStandsStillUnlessEverythingIsOn) {
    const struct {
        const char *what;
        std::vector<std::pair<int, int>> writes;
        uint32_t stop; // for set_stopped
        bool feeds;
    } cases[] = {
        {"all on", {}, 1, true},
        {"stopped", {}, 0, false},
        {"stopped by another value", {}, 2, false},
        {"motor off", {{0x30, 0x00}}, 1, false},
        {"port 0x30 bit 5", {{0x30, 0x28}}, 1, false},
        {"receive interrupt off", {{0xE6, 0x03}}, 1, false},
        {"motor off and on: from the start", {{0x30, 0x00}, {0x30, 0x08}}, 1, false},
    };
    for (const auto &c : cases) {
        start_deck({0xA1});
        pass(33279);
        for (const auto &[port, value] : c.writes) out(port, value);
        machine.cassette_set_stopped(c.stop);
        pass(1);
        EXPECT_EQ(machine.usart_byte_ready != 0, c.feeds) << c.what;
    }
}

// One run of the fast load, byte by byte as the record format has it.
void reference_run(const bytes &tape, uint32_t &position, uint8_t *ram) {
    int state = 0, count = 0;
    uint16_t address = 0;
    while (position < tape.size()) {
        const uint8_t byte = tape[position++];
        switch (state) {
        case 0: state = byte == ':' ? 1 : 0; break;
        case 1: address = static_cast<uint16_t>(byte * 256), state = 2; break;
        case 2: address = static_cast<uint16_t>(address + byte), state = 3; break;
        case 3: state = 4; break;
        case 4: state = byte == ':' ? 5 : 1; break;
        case 5:
            if (byte == 0) return;
            count = byte, state = 6;
            break;
        case 6: ram[address++] = byte, state = --count > 0 ? 6 : 7; break;
        default: return;
        }
    }
}

// Tapes of few different bytes, so that marks and records are frequent; the tape is moved about in between.
TEST_F(Cassette, FastLoadOnRandomTapes) {
    std::minstd_rand random(3);
    const bytes alphabet = {':', ':', ':', 0x00, 0x01, 0x02, 0x04, 0xFF};
    auto ram = bytes(machine.ram, machine.ram + ram_size);
    out(0x31, 0x02);
    size_t loaded = 0;
    for (int round = 0; round < 2000; ++round) {
        bytes tape(random() % 60);
        for (uint8_t &byte : tape) byte = alphabet[random() % alphabet.size()];
        insert(tape);
        for (int i = 0; i < 8; ++i) {
            uint32_t position = machine.tape_position;
            const int value = i < 6 ? i % 4 : 255;
            for (int run = 0; run < std::max(value, 1); ++run) reference_run(tape, position, ram.data());
            out(0xF0, value);
            ASSERT_EQ(machine.tape_position, position) << "tape " << testing::PrintToString(tape);
            ASSERT_EQ(std::memcmp(machine.ram, ram.data(), ram_size), 0)
                << "tape " << testing::PrintToString(tape);
            loaded += position < tape.size();
            for (size_t reads = random() % 8; reads > 0; --reads) in(0x20);
        }
    }
    EXPECT_GT(loaded, 1000u);
}

TEST_F(Cassette, FastLoadFollowsTheMemoryMapAndItsLock) {
    insert({':', 0xC0, 0x00, 0, ':', 2, 0x11, 0x22, 0, ':', 0xF3, 0xC7, 0, ':', 2, 0x33, 0x44, 0});
    out(0x5D, 0);
    out(0xF0, 1);
    EXPECT_EQ(machine.gvram[1][1], 0x22);
    EXPECT_EQ(locks, 2);
    out(0x5F, 0);
    out(0xF0, 1);
    EXPECT_EQ(machine.ram[0xF3C8], 0x44);
    EXPECT_EQ(locks, 3); // the window's first byte, not the one before it
}

// 64 MiB that hold no record, asked for again and again: with every search made anew this takes minutes.
TEST_F(Cassette, FruitlessSearchesAreNotRepeated) {
    bytes tape(64 << 20, 0x00);
    tape[100] = ':'; // the chain from here never meets a second mark
    insert(tape);
    for (uint32_t i = 0; i < 20000; ++i) {
        machine.tape_position = i % 100;
        out(0xF0, 255);
        ASSERT_EQ(machine.tape_position, tape.size());
    }
}

TEST_F(Cassette, WhatWasWrittenIsReadBackToTheByte) {
    const std::string name = path("テープ.cmt");
    out(0x20, 0x55); // no file chosen: dropped
    ASSERT_TRUE(cassette_set_output(name));
    cassette_flush_output();
    EXPECT_FALSE(std::filesystem::exists(name)); // made with the first byte
    bytes expected;
    for (int i = 0; i < 200000; ++i) {
        expected.push_back(static_cast<uint8_t>(i * 31 + i / 256));
        out(0x20 + i % 8 * 2, expected.back());
        if (i % 90000 == 0) cassette_flush_output();
    }
    ASSERT_TRUE(cassette_load_tape(name)); // brings the rest to the file itself
    EXPECT_EQ(read_file(name), expected);
    for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(in(0x20), expected[i]) << "byte " << hex{i};
    ASSERT_TRUE(cassette_set_output(name)); // an existing file grows
    out(0x20, 0x77);
    cassette_flush_output();
    expected.push_back(0x77);
    EXPECT_EQ(read_file(name), expected);
    std::filesystem::rename(name, path("moved.cmt")); // bytes go to the name, not to the file that left
    out(0x20, 0x78);
    cassette_flush_output();
    EXPECT_EQ(read_file(path("moved.cmt")), expected);
    EXPECT_EQ(read_file(name), bytes{0x78});
    EXPECT_TRUE(lines.empty());
}

TEST_F(Cassette, AFailingOutputIsReportedOnceAndTheMachineGoesOn) {
    for (const std::string &name : {path("no folder/out.cmt"), path(""), std::string(511, 'x')}) {
        lines.clear();
        ASSERT_TRUE(cassette_set_output(name));
        for (int i = 0; i < 3; ++i, cassette_flush_output()) out(0x20, i);
        EXPECT_EQ(lines.size(), 1u) << name;
    }
    EXPECT_FALSE(cassette_set_output(std::string(512, 'y')));
    EXPECT_EQ(machine.tape_out_path, std::string(511, 'x'));
}

TEST_F(Cassette, ATapeThatCannotBeReadLeavesTheOldOne) {
    insert({0x10, 0x20});
    in(0x20);
    std::filesystem::create_directory(path("folder.cmt"));
    ASSERT_EQ(mkfifo(path("pipe.cmt").c_str(), 0600), 0);
    write_file("huge.cmt", {});
    std::filesystem::resize_file(path("huge.cmt"), uint64_t{5} << 30); // takes no room
    for (const std::string &name :
         {path("missing.cmt"), path("folder.cmt"), path("pipe.cmt"), path("huge.cmt"), std::string(),
          std::string("/dev/zero"), std::string(5000, 'z')}) {
        lines.clear();
        EXPECT_FALSE(cassette_load_tape(name)) << name;
        EXPECT_EQ(lines.size(), 1u) << name;
    }
    EXPECT_EQ(in(0x20), 0x20);
}

} // namespace
