// The picture's way to the screen's pixels: where it stands, and what each pixel shows.
#include "platform/desktop/picture_fit.h"
#include "platform/desktop/picture_scaler.h"

#include <cmath>
#include <gtest/gtest.h>
#include <random>

using namespace platform;

namespace {

// Every size of a window shows the whole picture, centred and as large as it goes.
TEST(PictureFit, EverySizeShowsTheWholePicture) {
    for (int width = 320; width <= 2560; width += 7)
        for (int height = 200; height <= 1440; height += 11)
            for (const int shape : {400, 480})
                for (const bool whole : {false, true}) {
                    const placement p = fit_picture(640, 400, shape, width, height, whole);
                    const int right = width - p.x - p.width, below = height - p.y - p.height;
                    ASSERT_TRUE(p.x >= 0 && p.y >= 0 && right >= 0 && below >= 0) << width << "x" << height;
                    ASSERT_TRUE(std::abs(right - p.x) <= 1 && std::abs(below - p.y) <= 1) << "centred";
                    ASSERT_NEAR(p.width * shape, p.height * 640, 640) << "proportions";
                    const bool can_be_whole = width >= 640 && height >= shape;
                    if (whole && can_be_whole)
                        ASSERT_TRUE(p.width % 640 == 0 &&
                                    p.width + 640 > std::min(width, height * 640 / shape));
                    else
                        ASSERT_TRUE(right + p.x <= 3 || below + p.y <= 3) << width << "x" << height;
                }
    EXPECT_EQ(fit_picture(640, 400, 400, 1282, 801, false), (placement{1, 0, 1280, 800}))
        << "whole, but for 2";
    EXPECT_EQ(fit_picture(640, 400, 400, 0, 10, false), (placement{0, 0, 0, 0}));
}

struct picture_of {
    int width, height;
    std::vector<uint32_t> pixels;
    uint32_t at(int x, int y) const {
        return pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
    }
};

picture_of random_picture(int width, int height, uint32_t seed) {
    std::mt19937 random(seed);
    picture_of p{width, height,
                 std::vector<uint32_t>(static_cast<size_t>(width) * static_cast<size_t>(height))};
    for (uint32_t &pixel : p.pixels) pixel = random() & 0xFFFFFF;
    return p;
}

// A channel of a screen pixel: the part of the picture that lies under it.
double covered(const picture_of &p, int channel, double left, double top, double right, double bottom) {
    double sum = 0;
    for (int y = static_cast<int>(top); y < bottom && y < p.height; ++y)
        for (int x = static_cast<int>(left); x < right && x < p.width; ++x) {
            const double w = std::min(right, x + 1.0) - std::max(left, static_cast<double>(x));
            const double h = std::min(bottom, y + 1.0) - std::max(top, static_cast<double>(y));
            sum += std::max(w, 0.0) * std::max(h, 0.0) * (p.at(x, y) >> 8 * channel & 0xFF);
        }
    return sum / ((right - left) * (bottom - top));
}

TEST(PictureScaler, APixelShowsWhatLiesUnderIt) {
    const picture_of p = random_picture(64, 40, 1);
    const struct {
        int width, height, tolerance;
    } sizes[] = {{64, 40, 0}, {128, 80, 0}, {192, 144, 3}, {173, 108, 3},
                 {65, 41, 3}, {32, 20, 4},  {50, 33, 4}};
    for (const auto &s : sizes) {
        picture_scaler scaler;
        scaler.set_up(p.width, p.height, s.width, s.height, crt_look::none);
        const auto &rows = scaler.show(p.pixels.data());
        ASSERT_TRUE(rows.size() == 1 && rows[0].first == 0 && rows[0].end == s.height);
        const double across = 64.0 / s.width, down = 40.0 / s.height;
        for (int y = 0; y < s.height; ++y)
            for (int x = 0; x < s.width; ++x)
                for (int channel = 0; channel < 3; ++channel)
                    ASSERT_NEAR(scaler.pixels()[y * s.width + x] >> 8 * channel & 0xFF,
                                covered(p, channel, x * across, y * down, (x + 1) * across, (y + 1) * down),
                                s.tolerance + 0.5)
                        << s.width << "x" << s.height << " at " << x << ", " << y;
    }
}

// What has changed since the last frame gives the same pixels as the frame at once, and only its rows are
// said to have changed.
TEST(PictureScaler, AFrameCostsWhatHasChanged) {
    for (const crt_look look : {crt_look::none, crt_look::scan_lines, crt_look::tube})
        for (const int height : {40, 80, 108, 33}) {
            picture_of p = random_picture(64, 40, 2);
            picture_scaler steps, at_once;
            steps.set_up(64, 40, 150, height, look);
            steps.show(p.pixels.data());
            EXPECT_TRUE(steps.show(p.pixels.data()).empty());
            std::mt19937 random(3);
            for (int i = 0; i < 30; ++i) {
                const std::vector<uint32_t> before(steps.pixels(), steps.pixels() + 150 * height);
                for (uint32_t n = random() % 4; n > 0; --n) p.pixels[random() % p.pixels.size()] ^= 0x404040;
                if (i % 3 == 0) // a line as the one above
                    std::copy_n(p.pixels.begin() + 64 * 10, 64, p.pixels.begin() + 64 * 11);
                const std::vector<row_span> rows = steps.show(p.pixels.data());
                at_once.set_up(64, 40, 150, height, look);
                at_once.show(p.pixels.data());
                for (int y = 0; y < height; ++y) {
                    const uint32_t *row = steps.pixels() + 150 * y;
                    ASSERT_TRUE(std::equal(row, row + 150, at_once.pixels() + 150 * y)) << "row " << y;
                    const bool told = std::any_of(rows.begin(), rows.end(), [y](const row_span &r) {
                        return y >= r.first && y < r.end;
                    });
                    ASSERT_TRUE(told || std::equal(row, row + 150, before.begin() + 150 * y)) << "row " << y;
                }
            }
        }
}

// A white picture under each look, enlarged three times: how bright its rows and columns are.
TEST(PictureScaler, Looks) {
    const std::vector<uint32_t> white(64 * 40, 0xFFFFFF);
    const auto brightness = [&](crt_look look, int x, int y) {
        picture_scaler scaler;
        scaler.set_up(64, 40, 192, 120, look);
        scaler.show(white.data());
        const uint32_t pixel = scaler.pixels()[y * 192 + x];
        return (pixel & 0xFF) + (pixel >> 8 & 0xFF) + (pixel >> 16 & 0xFF);
    };
    EXPECT_EQ(brightness(crt_look::none, 5, 5), 765u);
    EXPECT_EQ(brightness(crt_look::scan_lines, 5, 3), 765u);
    EXPECT_LT(brightness(crt_look::scan_lines, 5, 5), 450u) << "the lower side of a raster line";
    for (int x = 6; x < 9; ++x)
        EXPECT_GT(brightness(crt_look::tube, x, 3), 500u) << "a triple is about as bright";
    EXPECT_LT(brightness(crt_look::tube, 6, 5), brightness(crt_look::tube, 6, 3));
}

} // namespace
