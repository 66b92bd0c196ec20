// The images of the open ROM set, made of firmware/ by the build.
#pragma once

#include <cstddef>
#include <cstdint>

namespace embedded {

extern const uint8_t main_rom[];
extern const size_t main_rom_size;
extern const uint8_t nbasic_rom[];
extern const size_t nbasic_rom_size;
extern const uint8_t ext_rom[];
extern const size_t ext_rom_size;

} // namespace embedded
