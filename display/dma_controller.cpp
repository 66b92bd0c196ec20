#include "machine/kiv_machine.h"

namespace {

constexpr uint8_t display_channel = 2;
constexpr uint8_t autoload_channel = 3;
constexpr uint8_t mode_channel2 = 0x04;
constexpr uint8_t mode_autoload_shift = 7;

// After power-on: 25 rows of 120 bytes.
constexpr uint32_t text_start_after_reset = 0xF3C8;
constexpr uint32_t text_end_after_reset = 0xFF80;

void set_window(uint32_t start, uint32_t end) {
    machine.text_start = start;
    machine.text_end = end;
    machine.text_window_size = end > start ? end - start : 0;
}

void dma_address(uint8_t channel, uint8_t byte) {
    dma_channel &c = machine.dma_channels[channel & 3];
    if (c.address_flip_flop == 0) {
        c.address_low = byte;
        c.address_flip_flop = 1;
        return;
    }
    c.address_high = byte;
    c.address_flip_flop = 0;
    c.address = static_cast<uint16_t>(c.address_high << 8 | c.address_low);
    if ((channel & 3) != display_channel) return;
    set_window(c.address, machine.text_end);
    if (machine.dma_autoload == 1) machine.dma_channels[autoload_channel].address = c.address;
}

void dma_count(uint8_t channel, uint8_t byte) {
    dma_channel &c = machine.dma_channels[channel & 3];
    if (c.count_flip_flop == 0) {
        c.count_low = byte;
        c.count_flip_flop = 1;
        return;
    }
    c.count_high = byte & 0x3F;
    c.transfer_mode = byte >> 6;
    c.count_flip_flop = 0;
    c.terminal_count = static_cast<uint16_t>((c.count_high << 8 | c.count_low) + 1);
    c.terminal_count_copy = c.terminal_count;
    if ((channel & 3) != display_channel) return;
    set_window(machine.text_start, machine.text_start + c.terminal_count);
    if (machine.dma_autoload == 1) {
        dma_channel &copy = machine.dma_channels[autoload_channel];
        copy.terminal_count = copy.terminal_count_copy = c.terminal_count;
    }
}

void dma_mode(uint8_t byte) {
    if (byte & mode_channel2) {
        machine.crtc_status &= static_cast<uint8_t>(~crtc_dma_off);
    } else {
        machine.crtc_status |= crtc_dma_off;
        machine.dma_stall = 0;
    }
    machine.dma_ch2_enable = byte & mode_channel2;
    machine.dma_autoload = byte >> mode_autoload_shift;
    for (dma_channel &c : machine.dma_channels) c.address_flip_flop = c.count_flip_flop = 0;
}

void dma_reset() {
    set_window(text_start_after_reset, text_end_after_reset);
    machine.dma_stall = 0;
    machine.dma_ch2_enable = 0;
    for (dma_channel &c : machine.dma_channels) c = {};
}

} // namespace

void dma_init() {
    machine.dma_reset = dma_reset;
    machine.dma_address = dma_address;
    machine.dma_count = dma_count;
    machine.dma_mode = dma_mode;
    machine.dma_load = 82;
    dma_reset();
}
