#include "resources/resources.h"

#include "resources/embedded.h"

namespace {

constexpr uint8_t low(unsigned number) { return number & 0xFF; }
constexpr uint8_t high(unsigned number) { return number >> 8 & 0xFF; }
constexpr uint8_t version_block[8] = {
    low(KIV_VERSION_MAJOR), high(KIV_VERSION_MAJOR), low(KIV_VERSION_MINOR), high(KIV_VERSION_MINOR),
    low(KIV_VERSION_PATCH), high(KIV_VERSION_PATCH), low(KIV_VERSION_TWEAK), high(KIV_VERSION_TWEAK)};

// Reads little-endian numbers off the front of a block; past its end `ok` turns false and zeroes come.
struct reader {
    const uint8_t *at;
    size_t left;
    bool ok = true;

    uint32_t byte() {
        if (left == 0) {
            ok = false;
            return 0;
        }
        --left;
        return *at++;
    }
    uint32_t word() {
        const uint32_t low = byte();
        return low | byte() << 8;
    }
    uint32_t dword() {
        const uint32_t low = word();
        return low | word() << 16;
    }
};

} // namespace

void register_program_resources() {
    using namespace platform;
    register_resource(resource_type::font, font_resource_id, {embedded::font, embedded::font_size});
    register_resource(resource_type::bitmap, pause_resource_id,
                      {embedded::pause_picture, embedded::pause_picture_size});
    register_resource(resource_type::icon, icon_resource_id, {embedded::icon, embedded::icon_size});
    register_resource(resource_type::version, version_resource_id, {version_block, sizeof version_block});
}

std::vector<icon_picture> icon_pictures(const platform::resource &icon) {
    reader in{icon.data, icon.data ? icon.size : 0};
    const uint32_t count = in.word();
    uint32_t colours[16] = {};
    const uint32_t colour_count = in.word();
    if (colour_count > 16) return {};
    for (uint32_t i = 0; i < colour_count; ++i) colours[i] = in.dword();

    std::vector<icon_picture> pictures;
    for (uint32_t n = 0; n < count && in.ok; ++n) {
        const uint32_t drawn = in.word(), times = in.word();
        if (drawn > 256 || drawn % 2 != 0 || times > 16 || in.left < drawn * drawn / 2) return {};
        const uint32_t side = drawn * times;
        icon_picture picture{static_cast<int>(side), std::vector<uint32_t>(side * side)};
        for (uint32_t y = 0; y < side; ++y)
            for (uint32_t x = 0; x < side; ++x) {
                const uint32_t index = y / times * drawn + x / times;
                const uint32_t pair = in.at[index / 2];
                picture.pixels[y * side + x] = colours[index % 2 == 0 ? pair >> 4 : pair & 15];
            }
        in.at += drawn * drawn / 2;
        in.left -= drawn * drawn / 2;
        pictures.push_back(std::move(picture));
    }
    if (!in.ok || in.left != 0) return {};
    return pictures;
}
