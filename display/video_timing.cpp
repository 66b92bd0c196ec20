#include "machine/kiv_machine.h"
#include "support/log.h"

#include <algorithm>

namespace {

struct monitor_timing {
    uint32_t line_clocks, display_lines;
    uint32_t vblank_clocks[2]; // by crtc_rows25
};

constexpr monitor_timing high_resolution = {161, 400, {6434, 7720}}; // 24 kHz
constexpr monitor_timing standard = {250, 200, {14996, 13994}};      // 15 kHz

constexpr uint32_t burst_clocks_per_word = 11;
constexpr uint32_t byte_clocks = 5; // one more when the count left is even

void timing_reset() {
    const monitor_timing &monitor = machine.crt_standard == 1 ? standard : high_resolution;
    machine.line_clocks = monitor.line_clocks;
    machine.display_lines = monitor.display_lines;
    machine.vblank_clocks = monitor.vblank_clocks[machine.crtc_rows25 == 1];
    machine.raster_line = 0;
    machine.line_clock = 0;
    machine.new_line = 1;
    machine.vrtc = 0;
    machine.dma_remaining = 0;
}

bool in_vblank() { return machine.raster_line >= machine.display_lines; }
bool dma_is_off() { return (machine.crtc_status & (crtc_stopped | crtc_dma_off)) != 0; }

// The first raster line of a character row asks the DMA for the row's bytes.
void begin_row() {
    if (machine.dma_remaining != 0) emulated_line("DMA under-run occured!!!\n");
    if (machine.crtc_burst == 1) {
        machine.dma_remaining = 0;
        machine.dma_stall = (machine.crtc_line_size >> 1) * burst_clocks_per_word;
    } else {
        machine.dma_remaining = machine.crtc_line_size;
        machine.dma_stall = 0;
    }
}

uint32_t tick_vblank(uint32_t clocks) {
    machine.vblank_clock += clocks;
    if (machine.vblank_clock < machine.vblank_clocks) return timing_nothing;
    machine.line_clock = machine.vblank_clock - machine.vblank_clocks;
    machine.raster_line = 0;
    machine.vblank_clock = 0;
    machine.vrtc = 0;
    return timing_vblank_ends;
}

uint32_t end_line() {
    ++machine.raster_line;
    machine.line_clock -= machine.line_clocks;
    machine.new_line = 1;
    if (machine.raster_line != machine.display_lines) return timing_nothing;
    machine.vblank_clock = machine.line_clock;
    machine.line_clock = 0;
    machine.vrtc = 1;
    machine.blink_tick();
    keyboard_retrace();
    machine.dma_stall = 0;
    return timing_vblank_begins;
}

void sys_status_read() {
    machine.sys_status &= static_cast<uint8_t>(~(status_vrtc | status_standard_monitor));
    if (machine.vrtc != 0) machine.sys_status |= status_vrtc;
    if (machine.crt_standard != 0) machine.sys_status |= status_standard_monitor;
}

} // namespace

uint32_t timing_tick(uint32_t clocks) {
    if (in_vblank()) return tick_vblank(clocks);
    if (machine.new_line != 0) {
        machine.new_line = 0;
        if (machine.raster_line % machine.crtc_raster == 0) begin_row();
    }
    if (dma_is_off()) {
        machine.dma_remaining = 0;
        machine.dma_stall = 0;
    } else {
        timing_fetch();
    }
    machine.line_clock += clocks;
    return machine.line_clock >= machine.line_clocks ? end_line() : timing_nothing;
}

uint32_t timing_room() {
    if (in_vblank())
        return machine.vblank_clock < machine.vblank_clocks ? machine.vblank_clocks - machine.vblank_clock
                                                            : 0;
    const uint32_t line_of_row = machine.raster_line % machine.crtc_raster;
    if (machine.new_line != 0 && line_of_row == 0) return 0;
    if (machine.line_clock >= machine.line_clocks) return 0;
    if (dma_is_off() && (machine.dma_remaining | machine.dma_stall) != 0) return 0;
    const uint32_t lines =
        std::min(machine.crtc_raster - line_of_row, machine.display_lines - machine.raster_line);
    return lines * machine.line_clocks - machine.line_clock;
}

uint32_t timing_frame_left() {
    if (in_vblank()) return machine.vblank_clocks - std::min(machine.vblank_clock, machine.vblank_clocks);
    const uint32_t lines = (machine.display_lines - machine.raster_line) * machine.line_clocks;
    return lines - std::min(machine.line_clock, lines) + machine.vblank_clocks;
}

bool timing_fetches() { return !in_vblank() && !dma_is_off(); }

void timing_fetch() {
    if (machine.dma_remaining == 0) return;
    --machine.dma_remaining;
    machine.dma_stall += byte_clocks + ((machine.dma_remaining & 1) ^ 1);
}

// No pass takes as long as a line, so each has ended one at most.
void timing_skip(uint32_t clocks, uint32_t last) {
    if (in_vblank()) {
        machine.vblank_clock += clocks;
        return;
    }
    machine.line_clock += clocks;
    for (; machine.line_clock >= machine.line_clocks; machine.line_clock -= machine.line_clocks)
        ++machine.raster_line;
    machine.new_line = machine.line_clock < last;
}

void timing_init() {
    machine.timing_reset = timing_reset;
    machine.timing_tick = timing_tick;
    machine.sys_status_read = sys_status_read;
    timing_reset();
}
