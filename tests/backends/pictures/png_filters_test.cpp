#include "backends/pictures/png_filters.h"

#include <gtest/gtest.h>

#include <random>

#include "backends/pictures/png_expansion.h"
#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

constexpr std::uint8_t untouched = 0x5A;

TEST(PngFilters, FastOnesEqualTheReferenceImplementation) {
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::size_t pixelBytes = 1 + random() % 4;
        const std::size_t length = pixelBytes * (1 + random() % 40);
        const auto filter = static_cast<PngFilter>(random() % (lastPngFilter + 1));
        const Bytes filtered = randomBytes(random, length + filterMargin);
        const Bytes above = randomBytes(random, length);
        Bytes fast(length + 8, untouched);
        Bytes plain = fast;
        unfilterRow(filter, filtered.data(), above.data(), fast.data(), length, pixelBytes);
        unfilterRowPlainly(filter, filtered.data(), above.data(), plain.data(), length, pixelBytes);
        ASSERT_EQ(fast, plain) << "filter " << int(filter) << ", " << pixelBytes << " x "
                               << length / pixelBytes;
    }
}

TEST(PngFilters, UpIsReversed) {
    std::mt19937 random(2);
    const Bytes above = randomBytes(random, 99);
    const Bytes row = randomBytes(random, 99);
    Bytes filtered(100 + filterMargin);
    filterRowUp(row.data(), above.data(), filtered.data(), row.size());
    EXPECT_EQ(filtered[0], 2);
    Bytes back(row.size());
    unfilterRow(PngFilter::Up, filtered.data() + 1, above.data(), back.data(), row.size(), 3);
    EXPECT_EQ(back, row);
}

TEST(PngFilters, TheFirstRowIsFilteredAgainstZeros) {
    const Bytes row = {9, 8, 7};
    Bytes filtered(4);
    filterRowUp(row.data(), nullptr, filtered.data(), row.size());
    EXPECT_EQ(filtered, (Bytes{2, 9, 8, 7}));
}

TEST(PngExpansion, AddingAlphaEqualsTheReferenceImplementation) {
    std::mt19937 random(3);
    for (std::size_t count = 0; count < 60; ++count) {
        const Bytes colours = randomBytes(random, count * 3 + filterMargin);
        for (const PixelForm form : {PixelForm::ARGB, PixelForm::RGBA}) {
            Bytes fast(count * 4 + 8, untouched);
            Bytes plain = fast;
            addAlpha(colours.data(), form, fast.data(), count);
            addAlphaPlainly(colours.data(), form, plain.data(), count);
            EXPECT_EQ(fast, plain) << count;
            EXPECT_EQ(fast[count * 4], untouched);
        }
    }
}

} // namespace
} // namespace vistrane::testing
