#include <cmath>
#include <limits>

#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PictureDrawing = PicturesTest;

TEST_F(PictureDrawing, HalfTransparentPixelsLandOverBlack) {
    const auto image = load(pngOf(3, 2, [](auto, auto) { return 0xC8640A80U; }).file);
    EXPECT_EQ(draw(image, 3, 2).at(1, 1), (Bytes{100, 50, 5}));
}

TEST_F(PictureDrawing, CopyReplacesWhatWasThereAndSourceOverKeepsIt) {
    const auto image = load(pngOf(2, 2, [](auto, auto) { return 0xFF000080U; }).file);
    const auto copied = drawAt(image, 2, 2, {.background = 200});
    EXPECT_EQ(copied.at(0, 0), (Bytes{128, 0, 0}));
    const auto over =
        drawAt(image, 2, 2, {.operation = NSCompositingOperationSourceOver, .background = 200});
    EXPECT_EQ(over.at(0, 0), (Bytes{228, 100, 100}));
}

TEST_F(PictureDrawing, AFractionMakesThePictureFaint) {
    const auto image = load(pngOf(2, 2, [](auto, auto) { return 0x64C800FFU; }).file);
    const auto copied = drawAt(image, 2, 2, {.fraction = 0.5, .background = 200});
    EXPECT_EQ(copied.at(0, 0), (Bytes{50, 100, 0}));
    const auto over =
        drawAt(image, 2, 2,
               {.operation = NSCompositingOperationSourceOver, .fraction = 0.5, .background = 200});
    EXPECT_EQ(over.at(0, 0), (Bytes{150, 200, 100}));
}

TEST_F(PictureDrawing, WhatSticksOutIsLeftOut) {
    const PngSample sample = pngOf(6, 6, gradient);
    const auto drawn = drawAt(load(sample.file), 4, 4, {.point = {-1, -1}});
    const Bytes rgb = overBlack(sample.rgba);
    for (std::size_t y = 0; y < 4; ++y) {
        for (std::size_t x = 0; x < 4; ++x) {
            const auto start = rgb.begin() + std::ptrdiff_t(((y + 1) * 6 + x + 1) * 3);
            EXPECT_EQ(drawn.at(x, y), Bytes(start, start + 3)) << x << ' ' << y;
        }
    }
}

TEST_F(PictureDrawing, APartIsDrawnAtThePoint) {
    const PngSample sample = pngOf(6, 6, gradient);
    // From the bottom: rows 1 and 2, that is rows 3 and 4 from the top.
    const auto drawn = drawAt(load(sample.file), 3, 2, {.from = {{2, 1}, {3, 2}}});
    const Bytes rgb = overBlack(sample.rgba);
    for (std::size_t y = 0; y < 2; ++y) {
        for (std::size_t x = 0; x < 3; ++x) {
            const auto start = rgb.begin() + std::ptrdiff_t(((y + 3) * 6 + x + 2) * 3);
            EXPECT_EQ(drawn.at(x, y), Bytes(start, start + 3)) << x << ' ' << y;
        }
    }
}

TEST_F(PictureDrawing, AFlippedContextTurnsThePictureUpsideDown) {
    const PngSample sample = pngOf(3, 3, gradient);
    const auto drawn = drawAt(load(sample.file), 3, 3, {.flipped = true});
    const Bytes rgb = overBlack(sample.rgba);
    for (std::size_t y = 0; y < 3; ++y) {
        const auto start = rgb.begin() + std::ptrdiff_t((2 - y) * 9);
        EXPECT_EQ(drawn.at(0, y), Bytes(start, start + 3));
    }
}

TEST_F(PictureDrawing, HalfTheSizeIsTheAverageOfFourPixels) {
    const auto image = load(withDensity(
        pngOf(8, 4, [](auto x, auto y) { return ((x + y) % 2 ? 0xC8000000U : 0x64000000U) | 255; })
            .file,
        5669, 5669));
    ASSERT_EQ(image->size(), (NSSize{4, 2}));
    const Drawn drawn = draw(image, 4, 2);
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(drawn.at(i % 4, i / 4), (Bytes{150, 0, 0}));
    }
}

