// Every address under every bank setting, against the map written down a second time.
#include "machine_fixture.h"

#include <array>
#include <random>
#include <sstream>

namespace {

struct bank {
    uint8_t port31, port70, port71, select;
};

struct place {
    uint8_t *byte; // null: nothing there, reads 0xFF
    uint32_t wait;
};

uint8_t *plane_of(const bank &b, int address) {
    for (int plane = 0; plane < 3; ++plane)
        if (b.select >> plane & 1) return &machine.gvram[plane][address - 0xC000];
    return nullptr;
}

bool shows_rom(const bank &b) { return (b.port31 & 6) == 0; }

place upper_half(const bank &b, int address) {
    if (address >= 0xC000)
        if (uint8_t *plane = plane_of(b, address)) return {plane, 1};
    if (address <= 0x83FF && shows_rom(b))
        return {&machine.ram[(b.port70 * 256 + address - 0x8000) % 65536], 1};
    return {&machine.ram[address], 0};
}

place read_place(const bank &b, int address) {
    if (address >= 0x8000) return upper_half(b, address);
    if (b.port31 & 2) return {&machine.ram[address], 0};
    if (b.port31 & 4) return {&machine.nbasic_rom[address], 0};
    if (address < 0x6000) return {&machine.main_rom[address], 0};
    if (b.port71 == 0xFF) return {&machine.main_rom[address], 1};
    return {b.port71 % 2 == 0 ? &machine.ext_rom[address - 0x6000] : nullptr, 1};
}

place write_place(const bank &b, int address) {
    return address < 0x8000 ? place{&machine.ram[address], 0} : upper_half(b, address);
}

std::string text(const bank &b, int address) {
    std::ostringstream out;
    out << "address " << hex{static_cast<uint64_t>(address)} << " port 0x31 " << hex{b.port31} << " 0x70 "
        << hex{b.port70} << " 0x71 " << hex{b.port71} << " planes " << hex{b.select};
    return out.str();
}

class MemoryMap : public Machine {
  protected:
    void SetUp() override {
        Machine::SetUp();
        std::minstd_rand random(1);
        const auto fill = [&random](uint8_t *area, size_t size) {
            for (size_t i = 0; i < size; ++i) area[i] = static_cast<uint8_t>(random() >> 8);
        };
        fill(machine.main_rom, rom_size);
        fill(machine.nbasic_rom, rom_size);
        fill(machine.ext_rom, ext_rom_size);
        fill(machine.ram, ram_size);
        fill(machine.gvram[0], sizeof machine.gvram);
    }

    // `visit` for every setting that can make a difference, set through the ports.
    template <class visitor> void for_all_banks(visitor visit) {
        constexpr std::array select_ports = {0x5C, 0x5D, 0x5E, 0x5F};
        constexpr std::array<uint8_t, 4> selects = {0xF9, 0xFA, 0xFC, 0xF8};
        for (int port31 = 0; port31 < 16; port31 += 2) {
            for (const int port70 : {0x00, 0x80, 0xC1, 0xF3, 0xFF}) {
                for (const int port71 : {0xFF, 0xFE, 0xFD, 0x00}) {
                    for (size_t i = 0; i < selects.size(); ++i) {
                        out(0x31, port31);
                        out(0x70, port70);
                        out(0x71, port71);
                        out(select_ports[i], 0);
                        visit(bank{static_cast<uint8_t>(port31), static_cast<uint8_t>(port70),
                                   static_cast<uint8_t>(port71), selects[i]});
                        if (HasFatalFailure()) return;
                    }
                }
            }
        }
    }
};

TEST_F(MemoryMap, EveryAddressReadsFromItsPlace) {
    for_all_banks([](const bank &b) {
        for (int address = 0; address < 0x10000; ++address) {
            const place p = read_place(b, address);
            const uint8_t expected = p.byte != nullptr ? *p.byte : 0xFF;
            uint32_t wait = 5;
            const uint8_t got = mem_read(static_cast<uint16_t>(address), &wait);
            ASSERT_TRUE(got == expected && wait == 5 + p.wait)
                << text(b, address) << ": got " << hex{got} << " wait " << wait - 5 << ", expected "
                << hex{expected} << " wait " << p.wait;
        }
    });
    EXPECT_EQ(locks, 0);
}

// The byte goes to its place and nowhere else, between lock and unlock exactly where another thread looks.
TEST_F(MemoryMap, EveryAddressWritesToItsPlace) {
    struct window {
        int start, count, address_after; // the address written again without the count, or -1
    };
    for (const window w :
         {window{0xF3C8, 0x0BB8, -1}, {0xFF00, 0x0400, -1}, {0x1000, 0x4000, -1}, {0x2000, 1, 0x3000}}) {
        set_text_window(w.start, w.count);
        int first = w.start, size = w.count;
        if (w.address_after >= 0) {
            out(0x64, w.address_after & 0xFF);
            out(0x64, w.address_after >> 8);
            first = w.address_after;
            size = 0; // the window's end lies before its start
        }
        const auto before = snapshot();
        for_all_banks([&](const bank &b) {
            for (int address = 0; address < 0x10000; ++address) {
                const place p = write_place(b, address);
                const bool is_plane = p.byte >= machine.gvram[0];
                const bool locked = is_plane || (p.byte - machine.ram - first + 0x10000) % 0x10000 < size;
                const uint8_t old = *p.byte, value = static_cast<uint8_t>(old + 1 + address % 255);
                locks = unlocks = 0;
                watched = p.byte;
                uint32_t wait = 5;
                mem_write(static_cast<uint16_t>(address), value, &wait);
                ASSERT_TRUE(*p.byte == value && wait == 5 + p.wait && locks == locked && unlocks == locked)
                    << text(b, address) << ": got " << hex{*p.byte} << " wait " << wait - 5 << " locks "
                    << locks << '/' << unlocks << ", expected " << hex{value} << " wait " << p.wait
                    << " locks " << locked;
                ASSERT_TRUE(!locked || (at_lock == old && at_unlock == value)) << text(b, address);
                *p.byte = old;
            }
        });
        EXPECT_EQ(std::memcmp(static_cast<memory_areas *>(&machine),
                              static_cast<memory_areas *>(before.get()), sizeof(memory_areas)),
                  0)
            << "a write reached a second byte";
    }
}

} // namespace
