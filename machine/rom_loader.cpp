#include "machine/rom_loader.h"

#include "machine/kiv_machine.h"
#include "machine/read_exactly.h"
#include "support/kel_fstream.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

std::string load_rom_image(const std::string &path, uint8_t *area, uint32_t area_size) {
    kel_fstream file;
    if (!file.open(path.c_str(), 1, 0)) return path + ": " + platform::last_file_error();
    const uint32_t size = file.size();
    if (size > rom_size)
        return path + ": " + std::to_string(size) + " bytes, more than the " + std::to_string(rom_size) +
               " of a ROM";
    std::vector<uint8_t> image(size);
    if (!read_exactly(file, image.data(), size))
        return path + ": the " + std::to_string(size) + " bytes cannot be read";
    std::copy_n(image.data(), std::min(size, area_size), area);
    return {};
}

} // namespace

std::string load_rom_images(const std::string &folder) {
    const struct {
        const char *name;
        uint8_t *area;
        uint32_t size;
    } roms[] = {{nbasic_rom_name, machine.nbasic_rom, rom_size},
                {main_rom_name, machine.main_rom, rom_size},
                {ext_rom_name, machine.ext_rom, ext_rom_size}};
    for (const auto &rom : roms) {
        const std::string path = folder.empty() ? rom.name : folder + "/" + rom.name;
        std::string error = load_rom_image(path, rom.area, rom.size);
        if (!error.empty()) return error;
    }
    return {};
}
