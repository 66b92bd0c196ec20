#include "api/kiv.h"
#include "api/snapshot.h"
#include "tests/fuzz/fuzz_targets.h"

#include <cstdlib>
#include <vector>

namespace {

constexpr size_t edit_bytes = 5; // where (3, low first), what, how

std::vector<uint8_t> snapshot() {
    std::vector<uint8_t> taken(kiv_snapshot_size(KIV_SNAPSHOT_WHOLE));
    kiv_snapshot_save(KIV_SNAPSHOT_WHOLE, taken.data(), taken.size());
    return taken;
}

// A machine that has drawn, sounded and read a tape.
std::vector<uint8_t> whole_snapshot() {
    const uint8_t rom[] = {
        0x31, 0x00, 0xF0, 0x3E, 0x20, 0xD3, 0x40, 0xD3, 0x0F, 0xDB, 0x20, 0xD3,
        0x20, 0x3C, 0xD3, 0x02, 0xD3, 0x5C, 0x32, 0x00, 0xC0, 0x18, 0xEB}; // ports, for ever
    const uint8_t tape[] = {0x3A, 0xC0, 0x00, 0x00, 0x3A, 0x02, 0x11, 0x22, 0x00};
    if (kiv_rom(KIV_ROM_MAIN, rom, sizeof rom) != KIV_OK || kiv_boot() != KIV_OK) std::abort();
    kiv_tape_insert(tape, sizeof tape);
    kiv_tape_record(1);
    for (int i = 0; i < 3; ++i) kiv_run_frame();
    return snapshot();
}

} // namespace

// The input says how a good snapshot is spoilt; its checksum is made good again. What is refused changes
// nothing, what is taken runs.
int fuzz_snapshot(const uint8_t *data, size_t size) {
    static const std::vector<uint8_t> good = whole_snapshot();
    constexpr size_t memory = 0x1C800, behind_memory = 100 + memory; // RAM, planes and glyphs say little
    if (kiv_snapshot_load(good.data(), good.size()) != KIV_OK) std::abort();
    std::vector<uint8_t> spoilt = good;
    for (; size >= edit_bytes && !spoilt.empty(); size -= edit_bytes, data += edit_bytes) {
        const size_t where = data[0] | data[1] << 8 | data[2] << 16;
        const size_t from = data[4] & 1 && spoilt.size() > behind_memory ? behind_memory : 0;
        const size_t at = from + where % (spoilt.size() - from);
        if (data[4] == 0xFE)
            spoilt.resize(at);
        else if (data[4] == 0xFC)
            spoilt.insert(spoilt.begin() + static_cast<ptrdiff_t>(at), data[3]);
        else
            spoilt[at] = data[3];
    }
    snapshot_seal(spoilt.data(), spoilt.size());
    if (kiv_snapshot_load(spoilt.data(), spoilt.size()) != KIV_OK) {
        if (snapshot() != good) std::abort();
        return 0;
    }
    kiv_run(30'000);
    kiv_pixels();
    kiv_text_screen(nullptr, 0);
    snapshot();
    return 0;
}
