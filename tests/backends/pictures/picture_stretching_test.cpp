#include <limits>

#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PictureStretching = PicturesTest;

/// Red above blue: rows from the top.
std::uint32_t redOverBlue(std::uint32_t, std::uint32_t y) {
    return y == 0 ? 0xFF0000FFU : 0x0000FFFFU;
}

const Bytes red{255, 0, 0};
const Bytes blue{0, 0, 255};
const Bytes untouched{9, 9, 9};

TEST_F(PictureStretching, AtItsOwnSizeIsTheSameAsDrawingAtThePoint) {
    const auto image = load(pngOf(5, 3, gradient).file);
    const Drawn stretched = drawIn(image, 9, 8, {{2, 1}, {5, 3}});
    const Drawn placed =
        drawAt(image, 9, 8,
               {.point = {2, 1}, .operation = NSCompositingOperationSourceOver, .background = 9});
    EXPECT_EQ(stretched.rgb, placed.rgb);
    EXPECT_FALSE(stretched.damage);
}

TEST_F(PictureStretching, FillsTheRectangleAndNothingElse) {
    const auto image = load(pngOf(2, 2, [](auto, auto) { return 0x204060FFU; }).file);
    const Drawn drawn = drawIn(image, 8, 6, {{1, 2}, {5, 3}});
    for (std::size_t y = 0; y < 6; ++y) {
        for (std::size_t x = 0; x < 8; ++x) {
            const bool inside = x >= 1 && x < 6 && y >= 1 && y < 4;
            EXPECT_EQ(drawn.at(x, y), inside ? (Bytes{0x20, 0x40, 0x60}) : untouched)
                << x << ' ' << y;
        }
    }
}

TEST_F(PictureStretching, KeepsNoShape) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    const Drawn wide = drawIn(image, 16, 2, {{0, 0}, {16, 2}});
    for (std::size_t x = 0; x < 16; ++x) {
        EXPECT_EQ(wide.at(x, 0), red) << x;
        EXPECT_EQ(wide.at(x, 1), blue) << x;
    }
    const Drawn high = drawIn(image, 2, 16, {{0, 0}, {2, 16}});
    for (std::size_t x = 0; x < 2; ++x) {
        EXPECT_EQ(high.at(x, 0), red);
        EXPECT_EQ(high.at(x, 15), blue);
    }
}

TEST_F(PictureStretching, ShrinksToTheAverage) {
    const auto image = load(pngOf(4, 4, [](auto x, auto y) {
                                return ((x + y) % 2 ? 0xC8000000U : 0x64000000U) | 255;
                            }).file);
    const Drawn drawn = drawIn(image, 2, 2, {{0, 0}, {2, 1}});
    EXPECT_EQ(drawn.at(0, 0), untouched);
    EXPECT_EQ(drawn.at(0, 1), (Bytes{150, 0, 0}));
    EXPECT_EQ(drawn.at(1, 1), (Bytes{150, 0, 0}));
}

/// 1080 / 99 times 11 is 120, but for the rounding, which makes it a little less.
TEST_F(PictureStretching, ShrinksToTheAverageWhateverRoundingLeavesOfAPixel) {
    const auto image =
        load(pngOf(1080, 2, [](auto x, auto) { return x < 120 ? 0x000000FFU : 0xFFFFFFFFU; }).file);
    const Drawn drawn = drawIn(image, 99, 2, {{0, 0}, {99, 2}});
    for (std::size_t x = 0; x < 99; ++x) {
        EXPECT_EQ(drawn.at(x, 0), Bytes(3, x < 11 ? 0 : 255)) << x;
    }
}

TEST_F(PictureStretching, CountsTheRectangleInPointsWhateverThePicturesDensity) {
    const auto image = load(withDensity(pngOf(4, 4, redOverBlue).file, 5669, 5669));
    ASSERT_EQ(image->size(), (NSSize{2, 2}));
    const Drawn drawn = drawIn(image, 8, 8, {{0, 0}, {4, 4}});
    EXPECT_EQ(drawn.at(3, 4), red);
    EXPECT_EQ(drawn.at(3, 7), blue);
    EXPECT_EQ(drawn.at(4, 4), untouched);
    EXPECT_EQ(drawn.at(3, 3), untouched);
}

