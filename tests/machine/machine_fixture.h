// A machine at power-on for each test, reached as programs reach it: through ports and memory.
#pragma once

#include "machine/kiv_machine.h"
#include "machine/run_block.h"
#include "machine/tape_files.h"
#include "tests/temporary_folder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <ios>
#include <memory>
#include <string>
#include <vector>

using bytes = std::vector<uint8_t>;
using writes = std::vector<std::pair<int, int>>; // port, value

// A byte copy, padding included, so that two records can be compared as bytes.
inline std::unique_ptr<kiv_machine> snapshot() {
    auto copy = std::make_unique<kiv_machine>();
    std::memcpy(static_cast<void *>(copy.get()), &machine, sizeof machine);
    return copy;
}

class Machine : public testing::Test {
  protected:
    static inline const uint8_t *watched;
    static inline bytes seen; // the watched byte at every lock and unlock
    static void see() { seen.push_back(*watched); }

    void SetUp() override {
        calendar_fix_time({2003, 12, 31, 9, 5, 37});
        z80_fix_seed(1);
        watched = machine.ram;
        seen.clear();
        z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
        machine_init(machine, see, see);
        run_state.clock_counter = 0;
    }
    void TearDown() override {
        cassette_set_output("");
        cassette_eject(machine);
        calendar_use_host_time();
    }

    static uint8_t in(int port) { return io_in(static_cast<uint16_t>(port)); }
    static void out(int port, int value) { io_out(static_cast<uint16_t>(port), static_cast<uint8_t>(value)); }
    static void out(const writes &list) {
        for (const auto &[port, value] : list) out(port, value);
    }
    // The devices' share of a pass that was charged so many T-states.
    static void pass(uint32_t cycles) {
        main_cpu.step_cycles = cycles;
        machine.machine_step(machine, main_cpu);
    }

    std::string write_file(const std::string &name, const bytes &content) const {
        put_file(folder / name, {content.begin(), content.end()});
        return folder / name;
    }
    bytes read_file(const std::string &name) const {
        const std::string content = get_file(folder / name);
        return {content.begin(), content.end()};
    }
    void insert_tape(const bytes &tape) const { ASSERT_TRUE(cassette_load_tape(write_file("tape", tape))); }

    temporary_folder folder;
};
