#include "machine/kiv_machine.h"

namespace {

constexpr uint8_t dip1_zun_basic = 0xD3; // port 0x30
constexpr uint8_t dip1_n_basic = 0xD2;
constexpr uint8_t dip2 = 0xEB;       // port 0x31
constexpr uint8_t no_ext_rom = 0xFF; // port 0x71
constexpr uint8_t port40_beep = 0x20;

bool within(uint8_t port, uint8_t first, int count) { return port >= first && port < first + count; }

template <class Latch> void write_latch(Latch &latch, int value) { latch = static_cast<uint8_t>(value); }

uint8_t read_status() {
    machine.sys_status_read();
    return machine.sys_status & 0xFE;
}

// A latch of 0x00 turns into 0xFF when it is read.
uint8_t read_port71() {
    if (machine.port71 == 0x00) machine.port71 = no_ext_rom;
    return machine.port71;
}

void write_port30(uint8_t value) {
    machine.port30 = value;
    machine.crtc_control(value);
    machine.cassette_port30();
}

void write_port40(uint8_t value) {
    machine.port40 = value;
    machine.calendar_port40();
    if (value & port40_beep)
        machine.beep_on();
    else
        machine.beep_off();
}

void write_usart(uint8_t port, uint8_t value) {
    if ((port & 1) == 0) {
        machine.usart_data_write(value);
    } else {
        machine.port21 = value;
        machine.usart_command_write();
    }
}

void write_layers(uint8_t value) {
    machine.crtc_status =
        static_cast<uint8_t>((machine.crtc_status & ~crtc_text_off) | (value & crtc_text_off));
}

void write_dma(uint8_t port, uint8_t value) {
    const auto channel = static_cast<uint8_t>((port & 7) / 2);
    if ((port & 1) == 0)
        machine.dma_address(channel, value);
    else
        machine.dma_count(channel, value);
}

} // namespace

uint8_t io_in(uint16_t address) {
    const auto port = static_cast<uint8_t>(address);
    if (within(port, ports::key_row, key_rows)) return machine.key_matrix[port];
    switch (port) {
    case ports::usart_data: return machine.usart_data_read();
    case ports::usart_control: return machine.usart_status_read();
    case ports::dip_1: return machine.boot_rom == 1 ? dip1_zun_basic : dip1_n_basic;
    case ports::dip_2: return dip2;
    case ports::status: return read_status();
    case ports::select_blue: return machine.gvram_select;
    case ports::window_page: return machine.port70;
    case ports::expansion: return read_port71();
    case ports::interrupt_level: return machine.portE4;
    case ports::interrupt_mask: return machine.portE6;
    default: return 0xFF;
    }
}

void io_out(uint16_t address, uint8_t value) {
    const auto port = static_cast<uint8_t>(address);
    // Boards and chips that answer to a range of ports, then the single ones.
    if (within(port, ports::pcg_data, 16)) return machine.pcg_port(port, value);
    if (within(port, ports::calendar, 16)) return write_latch(machine.port10, value);
    if (within(port, ports::usart_data, 16)) return write_usart(port, value);
    if (within(port, ports::mode_31, 15)) return write_latch(machine.port31, value);
    if (within(port, ports::palette, 8))
        return write_latch(machine.palette[port - ports::palette], value & 7);
    if (within(port, ports::dma_address, 8)) return write_dma(port, value);
    switch (port) {
    case ports::mode_30: write_port30(value); break;
    case ports::system: write_port40(value); break;
    case ports::crtc_parameter: machine.crtc_parameter(value); break;
    case ports::crtc_command: machine.crtc_command(value); break;
    case ports::layers: write_layers(value); break;
    case ports::select_blue: machine.gvram_select = plane_0; break;
    case ports::select_red: machine.gvram_select = plane_1; break;
    case ports::select_green: machine.gvram_select = plane_2; break;
    case ports::select_ram: machine.gvram_select = plane_none; break;
    case ports::dma_mode: machine.dma_mode(value); break;
    case ports::window_page: machine.port70 = value; break;
    case ports::expansion: machine.port71 = value; break;
    case ports::window_next: ++machine.port70; break;
    case ports::interrupt_level: machine.portE4 = value; break;
    case ports::interrupt_mask: machine.portE6 = value; break;
    case ports::tape_load: machine.cassette_fast_load(value); break;
    default: break;
    }
}

void reset_system_ports(kiv_machine &m) {
    m.port10 = m.port21 = m.port30 = m.port40 = m.port70 = m.portE4 = m.portE6 = 0;
    m.gvram_select = uint8_t{0};
    m.sys_status = 0x08;
    m.port31 = uint8_t{0x31};
    m.port71 = no_ext_rom;
}
