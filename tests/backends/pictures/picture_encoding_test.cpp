#include "backends/pictures/MediaImage.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using ::testing::SizeIs;

using PictureEncoding = PicturesTest;

const Bytes sixPixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};

std::shared_ptr<const PictureSource> pictureIn(const std::shared_ptr<NSData>& data) {
    const auto* carrier = dynamic_cast<const PictureData*>(data.get());
    return carrier != nullptr ? carrier->picture() : nullptr;
}

TEST_F(PictureEncoding, AStillIsDrawnAndSavedExactly) {
    const auto image = pictures_.imageWithData(stillOf(3, 2, sixPixels));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), (NSSize{3, 2}));
    EXPECT_EQ(draw(image, 3, 2).rgb, sixPixels);
    const auto read = readByLibpng(bytesOf(encode(image)));
    ASSERT_TRUE(read);
    EXPECT_EQ(overBlack(read->rgba), sixPixels);
}

TEST_F(PictureEncoding, AStillReachesItsEncoderWithoutACopy) {
    const auto still = stillOf(3, 2, sixPixels);
    const auto tiff = pictures_.imageWithData(still)->TIFFRepresentation();
    EXPECT_EQ(pictureIn(tiff), pictureIn(still));
}

TEST_F(PictureEncoding, AStillThatIsEncodedAheadIsSavedAsThatFile) {
    const PictureShape shape{3, 2, std::nullopt, false};
    const auto ahead =
        std::make_shared<DecodedPicture>(shape, "still", *ByteArray::copyOf(sixPixels));
    EXPECT_FALSE(ahead->encodedAhead());
    ahead->encodeAhead();
    ASSERT_TRUE(ahead->encodedAhead());
    const auto still = std::make_shared<PictureData>(ahead);
    const auto saved = encode(pictures_.imageWithData(still));
    // Not a copy, and not encoded again.
    EXPECT_EQ(saved->bytes(), ahead->encodedAhead()->data());
    EXPECT_EQ(still->bytes(), saved->bytes());
    EXPECT_EQ(bytesOf(saved), bytesOf(encode(pictures_.imageWithData(stillOf(3, 2, sixPixels)))));
    ASSERT_TRUE(saved->writeToFile(folder_ / "a", false));
    EXPECT_EQ(observer_.written, std::vector{folder_ / "a"});
    EXPECT_EQ(get(folder_ / "a"), bytesOf(saved));
}

/// The last still, saved as `a`.
class SavedStill : public PicturesTest {
protected:
    SavedStill() {
        const PictureShape shape{3, 2, std::nullopt, false};
        const auto still =
            std::make_shared<DecodedPicture>(shape, "still", *ByteArray::copyOf(sixPixels));
        still->encodeAhead();
        shown_ = pictures_.imageWithData(std::make_shared<PictureData>(still));
        EXPECT_TRUE(encode(shown_)->writeToFile(path_, false));
    }
    static std::shared_ptr<const PictureSource> sourceOf(const std::shared_ptr<NSImage>& image) {
        const auto* const media = dynamic_cast<const MediaImage*>(image.get());
        return media != nullptr ? media->source() : nullptr;
    }
    std::shared_ptr<NSImage> load() { return pictures_.imageWithContentsOfFile(path_); }

    const std::string path_ = folder_ / "a";
    std::shared_ptr<NSImage> shown_;
};

TEST_F(SavedStill, IsNotDecodedWhileItIsShown) {
    EXPECT_EQ(sourceOf(load()), sourceOf(shown_));
    shown_.reset();
    const auto read = load();
    EXPECT_EQ(sourceOf(read)->pixelsInMemory(PixelForm::RGB), nullptr);
    EXPECT_EQ(draw(read, 3, 2).rgb, sixPixels);
}

