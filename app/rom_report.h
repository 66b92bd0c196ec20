// What a folder holds of the three ROM images.
#pragma once

#include <string>

// A line for each: name, folder, and what is wrong with it or that it is good.
std::string rom_report(const std::string &folder);

// The first image that cannot be used, with its folder, and why; empty when all can.
std::string rom_fault(const std::string &folder);

// True when any of the three is there. Empty: the current directory.
bool any_rom_in(const std::string &folder);

// The folder of the ROM set that comes with Kiv; empty when this copy has none.
std::string open_rom_folder();
