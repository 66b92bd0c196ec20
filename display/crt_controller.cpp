#include "machine/kiv_machine.h"
#include "support/log.h"

namespace {

// The top three bits of a command byte.
enum crtc_command_code : uint8_t { command_reset = 0, command_start_display = 1, command_cursor = 4 };

// crtc_state: which parameter bytes are expected.
enum crtc_parameters : uint8_t { parameters_none = 0, parameters_reset = 1, parameters_cursor = 5 };

struct attribute_mode {
    uint8_t on, mono, transparent, special;
};

constexpr attribute_mode attribute_modes[8] = {
    {1, 1, 1, 1}, {0, 1, 0, 0}, {1, 0, 1, 1}, {0, 1, 0, 0},
    {1, 1, 0, 1}, {1, 1, 0, 0}, {0, 1, 0, 0}, {0, 1, 0, 0},
};

const char *enabled(uint8_t flag) { return flag ? "en" : "dis"; }

void crtc_command(uint8_t byte) {
    machine.crtc_param_index = 0;
    switch (byte >> 5) {
    case command_reset:
        machine.crtc_state = parameters_reset;
        machine.crtc_status |= crtc_stopped;
        machine.dma_stall = 0;
        machine.dma_remaining = 0;
        break;
    case command_start_display:
        machine.crtc_state = parameters_none;
        machine.crtc_reverse = static_cast<uint8_t>(byte & 1);
        machine.crtc_status &= static_cast<uint8_t>(~crtc_stopped);
        break;
    case command_cursor:
        machine.crtc_state = parameters_cursor;
        if (byte & 1)
            machine.cursor_on();
        else
            machine.cursor_off();
        break;
    default: machine.crtc_state = parameters_none;
    }
}

void set_columns(uint8_t byte) {
    machine.crtc_width = static_cast<uint8_t>((byte & 0x7F) + 2);
    machine.crtc_burst = (byte & 0x80) == 0;
    emulated_line("DMA - burst:'%s',\nCRTC - width:%d, ", machine.crtc_burst ? "B" : "C", machine.crtc_width);
}

void set_rows(uint8_t byte) {
    machine.crtc_lines = static_cast<uint8_t>((byte & 0x3F) + 1);
    const uint8_t rows25 = machine.crtc_lines == 25;
    if (rows25 != machine.crtc_rows25) {
        machine.crtc_rows25 = rows25;
        machine.screen_mode = rows25 + 2u * (machine.crtc_wide == 1);
        machine.timing_reset();
        machine.select_renderer(machine.screen_mode);
    }
    machine.cursor_blink_rate(byte >> 6);
    emulated_line("lines:%d, ", machine.crtc_lines);
}

void set_raster(uint8_t byte) {
    machine.crtc_raster = static_cast<uint8_t>((byte & 0x1F) + 1);
    emulated_line("Raster/Char: %d, ", machine.crtc_raster);
}

void set_retrace(uint8_t byte) {
    machine.crtc_vrl = static_cast<uint8_t>((byte >> 5) + 1);
    machine.crtc_hrc = static_cast<uint8_t>((byte & 0x1F) + 1);
    emulated_line("VRL:%d, HRC:%d\n", machine.crtc_vrl, machine.crtc_hrc);
}

void set_attributes(uint8_t byte) {
    const attribute_mode &mode = attribute_modes[byte >> 5];
    const int count = (byte & 0x1F) + 1;
    machine.crtc_attr_on = mode.on;
    machine.crtc_attr_mono = mode.mono;
    machine.crtc_attr_transparent = mode.transparent;
    machine.crtc_attr_special = mode.special;
    int size = machine.crtc_width;
    if (mode.on) size += 2 * count;
    if (mode.on && mode.special && !mode.transparent) size += 2;
    machine.crtc_line_size = static_cast<uint16_t>(size);
    emulated_line("CRTC - attribute:%s, transparent:%s, color:%s, sp:%s, size:%d, line-size:%d\n",
                  enabled(mode.on), enabled(mode.transparent), mode.mono ? "mono" : "color",
                  enabled(mode.special), count, size);
}

void reset_parameter(uint16_t index, uint8_t byte) {
    switch (index) {
    case 0: set_columns(byte); break;
    case 1: set_rows(byte); break;
    case 2: set_raster(byte); break;
    case 3: set_retrace(byte); break;
    case 4: set_attributes(byte); break;
    default: machine.crtc_state = parameters_none;
    }
}

void cursor_parameter(uint16_t index, uint8_t byte) {
    if (index == 0) {
        machine.cursor_load_x = byte & 0x7F;
    } else {
        machine.cursor_load_y = byte & 0x3F;
        machine.crtc_state = parameters_none;
    }
    machine.cursor_update();
}

void crtc_parameter(uint8_t byte) {
    const uint16_t index = machine.crtc_param_index++;
    if (machine.crtc_state == parameters_cursor)
        cursor_parameter(index, byte);
    else if (machine.crtc_state == parameters_reset)
        reset_parameter(index, byte);
}

void crtc_control(uint8_t byte) {
    const uint8_t wide = byte & 1, mono = byte >> 1 & 1;
    if (wide != machine.crtc_wide) {
        machine.crtc_wide = wide;
        machine.screen_mode = 2u * wide + machine.crtc_rows25;
        machine.select_renderer(machine.screen_mode);
    }
    if (mono != machine.crtc_mono) {
        machine.crtc_mono = mono;
        machine.select_attr_decoder(mono);
    }
}

void crtc_reset() {
    machine.crtc_rows25 = 1;
    machine.crtc_reverse = uint8_t{0};
    machine.crtc_mono = uint8_t{1};
    machine.crtc_status = uint8_t{crtc_stopped};
    machine.crtc_line_size = 0;
    machine.crtc_burst = 0;
    machine.crtc_raster = 10;
}

} // namespace

void crtc_init() {
    machine.crtc_reset = crtc_reset;
    machine.crtc_command = crtc_command;
    machine.crtc_parameter = crtc_parameter;
    machine.crtc_control = crtc_control;
    crtc_reset();
}
