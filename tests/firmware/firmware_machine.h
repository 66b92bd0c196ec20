// A machine with our ROM set, run pass by pass without a window, and its screen as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct tone {
    uint16_t frequency; // Hz, 0 silent
    uint32_t channel;
};

// What the ROM set made the sound side hear.
struct heard_sounds {
    int beeps = 0; // beginnings of a beep
    bool beeping = false;
    std::vector<tone> tones;
};

struct firmware_setup {
    bool zun = true; // the switch
    bool standard_monitor = false;
    bool expansion = true;
};

// Powers the machine on with the ROM images of the build. False when an image is missing.
bool firmware_power_on(const firmware_setup &setup);

// Runs until `frames` more frames have ended. False when the CPU stopped; `firmware_stop` then says where.
bool firmware_run(int frames);
std::string firmware_stop();

heard_sounds &heard();

// Presses a virtual key, with SHIFT or not, for a few frames and releases it. False when the CPU stopped.
bool firmware_type(uint32_t virtual_key, bool shift = false);

// Part of a row of the screen as UTF-8. Semigraphic cells are braille patterns, which have the same 2 x 4
// dots; programmable glyphs are squares.
std::string screen_text(int row, int column = 0, int columns = 80);
// All rows, a line each, without the spaces at their ends.
std::string screen_text();

// cell_attr of a cell, as the composer decodes it.
uint8_t screen_attribute(int row, int column);

// The colour code of a dot of the graphic planes, 0-7: bit 0 blue, 1 red, 2 green.
int graphics_dot(int x, int y);
