// From nothing to a machine that can run, in three steps: power, images and settings, ready. Every front end
// boots this way.
#pragma once

#include "machine/host_callbacks.h"
#include <cstddef>
#include <cstdint>

enum class rom_socket { main, nbasic, ext };

constexpr uint32_t largest_rom_image = 0x8000;

// Processor and devices at power-on, the sound side listening. Images, font and settings are empty then.
void machine_power_on(const sound_listener &listener, void (*video_lock)(), void (*video_unlock)());

// An image of at most largest_rom_image bytes from the start of its area; what does not fit there does not
// count, and what it does not fill is as it was: 0 after power-on.
void machine_put_rom(rom_socket socket, const uint8_t *image, size_t size);

// font_size bytes; the programmable glyphs begin as the font's.
void machine_put_font(const uint8_t *font);

// After images and settings (the fields interlace and crt_standard): the raster at its start, the colours of
// odd lines, RAM as after power-on.
void machine_get_ready();