TEST_F(PictureStretching, APartIsStretchedOverTheWholeRectangle) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    // The lower half, counted from the bottom.
    const Drawn drawn = drawIn(image, 4, 4, {{0, 0}, {4, 4}}, {{0, 0}, {2, 1}});
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(drawn.at(i % 4, i / 4), blue) << i;
    }
}

TEST_F(PictureStretching, APartThatIsNoLargerThanItsRectangleIsDrawnAsItIs) {
    const auto image = load(pngOf(6, 6, gradient).file);
    const Drawn stretched = drawIn(image, 5, 5, {{1, 2}, {3, 2}}, {{2, 1}, {3, 2}});
    const Drawn placed = drawAt(image, 5, 5,
                                {.point = {1, 2},
                                 .from = {{2, 1}, {3, 2}},
                                 .operation = NSCompositingOperationSourceOver,
                                 .background = 9});
    EXPECT_EQ(stretched.rgb, placed.rgb);
}

TEST_F(PictureStretching, WhatIsTransparentShowsWhatWasThere) {
    const auto image = load(pngOf(1, 1, [](auto, auto) { return 0xFF000080U; }).file);
    const Drawn over = drawIn(image, 3, 3, {{0, 0}, {3, 3}}, NSZeroRect,
                              NSCompositingOperationSourceOver, 1.0, 200);
    EXPECT_EQ(over.at(1, 1), (Bytes{228, 100, 100}));
    const Drawn copied =
        drawIn(image, 3, 3, {{0, 0}, {3, 3}}, NSZeroRect, NSCompositingOperationCopy, 1.0, 200);
    EXPECT_EQ(copied.at(1, 1), (Bytes{128, 0, 0}));
}

TEST_F(PictureStretching, AFractionMakesThePictureFaint) {
    const auto image = load(pngOf(2, 2, [](auto, auto) { return 0x64C800FFU; }).file);
    const Drawn drawn = drawIn(image, 4, 4, {{0, 0}, {4, 4}}, NSZeroRect,
                               NSCompositingOperationSourceOver, 0.5, 200);
    EXPECT_EQ(drawn.at(2, 2), (Bytes{150, 200, 100}));
}

TEST_F(PictureStretching, WhatSticksOutIsLeftOut) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    const Drawn drawn = drawIn(image, 4, 4, {{-10, -10}, {24, 24}});
    // The middle of the picture is at 2 points: half of each.
    EXPECT_GT(drawn.at(0, 0)[0], drawn.at(0, 0)[2]);
    EXPECT_LT(drawn.at(3, 3)[0], drawn.at(3, 3)[2]);
}

TEST_F(PictureStretching, ARectangleThatIsNoPlaceDrawsNothing) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    const double none = std::numeric_limits<double>::quiet_NaN();
    const double endless = std::numeric_limits<double>::infinity();
    for (const NSRect rect :
         {NSRect{{0, 0}, {0, 4}}, NSRect{{0, 0}, {4, 0}}, NSRect{{0, 0}, {-4, 4}},
          NSRect{{none, 0}, {4, 4}}, NSRect{{0, 0}, {none, 4}}, NSRect{{0, 0}, {4, endless}},
          NSRect{{endless, 0}, {4, 4}}}) {
        EXPECT_EQ(drawIn(image, 4, 4, rect).rgb, Bytes(48, 9));
    }
}

TEST_F(PictureStretching, APartThatIsEmptyDrawsNothing) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    EXPECT_EQ(drawIn(image, 4, 4, {{0, 0}, {4, 4}}, {{1, 1}, {0, 1}}).rgb, Bytes(48, 9));
    EXPECT_EQ(drawIn(image, 4, 4, {{0, 0}, {4, 4}}, {{5, 5}, {1, 1}}).rgb, Bytes(48, 9));
}

TEST_F(PictureStretching, WithoutAContextNothingHappens) {
    const auto image = load(pngOf(2, 2, redOverBlue).file);
    image->drawInRect({{0, 0}, {4, 4}}, NSZeroRect, NSCompositingOperationSourceOver, 1.0);
    image->drawAtPoint({0, 0}, NSZeroRect, NSCompositingOperationCopy, 1.0);
}

} // namespace
} // namespace vistrane::testing
