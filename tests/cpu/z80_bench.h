// A Z80 on a bench: 64 KB of RAM, ports that answer with a function of their address, and a log of every
// bus access. Every memory access reports one wait state, so the wait counters count accesses.
#pragma once

#include "cpu/z80_cpu.h"
#include <array>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

struct bus_access {
    char kind; // R, W, I(n), O(ut)
    uint16_t address;
    uint8_t value;
    int wait; // the counter that it was charged to: 1, 2, or 0 for neither
    bool operator==(const bus_access &) const = default;
};

inline std::string text(const std::vector<bus_access> &log) {
    static const char *const waits[] = {"", " wait", " wait2"};
    std::string all;
    for (const bus_access &a : log) {
        char line[32];
        std::snprintf(line, sizeof line, "%s%c %04X %02X%s", all.empty() ? "" : ", ", a.kind, a.address,
                      a.value, waits[a.wait]);
        all += line;
    }
    return all;
}

// Everything in the record that a step may change.
// clang-format off
inline auto fields_of(const z80_cpu &c) {
    return std::to_array<std::pair<const char *, uint32_t>>({
        {"BC", c.BC}, {"DE", c.DE}, {"HL", c.HL}, {"AF", c.AF}, {"BC'", c.BC_alt}, {"DE'", c.DE_alt},
        {"HL'", c.HL_alt}, {"AF'", c.AF_alt}, {"IX", c.IX}, {"IY", c.IY}, {"PC", c.PC}, {"SP", c.SP},
        {"I", c.I}, {"IM", c.IM}, {"IFF1", c.IFF1}, {"IFF2", c.IFF2}, {"r_counter", c.r_counter},
        {"step_cycles", c.step_cycles}, {"total_cycles", c.total_cycles}, {"m1_count", c.m1_count},
        {"wait_count", c.wait_count}, {"wait_count2", c.wait_count2}, {"accept_cycles", c.accept_cycles},
        {"stop_flags", c.stop_flags}, {"stop_reason", c.stop_reason}, {"trace_pc", c.trace_pc},
        {"inject_active", c.inject_active}, {"inject_count", static_cast<uint32_t>(c.inject_count)}});
}
// clang-format on

// The fields in which two records differ, each as "name got expected", in hex.
inline std::string differences(const z80_cpu &got, const z80_cpu &expected) {
    const auto a = fields_of(got), b = fields_of(expected);
    std::string all;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i].second == b[i].second) continue;
        char line[64];
        std::snprintf(line, sizeof line, " %s got %X expected %X", a[i].first, a[i].second, b[i].second);
        all += line;
    }
    return all;
}

struct z80_bench {
    static inline uint8_t memory[0x10000];
    static inline std::vector<bus_access> log;
    static inline z80_cpu cpu;

    static int waited(uint32_t *wait) {
        ++*wait;
        return wait == &cpu.wait_count ? 1 : wait == &cpu.wait_count2 ? 2 : 0;
    }
    static uint8_t read(uint16_t address, uint32_t *wait) {
        log.push_back({'R', address, memory[address], waited(wait)});
        return memory[address];
    }
    static void write(uint16_t address, uint8_t value, uint32_t *wait) {
        log.push_back({'W', address, value, waited(wait)});
        memory[address] = value;
    }
    static uint8_t port_value(uint16_t port) { return static_cast<uint8_t>(port * 0x9D >> 5); }
    static inline uint16_t port_pc; // PC as a device finds it while it serves a port
    static uint8_t in(uint16_t port) {
        port_pc = cpu.PC;
        log.push_back({'I', port, port_value(port), 0});
        return port_value(port);
    }
    static void out(uint16_t port, uint8_t value) {
        port_pc = cpu.PC;
        log.push_back({'O', port, value, 0});
    }

    // A fresh CPU and memory of zeros.
    static void start() {
        for (uint8_t &byte : memory) byte = 0;
        cpu = {};
        z80_install(cpu, read, write, in, out);
        log.clear();
    }
    static void put(uint16_t address, const std::vector<uint8_t> &bytes) {
        for (uint8_t byte : bytes) memory[address++] = byte;
    }
    // Accesses of the last step that were charged to a wait counter.
    static uint32_t waits(int counter) {
        uint32_t n = 0;
        for (const bus_access &a : log) n += a.wait == counter;
        return n;
    }
    static bool step() {
        log.clear();
        return cpu.z80_step(cpu);
    }
};
