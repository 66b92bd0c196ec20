// Where a picture stands on a screen area.
#pragma once

#include <algorithm>

namespace platform {

struct placement {
    int x, y, width, height; // in device pixels of the area
    bool operator==(const placement &) const = default;
};

// The picture as large as the area takes it, centred, its proportions those of picture_width x shape_height.
// Where a whole enlargement (`whole_factors`: the greatest one, else one that fills the area but for a few
// pixels) does, every pixel of the picture is the same number of pixels wide.
constexpr placement fit_picture(int picture_width, int picture_height, int shape_height, int area_width,
                                int area_height, bool whole_factors) {
    if (picture_width <= 0 || picture_height <= 0 || shape_height <= 0 || area_width <= 0 || area_height <= 0)
        return {0, 0, 0, 0};
    constexpr int few_pixels = 3;
    using wide = long long;
    const bool by_width = wide{area_width} * shape_height <= wide{area_height} * picture_width;
    int width = by_width ? area_width : static_cast<int>(wide{picture_width} * area_height / shape_height);
    int height = by_width ? static_cast<int>(wide{shape_height} * area_width / picture_width) : area_height;
    const int factor = std::min(area_width / picture_width, area_height / shape_height);
    if (factor >= 1 && (whole_factors || (by_width ? width - picture_width * factor <= few_pixels
                                                   : height - shape_height * factor <= few_pixels))) {
        width = picture_width * factor;
        height = shape_height * factor;
    }
    width = std::max(width, 1);
    height = std::max(height, 1);
    return {(area_width - width) / 2, (area_height - height) / 2, width, height};
}

} // namespace platform
