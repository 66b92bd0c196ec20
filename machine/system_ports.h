// The port map, and the ports that are no device of their own: DIP switches, bank latches, palette, plane
// select, status. Only the low eight bits of a port's address count.
//
//   port       R                              W
//   0x00-0x0B  key matrix row 0-11            PCG-8100 (0x00-0x0F)              machine/keyboard, pcg8100
//   0x10       -                              calendar command (0x10-0x1F)      machine/calendar_clock
//   0x20 0x21  USART data, status             data, command (even, odd to 0x2F) machine/usart
//   0x30       DIP switch 1                   columns, colour, cassette motor   here, display/crt_controller
//   0x31       DIP switch 2                   memory and graphics modes (to 0x3F)
//   0x40       status: monitor, VRTC, clock   calendar strobe and clock, beeper
//   0x50 0x51  -                              CRT controller parameter, command display/crt_controller
//   0x53       -                              bit 0: text not shown
//   0x54-0x5B  -                              palette entry 0-7, bits G R B
//   0x5C-0x5F  plane select (0x5C)            plane 0, 1, 2, main RAM seen at 0xC000 (any value)
//   0x60-0x67  -                              DMA address and count, channel 0-3 display/dma_controller
//   0x68       -                              DMA mode
//   0x70 0x78  RAM page at 0x8000 (0x70)      the page; 0x78: the next page (any value)
//   0x71       ROM at 0x6000                  0xFF main ROM, bit 0 clear: expansion ROM
//   0xE4 0xE6  interrupt threshold, mask      the same                          machine/interrupt_controller
//   0xF0       -                              cassette: load a record at once   machine/cassette
//
// Every other port reads 0xFF and takes writes without effect. Not emulated: the printer (0x10, 0x40), the
// RS-232C channel, the kanji ROM, the CRT controller's status (0x50, 0x51), DMA registers read back, extended
// RAM banks and the 8 MHz models' ports. The latches that software of this machine reads back are kept; port
// 0x71 turning 0x00 into 0xFF is what that software expects, not a fact of a data sheet.
#pragma once

#include "support/shared.h"
#include <cstdint>

// The ports by name; firmware/include/ports.inc has the same names in capitals.
namespace ports {
enum port : uint8_t {
    key_row = 0x00,  // R, + row 0-11
    pcg_data = 0x00, // W, the PCG-8100's sixteen
    calendar = 0x10,
    usart_data = 0x20,
    usart_control = 0x21,
    dip_1 = 0x30,   // R
    mode_30 = 0x30, // W
    dip_2 = 0x31,   // R
    mode_31 = 0x31, // W
    status = 0x40,  // R
    system = 0x40,  // W
    crtc_parameter = 0x50,
    crtc_command = 0x51,
    layers = 0x53,
    palette = 0x54, // + entry 0-7
    select_blue = 0x5C,
    select_red = 0x5D,
    select_green = 0x5E,
    select_ram = 0x5F,
    dma_address = 0x60, // + 2 x channel 0-3; the count is the port behind it
    dma_mode = 0x68,
    window_page = 0x70,
    expansion = 0x71,
    window_next = 0x78,
    interrupt_level = 0xE4,
    interrupt_mask = 0xE6,
    tape_load = 0xF0,
};
} // namespace ports

// Port 0x31, written. Bit 0 (200 lines) and bit 4 (colour) are kept and not used.
enum port31_bit : uint8_t {
    port31_ram_mode = 0x02,
    port31_nbasic = 0x04,
    port31_graphics_on = 0x08,
};

// What gvram_select holds: which memory is seen at 0xC000-0xFFFF. After reset it is 0, which is main RAM,
// too.
enum plane_select : uint8_t {
    plane_0 = 0xF9, // blue
    plane_1 = 0xFA, // red
    plane_2 = 0xFC, // green
    plane_none = 0xF8,
};

struct palette_block {
    shared<uint8_t> palette[8]; // ports 0x54-0x5B, 3-bit G R B codes
};

struct system_port_block {
    uint8_t sys_status;           // image of port 0x40 input
    shared<uint8_t> gvram_select; // plane_select
    // The byte last written to each port.
    uint8_t port10, port21, port30;
    shared<uint8_t> port31;
    uint8_t port40, port70, port71, portE4, portE6;
};

// sys_status bits.
enum sys_status_bit : uint8_t {
    status_standard_monitor = 0x02,
    status_calendar_out = 0x10,
    status_vrtc = 0x20,
};

// The Z80's I/O; only the low eight bits of the port count.
uint8_t io_in(uint16_t port);
void io_out(uint16_t port, uint8_t value);

// The latches as after power-on: ROM mode, no expansion ROM, RAM at 0xC000. The palette stays.
void reset_system_ports(struct kiv_machine &m);
