#include "backends/pictures/PictureSource.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using Density = PicturesTest;

Bytes grey(std::uint32_t width, std::uint32_t height) {
    return randomPng({0, 8, false, false}, width, height).file;
}

TEST_F(Density, WholeDotsPerInchComeOutWhole) {
    // Rounded up, rounded down, cut off: all are in use.
    for (std::uint32_t dpi = 20; dpi <= 2400; ++dpi) {
        const double exact = dpi / 0.0254;
        for (const double stored : {std::floor(exact), std::ceil(exact), std::round(exact)}) {
            ASSERT_EQ(dotsPerInch(static_cast<std::uint32_t>(stored)), dpi) << stored;
        }
    }
}

TEST_F(Density, OtherDensitiesStayWhatTheyAre) {
    EXPECT_DOUBLE_EQ(dotsPerInch(5650), 143.51);
    EXPECT_DOUBLE_EQ(dotsPerInch(1), 0.0254);
}

TEST_F(Density, DividesTheSizeUnlessItIsNonsense) {
    const struct {
        NSSize pixels;
        std::uint32_t x, y;
        std::uint8_t unit;
        NSSize points;
    } cases[] = {
        {{1280, 960}, 5669, 5669, 1, {640, 480}},
        // The usual density loses no column.
        {{1280, 720}, 2835, 2835, 1, {1280, 720}},
        {{1280, 720}, 2834, 2835, 1, {1280, 720}},
        {{1280, 960}, 2835, 5669, 1, {1280, 480}},
        {{1281, 961}, 5669, 5669, 1, {640.5, 480.5}},
        {{100, 50}, 1, 1, 1, {100, 50}},
        {{100, 50}, 0, 0, 1, {100, 50}},
        {{100, 50}, 0, 5669, 1, {100, 50}},
        {{100, 50}, 5669, 5669, 0, {100, 50}},
        {{100, 50}, 5669, 5669, 2, {100, 50}},
        {{100, 50}, 0x7FFFFFFF, 0x7FFFFFFF, 1, {100, 50}},
        {{100, 50}, 0xFFFFFFFF, 0xFFFFFFFF, 1, {100, 50}},
    };
    for (const auto& each : cases) {
        const Bytes file = grey(static_cast<std::uint32_t>(each.pixels.width),
                                static_cast<std::uint32_t>(each.pixels.height));
        const auto image = load(withDensity(file, each.x, each.y, each.unit));
        ASSERT_TRUE(image);
        EXPECT_EQ(image->size(), each.points) << each.x << ", " << each.y;
    }
}

TEST_F(Density, ItSurvivesSaving) {
    const auto image = load(withDensity(grey(64, 32), 5669, 4000));
    EXPECT_EQ(pictures_.imageWithData(encode(image))->size(), image->size());
}

} // namespace
} // namespace vistrane::testing
