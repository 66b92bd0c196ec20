#include "platform/profile.h"
#include "support/kel_dib.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/scratch_file.h"

#include <cstdlib>

int fuzz_settings(const uint8_t *data, size_t size) {
    static scratch_file file(".ini");
    file.fill(data, size);
    for (const char *key : {"z80_no_wait", "dma_gain", "hard_volume", "soft_volume", "boot_rom", ""})
        platform::profile_int(file.path(), "Default", key, -4);
    if (!platform::write_profile(file.path(), "Default", {{"dma_gain", "17"}, {"hard_volume", "-9"}}))
        std::abort();
    // Whatever stood in the file, what was written is what is read.
    if (platform::profile_int(file.path(), "default", "DMA_GAIN", 0) != 17) std::abort();
    if (platform::profile_int(file.path(), "Default", "hard_volume", 0) != -9) std::abort();
    return 0;
}

int fuzz_bitmap(const uint8_t *data, size_t size) {
    static scratch_file file(".bmp");
    file.fill(data, size);
    kel_dib bitmap;
    if (!bitmap.load_file(file.path().c_str())) return 0;
    uint32_t sum = 0;
    for (int y = -1; y <= bitmap.height() && y < 300; ++y)
        for (int x = -1; x <= bitmap.width() && x < 300; ++x) {
            sum += bitmap.get_pixel(x, y);
            bitmap.set_pixel(x, y, 1);
        }
    return sum == 1 ? 0 : 0;
}
