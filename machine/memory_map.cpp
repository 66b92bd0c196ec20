#include "machine/kiv_machine.h"

namespace {

bool ram_mode() { return (machine.port31 & port31_ram_mode) != 0; }
bool rom_mode() { return (machine.port31 & (port31_ram_mode | port31_nbasic)) == 0; }

// The RAM address behind the port-0x70 window at 0x8000-0x83FF; it wraps at the top of memory.
uint16_t window_address(uint16_t address) {
    return static_cast<uint16_t>(machine.port70 * 0x100 + (address & 0x3FF));
}

// The plane seen at 0xC000-0xFFFF, or -1 for RAM. The first set bit wins.
int selected_plane() {
    const uint8_t select = machine.gvram_select;
    if (select & 1) return 0;
    if (select & 2) return 1;
    if (select & 4) return 2;
    return -1;
}

uint8_t read_upper_rom(uint16_t address, uint32_t *wait) {
    ++*wait;
    if (machine.port71 == 0xFF) return machine.main_rom[address & 0x7FFF];
    if ((machine.port71 & 1) == 0) return machine.ext_rom[address & 0x1FFF];
    return 0xFF;
}

} // namespace

uint8_t mem_read(uint16_t address, uint32_t *wait) {
    switch (address >> 12) {
    case 0x0:
    case 0x1:
    case 0x2:
    case 0x3:
    case 0x4:
    case 0x5:
        if (rom_mode()) return machine.main_rom[address & 0x7FFF];
        return ram_mode() ? machine.ram[address] : machine.nbasic_rom[address & 0x7FFF];
    case 0x6:
    case 0x7:
        if (rom_mode()) return read_upper_rom(address, wait);
        return ram_mode() ? machine.ram[address] : machine.nbasic_rom[address & 0x7FFF];
    case 0x8:
        if (address < 0x8400 && rom_mode()) {
            ++*wait;
            return machine.ram[window_address(address)];
        }
        return machine.ram[address];
    case 0xC:
    case 0xD:
    case 0xE:
    case 0xF:
        if (const int plane = selected_plane(); plane >= 0) {
            ++*wait;
            return machine.gvram[plane][address & 0x3FFF];
        }
        return machine.ram[address];
    default: return machine.ram[address];
    }
}

void mem_write(uint16_t address, uint8_t value, uint32_t *wait) {
    if (address >= 0xC000) {
        if (const int plane = selected_plane(); plane >= 0) {
            machine.video_lock();
            machine.gvram[plane][address & 0x3FFF] = value;
            machine.video_unlock();
            ++*wait;
            return;
        }
    } else if ((address & 0xFC00) == 0x8000 && rom_mode()) {
        address = window_address(address);
        ++*wait;
    }
    // The composer copies rows out of the text window under the lock, so that it never sees half a row.
    const auto into_window = static_cast<uint16_t>(address - machine.text_start);
    if (into_window < machine.text_window_size) {
        machine.video_lock();
        ram_store(address, value);
        machine.video_unlock();
        return;
    }
    ram_store(address, value);
}
