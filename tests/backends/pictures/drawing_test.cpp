#include <cmath>
#include <limits>

#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PictureDrawing = PicturesTest;

constexpr auto sourceOver = NSCompositingOperationSourceOver;

/// Red above blue: rows from the top.
std::uint32_t redOverBlue(std::uint32_t, std::uint32_t y) {
    return y == 0 ? 0xFF0000FFU : 0x0000FFFFU;
}

const Bytes red{255, 0, 0};
const Bytes blue{0, 0, 255};
const Bytes backgroundPixel{9, 9, 9};

PngSample plain(std::uint32_t width, std::uint32_t height, std::uint32_t rgba) {
    return pngOf(width, height, [rgba](auto, auto) { return rgba; });
}

/// Expects the part of the picture whose top left pixel is (left, top).
void expectPart(const Drawn& drawn, const PngSample& sample, std::size_t left, std::size_t top) {
    const Drawn whole{sample.width, overBlack(sample.rgba), {}};
    for (std::size_t i = 0; i < drawn.rgb.size() / 3; ++i) {
        const std::size_t x = i % drawn.width;
        const std::size_t y = i / drawn.width;
        EXPECT_EQ(drawn.at(x, y), whole.at(left + x, top + y)) << x << ' ' << y;
    }
}

TEST_F(PictureDrawing, OperationAndFractionDecideWhatIsKeptOfTheBackground) {
    const struct {
        std::uint32_t rgba;
        NSCompositingOperation operation;
        double fraction;
        Bytes expected;
    } cases[] = {{0xC8640A80U, NSCompositingOperationCopy, 1.0, {100, 50, 5}},
                 {0xFF000080U, NSCompositingOperationCopy, 1.0, {128, 0, 0}},
                 {0xFF000080U, sourceOver, 1.0, {228, 100, 100}},
                 {0x64C800FFU, NSCompositingOperationCopy, 0.5, {50, 100, 0}},
                 {0x64C800FFU, sourceOver, 0.5, {150, 200, 100}}};
    for (const auto& each : cases) {
        const auto image = load(plain(2, 2, each.rgba).file);
        for (const auto& size : {std::optional<NSSize>(), std::optional(NSSize{4, 4})}) {
            const Drawn drawn = drawAt(image, 4, 4,
                                       {.size = size,
                                        .operation = each.operation,
                                        .fraction = each.fraction,
                                        .background = 200});
            EXPECT_EQ(drawn.at(1, 2), each.expected) << std::hex << each.rgba;
        }
    }
}

TEST_F(PictureDrawing, WhatSticksOutIsLeftOut) {
    const PngSample sample = pngOf(6, 6, gradient);
    expectPart(drawAt(load(sample.file), 4, 4, {.point = {-1, -1}}), sample, 1, 1);

    const auto image = load(pngOf(2, 2, redOverBlue).file);
    const Drawn drawn = drawAt(image, 4, 4, {.point = {-10, -10}, .size = NSSize{24, 24}});
    // The middle of the picture is at 2 points: half of each.
    EXPECT_GT(drawn.at(0, 0)[0], drawn.at(0, 0)[2]);
    EXPECT_LT(drawn.at(3, 3)[0], drawn.at(3, 3)[2]);
}

TEST_F(PictureDrawing, APartIsDrawnAtThePoint) {
    const PngSample sample = pngOf(6, 6, gradient);
    // From the bottom: rows 1 and 2, that is rows 3 and 4 from the top.
    expectPart(drawAt(load(sample.file), 3, 2, {.from = {{2, 1}, {3, 2}}}), sample, 2, 3);
}

