// Tape and USART through their ports, with real files.
#include "machine_fixture.h"

#include "app/kiv_assay.h"

#include <algorithm>
#include <filesystem>
#include <random>
#include <sys/mman.h>
#include <sys/resource.h>

namespace {

std::vector<std::string> lines; // logged

struct Cassette : Machine {
    void SetUp() override {
        Machine::SetUp();
        lines.clear();
        set_trace_listener([](const char *line) { lines.emplace_back(line); });
    }
    void TearDown() override {
        set_trace_listener(nullptr);
        Machine::TearDown();
    }
};

// Each line follows on the one before: writes, then a pass, then the status and the data (-1: not read).
TEST_F(Cassette, UsartAndDeck) {
    EXPECT_EQ(in(0x20), 0xFF) << "no tape";
    insert_tape({});
    EXPECT_EQ(in(0x20), 0xFF) << "a tape without bytes";
    insert_tape({1, 2, 3, 4, 5, 6});
    enum : int { deck = -1, taken = -2 }; // no ports: the deck's stopped flag, the CPU's answer to a request
    constexpr uint32_t minutes = 0x40000000;
    const struct {
        const char *what;
        writes written;
        uint32_t cycles;
        int status, data;
    } steps[] = {
        {"mode instruction, whatever it says", {{0x23, 0xFF}}, 0, 0x85, -1},
        {"receiver on", {{0x2F, 0x04}}, 0, 0x87, 1},
        {"receiver off", {{0x21, 0x00}}, 0, 0x85, 2},
        {"error reset discards the next polled byte", {{0x21, 0x14}}, 0, 0x87, 0xFF},
        {"only that one", {}, 0, 0x87, 3},
        {"internal reset leaves the discard", {{0x21, 0x14}, {0x21, 0x44}}, 0, 0x85, -1},
        {"so this is a mode again", {{0x21, 0x04}}, 0, 0x85, 0xFF},
        {"by interrupt a read drops the discard", {{0x21, 0x14}, {0xE6, 0x04}}, 0, 0x85, 0xFF},
        {"and takes no tape", {{0xE6, 0x00}}, 0, 0x87, 4},
        {"stopped, motor off", {{0xE6, 0x04}}, 99999, 0x85, 0xFF},
        {"motor on", {{0x30, 0x08}}, 99999, 0x85, 0xFF},
        {"started, motor off", {{deck, 1}, {0x30, 0x00}}, 99999, 0x85, 0xFF},
        {"port 0x30 bit 5", {{0x30, 0x28}}, 99999, 0x85, 0xFF},
        {"all on: nearly a byte", {{0x30, 0x08}}, 33279, 0x85, 0xFF},
        {"motor off and on: from the start", {{0x30, 0x00}, {0x30, 0x08}}, 33279, 0x85, 0xFF},
        {"receive interrupt off", {{0xE6, 0x03}}, 99999, 0x87, -1},
        {"stopped by another value", {{0xE6, 0x04}, {deck, 2}}, 99999, 0x85, 0xFF},
        {"a byte", {{deck, 1}}, 1, 0x87, 5},
        {"a request not yet taken stops the countdown", {}, 99999, 0x85, 0xFF},
        {"the next byte, over the end", {{taken, 0}}, 33280, 0x87, 6},
        {"one that stays unread", {{taken, 0}}, 33280, 0x87, -1},
        {"holds the next one back, without an overrun", {{taken, 0}}, minutes, 0x87, -1},
        {"while the countdown runs on", {}, minutes, 0x87, -1},
        {"but never turns over", {}, minutes, 0x87, 1},
        {"and then it follows", {}, 1, 0x87, 2},
    };
    for (const auto &step : steps) {
        for (const auto &[port, value] : step.written) {
            if (port == deck) machine.cassette_set_stopped(static_cast<uint32_t>(value));
            if (port == taken) machine.interrupt_pending = 0;
            if (port >= 0) out(port, value);
        }
        pass(step.cycles);
        EXPECT_EQ(in(0x21), step.status) << step.what;
        EXPECT_EQ(step.data < 0 ? -1 : in(0x20), step.data) << step.what;
    }
    machine.usart_receive(main_cpu, 0x11);
    machine.usart_receive(main_cpu, 0x22);
    EXPECT_EQ(in(0x21), 0x97);
    EXPECT_EQ(in(0x20), 0x22);
    EXPECT_EQ(in(0x21), 0x95) << "an overrun shows until error reset";
    out(0x21, 0x14);
    EXPECT_EQ(in(0x21), 0x85);
}

TEST_F(Cassette, FastLoadFollowsTheRecordFormatAndTheMemoryMap) {
    const struct {
        const char *what;
        bytes tape;
        int value;
        uint32_t position;
        std::vector<std::pair<int, int>> stored; // address, byte
    } cases[] = {
        {"one record", {':', 0xC0, 0, 9, ':', 2, 1, 2, 9, 7}, 1, 9, {{0xC000, 1}, {0xC001, 2}}},
        {"bytes before the mark", {7, 0, ':', 0xC0, 1, 9, ':', 1, 5, 9}, 0, 10, {{0xC001, 5}}},
        {"another address", {':', ':', 1, 9, 7, 0xC1, 3, 9, ':', 1, 5, 9}, 1, 12, {{0xC103, 5}}},
        {"two",
         {':', 0xC0, 0, 9, ':', 1, 1, 9, ':', 64, 5, 9, ':', 1, 2, 9},
         2,
         16,
         {{0xC000, 1}, {0x4005, 2}}},
        {"an empty block ends the run", {':', 0xC0, 0, 9, ':', 0, ':', 0xC0, 9, 9}, 1, 6, {}},
        {"cut before the check byte", {':', 0xFF, 0xFF, 9, ':', 2, 3, 4}, 1, 8, {{0xFFFF, 3}, {0x0000, 4}}},
        {"cut within the block", {':', 0xC0, 0, 9, ':', 255, 6}, 1, 7, {{0xC000, 6}}},
        {"cut before the length", {':', 0xC0, 0, 9, ':'}, 255, 5, {}},
        {"no second mark", {':', 0xC0, 0, 9, 1, 2, 3, 4}, 255, 8, {}},
        {"nothing", {}, 1, 0, {}},
    };
    out(0xF0, 1); // no tape
    out(0x5D, 0); // plane 1 lies over 0xC000
    for (const auto &c : cases) {
        insert_tape(c.tape);
        const auto expected = snapshot();
        for (const auto &[address, byte] : c.stored)
            (address >= 0xC000 ? expected->gvram[1][address - 0xC000] : expected->ram[address]) =
                static_cast<uint8_t>(byte);
        expected->tape_position = c.position;
        out(0xF0, c.value);
        EXPECT_EQ(std::memcmp(&machine, expected.get(), sizeof machine), 0) << c.what;
    }
}

// Against the search told byte by byte, from every position of tapes that are longer than the steps of the
// index.
TEST_F(Cassette, FastLoadFindsTheRecordThatAScanWouldFind) {
    std::minstd_rand random(1);
    for (const uint32_t marks_apart : {2u, 9u, 300u, 2000u}) {
        bytes tape(3001 + random() % 4);
        for (uint8_t &byte : tape) byte = random() % marks_apart == 0 ? ':' : 0;
        insert_tape(tape);
        for (uint32_t from = 0; from < tape.size(); ++from) {
            uint32_t at = from, found = 0; // behind the second mark
            while (at < tape.size() && tape[at] != ':') ++at;
            for (at += 4; found == 0 && at < tape.size(); at += 4)
                if (tape[at] == ':') found = at + 1;
            const size_t length = found != 0 && found < tape.size() ? tape[found] : 0;
            machine.tape_position = from;
            out(0xF0, 1);
            const size_t behind = found == 0 ? tape.size() : found + 1 + (length != 0 ? length + 1 : 0);
            ASSERT_EQ(machine.tape_position, std::min(behind, tape.size()))
                << "from " << from << ", " << marks_apart;
        }
    }
}

// Were each load a scan of the tape, a program that asks for them again and again would keep a pause waiting.
// A scan of this one, without a record or with one at its end, meets bytes that may not be read.
TEST_F(Cassette, FastLoadsOverALargeTapeCostNoScan) {
    const bytes record = {':', 0xC0, 0, 9, ':', 1, 5, 9};
    for (const bool has_record : {false, true}) {
        SCOPED_TRACE(has_record ? "a record at its end" : "no record");
        constexpr size_t closed = 1 << 20;
        bytes tape(2 * closed, 0x00);
        if (has_record)
            std::copy(record.begin(), record.end(), tape.end() - 8);
        else
            tape[5] = ':'; // the chain from here meets no second mark
        insert_tape(tape);
        const uintptr_t middle =
            (reinterpret_cast<uintptr_t>(machine.tape_image) + closed / 2) / 0x10000 * 0x10000;
        void *const from = reinterpret_cast<void *>(middle);
        ASSERT_EQ(mprotect(from, closed, PROT_NONE), 0);
        for (int i = 0; i < 3; ++i) {
            in(0x20);
            out(0xF0, 255);
            EXPECT_EQ(machine.tape_position, tape.size());
        }
        ASSERT_EQ(mprotect(from, closed, PROT_READ | PROT_WRITE), 0);
        EXPECT_EQ(machine.ram[0xC000] == 5, has_record);
    }
}

TEST_F(Cassette, WhatWasWrittenIsReadBackToTheByte) {
    const std::string name = folder / "テープ.cmt";
    out(0x20, 0x55); // no file chosen: dropped
    ASSERT_TRUE(cassette_set_output(name));
    cassette_flush_output();
    EXPECT_FALSE(std::filesystem::exists(name)) << "made with the first byte";
    bytes expected = {0x33}; // what is there stays
    put_file(name, "\x33");
    for (int i = 0; i < 200000; ++i) {
        expected.push_back(static_cast<uint8_t>(i * 31 + i / 256));
        out(0x20 + i % 8 * 2, expected.back());
        if (i % 90000 == 0) cassette_flush_output();
    }
    ASSERT_TRUE(cassette_load_tape(name)); // brings the rest to the file itself
    for (const uint8_t byte : expected) ASSERT_EQ(in(0x20), byte) << "position " << machine.tape_position;
    std::filesystem::rename(name, folder / "moved.cmt");
    out(0x20, 0x78); // goes to the name, not to the file that left
    cassette_flush_output();
    EXPECT_EQ(read_file("moved.cmt"), expected);
    EXPECT_EQ(get_file(name), "\x78");
    EXPECT_TRUE(lines.empty());
}

TEST_F(Cassette, FilesThatFailAreReportedOnceAndLoseNothing) {
    insert_tape({0x10, 0x20});
    in(0x20);
    write_file("huge", {});
    std::filesystem::resize_file(folder / "huge", uint64_t{5} << 30); // takes no room
    for (const std::string &name : {folder / "missing", folder.path, folder / "huge"}) {
        lines.clear();
        EXPECT_FALSE(cassette_load_tape(name)) << name;
        EXPECT_EQ(lines.size(), 1u) << name;
    }
    EXPECT_EQ(in(0x20), 0x20) << "the old tape";
    for (const std::string &name : {folder / "no folder/tape", folder.path, std::string(511, 'x')}) {
        lines.clear();
        ASSERT_TRUE(cassette_set_output(name));
        for (int i = 0; i < 3; ++i, cassette_flush_output()) out(0x20, i);
        EXPECT_EQ(lines.size(), 1u) << name;
    }
    EXPECT_FALSE(cassette_set_output(std::string(512, 'y')));
    EXPECT_EQ(machine.tape_out_path, std::string(511, 'x'));
}

// A disk that is full for a while: the tape ends there, instead of having a hole, until a file is chosen
// again.
TEST_F(Cassette, AfterAFailureTheTapeEnds) {
    static std::vector<std::string> told;
    told.clear();
    cassette_on_output_failure([](const std::string &path, const std::string &) { told.push_back(path); });
    platform::let_writes_fail();
    const std::string name = folder / "t.cmt";
    rlimit normal;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &normal), 0);
    ASSERT_TRUE(cassette_set_output(name));
    for (int block = 0; block < 4; ++block) {
        const rlimit full{block == 1 ? 1500 : normal.rlim_cur, normal.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
        if (block == 3) cassette_set_output(name);
        for (int i = 0; i < 1000; ++i) out(0x20, block);
        cassette_flush_output();
    }
    EXPECT_EQ(get_file(name), std::string(1000, 0) + std::string(500, 1) + std::string(1000, 3));
    EXPECT_EQ(told, std::vector<std::string>{name});
    EXPECT_EQ(lines.size(), 1u);
    cassette_on_output_failure(nullptr);
}

} // namespace