TEST_F(SavedStill, IsNotTakenForAFileOfTheSameLength) {
    const Bytes saved = get(path_);
    Bytes damaged = saved;
    damaged.back() ^= 1;
    put(path_, damaged);
    EXPECT_NE(sourceOf(load()), sourceOf(shown_));
    EXPECT_THAT(observer_.flaws, SizeIs(1));
    put(path_, saved);
    EXPECT_EQ(sourceOf(load()), sourceOf(shown_));
}

TEST_F(SavedStill, IsNotTakenForAFileOfAnotherLength) {
    Bytes longer = get(path_);
    longer.push_back(0);
    put(path_, longer);
    EXPECT_NE(sourceOf(load()), sourceOf(shown_));
    const PngSample other = randomPng({2, 8, false, false}, 3, 2);
    put(path_, other.file);
    EXPECT_EQ(draw(load(), 3, 2).rgb, overBlack(other.rgba));
    put(path_, {});
    EXPECT_FALSE(load());
}

TEST_F(PictureEncoding, ATransparentPictureIsReadInEveryForm) {
    const PngSample sample = randomPng({6, 8, false, false}, 5, 4);
    const auto decoded = pictureIn(load(sample.file)->TIFFRepresentation());
    ASSERT_TRUE(decoded);
    Bytes rgba(std::size_t{5} * 4 * 4);
    Bytes argb(rgba.size());
    Bytes rgb(std::size_t{5} * 4 * 3);
    ASSERT_FALSE(decoded->readPixels(PixelForm::RGBA, rgba.data(), 20));
    ASSERT_FALSE(decoded->readPixels(PixelForm::ARGB, argb.data(), 20));
    ASSERT_FALSE(decoded->readPixels(PixelForm::RGB, rgb.data(), 15));
    EXPECT_EQ(rgba, sample.rgba);
    for (std::size_t i = 0; i < 20; ++i) {
        EXPECT_EQ(argb[4 * i], rgba[4 * i + 3]);
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_EQ(argb[4 * i + 1 + c], rgba[4 * i + c]);
            EXPECT_EQ(rgb[3 * i + c], rgba[4 * i + c]);
        }
    }
}

/// The program reads no bytes of a still or of a TIFF representation; another reader finds a file.
TEST_F(PictureEncoding, TheBytesOfDataThatCarryAPictureAreAPngFile) {
    const auto still = stillOf(3, 2, sixPixels);
    const auto read = readByLibpng(bytesOf(still));
    ASSERT_TRUE(read);
    EXPECT_EQ(overBlack(read->rgba), sixPixels);
    ASSERT_TRUE(still->writeToFile(folder_ / "a", false));
    EXPECT_EQ(get(folder_ / "a"), bytesOf(still));
    EXPECT_FALSE(still->writeToFile(folder_ / "none/a", false));
}

TEST_F(PictureEncoding, DataThatIsNoPictureIsReported) {
    EXPECT_FALSE(load(Bytes(1000, 0)));
    EXPECT_EQ(observer_.unread.size(), 1U);
}

TEST_F(PictureEncoding, ARepIsMadeOfAPngFileTooAndMakesNothingElse) {
    const PngSample sample = randomPng({3, 2, true, true}, 9, 9);
    const auto rep = pictures_.imageRepWithData(DataBytes::copyOf(sample.file));
    ASSERT_TRUE(rep);
    const auto png = rep->representationUsingType(NSBitmapImageFileTypePNG, {});
    EXPECT_EQ(readByLibpng(bytesOf(png))->rgba, sample.rgba);
    EXPECT_EQ(rep->representationUsingType(static_cast<NSBitmapImageFileType>(3), {}), nullptr);
}

TEST_F(PictureEncoding, OpaquePicturesAreSavedWithoutAlpha) {
    constexpr std::size_t colourType = 25;
    EXPECT_EQ(bytesOf(encode(load(randomPng({0, 16, true, false}, 4, 4).file)))[colourType], 2);
    EXPECT_EQ(bytesOf(encode(load(randomPng({4, 16, true, false}, 4, 4).file)))[colourType], 6);
}

} // namespace
} // namespace vistrane::testing
