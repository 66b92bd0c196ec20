#include "api/kiv_rom_files.h"

#include "machine/rom_loader.h"
#include <string>

namespace {

std::string error;

} // namespace

kiv_result kiv_rom_files(const char *folder) {
    static_assert(KIV_ROM_MAIN == static_cast<int>(rom_socket::main) &&
                  KIV_ROM_EXT == static_cast<int>(rom_socket::ext));
    error = read_rom_images(folder != nullptr ? folder : "",
                            [](rom_socket socket, const uint8_t *image, size_t size) {
                                kiv_rom(static_cast<int32_t>(socket), image, size);
                            });
    return error.empty() ? KIV_OK : KIV_ERROR_ARGUMENT;
}

const char *kiv_rom_files_error(void) { return error.c_str(); }
