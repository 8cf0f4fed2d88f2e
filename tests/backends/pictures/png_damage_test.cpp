#include <algorithm>

#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PngDamage = PicturesTest;
using ::testing::HasSubstr;

std::vector<Bytes> smallFiles() {
    return {randomPng({2, 8, false, false}, 5, 3).file, randomPng({3, 4, true, true}, 6, 5).file,
            randomPng({6, 16, true, false}, 3, 3).file, randomPng({0, 1, false, true}, 9, 4).file,
            withDensity(randomPng({4, 8, false, false}, 4, 4).file, 2835, 2835)};
}

/// The length of an empty chunk, and of the end chunk.
constexpr std::size_t endChunk = 12;

TEST_F(PngDamage, FilesTruncatedInTheirPixelsAreRefused) {
    for (const Bytes& file : smallFiles()) {
        const auto image = load(file);
        ASSERT_TRUE(image);
        const auto width = std::size_t(image->size().width);
        const auto height = std::size_t(image->size().height);
        for (std::size_t length = 0; length < file.size(); ++length) {
            const auto cut = load(Bytes(file.begin(), file.begin() + std::ptrdiff_t(length)));
            ASSERT_EQ(cut != nullptr, length >= file.size() - endChunk) << length;
            if (cut) {
                EXPECT_EQ(draw(cut, width, height).rgb, draw(image, width, height).rgb);
            }
        }
    }
}

TEST_F(PngDamage, NothingButTheHeaderMayBeTheFirstChunk) {
    const Bytes whole = withDensity(randomPng({2, 8, false, false}, 4, 4).file, 5669, 5669);
    // The signature has 8 bytes, the header chunk 25.
    Bytes withoutHeader = whole;
    withoutHeader.erase(withoutHeader.begin() + 8, withoutHeader.begin() + 33);
    withoutHeader[28] ^= 1; // in the pHYs chunk
    EXPECT_FALSE(load(withoutHeader));
}

TEST_F(PngDamage, DamageThatThePixelsDoNotNeedIsReportedOnceForAFile) {
    const Bytes whole = withDensity(randomPng({2, 8, false, false}, 4, 4).file, 5669, 5669);
    Bytes wrongDensity = whole;
    wrongDensity[53] ^= 1; // in the pHYs chunk, which follows the header
    const Bytes withoutEnd(whole.begin(), whole.end() - endChunk);
    put(folder_ / "density.png", wrongDensity);
    put(folder_ / "end.png", withoutEnd);
    for (int time = 0; time < 3; ++time) {
        EXPECT_EQ(pictures_.imageWithContentsOfFile(folder_ / "density.png")->size(),
                  (NSSize{4.0, 4.0}));
        EXPECT_EQ(pictures_.imageWithContentsOfFile(folder_ / "end.png")->size(),
                  (NSSize{2.0, 2.0}));
    }
    EXPECT_TRUE(observer_.unread.empty());
    ASSERT_EQ(observer_.flaws.size(), 2U);
    EXPECT_THAT(observer_.flaws[0].localizedDescription,
                ::testing::AllOf(HasSubstr("density.png"), HasSubstr("checksum of pHYs")));
    EXPECT_THAT(observer_.flaws[1].localizedDescription,
                ::testing::AllOf(HasSubstr("end.png"), HasSubstr("its end is missing")));
}

/// libpng refuses a file whose damage follows the pixels: those of the whole file then.
PngSample whatLibpngReads(const Bytes& changed, const Bytes& whole) {
    return readByLibpng(changed).value_or(*readByLibpng(whole));
}

/// Under right checksums a wrong bit reaches the parsers and the pixels.
TEST_F(PngDamage, AWrongBitIsRefusedAndUnderRightChecksumsMayBeReadLikeLibpng) {
    std::size_t refused = 0;
    std::size_t same = 0;
    std::size_t flawed = 0;
    for (const Bytes& file : smallFiles()) {
        for (std::size_t bit = 0; bit < file.size() * 8; ++bit) {
            Bytes changed = file;
            changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
            if (const auto despite = load(changed)) {
                const PngSample expected = whatLibpngReads(changed, file);
                EXPECT_EQ(draw(despite, expected.width, expected.height).rgb,
                          overBlack(expected.rgba))
                    << bit;
                ++flawed;
            }
            changed = withRightChecksums(changed);
            const auto image = load(changed);
            if (!image || image->size().width > 4096 || image->size().height > 4096) {
                ++refused;
                continue;
            }
            const auto width = std::size_t(image->size().width);
            const auto height = std::size_t(image->size().height);
            const Drawn drawn = draw(image, width, height);
            if (drawn.damage) {
                ++refused;
                EXPECT_FALSE(image->TIFFRepresentation());
                continue;
            }
            const PngSample expected = whatLibpngReads(changed, file);
            if (image->size() == NSSize{double(expected.width), double(expected.height)}) {
                EXPECT_EQ(drawn.rgb, overBlack(expected.rgba)) << bit;
                ++same;
            }
        }
    }
    EXPECT_GT(refused, 0U);
    EXPECT_GT(same, 0U);
    EXPECT_GT(flawed, 0U);
}

