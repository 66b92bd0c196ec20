// The firmware of the tests (test_rom.asm says what it does) and the ROM images made of it.
#pragma once

#include "tests/temporary_folder.h"
#include <cstdint>
#include <string>

constexpr uint8_t test_rom[] = {
#include "test_rom.inc" // assembled by the build
};

// The three ROM images: the firmware as Zun-BASIC, and nothing to run in the others.
inline void write_test_roms(const std::string &folder) {
    put_file(folder + "/8801-zun.rom", {std::begin(test_rom), std::end(test_rom)});
    put_file(folder + "/8801-kiv.rom", std::string(8192, '\x76'));
    put_file(folder + "/8801-4th.rom", std::string(8192, '\x34'));
}
