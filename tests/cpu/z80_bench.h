// A Z80 on a bench: 64 KB of RAM, ports that answer with a function of their address, and a log of every
// bus access. Every memory access reports one wait state, so the wait counters count accesses.
#pragma once

#include "cpu/z80_cpu.h"
#include <cstdio>
#include <string>
#include <vector>

// What a bus access was charged to.
enum class wait_to { nothing, first, second };

struct bus_access {
    char kind; // R, W, I(n), O(ut)
    uint16_t address;
    uint8_t value;
    wait_to wait;
    bool operator==(const bus_access &) const = default;
};

inline std::string text(const bus_access &a) {
    static const char *const waits[] = {"", " wait", " wait2"};
    char line[64];
    std::snprintf(line, sizeof line, "%c %04X %02X%s", a.kind, a.address, a.value,
                  waits[static_cast<int>(a.wait)]);
    return line;
}

inline std::string text(const std::vector<bus_access> &log) {
    std::string all;
    for (const bus_access &a : log) {
        if (!all.empty()) all += ", ";
        all += text(a);
    }
    return all;
}

struct z80_bench {
    static inline uint8_t memory[0x10000];
    static inline std::vector<bus_access> log;
    static inline z80_cpu cpu;

    static wait_to waited(uint32_t *wait) {
        ++*wait;
        if (wait == &cpu.wait_count) return wait_to::first;
        return wait == &cpu.wait_count2 ? wait_to::second : wait_to::nothing;
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
    // A device that serves a port finds PC behind the instruction.
    static inline uint16_t port_pc;
    static uint8_t in(uint16_t port) {
        port_pc = cpu.PC;
        log.push_back({'I', port, port_value(port), wait_to::nothing});
        return port_value(port);
    }
    static void out(uint16_t port, uint8_t value) {
        port_pc = cpu.PC;
        log.push_back({'O', port, value, wait_to::nothing});
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
    static bool step() {
        log.clear();
        return cpu.z80_step(cpu);
    }
};
