// A machine at power-on for the display's tests, driven through its ports.
#pragma once

#include "display/renderers.h"
#include "machine/kiv_machine.h"

#include <initializer_list>
#include <random>

// The same numbers in every run.
struct random_numbers {
    std::mt19937 source;
    uint32_t operator()() { return static_cast<uint32_t>(source()); }
    uint8_t byte() { return static_cast<uint8_t>(source()); }
};

inline void power_on() {
    machine_init(
        machine, [] {}, [] {});
    machine.machine_reset(machine);
    use_wide_vectors = true;
}

inline void out(uint8_t port, std::initializer_list<int> bytes) {
    for (const int byte : bytes) io_out(port, static_cast<uint8_t>(byte));
}

inline void crtc(int command, std::initializer_list<int> parameters = {}) {
    out(0x51, {command});
    out(0x50, parameters);
}

// RESET with 80 columns in character mode, the given rows, 8 lines a row, colour attributes, 20 pairs; then
// START DISPLAY.
inline void start_display(int rows) {
    crtc(0x00, {0xCE, rows - 1 + 0x80, 0x07, 0x00, 0x53});
    out(0x68, {0xC4});
    crtc(0x20);
}
