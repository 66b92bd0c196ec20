// The board's glyphs and tones through its ports.
#include "machine_fixture.h"

namespace {

using Pcg = Machine;

TEST_F(Pcg, GlyphBytesGoToTheirAddress) {
    for (uint32_t i = 0; i < font_size; ++i) machine.font_rom[i] = static_cast<uint8_t>(i * 7 + i / 256);
    bytes expected(font_work_size);
    for (int i = 0; i < 2 * 0x400; ++i) {
        const int address = i / 2, at = 0x400 + address;
        const bool from_rom = i % 2 != 0;
        const auto value = static_cast<uint8_t>(i * 5 + 1);
        out({{0x00, value},
             {0x01, address & 0xFF},
             {0x02, 0x10 | (from_rom ? 0x20 : 0) | (i & 4) | address >> 8}});
        out(0x02, 0x20); // without the write bit
        expected[static_cast<size_t>(at)] = from_rom ? machine.font_rom[at] : value;
        ASSERT_EQ(std::memcmp(machine.font_work, expected.data(), font_work_size), 0)
            << "address 0x" << std::hex << address << " from ROM " << from_rom;
        ASSERT_EQ(machine.pcg_address_high, address >> 8);
    }
    out({{0x03, 0xFF}, {0x02, 0x00}});
    EXPECT_EQ(machine.pcg_glyphs_on, 1);
    out(0x03, 0xF7);
    EXPECT_EQ(machine.pcg_glyphs_on, 0);
}

// Each line follows on the one before.
TEST_F(Pcg, TonesFollowCountersAndGates) {
    using tone_list = std::vector<std::pair<int, int>>; // Hz, channel
    static tone_list tones;
    machine.pcg_tone = [](uint16_t frequency, uint32_t channel) { tones.emplace_back(frequency, channel); };
    const struct {
        const char *what;
        writes written;
        tone_list expected;
    } steps[] = {
        {"no control word yet", {{0x0C, 0x12}, {0x0C, 0x34}, {0x02, 0x08}}, {{0, 0}, {0, 1}, {0, 2}}},
        {"gates off", {{0x02, 0x00}}, {{0, 0}, {0, 1}, {0, 2}}},
        {"gates off, told again", {{0x02, 0x00}}, {{0, 0}, {0, 1}, {0, 2}}},
        {"divisor 4096, gate off", {{0x0F, 0x36}, {0x0C, 0x00}, {0x0C, 0x10}}, {}},
        {"gate 0 on", {{0x02, 0x08}}, {{975, 0}, {0, 1}, {0, 2}}},
        {"gate 0 on again", {{0x02, 0x08}}, {{0, 1}, {0, 2}}},
        {"same divisor", {{0x0C, 0x00}, {0x0C, 0x10}}, {}},
        {"low byte alone waits", {{0x0C, 0x40}}, {}},
        {"then the high byte: 4160", {{0x0C, 0x10}}, {{960, 0}}},
        {"in pairs: 8192", {{0x0C, 0x00}, {0x0C, 0x20}}, {{488, 0}}},
        {"low byte only", {{0x0F, 0x16}, {0x0C, 0x55}}, {}},
        {"high bytes only, the low one 0", {{0x0F, 0x26}, {0x0C, 0x10}, {0x0C, 0x08}}, {{975, 0}, {1950, 0}}},
        {"latched: ignored", {{0x0F, 0x06}, {0x0C, 0x33}, {0x0C, 0x44}}, {}},
        {"no channel 3", {{0x0F, 0xF6}, {0x0C, 0x33}}, {}},
        {"channel 2: 440 Hz", {{0x0F, 0xB6}, {0x0E, 0x74}, {0x0E, 0x23}, {0x02, 0x88}}, {{0, 1}, {440, 2}}},
        {"channel 1 on, channel 2 off", {{0x02, 0x48}, {0x0F, 0x76}}, {{0, 1}, {0, 2}}},
        {"divisor 0 counts as 1", {{0x0D, 0x00}, {0x0D, 0x00}}, {{3993600 & 0xFFFF, 1}}},
        {"above 65535 Hz always differs", {{0x0D, 0x00}, {0x0D, 0x00}}, {{3993600 & 0xFFFF, 1}}},
        {"65469 Hz is stored as it is", {{0x0D, 61}, {0x0D, 0x00}, {0x0D, 61}, {0x0D, 0x00}}, {{65469, 1}}},
        {"ports without a function", {{0x04, 0xFF}, {0x07, 0xFF}, {0x0B, 0xFF}}, {}},
    };
    for (const auto &step : steps) {
        tones.clear();
        out(step.written);
        EXPECT_EQ(tones, step.expected) << step.what;
    }
}

} // namespace
