#include "api/kiv_open_roms.h"

#include "resources/embedded_roms.h"

kiv_result kiv_open_roms(void) {
    const kiv_result results[] = {kiv_rom(KIV_ROM_MAIN, embedded::main_rom, embedded::main_rom_size),
                                  kiv_rom(KIV_ROM_NBASIC, embedded::nbasic_rom, embedded::nbasic_rom_size),
                                  kiv_rom(KIV_ROM_EXT, embedded::ext_rom, embedded::ext_rom_size)};
    for (const kiv_result result : results)
        if (result != KIV_OK) return result;
    return KIV_OK;
}
