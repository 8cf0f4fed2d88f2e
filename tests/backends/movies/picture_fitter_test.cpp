#include <cmath>
#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <vector>

#include "backends/movies/PictureFitter.h"

namespace vistrane {
namespace {

struct Picture {
    std::size_t width;
    std::size_t height;
    std::vector<std::uint8_t> bytes;

    Picture(std::size_t w, std::size_t h, const std::function<int(std::size_t, std::size_t)>& value)
        : width(w), height(h), bytes(4 * w * h) {
        for (std::size_t y = 0; y < h; ++y) {
            for (std::size_t x = 0; x < w; ++x) {
                for (std::size_t c = 1; c < 4; ++c) {
                    bytes[4 * (y * w + x) + c] = static_cast<std::uint8_t>(value(x, y));
                }
            }
        }
    }
    PictureView view() const { return {bytes.data(), width, height, 4 * width}; }
};

int green(const PictureView& picture, std::size_t x, std::size_t y) {
    return picture.bytes[y * picture.stride + 4 * x + 2];
}

Picture plain(std::size_t width, std::size_t height, int value) {
    return Picture(width, height, [value](std::size_t, std::size_t) { return value; });
}

TEST(FittedArea, TheSameShapeFillsTheFrame) {
    EXPECT_EQ(fittedArea(640, 480, 320, 240), (FittedArea{0, 0, 320, 240}));
    EXPECT_EQ(fittedArea(1, 1, 99, 99), (FittedArea{0, 0, 99, 99}));
}

TEST(FittedArea, AWiderPictureHasBarsAboveAndBelow) {
    EXPECT_EQ(fittedArea(1920, 1080, 640, 480), (FittedArea{0, 60, 640, 360}));
}

TEST(FittedArea, ATallerPictureHasBarsAtTheSides) {
    EXPECT_EQ(fittedArea(1080, 1920, 640, 480), (FittedArea{185, 0, 270, 480}));
}

TEST(FittedArea, AHairlineKeepsOnePixel) {
    EXPECT_EQ(fittedArea(10000, 1, 100, 100), (FittedArea{0, 49, 100, 1}));
    EXPECT_EQ(fittedArea(1, 10000, 100, 100), (FittedArea{49, 0, 1, 100}));
}

TEST(PictureFitter, APictureOfTheRightSizeIsPassedOnItself) {
    const Picture picture = plain(8, 6, 7);
    PictureFitter fitter(8, 6);
    EXPECT_EQ(fitter.fit(picture.view()).bytes, picture.bytes.data());
}

TEST(PictureFitter, APlainPictureStaysPlainInAnySize) {
    for (const std::size_t side : {1U, 2U, 3U, 7U, 50U, 400U}) {
        const Picture picture = plain(side, side, 201);
        PictureFitter fitter(37, 37);
        const PictureView fitted = fitter.fit(picture.view());
        for (std::size_t y = 0; y < 37; ++y) {
            for (std::size_t x = 0; x < 37; ++x) {
                ASSERT_EQ(green(fitted, x, y), 201) << side;
            }
        }
    }
}

TEST(PictureFitter, AGradientStaysAGradient) {
    const auto slope = [](std::size_t x, std::size_t) { return static_cast<int>(x); };
    const Picture picture(256, 16, slope);
    PictureFitter fitter(128, 8);
    const PictureView fitted = fitter.fit(picture.view());
    for (std::size_t x = 4; x < 124; ++x) {
        EXPECT_NEAR(green(fitted, x, 4), 2.0 * static_cast<double>(x) + 0.5, 1.0);
    }
}

TEST(PictureFitter, FineDetailMergesInsteadOfAliasing) {
    const auto checks = [](std::size_t x, std::size_t y) { return (x + y) % 2 == 0 ? 255 : 0; };
    const Picture picture(400, 400, checks);
    PictureFitter fitter(100, 100);
    const PictureView fitted = fitter.fit(picture.view());
    for (std::size_t x = 4; x < 96; ++x) {
        EXPECT_NEAR(green(fitted, x, 50), 127, 3);
    }
}

TEST(PictureFitter, TheBarsAreBlackAndTheMiddleIsThePicture) {
    const Picture picture = plain(200, 100, 90);
    PictureFitter fitter(100, 100);
    const PictureView fitted = fitter.fit(picture.view());
    EXPECT_EQ(green(fitted, 50, 24), 0);
    EXPECT_EQ(green(fitted, 50, 25), 90);
    EXPECT_EQ(green(fitted, 50, 74), 90);
    EXPECT_EQ(green(fitted, 50, 75), 0);
}

TEST(PictureFitter, ANewSizeLeavesNothingOfTheOldOne) {
    const Picture tall = plain(50, 100, 90);
    const Picture wide = plain(100, 50, 90);
    PictureFitter fitter(100, 100);
    fitter.fit(tall.view());
    const PictureView fitted = fitter.fit(wide.view());
    EXPECT_EQ(green(fitted, 50, 5), 0);
    EXPECT_EQ(green(fitted, 5, 50), 90);
}

} // namespace
} // namespace vistrane
