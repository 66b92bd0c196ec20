// The DMA controller, a uPD8257-type chip; channel 2 feeds the text rows to the CRT controller.
//   ports 0x60-0x67 W  channel (port - 0x60) / 2: even address, odd terminal count; low byte first
//   port 0x68 W        mode: bit 2 channel 2 on, bit 7 autoload
// Not emulated: reading registers back, the other channels' transfers, priority, write modes.
#pragma once

#include "support/shared.h"
#include <cstdint>

struct dma_channel {
    uint8_t address_low, address_high, address_flip_flop; // flip-flop 0: the next byte is the low one
    uint8_t count_low, count_high, count_flip_flop;
    uint8_t transfer_mode; // top two bits of the count
    uint16_t address;
    uint16_t terminal_count; // bytes; 0x4000 at most
    uint16_t terminal_count_copy;
};

struct dma_controller_block {
    dma_channel dma_channels[4];
    uint8_t dma_autoload;   // mode bit 7: 0 or 1
    uint8_t dma_ch2_enable; // mode bit 2: 0 or 4
    // RAM that channel 2 feeds to the display: [text_start, text_end). text_end may pass 0x10000, and then
    // the window goes on at 0x0000.
    shared<uint32_t> text_start; // below 0x10000
    uint32_t text_end;
    uint32_t text_window_size; // derived: text_end - text_start, 0 when negative
    uint32_t dma_load;         // setting, per cent; stored only
    uint32_t dma_stall;        // T-states owed to the DMA
    void (*dma_init)();
    void (*dma_reset)();
    void (*dma_address)(uint8_t channel, uint8_t byte);
    void (*dma_count)(uint8_t channel, uint8_t byte);
    void (*dma_mode)(uint8_t byte);
};

void dma_init();
