#include "platform/profile.h"
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
