// A machine with a program of the test's own, written in assembler, under the debug driver.
#pragma once

#include "debug/assembler.h"
#include "debug/debug_driver.h"
#include "debug/disassembler.h"
#include "tests/api/machine_at_hand.h"

#include <map>

// Lines of one instruction each, "name:" lines give symbols to the lines behind them and before.
inline bytes assembled(const std::vector<std::string> &lines, symbol_table &symbols) {
    bytes image;
    for (int round = 0; round < 2; ++round) { // the second knows the symbols
        image.clear();
        for (const std::string &line : lines) {
            const auto here = static_cast<uint16_t>(image.size());
            if (line.ends_with(":")) {
                if (round == 0) symbols.add(line.substr(0, line.size() - 1), here);
                continue;
            }
            symbol_table guess = symbols;
            for (const auto &name : lines)
                if (round == 0 && name.ends_with(":")) guess.add(name.substr(0, name.size() - 1), here);
            const bytes code = assemble(line, here, round == 0 ? guess : symbols);
            image.insert(image.end(), code.begin(), code.end());
        }
    }
    return image;
}

struct DebuggedMachine : testing::Test {
    debug_driver driver;

    void boot(const std::vector<std::string> &lines) { boot_rom(assembled(lines, driver.symbols)); }
    void boot_rom(bytes rom) {
        rom.resize(0x8000);
        put_rom(KIV_ROM_MAIN, rom);
        kiv_seed(1);
        ASSERT_EQ(kiv_boot(), KIV_OK);
        driver.forget_history();
    }
    uint16_t at(const std::string &name) const { return driver.symbols.find(name).value(); }
    uint32_t break_at(const std::string &name) {
        return driver.add({.kind = stop_kind::address, .first = at(name), .last = at(name)});
    }
    // To where the processor has stopped or a stop point stops it, two seconds of the machine at most.
    stop_report go() {
        driver.go_on();
        return driver.run_slice(8000000);
    }
    stop_report step(aim_kind kind) {
        driver.aim(kind);
        return driver.run_slice(8000000);
    }
    static uint16_t pc() { return debug_driver::next_address(); }
    static uint32_t reg(int index) { return kiv_get_register(index); }
};