TEST_F(PictureDrawing, AFlippedContextTurnsThePictureUpsideDown) {
    const PngSample sample = pngOf(3, 3, gradient);
    const auto drawn = drawAt(load(sample.file), 3, 3, {.flipped = true});
    const Drawn upright{3, overBlack(sample.rgba), {}};
    for (std::size_t y = 0; y < 3; ++y) {
        EXPECT_EQ(drawn.at(0, y), upright.at(0, 2 - y));
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

/// 1080 / 99 times 11 is 120, but for the rounding, which makes it a little less.
TEST_F(PictureDrawing, ShrinksToTheAverageWhateverRoundingLeavesOfAPixel) {
    const auto image =
        load(pngOf(1080, 2, [](auto x, auto) { return x < 120 ? 0x000000FFU : 0xFFFFFFFFU; }).file);
    const Drawn drawn = drawAt(image, 99, 2, {.size = NSSize{99, 2}});
    for (std::size_t x = 0; x < 99; ++x) {
        EXPECT_EQ(drawn.at(x, 0), Bytes(3, x < 11 ? 0 : 255)) << x;
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
        const Drawn drawn = drawAt(image, std::size_t(size.width), std::size_t(size.height),
                                   {.operation = sourceOver});
        EXPECT_FALSE(drawn.damage);
    }
}

TEST_F(PictureDrawing, ASizeWithPartsOfAPointIsCutToWholePixels) {
    const auto image = load(withDensity(plain(1281, 961, 0x11AA33FFU).file, 5669, 5669));
    ASSERT_EQ(image->size(), (NSSize{640.5, 480.5}));
    const Drawn drawn = draw(image, 640, 480);
    for (std::size_t i = 0; i < drawn.rgb.size(); i += 3) {
        ASSERT_EQ(drawn.rgb[i], 0x11) << i;
        ASSERT_EQ(drawn.rgb[i + 1], 0xAA) << i;
    }
}

TEST_F(PictureDrawing, ARectangleOfThePicturesSizeIsTheSameAsThePoint) {
    const auto image = load(pngOf(5, 3, gradient).file);
    for (const NSRect part : {NSZeroRect, NSRect{{2, 1}, {3, 2}}}) {
        DrawnAt how{.point = {2, 1}, .from = part, .operation = sourceOver, .background = 9};
        const Drawn placed = drawAt(image, 9, 8, how);
        how.size = part == NSZeroRect ? NSSize{5, 3} : part.size;
        EXPECT_EQ(drawAt(image, 9, 8, how).rgb, placed.rgb);
    }
}

TEST_F(PictureDrawing, StretchingFillsTheRectangleAndNothingElse) {
    const auto image = load(plain(2, 2, 0x204060FFU).file);
    const Drawn drawn =
        drawAt(image, 8, 6, {.point = {1, 2}, .size = NSSize{5, 3}, .background = 9});
    for (std::size_t y = 0; y < 6; ++y) {
        for (std::size_t x = 0; x < 8; ++x) {
            const bool inside = x >= 1 && x < 6 && y >= 1 && y < 4;
            EXPECT_EQ(drawn.at(x, y), inside ? (Bytes{0x20, 0x40, 0x60}) : backgroundPixel)
                << x << ' ' << y;
        }
    }
}

TEST_F(PictureDrawing, StretchingKeepsNoShape) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    const Drawn wide = drawAt(image, 16, 2, {.size = NSSize{16, 2}});
    for (std::size_t x = 0; x < 16; ++x) {
        EXPECT_EQ(wide.at(x, 0), red) << x;
        EXPECT_EQ(wide.at(x, 1), blue) << x;
    }
    const Drawn high = drawAt(image, 2, 16, {.size = NSSize{2, 16}});
    for (std::size_t x = 0; x < 2; ++x) {
        EXPECT_EQ(high.at(x, 0), red);
        EXPECT_EQ(high.at(x, 15), blue);
    }
}

TEST_F(PictureDrawing, TheRectangleIsInPointsWhateverThePicturesDensity) {
    const auto image = load(withDensity(pngOf(4, 4, redOverBlue).file, 5669, 5669));
    ASSERT_EQ(image->size(), (NSSize{2, 2}));
    const Drawn drawn = drawAt(image, 8, 8, {.size = NSSize{4, 4}, .background = 9});
    EXPECT_EQ(drawn.at(3, 4), red);
    EXPECT_EQ(drawn.at(3, 7), blue);
    EXPECT_EQ(drawn.at(4, 4), backgroundPixel);
    EXPECT_EQ(drawn.at(3, 3), backgroundPixel);
}

TEST_F(PictureDrawing, APartIsStretchedOverTheWholeRectangle) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    // The lower half, counted from the bottom.
    const Drawn drawn = drawAt(image, 4, 4, {.size = NSSize{4, 4}, .from = {{0, 0}, {2, 1}}});
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(drawn.at(i % 4, i / 4), blue) << i;
    }
}

TEST_F(PictureDrawing, PlacesThatAreNonsenseDrawNothingOrAreCut) {
    const auto image = load(pngOf(4, 4, gradient).file);
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::vector<DrawnAt> nowhere = {
        {.fraction = nan},
        {.fraction = -1.0},
        {.fraction = -infinity},
        {.from = {{1, 1}, {-2, 2}}},
        {.size = NSSize{0, 4}},
        {.size = NSSize{4, 0}},
        {.size = NSSize{-4, 4}},
        {.size = NSSize{nan, 4}},
        {.size = NSSize{4, infinity}},
        {.size = NSSize{4, 4}, .from = {{1, 1}, {0, 1}}},
        {.size = NSSize{4, 4}, .from = {{5, 5}, {1, 1}}},
    };
    for (const double bad : {nan, infinity, -infinity, 1e300, -1e18, 1e8, -1e8}) {
        nowhere.push_back({.point = {bad, 0}});
        nowhere.push_back({.point = {bad, 0}, .size = NSSize{4, 4}});
        nowhere.push_back({.from = {{bad, 0}, {4, 4}}});
    }
    for (std::size_t i = 0; i < nowhere.size(); ++i) {
        nowhere[i].background = 9;
        EXPECT_EQ(drawAt(image, 4, 4, nowhere[i]).rgb, Bytes(4 * 4 * 3, 9)) << i;
    }
    drawAt(image, 4, 4,
           {.point = {0.3, -0.7},
            .from = {{0.2, 0.9}, {1e8, 2.5}},
            .operation = sourceOver,
            .fraction = 99.0,
            .flipped = true});
    drawAt(image, 4, 4, {.point = {1e-300, 0}, .from = {{0, 0}, {1e-300, 1e-300}}});
}

TEST_F(PictureDrawing, WithoutAContextNothingHappens) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    image->drawInRect({{0, 0}, {4, 4}}, NSZeroRect, sourceOver, 1.0);
    image->drawAtPoint({0, 0}, NSZeroRect, NSCompositingOperationCopy, 1.0);
}

} // namespace
} // namespace vistrane::testing
