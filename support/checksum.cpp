#include "support/checksum.h"

#include "support/little_endian.h"
#include <bit>
#include <cstring>

namespace {

constexpr uint64_t odd_factor = 0x9E3779B97F4A7C15; // 2^64 divided by the golden ratio
constexpr size_t lanes = 4, block = 8 * lanes;

uint64_t mixed(uint64_t sum, uint64_t word) { return std::rotl((sum ^ word) * odd_factor, 29); }

void add_block(uint64_t *sums, const uint8_t *bytes) {
    for (size_t lane = 0; lane < lanes; ++lane)
        sums[lane] = mixed(sums[lane], get_little_endian<uint64_t>(bytes + 8 * lane));
}

} // namespace

uint64_t checksum64(const uint8_t *bytes, size_t size) {
    uint64_t sums[lanes] = {1, 2, 3, 4};
    size_t left = size;
    for (; left >= block; left -= block, bytes += block) add_block(sums, bytes);
    if (left != 0) { // filled up with zeroes; the size tells them from real ones
        uint8_t rest[block] = {};
        std::memcpy(rest, bytes, left);
        add_block(sums, rest);
    }
    uint64_t sum = size;
    for (const uint64_t lane : sums) sum = mixed(sum, lane);
    return sum ^ sum >> 32;
}
