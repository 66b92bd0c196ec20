// Disassembler, assembler and processor agree on every instruction; pasmo agrees with the three.
#include "debug/assembler.h"
#include "debug/debug_error.h"
#include "debug/disassembler.h"

#include "cpu/z80_cpu.h"
#include "tests/temporary_folder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

constexpr uint16_t place = 0x8100;
uint8_t memory[0x10000];

uint8_t memory_at(uint16_t address) { return memory[address]; }

disassembled at_place() { return disassemble(place, memory_at); }

// Every opcode of every page, its operands as small, negative and large numbers.
template <class Look> void every_instruction(Look look) {
    for (int page = 0; page < opcode_pages; ++page)
        for (int opcode = 0; opcode < 256; ++opcode)
            for (const char operand : {'\x05', '\x7F', '\x80', '\xFE'}) {
                const std::string prefix = page_prefix(static_cast<opcode_page>(page));
                std::string bytes = prefix;
                if (prefix.size() == 2) bytes += operand;
                bytes += static_cast<char>(opcode);
                bytes.resize(6, operand);
                std::copy(bytes.begin(), bytes.end(), memory + place);
                look();
            }
}

TEST(Assembler, GivesBackEveryInstruction) {
    const symbol_table none;
    every_instruction([&] {
        const disassembled d = at_place();
        const std::vector<uint8_t> bytes(d.bytes, d.bytes + d.length);
        ASSERT_EQ(assemble(d.text + " ; " + d.note, place, none), bytes) << d.text;
    });
}

// The processor runs what is shown: it stops where the text says so, and goes on behind the last byte.
TEST(Disassembler, SaysWhatTheProcessorDoes) {
    z80_cpu cpu{};
    every_instruction([&] {
        const disassembled d = at_place();
        z80_install(
            cpu, [](uint16_t address, uint32_t *) { return memory[address]; },
            [](uint16_t, uint8_t, uint32_t *) {}, [](uint16_t) { return uint8_t{0}; },
            [](uint16_t, uint8_t) {});
        cpu.PC = place;
        cpu.BC = 1; // block instructions end at once
        cpu.z80_step(cpu);
        const int stop = d.kind == instruction_kind::undefined       ? stop_undefined
                         : d.kind == instruction_kind::unimplemented ? stop_unimplemented
                         : flow_of(d.bytes) == flow::halt            ? stop_halt
                                                                     : stop_none;
        ASSERT_EQ(cpu.stop_reason, stop) << d.text << " " << d.note;
        const flow f = flow_of(d.bytes);
        if (cpu.PC != static_cast<uint16_t>(place + d.length)) {
            ASSERT_TRUE(f == flow::jump || f == flow::call || f == flow::restart || f == flow::returns)
                << d.text;
        }
    });
}

TEST(Assembler, PasmoAgrees) {
    if (std::system("command -v pasmo >/dev/null") != 0)
        GTEST_SKIP() << "pasmo, which the build needs, is NOT INSTALLED: nothing was compared";
    temporary_folder folder;
    std::string source = " org $1000\n", expected; // without copies of rotations, which it has no form for
    int lines = 0;
    every_instruction([&] {
        const auto here = static_cast<uint16_t>(0x1000 + expected.size());
        std::copy(memory + place, memory + place + 6, memory + here);
        const disassembled d = disassemble(here, memory_at);
        if (d.text.starts_with("DB ") || (d.length == 4 && d.text.find("),") == d.text.size() - 3)) return;
        source += " " + d.text + "\n";
        expected.append(reinterpret_cast<const char *>(d.bytes), d.length);
        ++lines;
    });
    ASSERT_GT(lines, 3000);
    put_file(folder / "all.asm", source);
    const std::string run = "cd '" + folder.path + "' && pasmo all.asm all.bin >said 2>&1";
    ASSERT_EQ(std::system(run.c_str()), 0) << get_file(folder / "said");
    EXPECT_EQ(get_file(folder / "all.bin"), expected);
}

