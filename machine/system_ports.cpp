#include "machine/kiv_machine.h"

namespace {

constexpr uint8_t dip1_zun_basic = 0xD3; // port 0x30
constexpr uint8_t dip1_n_basic = 0xD2;
constexpr uint8_t dip2 = 0xEB;       // port 0x31
constexpr uint8_t no_ext_rom = 0xFF; // port 0x71
constexpr uint8_t port40_beep = 0x20;

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

void write_port53(uint8_t value) {
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

uint8_t io_in(uint16_t port) {
    switch (port & 0xFF) {
    case 0x00:
    case 0x01:
    case 0x02:
    case 0x03:
    case 0x04:
    case 0x05:
    case 0x06:
    case 0x07:
    case 0x08:
    case 0x09:
    case 0x0A:
    case 0x0B: return machine.key_matrix[port & 0x0F];
    case 0x20: return machine.usart_data_read();
    case 0x21: return machine.usart_status_read();
    case 0x30: return machine.boot_rom == 1 ? dip1_zun_basic : dip1_n_basic;
    case 0x31: return dip2;
    case 0x40: return read_status();
    case 0x5C: return machine.gvram_select;
    case 0x70: return machine.port70;
    case 0x71: return read_port71();
    case 0xE4: return machine.portE4;
    case 0xE6: return machine.portE6;
    default: return 0xFF;
    }
}

void io_out(uint16_t port, uint8_t value) {
    const auto low = static_cast<uint8_t>(port);
    switch (low >> 4) {
    case 0x0: machine.pcg_port(low & 0x0F, value); return;
    case 0x1: machine.port10 = value; return;
    case 0x2: write_usart(low, value); return;
    default: break;
    }
    switch (low) {
    case 0x30: write_port30(value); break;
    case 0x31:
    case 0x32:
    case 0x33:
    case 0x34:
    case 0x35:
    case 0x36:
    case 0x37:
    case 0x38:
    case 0x39:
    case 0x3A:
    case 0x3B:
    case 0x3C:
    case 0x3D:
    case 0x3E:
    case 0x3F: machine.port31 = value; break;
    case 0x40: write_port40(value); break;
    case 0x50: machine.crtc_parameter(value); break;
    case 0x51: machine.crtc_command(value); break;
    case 0x53: write_port53(value); break;
    case 0x54:
    case 0x55:
    case 0x56:
    case 0x57:
    case 0x58:
    case 0x59:
    case 0x5A:
    case 0x5B: machine.palette[low - 0x54] = static_cast<uint8_t>(value & 7); break;
    case 0x5C: machine.gvram_select = uint8_t{0xF9}; break;
    case 0x5D: machine.gvram_select = uint8_t{0xFA}; break;
    case 0x5E: machine.gvram_select = uint8_t{0xFC}; break;
    case 0x5F: machine.gvram_select = uint8_t{0xF8}; break;
    case 0x60:
    case 0x61:
    case 0x62:
    case 0x63:
    case 0x64:
    case 0x65:
    case 0x66:
    case 0x67: write_dma(low, value); break;
    case 0x68: machine.dma_mode(value); break;
    case 0x70: machine.port70 = value; break;
    case 0x71: machine.port71 = value; break;
    case 0x78: ++machine.port70; break;
    case 0xE4: machine.portE4 = value; break;
    case 0xE6: machine.portE6 = value; break;
    case 0xF0: machine.cassette_fast_load(value); break;
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
