#include "machine/kiv_machine.h"

namespace {

struct blink_rate {
    uint16_t cursor_period, cursor_on, attr_period, attr_on; // frames
};

constexpr blink_rate blink_rates[4] = {
    {16, 8, 32, 24},
    {32, 16, 64, 48},
    {48, 24, 96, 72},
    {64, 32, 128, 96},
};
constexpr uint8_t rate_after_reset = 2;

void cursor_on() { machine.cursor_enabled = uint8_t{1}; }
void cursor_off() { machine.cursor_enabled = uint8_t{0}; }

// A cursor that moves is shown at once, whatever its blink phase.
void cursor_update() {
    const bool moves_row = machine.cursor_load_y != machine.cursor_y;
    const bool moves = moves_row || machine.cursor_load_x != machine.cursor_x;
    machine.cursor_x = machine.cursor_load_x;
    machine.cursor_y = machine.cursor_load_y;
    if (machine.cursor_enabled != 0 && moves) machine.cursor_phase = uint8_t{1};
}

void cursor_blink_rate(uint8_t rate) {
    const blink_rate &r = blink_rates[rate & 3];
    machine.cursor_blink_period = r.cursor_period;
    machine.cursor_blink_on = r.cursor_on;
    machine.attr_blink_period = r.attr_period;
    machine.attr_blink_on = r.attr_on;
}

void blink_tick() {
    const uint32_t frame = ++machine.frame_count;
    machine.cursor_phase =
        static_cast<uint8_t>(frame % machine.cursor_blink_period < machine.cursor_blink_on);
    machine.attr_blink_phase =
        static_cast<uint8_t>(frame % machine.attr_blink_period < machine.attr_blink_on);
}

void cursor_reset() {
    machine.cursor_enabled = uint8_t{1};
    machine.cursor_phase = uint8_t{1};
    cursor_blink_rate(rate_after_reset);
}

} // namespace

void cursor_init() {
    machine.cursor_reset = cursor_reset;
    machine.cursor_on = cursor_on;
    machine.cursor_off = cursor_off;
    machine.cursor_update = cursor_update;
    machine.cursor_blink_rate = cursor_blink_rate;
    machine.blink_tick = blink_tick;
    cursor_reset();
}