TEST_F(PictureDrawing, AveragingDoesNotMixInTheColourOfInvisiblePixels) {
    const auto image = load(withDensity(
        pngOf(2, 2, [](auto x, auto) { return x == 0 ? 0xFF000000U : 0x0000FFFFU; }).file, 5669,
        5669));
    EXPECT_EQ(draw(image, 1, 1).at(0, 0), (Bytes{0, 0, 128}));
}

TEST_F(PictureDrawing, EnlargingKeepsFlatAreasAndEdgesInPlace) {
    const auto image = load(withDensity(
        pngOf(8, 8, [](auto x, auto) { return x < 4 ? 0x204060FFU : 0xE0C0A0FFU; }).file, 1417,
        1417));
    ASSERT_EQ(image->size(), (NSSize{16, 16}));
    const Drawn drawn = draw(image, 16, 16);
    EXPECT_EQ(drawn.at(0, 0), (Bytes{0x20, 0x40, 0x60}));
    EXPECT_EQ(drawn.at(15, 15), (Bytes{0xE0, 0xC0, 0xA0}));
    EXPECT_LT(drawn.at(7, 8)[0], 0x80);
    EXPECT_GT(drawn.at(8, 8)[0], 0x80);
}

TEST_F(PictureDrawing, ScaledTransparencyStaysWithinItsRange) {
    const PngSample sample = randomPng({6, 8, false, false}, 37, 29);
    for (const std::uint32_t density : {1000U, 2000U, 3000U, 5669U, 9000U}) {
        const auto image = load(withDensity(sample.file, density, density + 300));
        const NSSize size = image->size();
        const Drawn drawn = draw(image, std::size_t(size.width), std::size_t(size.height),
                                 NSCompositingOperationSourceOver);
        EXPECT_FALSE(drawn.damage);
    }
}

TEST_F(PictureDrawing, ASizeWithPartsOfAPointIsCutToWholePixels) {
    const auto image = load(
        withDensity(pngOf(1281, 961, [](auto, auto) { return 0x11AA33FFU; }).file, 5669, 5669));
    ASSERT_EQ(image->size(), (NSSize{640.5, 480.5}));
    const Drawn drawn = draw(image, 640, 480);
    for (std::size_t i = 0; i < drawn.rgb.size(); i += 3) {
        ASSERT_EQ(drawn.rgb[i], 0x11) << i;
        ASSERT_EQ(drawn.rgb[i + 1], 0xAA) << i;
    }
}

TEST_F(PictureDrawing, PlacesThatAreNonsenseDrawNothingOrAreCut) {
    const auto image = load(pngOf(4, 4, gradient).file);
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const Bytes untouched(4 * 4 * 3, 7);
    for (const double bad : {nan, infinity, -infinity, 1e300, -1e18, 1e8, -1e8}) {
        EXPECT_EQ(drawAt(image, 4, 4, {.point = {bad, 0}, .background = 7}).rgb, untouched);
        EXPECT_EQ(drawAt(image, 4, 4, {.from = {{bad, 0}, {4, 4}}, .background = 7}).rgb,
                  untouched);
    }
    for (const double bad : {nan, -1.0, -infinity}) {
        EXPECT_EQ(drawAt(image, 4, 4, {.fraction = bad, .background = 7}).rgb, untouched);
    }
    EXPECT_EQ(drawAt(image, 4, 4, {.from = {{1, 1}, {-2, 2}}, .background = 7}).rgb, untouched);
    drawAt(image, 4, 4,
           {.point = {0.3, -0.7},
            .from = {{0.2, 0.9}, {1e8, 2.5}},
            .operation = NSCompositingOperationSourceOver,
            .fraction = 99.0,
            .flipped = true});
    drawAt(image, 4, 4, {.point = {1e-300, 0}, .from = {{0, 0}, {1e-300, 1e-300}}});
}

} // namespace
} // namespace vistrane::testing
