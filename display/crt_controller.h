// The CRT controller, a uPD3301-type chip.
//   port 0x50 W  parameter            port 0x51 W  command
//   port 0x30 W  bit 0 80 columns, bit 1 monochrome attributes
//   port 0x53 W  bit 0 text display off (stored by the port map)
// Not emulated: the status register (reads 0xFF), the light pen, the controller's own interrupts.
#pragma once

#include "support/shared.h"
#include <cstdint>

// crtc_status: the text layer is drawn only while the whole byte is 0.
enum crtc_status_bit : uint8_t {
    crtc_text_off = 0x01, // port 0x53 bit 0
    crtc_stopped = 0x02,  // after RESET, until START DISPLAY
    crtc_dma_off = 0x04,  // DMA channel 2 disabled
};

struct crt_controller_block {
    uint8_t crtc_state;          // parameters expected: 0 none, 1 the five of RESET, 5 the cursor position
    uint16_t crtc_param_index;   // parameter bytes since the last command; wraps
    shared<uint8_t> crtc_status; // crtc_status_bit
    uint8_t crtc_burst;          // 1 DMA burst mode, 0 character mode
    uint8_t crtc_width;          // characters per row
    uint8_t crtc_lines;          // rows per screen
    uint8_t crtc_raster;         // raster lines per character row, 1-32
    uint8_t crtc_vrl;            // vertical retrace, rows
    uint8_t crtc_hrc;            // horizontal retrace, characters
    uint8_t crtc_attr_on, crtc_attr_mono, crtc_attr_transparent, crtc_attr_special;
    uint16_t crtc_line_size;      // bytes the DMA fetches per character row
    uint8_t crtc_rows25;          // 1 when crtc_lines is 25
    shared<uint8_t> crtc_reverse; // whole-screen reverse
    uint8_t crtc_wide;            // 1 = 80 columns
    shared<uint8_t> crtc_mono;    // 1 = monochrome attributes, 0 = colour
    uint32_t screen_mode;         // 2 x crtc_wide + crtc_rows25
    void (*crtc_init)();
    void (*crtc_reset)();
    void (*crtc_command)(uint8_t byte);
    void (*crtc_parameter)(uint8_t byte);
    void (*crtc_control)(uint8_t byte); // port 0x30
};

void crtc_init();
