#include "backends/movies/PictureFitter.h"
#include "tests/backends/movies/MovieTest.h"

namespace vistrane {
namespace {

PictureView viewOf(const BufferPointer& picture) {
    return {picture->bytes(), picture->width(), picture->height(), picture->bytesPerRow()};
}

int green(const PictureView& picture, std::size_t x, std::size_t y) {
    return picture.bytes[y * picture.stride + 4 * x + 2];
}

BufferPointer grey(std::size_t width, std::size_t height, int value) {
    return plain(width, height, {value, value, value});
}

TEST(FittedArea, KeepsTheShapeInTheMiddleOfTheFrame) {
    EXPECT_EQ(fittedArea(640, 480, 320, 240), (FittedArea{0, 0, 320, 240}));
    EXPECT_EQ(fittedArea(1, 1, 99, 99), (FittedArea{0, 0, 99, 99}));
    EXPECT_EQ(fittedArea(1920, 1080, 640, 480), (FittedArea{0, 60, 640, 360}));
    EXPECT_EQ(fittedArea(1080, 1920, 640, 480), (FittedArea{185, 0, 270, 480}));
    // A hairline keeps one pixel.
    EXPECT_EQ(fittedArea(10000, 1, 100, 100), (FittedArea{0, 49, 100, 1}));
    EXPECT_EQ(fittedArea(1, 10000, 100, 100), (FittedArea{49, 0, 1, 100}));
}

TEST(PictureFitter, APictureOfTheRightSizeIsPassedOnItself) {
    const auto picture = grey(8, 6, 7);
    PictureFitter fitter(8, 6);
    EXPECT_EQ(fitter.fit(viewOf(picture)).bytes, picture->bytes());
}

TEST(PictureFitter, APlainPictureStaysPlainInAnySize) {
    for (const std::size_t side : {1U, 2U, 3U, 7U, 50U, 400U}) {
        const auto picture = grey(side, side, 201);
        PictureFitter fitter(37, 37);
        const PictureView fitted = fitter.fit(viewOf(picture));
        for (std::size_t y = 0; y < 37; ++y) {
            for (std::size_t x = 0; x < 37; ++x) {
                ASSERT_EQ(green(fitted, x, y), 201) << side;
            }
        }
    }
}

TEST(PictureFitter, AGradientStaysAGradient) {
    const auto picture = paint(256, 16, [](std::size_t x, std::size_t) {
        return Rgb{0, static_cast<int>(x), 0};
    });
    PictureFitter fitter(128, 8);
    const PictureView fitted = fitter.fit(viewOf(picture));
    for (std::size_t x = 4; x < 124; ++x) {
        EXPECT_NEAR(green(fitted, x, 4), 2.0 * static_cast<double>(x) + 0.5, 1.0);
    }
}

TEST(PictureFitter, FineDetailMergesInsteadOfAliasing) {
    const auto picture = paint(400, 400, [](std::size_t x, std::size_t y) {
        return Rgb{0, (x + y) % 2 == 0 ? 255 : 0, 0};
    });
    PictureFitter fitter(100, 100);
    const PictureView fitted = fitter.fit(viewOf(picture));
    for (std::size_t x = 4; x < 96; ++x) {
        EXPECT_NEAR(green(fitted, x, 50), 127, 3);
    }
}

TEST(PictureFitter, TheBarsAreBlackAndTheMiddleIsThePicture) {
    const auto picture = grey(200, 100, 90);
    PictureFitter fitter(100, 100);
    const PictureView fitted = fitter.fit(viewOf(picture));
    EXPECT_EQ(green(fitted, 50, 24), 0);
    EXPECT_EQ(green(fitted, 50, 25), 90);
    EXPECT_EQ(green(fitted, 50, 74), 90);
    EXPECT_EQ(green(fitted, 50, 75), 0);
}

TEST(PictureFitter, ANewSizeLeavesNothingOfTheOldOne) {
    const auto tall = grey(50, 100, 90);
    const auto wide = grey(100, 50, 90);
    PictureFitter fitter(100, 100);
    fitter.fit(viewOf(tall));
    const PictureView fitted = fitter.fit(viewOf(wide));
    EXPECT_EQ(green(fitted, 50, 5), 0);
    EXPECT_EQ(green(fitted, 5, 50), 90);
}

} // namespace
} // namespace vistrane
