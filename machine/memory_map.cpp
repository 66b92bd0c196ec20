#include "machine/kiv_machine.h"

#include <utility>

namespace {

// Port 0x31 decides what lies over the RAM below 0x8400; each access reads it once.
uint8_t bank_bits() { return machine.port31 & (port31_ram_mode | port31_nbasic); }
constexpr uint8_t rom_mode = 0;

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

// RAM mode goes before N-BASIC mode.
uint8_t read_under_rom(uint16_t address, uint8_t bank) {
    return (bank & port31_ram_mode) ? machine.ram[address] : machine.nbasic_rom[address & 0x7FFF];
}

uint8_t read_upper_rom(uint16_t address, uint32_t *wait) {
    ++*wait;
    if (machine.port71 == 0xFF) return machine.main_rom[address & 0x7FFF];
    if ((machine.port71 & 1) == 0) return machine.ext_rom[address & 0x1FFF];
    return 0xFF;
}

// The stores that need the lock are functions of their own, so that all others get by without a stack frame.
[[gnu::noinline]] void store_locked(uint16_t address, uint8_t value) {
    machine.video_lock();
    ram_store(address, value);
    machine.video_unlock();
}

[[gnu::noinline]] void store_plane(int plane, uint16_t address, uint8_t value, uint32_t *wait) {
    machine.video_lock();
    machine.gvram[plane][address & 0x3FFF] = value;
    machine.video_unlock();
    ++*wait;
}

// What decides the pages.
struct page_key {
    uint32_t text_start, text_window_size;
    uint8_t bank, expansion, window;
    int plane;
};

page_key current_key() {
    return {machine.text_start, machine.text_window_size, bank_bits(),
            machine.port71,     machine.port70,           selected_plane()};
}

bool in_text_window(uint16_t page_start) {
    const auto into_window = static_cast<uint16_t>(page_start - machine.text_start);
    const auto to_window = static_cast<uint16_t>(machine.text_start - page_start);
    return into_window < machine.text_window_size ||
           (machine.text_window_size != 0 && to_window < z80_page_size);
}

struct readable_page {
    const uint8_t *bytes;
    bool waits;
};

readable_page upper_rom_page(uint16_t start, uint8_t expansion) {
    if (expansion == 0xFF) return {machine.main_rom + start, true};
    return {(expansion & 1) == 0 ? machine.ext_rom + (start & 0x1FFF) : nullptr, true};
}

// A window over the top of memory is in two pieces.
readable_page window_page(uint8_t window) {
    const uint32_t from = window * 0x100;
    return {from + z80_page_size <= ram_size ? machine.ram + from : nullptr, true};
}

readable_page page_to_read(uint16_t start, const page_key &key) {
    if (start >= 0xC000 && key.plane >= 0) return {machine.gvram[key.plane] + (start & 0x3FFF), true};
    if (start >= 0x8400 || (key.bank & port31_ram_mode)) return {machine.ram + start, false};
    if (key.bank != rom_mode)
        return {start < 0x8000 ? machine.nbasic_rom + start : machine.ram + start, false};
    if (start == 0x8000) return window_page(key.window);
    return start < 0x6000 ? readable_page{machine.main_rom + start, false}
                          : upper_rom_page(start, key.expansion);
}

uint8_t *page_to_write(uint16_t start, const page_key &key) {
    if (start >= 0xC000 && key.plane >= 0) return nullptr;
    if (start == 0x8000 && key.bank == rom_mode) return nullptr;
    return in_text_window(start) ? nullptr : machine.ram + start;
}

void map_pages(z80_pages &pages, const page_key &key, uint32_t from, uint32_t to) {
    for (uint32_t page = from / z80_page_size; page < to / z80_page_size; ++page) {
        const auto start = static_cast<uint16_t>(page * z80_page_size);
        const auto [bytes, waits] = page_to_read(start, key);
        pages.fetch[page] = bytes;
        pages.read[page] = waits ? nullptr : bytes;
        pages.write[page] = page_to_write(start, key);
    }
}

} // namespace

const z80_pages &memory_pages() {
    static z80_pages pages;
    static page_key key{UINT32_MAX, 0, 0, 0, 0, 0}; // of no map
    const page_key was = std::exchange(key, current_key());
    if (was.text_start != key.text_start || was.text_window_size != key.text_window_size ||
        was.bank != key.bank) {
        map_pages(pages, key, 0, ram_size);
        return pages;
    }
    // Software of this machine changes these all the time, each for a part of memory.
    if (was.expansion != key.expansion) map_pages(pages, key, 0x6000, 0x8000);
    if (was.window != key.window) map_pages(pages, key, 0x8000, 0x8400);
    if (was.plane != key.plane) map_pages(pages, key, 0xC000, ram_size);
    return pages;
}

// Compared rather than switched, and the rare places said to be so: plain RAM and the BASIC ROM, where
// programs run, come straight down. docs/performance.md says what that gains.
uint8_t mem_read(uint16_t address, uint32_t *wait) {
    if (address < 0x8000) {
        if (const uint8_t bank = bank_bits(); bank != rom_mode) [[unlikely]]
            return read_under_rom(address, bank);
        if (address >= 0x6000) [[unlikely]]
            return read_upper_rom(address, wait);
        return machine.main_rom[address & 0x7FFF];
    }
    if (address >= 0xC000) {
        if (const int plane = selected_plane(); plane >= 0) {
            ++*wait;
            return machine.gvram[plane][address & 0x3FFF];
        }
    } else if (address < 0x8400 && bank_bits() == rom_mode) {
        ++*wait;
        return machine.ram[window_address(address)];
    }
    return machine.ram[address];
}

void mem_write(uint16_t address, uint8_t value, uint32_t *wait) {
    if (address >= 0xC000) {
        if (const int plane = selected_plane(); plane >= 0) return store_plane(plane, address, value, wait);
    } else if ((address & 0xFC00) == 0x8000 && bank_bits() == rom_mode) {
        address = window_address(address);
        ++*wait;
    }
    // The composer copies rows out of the text window under the lock, so that it never sees half a row.
    const auto into_window = static_cast<uint16_t>(address - machine.text_start);
    if (into_window < machine.text_window_size) return store_locked(address, value);
    ram_store(address, value);
}
