// Dump files: their bytes, what is refused, and a program that goes on where it was saved.
#include "machine_fixture.h"

#include "machine/memory_dump.h"

#include <algorithm>
#include <filesystem>

namespace {

class MemoryDump : public Machine {
  protected:
    // A dump-like file: byte o is a mix of o, so that a misplaced byte shows.
    static bytes pattern(size_t size) {
        bytes content(size);
        for (size_t i = 0; i < size; ++i) content[i] = static_cast<uint8_t>(i * 13 + i / 256 + 1);
        return content;
    }
};

TEST_F(MemoryDump, FileHasRamRoutineAndRegisters) {
    for (int i = 0; i < 0x8000; ++i) machine.ram[0x8000 + i] = static_cast<uint8_t>(i * 3 + i / 256);
    out(0x5C, 0); // a selected plane never shows in a dump
    main_cpu.BC = 0x0102, main_cpu.DE = 0x0304, main_cpu.HL = 0x0506, main_cpu.AF = 0x0708;
    main_cpu.BC_alt = 0x1112, main_cpu.DE_alt = 0x1314, main_cpu.HL_alt = 0x1516, main_cpu.AF_alt = 0x1718;
    main_cpu.SP = 0xABCD, main_cpu.PC = 0x89AB;
    ASSERT_TRUE(memory_dump_save(path("dump.kiv"), main_cpu));
    bytes expected(machine.ram + 0x8000, machine.ram + 0xFF3D);
    const bytes tail = {0xC9, 0x50, 0xFF, 0xC1, 0xD1, 0xE1, 0xF1, 0x08, 0xD9, 0xC1, 0xD1, 0xE1, 0xF1,
                        0x31, 0xCD, 0xAB, 0xC3, 0xAB, 0x89, 0x40, 0xFF, 0x12, 0x11, 0x14, 0x13, 0x16,
                        0x15, 0x18, 0x17, 0x02, 0x01, 0x04, 0x03, 0x06, 0x05, 0x08, 0x07, 0,    0};
    expected.insert(expected.end(), tail.begin(), tail.end());
    ASSERT_EQ(expected.size(), 32612u);
    EXPECT_EQ(read_file(path("dump.kiv")), expected);
}

TEST_F(MemoryDump, LengthDecidesHowMuchIsRead) {
    out(0x31, 0x02);
    for (const size_t size : {0u, 100u, 32575u, 32576u, 32612u, 32767u, 32768u, 32769u, 100000u}) {
        const bytes content = pattern(size);
        const auto before = snapshot();
        const z80_cpu cpu_before = main_cpu;
        const bool accepted = size >= 32576;
        EXPECT_EQ(memory_dump_load(write_file("dump.kiv", content), main_cpu), accepted) << size << " bytes";
        if (accepted) {
            std::memcpy(before->ram + 0x8000, content.data(), std::min<size_t>(size, 0x8000));
            EXPECT_EQ(main_cpu.PC, 0xFF3D) << size << " bytes";
            EXPECT_EQ(main_cpu.SP, content[0x7F3E] | content[0x7F3F] << 8) << size << " bytes";
        } else {
            EXPECT_EQ(std::memcmp(&main_cpu, &cpu_before, sizeof main_cpu), 0) << size << " bytes";
        }
        EXPECT_EQ(std::memcmp(&machine, before.get(), sizeof machine), 0) << size << " bytes";
    }
}

TEST_F(MemoryDump, LoadFollowsTheMemoryMap) {
    const bytes content = pattern(32768);
    write_file("dump.kiv", content);
    out(0x5C, 0);
    out(0x70, 0xF3);
    const uint8_t under_window = machine.ram[0x8000], under_plane = machine.ram[0xC000];
    ASSERT_TRUE(memory_dump_load(path("dump.kiv"), main_cpu));
    EXPECT_EQ(machine.ram[0x8000], under_window);
    EXPECT_EQ(machine.ram[0xC000], under_plane);
    EXPECT_EQ(std::memcmp(machine.gvram[0], content.data() + 0x4000, plane_size), 0);
    EXPECT_EQ(std::memcmp(machine.ram + 0xF300, content.data(), 0x400), 0);
    EXPECT_EQ(std::memcmp(machine.ram + 0x8400, content.data() + 0x400, 0x3C00), 0);
    EXPECT_EQ(locks, 0x4000 + 0x400 - 0xC8); // every plane byte, and the window's share of the text
}

TEST_F(MemoryDump, ASavedProgramGoesOn) {
    const bytes counting = {0x03, 0x13, 0x23, 0x3C, 0x08, 0x3D,
                            0xD9, 0x23, 0xC5, 0xC1, 0x18, 0xF4}; // loops at 0x9000
    std::memcpy(machine.ram + 0x9000, counting.data(), counting.size());
    main_cpu.PC = 0x9000, main_cpu.SP = 0xB000;
    main_cpu.IX = 0x1234, main_cpu.IY = 0x5678;
    const auto run = [](int steps) {
        for (int i = 0; i < steps; ++i) ASSERT_FALSE(main_cpu.z80_step(main_cpu));
    };
    run(1003);
    const z80_cpu saved = main_cpu;
    ASSERT_TRUE(memory_dump_save(path("dump.kiv"), main_cpu));
    run(500);
    const z80_cpu expected = main_cpu;
    for (int index = reg_bc; index <= reg_af_alt; ++index)
        EXPECT_NE(z80_register(saved, index), 0) << "register " << index << " would prove nothing";
    main_cpu.z80_reset(main_cpu);
    machine.machine_reset(machine);
    out(0x31, 0x02);
    main_cpu.IX = 0x1234, main_cpu.IY = 0x5678;
    ASSERT_TRUE(memory_dump_load(path("dump.kiv"), main_cpu));
    run(13); // RET, 8 POPs, 2 exchanges, LD SP, JP
    for (int index = 0; index < register_words; ++index)
        EXPECT_EQ(z80_register(main_cpu, index), z80_register(saved, index)) << "register " << index;
    run(500);
    for (int index = 0; index < register_words; ++index)
        EXPECT_EQ(z80_register(main_cpu, index), z80_register(expected, index)) << "register " << index;
}

TEST_F(MemoryDump, WhatCannotBeReadOrWrittenFails) {
    std::filesystem::create_directory(path("folder.kiv"));
    const auto before = snapshot();
    for (const std::string &name :
         {path("missing.kiv"), path("folder.kiv"), std::string(), std::string("/dev/zero")})
        EXPECT_FALSE(memory_dump_load(name, main_cpu)) << name;
    EXPECT_EQ(std::memcmp(&machine, before.get(), sizeof machine), 0);
    for (const std::string &name :
         {path("no folder/dump.kiv"), path("folder.kiv"), std::string(), std::string("/dev/full")})
        EXPECT_FALSE(memory_dump_save(name, main_cpu)) << name;
    write_file("old.kiv", {1, 2, 3});
    EXPECT_TRUE(memory_dump_save(path("old.kiv"), main_cpu)); // replaced as a whole
    EXPECT_EQ(read_file(path("old.kiv")).size(), 32612u);
}

} // namespace
