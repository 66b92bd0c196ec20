// Dump files: their bytes, what is refused, and a program that goes on where it was saved.
#include "machine_fixture.h"

#include "machine/memory_dump.h"

#include <algorithm>

namespace {

struct MemoryDump : Machine {
    // A dump-like file: byte o is a mix of o, so that a misplaced byte shows.
    static bytes pattern(size_t size) {
        bytes content(size);
        for (size_t i = 0; i < size; ++i) content[i] = static_cast<uint8_t>(i * 13 + i / 256 + 1);
        return content;
    }
};

TEST_F(MemoryDump, ASavedProgramGoesOnWhereItWas) {
    const bytes ram = pattern(0x8000);
    std::copy(ram.begin(), ram.end(), machine.ram + 0x8000);
    out(0x5C, 0); // a selected plane never shows in a dump
    main_cpu.BC = 0x0102, main_cpu.DE = 0x0304, main_cpu.HL = 0x0506, main_cpu.AF = 0x0708;
    main_cpu.BC_alt = 0x1112, main_cpu.DE_alt = 0x1314, main_cpu.HL_alt = 0x1516, main_cpu.AF_alt = 0x1718;
    main_cpu.SP = 0xABCD, main_cpu.PC = 0x89AB;
    z80_cpu saved = main_cpu;
    const std::string name = write_file("dump.kiv", {1, 2, 3}); // replaced as a whole
    ASSERT_TRUE(memory_dump_save(name, main_cpu));
    bytes expected(ram.begin(), ram.begin() + 0x7F3D);
    const bytes tail = {0xC9, 0x50, 0xFF, 0xC1, 0xD1, 0xE1, 0xF1, 0x08, 0xD9, 0xC1, 0xD1, 0xE1, 0xF1,
                        0x31, 0xCD, 0xAB, 0xC3, 0xAB, 0x89, 0x40, 0xFF, 0x12, 0x11, 0x14, 0x13, 0x16,
                        0x15, 0x18, 0x17, 0x02, 0x01, 0x04, 0x03, 0x06, 0x05, 0x08, 0x07, 0,    0};
    expected.insert(expected.end(), tail.begin(), tail.end());
    EXPECT_EQ(read_file("dump.kiv"), expected);
    for (const std::string &bad : {folder / "no folder/dump", folder.path, std::string("/dev/full")})
        EXPECT_FALSE(memory_dump_save(bad, main_cpu)) << bad;

    main_cpu.z80_reset(main_cpu);
    machine.machine_reset(machine);
    out(0x31, 0x02);
    main_cpu.IX = saved.IX = 0x1234, main_cpu.IY = saved.IY = 0x5678;
    ASSERT_TRUE(memory_dump_load(name, main_cpu));
    for (int i = 0; i < 13; ++i) EXPECT_FALSE(main_cpu.z80_step(main_cpu)); // RET, POPs, ... JP
    for (int index = 0; index < register_words; ++index)
        EXPECT_EQ(z80_register(main_cpu, index), z80_register(saved, index)) << "register " << index;
    EXPECT_EQ(std::memcmp(machine.ram + 0x8000, ram.data(), 0x7F3D), 0);
}

// Requests arrive at every step; each machine was left in another state by the program that ran before.
TEST_F(MemoryDump, NoInterruptDisturbsTheRestoringAndTheProgramGoesOnWithThem) {
    main_cpu.SP = 0xABCD, main_cpu.PC = 0x89AB, main_cpu.HL_alt = 0x5A5A, main_cpu.AF = 0x1234;
    const z80_cpu saved = main_cpu;
    const std::string name = folder / "dump.kiv", foreign = write_file("foreign.kiv", pattern(32768));
    ASSERT_TRUE(memory_dump_save(name, main_cpu));
    const struct {
        const char *what;
        uint8_t IM, IFF;
        bool accepted, ready; // an interrupt not yet entered; a tape byte not yet read
    } cases[] = {{"enabled", 1, 1, false, false},
                 {"in a handler", 1, 0, false, false},
                 {"accepted, IM 0", 0, 1, true, false},
                 {"accepted, IM 1", 1, 1, true, true},
                 {"accepted, IM 2", 2, 1, true, false}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        SetUp();
        out({{0x31, 0x02}, {0xE6, 0x07}, {0xE4, 0x08}});
        main_cpu.IM = c.IM, main_cpu.IFF1 = main_cpu.IFF2 = c.IFF;
        if (c.accepted) main_cpu.z80_interrupt(main_cpu, 0);
        machine.usart_byte_ready = c.ready;
        ASSERT_TRUE(memory_dump_load(name, main_cpu));
        EXPECT_EQ(machine.interrupt_pending, c.ready);
        const bytes ram(machine.ram, machine.ram + 0x10000);
        for (int i = 0; i < 13; ++i) {
            pass(7000); // the 1/600 s clock
            EXPECT_EQ(main_cpu.z80_interrupt(main_cpu, 1), 1u) << i;
            EXPECT_FALSE(main_cpu.z80_step(main_cpu));
        }
        EXPECT_EQ(main_cpu.PC, saved.PC);
        EXPECT_EQ(main_cpu.SP, saved.SP);
        EXPECT_EQ(main_cpu.HL_alt, saved.HL_alt);
        EXPECT_EQ(main_cpu.AF, saved.AF);
        EXPECT_EQ(std::memcmp(machine.ram, ram.data(), ram.size()), 0);
        EXPECT_EQ(main_cpu.IFF1 + main_cpu.IFF2, 2);
        pass(0);
        EXPECT_EQ(main_cpu.stop_flags, pending_interrupt) << "the one that waited";
        main_cpu.IFF1 = 1;
        ASSERT_TRUE(memory_dump_load(foreign, main_cpu));
        EXPECT_EQ(main_cpu.IFF1, 1) << "no such routine: left as it is";
    }
}

TEST_F(MemoryDump, LengthDecidesHowMuchIsReadAndTheMapWhereItGoes) {
    const auto before = snapshot();
    const z80_cpu cpu_before = main_cpu;
    for (const std::string &name : {folder / "missing", folder.path, write_file("short", pattern(32575))}) {
        EXPECT_FALSE(memory_dump_load(name, main_cpu)) << name;
        EXPECT_EQ(std::memcmp(&machine, before.get(), sizeof machine), 0) << name;
        EXPECT_EQ(std::memcmp(&main_cpu, &cpu_before, sizeof main_cpu), 0) << name;
    }
    for (const size_t size : {32576u, 32612u, 32767u, 32768u, 32769u}) {
        const bytes content = pattern(size);
        SetUp();
        out({{0x5C, 0}, {0x70, 0xF3}}); // plane 0 at 0xC000; 0x8000-0x83FF shows the text
        const auto expected = snapshot();
        std::memcpy(expected->ram + 0xF300, content.data(), 0x400);
        std::memcpy(expected->ram + 0x8400, content.data() + 0x400, 0x3C00);
        std::memcpy(expected->gvram[0], content.data() + 0x4000, std::min<size_t>(size, 0x8000) - 0x4000);
        EXPECT_TRUE(memory_dump_load(write_file("dump.kiv", content), main_cpu)) << size << " bytes";
        EXPECT_EQ(std::memcmp(&machine, expected.get(), sizeof machine), 0) << size << " bytes";
        EXPECT_EQ(main_cpu.PC, 0xFF3D) << size << " bytes";
        EXPECT_EQ(main_cpu.SP, content[0x7F3E] | content[0x7F3F] << 8) << size << " bytes";
    }
    // Under the lock: every plane byte, and the window's share of the text.
    EXPECT_EQ(seen.size(), 2u * (0x4000 + 0x400 - 0xC8));
}

} // namespace
