// Every address under every bank setting, against the map written down a second time.
#include "machine_fixture.h"

#include <random>

namespace {

using MemoryMap = Machine;

struct bank {
    int port31, port70, port71, plane; // plane 3: RAM
};

struct place {
    uint8_t *byte; // null: nothing there, reads 0xFF
    uint32_t wait;
};

place read_place(const bank &b, int address) {
    if (address >= 0xC000 && b.plane < 3) return {&machine.gvram[b.plane][address - 0xC000], 1};
    if (address >= 0x8000 && address <= 0x83FF && (b.port31 & 6) == 0)
        return {&machine.ram[(b.port70 * 256 + address - 0x8000) % 65536], 1};
    if (address >= 0x8000 || (b.port31 & 2)) return {&machine.ram[address], 0};
    if (b.port31 & 4) return {&machine.nbasic_rom[address], 0};
    if (address < 0x6000) return {&machine.main_rom[address], 0};
    if (b.port71 == 0xFF) return {&machine.main_rom[address], 1};
    return {b.port71 % 2 == 0 ? &machine.ext_rom[address - 0x6000] : nullptr, 1};
}

place write_place(const bank &b, int address) {
    return address < 0x8000 ? place{&machine.ram[address], 0} : read_place(b, address);
}

// A written byte goes to its place and nowhere else, under the lock exactly where another thread looks.
TEST_F(MemoryMap, EveryAddressReadsAndWritesItsPlace) {
    std::minstd_rand random(1);
    for (uint8_t *byte = machine.main_rom; byte != machine.font_rom; ++byte)
        *byte = static_cast<uint8_t>(random() >> 8);
    const auto before = snapshot();
    const struct {
        int first, size;
        writes dma; // to channel 2's address and count
    } text_windows[] = {
        {0xF3C8, 0x0BB8, {{0x64, 0xC8}, {0x64, 0xF3}, {0x65, 0xB7}, {0x65, 0x8B}}},
        {0xFF00, 0x0400, {{0x64, 0x00}, {0x64, 0xFF}, {0x65, 0xFF}, {0x65, 0x83}}}, // goes on at 0
        {0x3000, 0, {{0x64, 0x00}, {0x64, 0x20}, {0x65, 0}, {0x65, 0}, {0x64, 0}, {0x64, 0x30}}},
    };
    constexpr int port31[] = {0x39, 0x02, 0x04, 0xCF}, port70[] = {0x80, 0xC1, 0xF3, 0xFF},
                  port71[] = {0xFF, 0xFE, 0xFD, 0x00};
    for (int i = 0; i < 4 * 4 * 4 * 4; ++i) {
        const auto &window = text_windows[i % 3];
        const bank b = {port31[i / 64], port70[i / 16 % 4], port71[i / 4 % 4], i % 4};
        out(window.dma);
        out({{0x31, b.port31}, {0x70, b.port70}, {0x71, b.port71}, {0x5C + b.plane, 0}});
        for (int address = 0; address < 0x10000; ++address) {
            const auto where = [&] {
                return testing::Message()
                       << std::hex << "address " << address << " port 31 " << b.port31 << " 70 " << b.port70
                       << " 71 " << b.port71 << " plane " << b.plane << " window " << window.first << ' ';
            };
            const auto a = static_cast<uint16_t>(address);
            uint32_t wait = 5;
            seen.clear();
            const place r = read_place(b, address);
            ASSERT_EQ(mem_read(a, &wait), r.byte != nullptr ? *r.byte : 0xFF) << where();
            ASSERT_EQ(wait, 5 + r.wait) << where() << "read";
            ASSERT_TRUE(seen.empty()) << where() << "read under the lock";

            const place w = write_place(b, address);
            const bool locked = w.byte >= machine.gvram[0] ||
                                (w.byte - machine.ram - window.first + 0x10000) % 0x10000 < window.size;
            const uint8_t old = *w.byte, value = static_cast<uint8_t>(old + 1 + address % 255);
            watched = w.byte;
            wait = 5;
            mem_write(a, value, &wait);
            ASSERT_EQ(*w.byte, value) << where();
            ASSERT_EQ(wait, 5 + w.wait) << where() << "written";
            ASSERT_EQ(seen, locked ? (bytes{old, value}) : bytes{}) << where() << "lock";
            *w.byte = old;
        }
        ASSERT_EQ(std::memcmp(&machine, before.get(), sizeof(memory_areas)), 0) << "a second byte";
    }
}

} // namespace
