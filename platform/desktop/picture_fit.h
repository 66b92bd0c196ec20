// Where a picture stands on a screen area.
#pragma once

#include <algorithm>

namespace platform {

struct placement {
    int x, y, width, height; // in device pixels of the area
};

// The picture enlarged by the greatest whole number that fits, centred; every pixel stays a square of its
// own. Where not even its own size fits, it is shrunk with its proportions kept.
constexpr placement fit_picture(int picture_width, int picture_height, int area_width, int area_height) {
    if (picture_width <= 0 || picture_height <= 0 || area_width <= 0 || area_height <= 0) return {0, 0, 0, 0};
    const int factor = std::min(area_width / picture_width, area_height / picture_height);
    int width = picture_width * factor, height = picture_height * factor;
    if (factor == 0) {
        const bool by_width = static_cast<long long>(area_width) * picture_height <=
                              static_cast<long long>(area_height) * picture_width;
        width = by_width ? area_width
                         : std::max(1, static_cast<int>(static_cast<long long>(picture_width) * area_height /
                                                        picture_height));
        height = by_width ? std::max(1, static_cast<int>(static_cast<long long>(picture_height) * area_width /
                                                         picture_width))
                          : area_height;
    }
    return {(area_width - width) / 2, (area_height - height) / 2, width, height};
}

} // namespace platform
