// The machine's firmware: three ROM image files.
//   8801-kiv.rom  N-BASIC, 0x0000-0x7FFF          8801-zun.rom  Zun-BASIC, 0x0000-0x7FFF
//   8801-4th.rom  expansion ROM, 0x6000-0x7FFF: only its first 8192 bytes count
// A file holds 0 to 32768 bytes and is copied from the start of its area; there is no header and no
// checksum.
#pragma once

#include "machine/machine_boot.h"
#include <string>

constexpr char nbasic_rom_name[] = "8801-kiv.rom";
constexpr char main_rom_name[] = "8801-zun.rom";
constexpr char ext_rom_name[] = "8801-4th.rom";

// Reads the images of a folder (empty: the current directory) in the order N-BASIC, Zun-BASIC, expansion and
// hands each on. The first failure ends it. Empty when all three were read, else the file and the reason.
std::string read_rom_images(const std::string &folder,
                            void (*put)(rom_socket socket, const uint8_t *image, size_t size));

// The same, into the machine. A failure leaves that area and the later ones as they were.
std::string load_rom_images(const std::string &folder);
