#include "machine/rom_loader.h"

#include "machine/read_exactly.h"
#include "support/kel_fstream.h"

#include <vector>

namespace {

std::string read_rom_image(const std::string &path, std::vector<uint8_t> &image) {
    kel_fstream file;
    if (!file.open(path.c_str(), 1, 0)) return path + ": " + platform::last_file_error();
    const uint32_t size = file.size();
    if (size > largest_rom_image)
        return path + ": " + std::to_string(size) + " bytes, more than the " +
               std::to_string(largest_rom_image) + " of a ROM";
    image.resize(size);
    if (!read_exactly(file, image.data(), size))
        return path + ": the " + std::to_string(size) + " bytes cannot be read";
    return {};
}

} // namespace

std::string read_rom_images(const std::string &folder,
                            void (*put)(rom_socket socket, const uint8_t *image, size_t size)) {
    const struct {
        const char *name;
        rom_socket socket;
    } roms[] = {{nbasic_rom_name, rom_socket::nbasic},
                {main_rom_name, rom_socket::main},
                {ext_rom_name, rom_socket::ext}};
    for (const auto &rom : roms) {
        std::vector<uint8_t> image;
        const std::string path = folder.empty() ? rom.name : folder + "/" + rom.name;
        if (std::string error = read_rom_image(path, image); !error.empty()) return error;
        put(rom.socket, image.data(), image.size());
    }
    return {};
}

std::string load_rom_images(const std::string &folder) { return read_rom_images(folder, machine_put_rom); }
