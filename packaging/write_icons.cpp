// Writes the program's icon as PNG files, one a size: write_icons FOLDER SIZE... Each is made of the largest
// drawn picture that goes into it a whole number of times, or of the largest there is, cut down by whole
// pixels.
#include "resources/resources.h"

#include <cstdio>
#include <cstdlib>
#include <png.h>
#include <string>
#include <vector>

namespace {

const icon_picture *source_for(const std::vector<icon_picture> &pictures, int size) {
    const icon_picture *best = nullptr;
    for (const icon_picture &p : pictures)
        if ((size % p.side == 0 || p.side % size == 0) && (best == nullptr || p.side > best->side)) best = &p;
    return best;
}

bool write_icon(const icon_picture &from, int size, const std::string &path) {
    std::vector<uint8_t> rgba;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x) {
            const auto at = static_cast<size_t>(y * from.side / size * from.side + x * from.side / size);
            const uint32_t argb = from.pixels[at];
            for (const int shift : {16, 8, 0, 24}) rgba.push_back(static_cast<uint8_t>(argb >> shift));
        }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = image.height = static_cast<png_uint_32>(size);
    image.format = PNG_FORMAT_RGBA;
    return png_image_write_to_file(&image, path.c_str(), 0, rgba.data(), 0, nullptr) != 0;
}

} // namespace

int main(int argc, char **argv) {
    register_program_resources();
    const auto pictures =
        icon_pictures(platform::find_resource(platform::resource_type::icon, icon_resource_id));
    for (int i = 2; i < argc; ++i) {
        const int size = std::atoi(argv[i]);
        const icon_picture *from = size > 0 ? source_for(pictures, size) : nullptr;
        const std::string path = std::string(argv[1]) + "/" + argv[i] + ".png";
        if (from != nullptr && write_icon(*from, size, path)) continue;
        std::fprintf(stderr, "write_icons: %s cannot be made\n", path.c_str());
        return 1;
    }
    return 0;
}
