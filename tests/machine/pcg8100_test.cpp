// The board's glyphs and tones through its ports.
#include "machine_fixture.h"

namespace {

std::vector<std::pair<int, int>> tones; // Hz, channel
using tone_list = std::vector<std::pair<int, int>>;

class Pcg : public Machine {
  protected:
    void SetUp() override {
        Machine::SetUp();
        tones.clear();
        machine.pcg_tone = [](uint16_t frequency, uint32_t channel) {
            tones.emplace_back(frequency, channel);
        };
        for (uint32_t i = 0; i < font_size; ++i) machine.font_rom[i] = static_cast<uint8_t>(i * 7 + i / 256);
        for (uint32_t i = 0; i < font_work_size; ++i) machine.font_work[i] = uint8_t{0xEE};
    }
    static tone_list after(const std::vector<std::pair<int, int>> &writes) {
        tones.clear();
        for (const auto &[port, value] : writes) out(port, value);
        return tones;
    }
};

TEST_F(Pcg, GlyphBytesGoToTheirAddress) {
    for (int address = 0; address < 0x400; ++address) {
        for (const bool from_rom : {false, true}) {
            const auto before = snapshot();
            const int value = (address * 5 + 1) & 0xFF;
            out(0x00, value);
            out(0x01, address & 0xFF);
            out(0x02, 0x10 | (from_rom ? 0x20 : 0) | address >> 8);
            before->font_work[0x400 + address] =
                from_rom ? machine.font_rom[0x400 + address] : static_cast<uint8_t>(value);
            ASSERT_EQ(std::memcmp(machine.font_work, before->font_work, sizeof machine.font_work), 0)
                << "address " << hex{unsigned(address)} << " from ROM " << from_rom;
        }
    }
    const auto before = snapshot();
    out(0x02, 0x21); // without the write bit
    EXPECT_EQ(std::memcmp(machine.font_work, before->font_work, sizeof machine.font_work), 0);
    EXPECT_EQ(machine.pcg_address_high, 3);
    out(0x03, 0xFF);
    EXPECT_EQ(machine.pcg_glyphs_on, 1);
    out(0x03, 0xF7);
    EXPECT_EQ(machine.pcg_glyphs_on, 0);
}

// Each line follows on the one before.
TEST_F(Pcg, TonesFollowCountersAndGates) {
    const struct {
        const char *what;
        std::vector<std::pair<int, int>> writes;
        tone_list expected;
    } steps[] = {
        {"no control word yet", {{0x0C, 0x12}, {0x0C, 0x34}, {0x02, 0x08}}, {{0, 0}, {0, 1}, {0, 2}}},
        {"gates off, always told",
         {{0x02, 0x00}, {0x02, 0x00}},
         {{0, 0}, {0, 1}, {0, 2}, {0, 0}, {0, 1}, {0, 2}}},
        {"divisor 4096, gate off", {{0x0F, 0x36}, {0x0C, 0x00}, {0x0C, 0x10}}, {}},
        {"gate 0 on", {{0x02, 0x08}}, {{975, 0}, {0, 1}, {0, 2}}},
        {"gate 0 on again", {{0x02, 0x08}}, {{0, 1}, {0, 2}}},
        {"same divisor", {{0x0C, 0x00}, {0x0C, 0x10}}, {}},
        {"low byte alone waits", {{0x0C, 0x40}}, {}},
        {"then the high byte: 4160", {{0x0C, 0x10}}, {{960, 0}}},
        {"in pairs: 8192", {{0x0C, 0x00}, {0x0C, 0x20}}, {{488, 0}}},
        {"low byte only", {{0x0F, 0x16}, {0x0C, 0x55}}, {}},
        {"high byte only clears the low one: 0x1000", {{0x0F, 0x26}, {0x0C, 0x10}}, {{975, 0}}},
        {"latched: ignored", {{0x0F, 0x06}, {0x0C, 0x33}, {0x0C, 0x44}}, {}},
        {"no channel 3", {{0x0F, 0xF6}, {0x0C, 0x33}}, {}},
        {"channel 2: 440 Hz", {{0x0F, 0xB6}, {0x0E, 0x74}, {0x0E, 0x23}, {0x02, 0x88}}, {{0, 1}, {440, 2}}},
        {"channel 1, divisor 0 counts as 1",
         {{0x02, 0x48}, {0x0F, 0x76}, {0x0D, 0x00}, {0x0D, 0x00}},
         {{0, 1}, {0, 2}, {3993600 & 0xFFFF, 1}}},
        {"above 65535 Hz always differs", {{0x0D, 0x00}, {0x0D, 0x00}}, {{3993600 & 0xFFFF, 1}}},
        {"65469 Hz is stored as it is", {{0x0D, 61}, {0x0D, 0x00}, {0x0D, 61}, {0x0D, 0x00}}, {{65469, 1}}},
        {"ports without a function", {{0x04, 0xFF}, {0x07, 0xFF}, {0x0B, 0xFF}}, {}},
    };
    for (const auto &step : steps) EXPECT_EQ(after(step.writes), step.expected) << step.what;
}

} // namespace