TEST(Assembler, TakesWhatPeopleWrite) {
    symbol_table symbols;
    symbols.add("start", 0x8100);
    symbols.add("score", 0x9000);
    const struct {
        const char *line;
        std::vector<uint8_t> bytes;
    } cases[] = {
        {"ld a,12h", {0x3E, 0x12}},
        {" LD  A , (score+1) ; the second digit", {0x3A, 0x01, 0x90}},
        {"ld a,(2+3)*2-10", {0x3E, 0x00}},
        {"jr start", {0x18, 0xFE}},
        {"djnz start+0x80", {0x10, 0x7E}},
        {"call nz,start", {0xC4, 0x00, 0x81}},
        {"ld (ix),'A'", {0xDD, 0x36, 0x00, 0x41}},
        {"bit 3+1,(iy-2)", {0xFD, 0xCB, 0xFE, 0x66}},
        {"rl (ix+1),c", {0xDD, 0xCB, 0x01, 0x11}},
        {"sub a,b", {0x90}},
        {"add 5", {0xC6, 0x05}},
        {"jp ix", {0xDD, 0xE9}},
        {"rst 8", {0xCF}},
        {"ex af,af'", {0x08}},
        {"db \"HI, you\",0,-1", {'H', 'I', ',', ' ', 'y', 'o', 'u', 0, 0xFF}},
        {"dw start,0x1234", {0x00, 0x81, 0x34, 0x12}},
        {"in a,($40)", {0xDB, 0x40}},
    };
    for (const auto &c : cases) EXPECT_EQ(assemble(c.line, place, symbols), c.bytes) << c.line;
    const struct {
        const char *line, *complaint;
    } wrong[] = {
        {"", "an instruction is wanted"},
        {"ld a,300", "300 is not within -128 and 255"},
        {"jr 0x9000", "3838 is not within"},
        {"ld (ix+128),0", "128 is not within"},
        {"ld a,nothing", "no register, symbol or number nothing"},
        {"ld hl,de", "no register, symbol or number de"},
        {"bit 8,a", "no such instruction"},
        {"mov a,5", "no such instruction"},
        {"ld a,(1", "')' is missing"},
        {"db", "values are missing"},
        {"ld a,1 2", "'2' is not understood"},
    };
    for (const auto &c : wrong) {
        try {
            assemble(c.line, place, symbols);
            ADD_FAILURE() << c.line << " was taken";
        } catch (const debug_error &e) {
            EXPECT_NE(std::string(e.what()).find(c.complaint), std::string::npos)
                << c.line << ": " << e.what();
        }
    }
}

TEST(Symbols, FilesOfThreeAssemblersAndTheirListings) {
    symbol_table symbols;
    EXPECT_EQ(symbols.add_symbols("SCREEN\t\tEQU 0F3C8H\nstart\t\tEQU 08000H\n"), 2u); // pasmo
    EXPECT_EQ(symbols.add_symbols("; made\r\nloop:     EQU 0x00008003\r\n"), 1u);      // sjasmplus
    EXPECT_EQ(symbols.add_symbols("print = $8010 ; addr, public, , main, code, main.asm:12\n"
                                  "DEFC\tmax = $20\n"),
              2u); // z88dk
    EXPECT_EQ(symbols.add_symbols("LD A,5\nhello world\n= 5\nx EQU y\n"), 0u);
    EXPECT_EQ(symbols.find("SCREEN"), 0xF3C8);
    EXPECT_EQ(symbols.name_of(0x8003), "loop");
    EXPECT_EQ(symbols.place_of(0x8015), "print+5");
    EXPECT_EQ(symbols.place_of(0x9000), "$9000");
    EXPECT_EQ(symbols.find("nobody"), std::nullopt);

    EXPECT_EQ(symbols.add_listing("\t\tORG 8000\n8000:\t\tlabel start\n8000:3E12\tLD A, 12\n"
                                  "8002:01020304\tDEFB of 10 bytes\n8006:05060708\n",
                                  "a.lst"),
              2u);
    EXPECT_EQ(
        symbols.add_listing("  12   9000 3E 05        ld a,5 ; five\n  13+  9002              ; no bytes\n"
                            "14    9002  CD 00 90     call start\n",
                            "b.lst"),
        2u);
    ASSERT_NE(symbols.line_of(0x9002), nullptr);
    EXPECT_EQ(symbols.line_of(0x9002)->number, 3u);
    EXPECT_EQ(symbols.line_of(0x9000)->text, "ld a,5 ; five");
    EXPECT_EQ(symbols.line_of(0x8000)->text, "LD A, 12");
    EXPECT_EQ(symbols.line_of(0x8001), nullptr);
}

} // namespace
