#include "backends/pictures/PictureSource.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using Density = PicturesTest;

NSSize sizeOf(const std::shared_ptr<NSImage>& image) {
    return image ? image->size() : NSSize{};
}

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

TEST_F(Density, TwiceTheUsualDensityHalvesTheSize) {
    EXPECT_EQ(sizeOf(load(withDensity(grey(1280, 960), 5669, 5669))), (NSSize{640, 480}));
}

TEST_F(Density, TheUsualDensityLosesNoColumn) {
    EXPECT_EQ(sizeOf(load(withDensity(grey(1280, 720), 2835, 2835))), (NSSize{1280, 720}));
    EXPECT_EQ(sizeOf(load(withDensity(grey(1280, 720), 2834, 2835))), (NSSize{1280, 720}));
}

TEST_F(Density, EachDirectionHasItsOwn) {
    EXPECT_EQ(sizeOf(load(withDensity(grey(1280, 960), 2835, 5669))), (NSSize{1280, 480}));
}

TEST_F(Density, PartsOfAPointStay) {
    const NSSize size = sizeOf(load(withDensity(grey(1281, 961), 5669, 5669)));
    EXPECT_EQ(size, (NSSize{640.5, 480.5}));
}

TEST_F(Density, NonsenseIsIgnored) {
    const NSSize pixels{100, 50};
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 1, 1))), pixels);
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 0, 0))), pixels);
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 0, 5669))), pixels);
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 5669, 5669, 0))), pixels);
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 5669, 5669, 2))), pixels);
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 0x7FFFFFFF, 0x7FFFFFFF))), pixels);
    EXPECT_EQ(sizeOf(load(withDensity(grey(100, 50), 0xFFFFFFFF, 0xFFFFFFFF))), pixels);
}

TEST_F(Density, ItSurvivesSaving) {
    const auto saved = encode(load(withDensity(grey(64, 32), 5669, 4000)));
    const auto image = pictures_.imageWithData(saved);
    EXPECT_EQ(sizeOf(image), sizeOf(load(withDensity(grey(64, 32), 5669, 4000))));
}

TEST_F(Density, NoneIsInventedWhenSaving) {
    const Bytes saved = bytesOf(encode(load(grey(64, 32))));
    for (const ChunkPlace& place : chunksOf(saved)) {
        EXPECT_NE(place.type, "pHYs");
    }
}

} // namespace
} // namespace vistrane::testing
