#include "platform/profile.h"
#include "platform/resources.h"
#include "support/kel_dib.h"
#include "tests/fuzz/fuzz_targets.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

constexpr uint16_t bitmap_id = 900;
constexpr size_t file_header_bytes = 14;
constexpr int most_looked_at = 64; // pixels each way; more takes long and finds nothing new

// Everything that a bitmap lets one see.
uint32_t look_at_all(kel_dib &bitmap) {
    uint32_t sum = 0;
    const int width = std::min(bitmap.width(), most_looked_at);
    const int height = std::min(bitmap.height(), most_looked_at);
    for (int y = -1; y <= height; ++y)
        for (int x = -1; x <= width; ++x) {
            sum += bitmap.get_pixel(x, y);
            sum += static_cast<uint32_t>(bitmap.set_pixel(x, y, 1));
        }
    for (int i = 0; i < bitmap.colour_count(); ++i) sum += bitmap.palette_entries()[i].red;
    if (bitmap.height() > 0) {
        const auto rows = static_cast<size_t>(bitmap.stride()) * static_cast<size_t>(bitmap.height());
        if (rows > 0) sum += bitmap.bits()[0] + bitmap.bits()[rows - 1];
    }
    return sum;
}

} // namespace

int fuzz_settings(const uint8_t *data, size_t size) {
    const std::string file = put_input("KIV.INI", data, size);
    for (const char *key : {"z80_no_wait", "dma_gain", "hard_volume", "soft_volume", "boot_rom", ""})
        platform::profile_int(file, "Default", key, -4);
    if (!platform::write_profile(file, "Default", {{"dma_gain", "17"}, {"hard_volume", "-9"}})) std::abort();
    // Whatever stood in the file, what was written is what is read.
    if (platform::profile_int(file, "default", "DMA_GAIN", 0) != 17) std::abort();
    if (platform::profile_int(file, "Default", "hard_volume", 0) != -9) std::abort();
    return 0;
}

int fuzz_bitmap(const uint8_t *data, size_t size) {
    static volatile uint32_t seen; // so that nothing of the looking is left out
    const std::string file = put_input("picture.bmp", data, size);
    kel_dib bitmap;
    if (bitmap.load_file(file)) seen = seen + look_at_all(bitmap);
    bitmap.unload();
    // The same bytes without the file's header, in a block of just that size, where a read past the end
    // shows.
    const std::vector<uint8_t> packed(data + std::min(size, file_header_bytes), data + size);
    platform::register_resource(platform::resource_type::bitmap, bitmap_id, {packed.data(), packed.size()});
    if (bitmap.load_resource(bitmap_id)) seen = seen + look_at_all(bitmap);
    platform::register_resource(platform::resource_type::bitmap, bitmap_id, {});
    return 0;
}
