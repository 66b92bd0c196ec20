#include "debug/memory_banks.h"

#include "machine/kiv_machine.h"

namespace {

const char *const names[] = {"any", "main", "nbasic", "ext", "ram", "blue", "red", "green", "open"};

memory_bank bank_of_roms(uint16_t address) {
    const uint8_t mode = machine.port31;
    if (mode & port31_ram_mode) return memory_bank::ram;
    if (mode & port31_nbasic) return memory_bank::nbasic;
    if (address < 0x6000 || machine.port71 == 0xFF) return memory_bank::main;
    return (machine.port71 & 1) == 0 ? memory_bank::ext : memory_bank::open;
}

memory_bank bank_of_planes() {
    const uint8_t select = machine.gvram_select;
    if (select & 1) return memory_bank::blue;
    if (select & 2) return memory_bank::red;
    return select & 4 ? memory_bank::green : memory_bank::ram;
}

} // namespace

memory_bank bank_at(uint16_t address) {
    if (address < 0x8000) return bank_of_roms(address);
    return address >= 0xC000 ? bank_of_planes() : memory_bank::ram;
}

memory_bank bank_written(uint16_t address) { return address >= 0xC000 ? bank_of_planes() : memory_bank::ram; }

uint16_t ram_behind(uint16_t address) {
    const bool rom_mode = (machine.port31 & (port31_ram_mode | port31_nbasic)) == 0;
    if ((address & 0xFC00) != 0x8000 || !rom_mode) return address;
    return static_cast<uint16_t>(machine.port70 * 0x100 + (address & 0x3FF));
}

const uint8_t &byte_written(uint16_t address) {
    switch (bank_written(address)) {
    case memory_bank::blue: return machine.gvram[0][address & 0x3FFF];
    case memory_bank::red: return machine.gvram[1][address & 0x3FFF];
    case memory_bank::green: return machine.gvram[2][address & 0x3FFF];
    default: return machine.ram[ram_behind(address)];
    }
}

std::optional<memory_bank> bank_named(const std::string &name) {
    for (size_t i = 0; i < std::size(names); ++i)
        if (name == names[i]) return static_cast<memory_bank>(i);
    return std::nullopt;
}

const char *bank_name(memory_bank bank) { return names[static_cast<size_t>(bank)]; }
