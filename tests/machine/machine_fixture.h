// A machine at power-on for each test, reached as programs reach it: through ports and memory.
#pragma once

#include "machine/kiv_machine.h"
#include "tests/temporary_folder.h"

#include <cstring>
#include <gtest/gtest.h>
#include <ios>
#include <memory>
#include <string>
#include <vector>

using bytes = std::vector<uint8_t>;

// Numbers in a failure message, in hex.
struct hex {
    uint64_t value;
    friend std::ostream &operator<<(std::ostream &out, hex h) {
        const auto flags = out.flags();
        out << "0x" << std::hex << std::uppercase << h.value;
        out.flags(flags);
        return out;
    }
};

// The record without its memory areas: everything that a port can change except glyphs and fast loads.
inline const uint8_t *device_state(const kiv_machine &m) {
    return reinterpret_cast<const uint8_t *>(&static_cast<const key_matrix_block &>(m));
}
inline size_t device_state_size() {
    return sizeof(kiv_machine) -
           static_cast<size_t>(device_state(machine) - reinterpret_cast<const uint8_t *>(&machine));
}

// A byte copy, padding included, so that two records can be compared as bytes.
inline std::unique_ptr<kiv_machine> snapshot() {
    auto copy = std::make_unique<kiv_machine>();
    std::memcpy(static_cast<void *>(copy.get()), &machine, sizeof machine);
    return copy;
}

class Machine : public testing::Test {
  protected:
    // What the video lock saw: the calls, and the watched byte at the last lock and unlock.
    static inline int locks, unlocks;
    static inline const uint8_t *watched;
    static inline uint8_t at_lock, at_unlock;

    void SetUp() override {
        calendar_fix_time({2003, 12, 31, 9, 5, 37});
        z80_fix_seed(1);
        locks = unlocks = 0;
        watched = nullptr;
        z80_install(main_cpu, mem_read, mem_write, io_in, io_out);
        machine_init(
            machine,
            [] {
                ++locks;
                if (watched != nullptr) at_lock = *watched;
            },
            [] {
                ++unlocks;
                if (watched != nullptr) at_unlock = *watched;
            });
        machine_restart_clock_counter();
    }

    void TearDown() override {
        cassette_eject(machine);
        calendar_use_host_time();
    }

    static uint8_t in(int port) { return io_in(static_cast<uint16_t>(port)); }
    static void out(int port, int value) { io_out(static_cast<uint16_t>(port), static_cast<uint8_t>(value)); }
    static uint8_t peek(int address) {
        uint32_t wait = 0;
        return mem_read(static_cast<uint16_t>(address), &wait);
    }

    // DMA channel 2's window, set as a program sets it.
    static void set_text_window(int start, int count) {
        out(0x68, 0x04);
        out(0x64, start & 0xFF);
        out(0x64, start >> 8);
        out(0x65, (count - 1) & 0xFF);
        out(0x65, 0x80 | (count - 1) >> 8);
    }

    std::string path(const std::string &name) const { return folder / name; }
    std::string write_file(const std::string &name, const bytes &content) const {
        put_file(path(name), std::string(content.begin(), content.end()));
        return path(name);
    }
    static bytes read_file(const std::string &name) {
        const std::string content = get_file(name);
        return {content.begin(), content.end()};
    }

    temporary_folder folder;
};
