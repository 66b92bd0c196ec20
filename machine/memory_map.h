// The Z80's view of memory: ROM, RAM, the graphic planes and the windows between them.
//
//   0x0000-0x5FFF  main ROM, N-BASIC ROM (port 0x31 bit 2) or RAM (bit 1, which wins)
//   0x6000-0x7FFF  the same, or in ROM mode the expansion ROM (port 0x71 bit 0 clear); a wait a byte
//   0x8000-0x83FF  in ROM mode the RAM at port 0x70 x 0x100, wrapping at the top of memory; a wait a byte
//   0x8400-0xBFFF  RAM
//   0xC000-0xFFFF  RAM, or the plane that ports 0x5C-0x5F chose; a wait a byte
// A write below 0x8000 lands in the RAM under the ROM, whatever is read there.
//
// Not emulated: the waits of main RAM during display, extended RAM, the dictionary and kanji ROMs. By the
// machine's published I/O map: the windows and their ports. As this machine's software expects: an expansion
// ROM that is not there reads 0xFF. Not sure: that a plane costs one wait in the display as in the blank.
#pragma once

#include "support/shared.h"
#include <cstdint>

constexpr uint32_t rom_size = 0x8000;
constexpr uint32_t ext_rom_size = 0x2000;
constexpr uint32_t ram_size = 0x10000;
constexpr uint32_t plane_size = 0x4000;
constexpr uint32_t font_size = 0x1000; // 256 character glyphs, then 256 semigraphic glyphs
constexpr uint32_t font_work_size = 0x0800;

struct memory_areas {
    uint8_t main_rom[rom_size];    // Zun-BASIC, file 8801-zun.rom
    uint8_t nbasic_rom[rom_size];  // N-BASIC, file 8801-kiv.rom
    uint8_t ext_rom[ext_rom_size]; // file 8801-4th.rom, seen at 0x6000-0x7FFF
    // The render thread reads `ram` (text rows) while the CPU thread may write it: the CPU thread stores,
    // and the render thread loads, through relaxed atomics; see ram_store.
    alignas(64) uint8_t ram[ram_size];
    alignas(64) uint8_t gvram[3][plane_size]; // planes 0 blue, 1 red, 2 green; under the video lock
    alignas(64) uint8_t font_rom[font_size];
    alignas(64) shared<uint8_t> font_work[font_work_size]; // codes 0x80-0xFF are rewritten by the PCG-8100
};

// What of the map needs no lock, as it stands now; for the CPU until a latch of the map changes.
const struct z80_pages &memory_pages();

// The Z80's memory. `wait` is incremented when the access costs a wait state.
uint8_t mem_read(uint16_t address, uint32_t *wait);
void mem_write(uint16_t address, uint8_t value, uint32_t *wait);
