/* ROM images from files, for hosts that have files; a source of its own beside the library. */
#ifndef KIV_API_KIV_ROM_FILES_H
#define KIV_API_KIV_ROM_FILES_H

#include "api/kiv.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads 8801-kiv.rom, 8801-zun.rom and 8801-4th.rom of a folder ("" or null: the current one) into their
 * sockets, for the next boot. The first one that fails ends it: KIV_ERROR_ARGUMENT, and
 * kiv_rom_files_error names the file and the reason. */
KIV_API kiv_result kiv_rom_files(const char *folder);
KIV_API const char *kiv_rom_files_error(void);

#ifdef __cplusplus
}
#endif

#endif
