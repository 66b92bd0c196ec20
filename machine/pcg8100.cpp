#include "machine/kiv_machine.h"

#include <cmath>

namespace {

constexpr uint8_t gate_bits[3] = {0x08, 0x40, 0x80};
constexpr uint8_t control_write = 0x10;
constexpr uint8_t control_from_rom = 0x20;
constexpr uint8_t glyphs_on = 0x08;
constexpr uint32_t programmable = 0x400; // offset of code 0x80 in the fonts

enum counter_access : uint8_t { access_none, access_low, access_high, access_low_high };

void set_gate(uint32_t channel, bool on) {
    pcg_counter &c = machine.pcg_counters[channel];
    if (!on) {
        c.gate = 0;
        machine.pcg_tone(0, channel);
    } else if (c.gate == 0) {
        c.gate = 1;
        machine.pcg_tone(c.frequency, channel);
    }
}

void write_glyph(uint8_t control) {
    machine.pcg_address_high = control & 3;
    const uint32_t address = programmable + machine.pcg_address_high * 0x100u + machine.pcg_address_low;
    machine.font_work[address] = (control & control_from_rom) ? machine.font_rom[address] : machine.pcg_data;
}

void write_control(uint8_t value) {
    for (uint32_t channel = 0; channel < 3; ++channel) set_gate(channel, (value & gate_bits[channel]) != 0);
    if (value & control_write) write_glyph(value);
}

void write_control_word(uint8_t value) {
    const uint32_t channel = value >> 6;
    if (channel == 3) return;
    pcg_counter &c = machine.pcg_counters[channel];
    c.access = value >> 4 & 3;
    switch (c.access) {
    case access_none: c.toggle = 0; break;
    case access_low_high: c.toggle = 2; break;
    default: c.toggle = 1; c.low = 0;
    }
}

void recompute(uint32_t channel) {
    pcg_counter &c = machine.pcg_counters[channel];
    const uint32_t written = c.high * 0x100u + c.low;
    const uint32_t divisor = written != 0 ? written : 1;
    const auto frequency =
        static_cast<uint32_t>(std::floor(machine.clock_hz / static_cast<double>(divisor) + 0.5));
    if (frequency == c.frequency) return;
    c.frequency = static_cast<uint16_t>(frequency);
    if (c.gate != 0) machine.pcg_tone(c.frequency, channel);
}

void write_counter(uint32_t channel, uint8_t value) {
    pcg_counter &c = machine.pcg_counters[channel];
    switch (c.access) {
    case access_low: c.low = value; break;
    case access_high:
        c.high = value;
        recompute(channel);
        break;
    case access_low_high:
        if (--c.toggle == 1) {
            c.low = value;
        } else {
            c.high = value;
            c.toggle = 2;
            recompute(channel);
        }
        break;
    default: break;
    }
}

} // namespace

void pcg_port(uint8_t port, uint8_t value) {
    switch (port & 0x0F) {
    case 0x0: machine.pcg_data = value; break;
    case 0x1: machine.pcg_address_low = value; break;
    case 0x2: write_control(value); break;
    case 0x3: machine.pcg_glyphs_on = static_cast<uint8_t>((value & glyphs_on) != 0); break;
    case 0xC:
    case 0xD:
    case 0xE: write_counter((port & 0x0Fu) - 0xC, value); break;
    case 0xF: write_control_word(value); break;
    default: break;
    }
}
