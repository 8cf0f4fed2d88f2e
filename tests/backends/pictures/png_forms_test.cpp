#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PngForms = PicturesTest;

constexpr std::pair<std::uint32_t, std::uint32_t> formSizes[] = {
    {1, 1}, {2, 3}, {5, 7}, {8, 8}, {17, 9}, {33, 1}, {1, 20}, {67, 41}, {10000, 2}};

TEST_F(PngForms, EveryFormIsDrawnWithItsValuesHoweverItsChunksAreSplit) {
    for (const PngForm& form : allPngForms()) {
        for (const auto& [width, height] : formSizes) {
            const PngSample sample = randomPng(form, width, height);
            for (const std::size_t length : {std::size_t{1}, std::size_t{7}, sample.file.size()}) {
                SCOPED_TRACE(form.text() + ", " + std::to_string(width) + " x " +
                             std::to_string(height) + ", chunks of " + std::to_string(length));
                const auto image = load(withSplitData(sample.file, length));
                ASSERT_TRUE(image);
                EXPECT_EQ(image->size(), (NSSize{double(width), double(height)}));
                const Drawn drawn = draw(image, width, height);
                EXPECT_FALSE(drawn.damage);
                EXPECT_EQ(drawn.rgb, overBlack(sample.rgba));
            }
        }
    }
}

TEST_F(PngForms, EveryFormIsSavedWithItsExactValues) {
    for (const PngForm& form : allPngForms()) {
        SCOPED_TRACE(form.text());
        const PngSample sample = randomPng(form, 31, 13);
        const auto saved = encode(load(sample.file));
        ASSERT_TRUE(saved);
        const auto read = readByLibpng(bytesOf(saved));
        ASSERT_TRUE(read);
        EXPECT_EQ(read->width, 31U);
        EXPECT_EQ(read->rgba, sample.rgba);
    }
}

/// The first form is one that libpng decodes.
TEST_F(PngForms, GammaAndOtherAncillaryChunksChangeNothing) {
    Bytes compressed = {'a', 0, 0, 0x78, 0x9C};
    compressed.resize(100000, 0x55);
    for (const int depth : {16, 8}) {
        const PngSample sample = randomPng({2, depth, false, false}, 9, 9);
        Bytes file = withChunkBefore(sample.file, "IDAT", chunk("gAMA", Bytes{0, 1, 0x86, 0xA0}));
        file = withChunkBefore(file, "IDAT", chunk("sBIT", Bytes{5, 6, 5}));
        file = withChunkBefore(file, "IDAT", chunk("tEXt", Bytes{'a', 0, 'b'}));
        file = withChunkBefore(file, "IDAT", chunk("zTXt", compressed));
        file = withChunkBefore(file, "IEND", chunk("tIME", Bytes{7, 0xEA, 1, 1, 0, 0, 0}));
        file.push_back('x');
        EXPECT_EQ(draw(load(file), 9, 9).rgb, overBlack(sample.rgba));
    }
}

TEST_F(PngForms, ASmallerPaletteThanTheBitsAllowIsReadLikeLibpng) {
    // Two colours for eight bits, and pixels that point beyond them.
    PngSample sample = randomPng({3, 8, false, false}, 16, 16);
    Bytes file = sample.file;
    for (const ChunkPlace& place : chunksOf(sample.file)) {
        if (place.type == "PLTE") {
            const Bytes palette = chunk("PLTE", std::span(file).subspan(place.offset + 8, 6));
            const auto start = file.begin() + static_cast<std::ptrdiff_t>(place.offset);
            file.erase(start, start + static_cast<std::ptrdiff_t>(12 + place.dataLength));
            file.insert(file.begin() + static_cast<std::ptrdiff_t>(place.offset), palette.begin(),
                        palette.end());
        }
    }
    const auto expected = readByLibpng(file);
    ASSERT_TRUE(expected);
    EXPECT_EQ(draw(load(file), 16, 16).rgb, overBlack(expected->rgba));
}

} // namespace
} // namespace vistrane::testing