TEST_F(PngDamage, DamagedPixelsMarkTheBufferWithFileAndReason) {
    put(folder_ / "a.png", withDamagedPixels(randomPng({2, 8, false, false}, 40, 40).file, 2000));
    const auto image = pictures_.imageWithContentsOfFile(folder_ / "a.png");
    ASSERT_TRUE(image);
    EXPECT_TRUE(observer_.unread.empty());
    const Drawn drawn = draw(image, 40, 40);
    ASSERT_TRUE(drawn.damage);
    EXPECT_THAT(drawn.damage->localizedDescription, HasSubstr(folder_ / "a.png"));
    EXPECT_THAT(drawn.damage->localizedDescription, HasSubstr("damaged"));
    EXPECT_FALSE(image->TIFFRepresentation());
}

TEST_F(PngDamage, AWrongChecksumOfThePixelStreamMarksTheBuffer) {
    const Bytes file = withDamagedPixels(randomPng({2, 8, false, false}, 12, 12).file, 1);
    EXPECT_TRUE(draw(load(file), 12, 12).damage);
}

TEST_F(PngDamage, ADamagedPictureThatIsScaledMarksTheBufferToo) {
    const Bytes file = withDensity(randomPng({2, 8, false, false}, 40, 40).file, 5669, 5669);
    EXPECT_TRUE(draw(load(withDamagedPixels(file, 2000)), 20, 20).damage);
}

/// A file of that size with hardly any data.
Bytes claiming(std::uint32_t width, std::uint32_t height) {
    const Bytes data(20);
    return pngAround({2, 8, false, false}, width, height, {&data, 1});
}

TEST_F(PngDamage, AHugeSizeIsRefusedBeforeMemoryIsTaken) {
    for (const auto& [width, height] : {std::pair{0x7FFFFFFFU, 0x7FFFFFFFU},
                                        {0xFFFFFFFFU, 1U},
                                        {32769U, 1U},
                                        {1U, 32769U},
                                        {32768U, 32768U},
                                        {0U, 5U},
                                        {5U, 0U},
                                        // More pixels than the data can hold.
                                        {8192U, 8192U}}) {
        put(folder_ / "huge.png", claiming(width, height));
        EXPECT_FALSE(pictures_.imageWithContentsOfFile(folder_ / "huge.png"));
    }
    EXPECT_EQ(observer_.unread.size(), 8U);
}

TEST_F(PngDamage, LimitsAreThoseGiven) {
    RecordingObserver observer;
    const Pictures strict(observer, PictureLimits{100, 500, 1 << 20});
    const auto loaded = [&](std::uint32_t width, std::uint32_t height) {
        return strict.imageWithData(DataBytes::copyOf(
                   randomPng({0, 8, false, false}, width, height).file)) != nullptr;
    };
    EXPECT_TRUE(loaded(100, 5));
    EXPECT_FALSE(loaded(101, 1));
    EXPECT_FALSE(loaded(100, 6));
}

TEST_F(PngDamage, MisplacedAndUnknownCriticalChunksAreRefused) {
    const Bytes file = randomPng({3, 8, false, false}, 4, 4).file;
    const Bytes empty;
    EXPECT_FALSE(load(withChunkBefore(file, "IDAT", chunk("ABCD", empty))));
    EXPECT_FALSE(load(withChunkBefore(file, "IEND", chunk("IHDR", empty))));
    EXPECT_FALSE(load(withChunkBefore(file, "IHDR", chunk("tEXt", empty))));
    EXPECT_FALSE(load(withChunkBefore(file, "PLTE", chunk("IDAT", empty))));
    EXPECT_FALSE(load(withChunkBefore(file, "PLTE", chunk("PLTE", Bytes{1, 2}))));
    Bytes apart = withSplitData(file, 10);
    const auto chunks = chunksOf(apart);
    const auto last = std::find_if(chunks.rbegin(), chunks.rend(),
                                   [](const ChunkPlace& place) { return place.type == "IDAT"; });
    const Bytes text = chunk("tEXt", Bytes{'a', 0});
    apart.insert(apart.begin() + std::ptrdiff_t(last->offset), text.begin(), text.end());
    EXPECT_FALSE(load(apart));
}

} // namespace
} // namespace vistrane::testing
