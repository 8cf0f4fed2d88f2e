#include "backends/pictures/ppm.h"
#include "tests/backends/pictures/PicturesTest.h"

namespace vistrane::testing {
namespace {

using PictureEncoding = PicturesTest;

Bytes ppm(const std::string& head, const Bytes& pixels) {
    Bytes file(head.begin(), head.end());
    file.insert(file.end(), pixels.begin(), pixels.end());
    return file;
}

const Bytes sixPixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};

TEST_F(PictureEncoding, ARawPictureIsDrawnAndSavedExactly) {
    const auto image = load(ppm(ppmHead(3, 2), sixPixels));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size(), (NSSize{3, 2}));
    EXPECT_EQ(draw(image, 3, 2).rgb, sixPixels);
    const auto read = readByLibpng(bytesOf(encode(image)));
    ASSERT_TRUE(read);
    EXPECT_EQ(overBlack(read->rgba), sixPixels);
}

TEST_F(PictureEncoding, RawPicturesMayHaveCommentsAndAnySpace) {
    for (const char* head : {"P6 3 2 255 ", "P6\t3\r\n2\n255\n", "P6\n# made by me\n3 2\n255\n",
                             "P6#\n3#x\n2\n#\n#\n255 ", "P6 003 2 255\n"}) {
        const auto image = load(ppm(head, sixPixels));
        ASSERT_TRUE(image) << head;
        EXPECT_EQ(draw(image, 3, 2).rgb, sixPixels);
    }
}

TEST_F(PictureEncoding, RawPicturesThatAreNotWholeAreRefused) {
    for (const char* head : {"",
                             "P",
                             "P6",
                             "P6 ",
                             "P6 3",
                             "P6 3 2",
                             "P6 3 2 255",
                             "P63 2 255 ",
                             "P5 3 2 255 ",
                             "P6 3 2 254 ",
                             "P6 3 2 65535 ",
                             "P6 3 3 255 ",
                             "P6 2 2 255 ",
                             "P6 0 2 255 ",
                             "P6 -3 2 255 ",
                             "P6 4294967299 2 255 ",
                             "P6 99999999999999999999 2 255 ",
                             "P6 32769 1 255 ",
                             "P6 3 2 255x",
                             "P6 # 3 2 255 ",
                             "p6 3 2 255 ",
                             "P6 3a2 255 "}) {
        EXPECT_FALSE(load(ppm(head, sixPixels))) << head;
        EXPECT_FALSE(load(ppm(head, {}))) << head;
    }
    Bytes shorter = sixPixels;
    shorter.pop_back();
    EXPECT_FALSE(load(ppm(ppmHead(3, 2), shorter)));
    shorter.resize(19);
    EXPECT_FALSE(load(ppm(ppmHead(3, 2), shorter)));
}

TEST_F(PictureEncoding, NothingElseIsAPicture) {
    EXPECT_EQ(pictures_.imageWithData(nullptr), nullptr);
    EXPECT_EQ(pictures_.imageRepWithData(nullptr), nullptr);
    EXPECT_FALSE(load({}));
    EXPECT_FALSE(load({0xFF, 0xD8, 0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0}));
    EXPECT_FALSE(load(Bytes(1000, 0)));
}

std::uint32_t little(const Bytes& bytes, std::size_t offset, int count) {
    std::uint32_t value = 0;
    for (int i = count; i > 0; --i) {
        value = value << 8 | bytes[offset + std::size_t(i) - 1];
    }
    return value;
}

/// The first value of a directory entry, by the format's own rules.
std::uint32_t tiffValue(const Bytes& file, std::uint32_t tag) {
    const std::size_t directory = little(file, 4, 4);
    const std::uint32_t entries = little(file, directory, 2);
    std::uint32_t last = 0;
    for (std::size_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + i * 12;
        EXPECT_GT(little(file, entry, 2), last) << "tags rise";
        last = little(file, entry, 2);
        if (last != tag) {
            continue;
        }
        const std::uint32_t type = little(file, entry + 2, 2);
        const std::uint32_t count = little(file, entry + 4, 4);
        const std::size_t room = (type == 3 ? 2 : type == 4 ? 4 : 8) * count;
        const std::size_t place = room > 4 ? little(file, entry + 8, 4) : entry + 8;
        return little(file, place, type == 3 ? 2 : 4);
    }
    ADD_FAILURE() << "no tag " << tag;
    return 0;
}

TEST_F(PictureEncoding, TheTiffIsOneThatAnyReaderUnderstands) {
    const PngSample sample = randomPng({2, 8, false, false}, 5, 4);
    const Bytes tiff = bytesOf(load(withDensity(sample.file, 5669, 2835))->TIFFRepresentation());
    ASSERT_GT(tiff.size(), 8U);
    EXPECT_EQ(Bytes(tiff.begin(), tiff.begin() + 4), (Bytes{'I', 'I', 42, 0}));
    EXPECT_EQ(tiffValue(tiff, 256), 5U);
    EXPECT_EQ(tiffValue(tiff, 257), 4U);
    EXPECT_EQ(tiffValue(tiff, 258), 8U);
    EXPECT_EQ(tiffValue(tiff, 259), 1U);
    EXPECT_EQ(tiffValue(tiff, 262), 2U);
    EXPECT_EQ(tiffValue(tiff, 277), 3U);
    EXPECT_EQ(tiffValue(tiff, 278), 4U);
    EXPECT_EQ(tiffValue(tiff, 279), 60U);
    EXPECT_EQ(tiffValue(tiff, 282), 5669U);
    EXPECT_EQ(tiffValue(tiff, 283), 2835U);
    EXPECT_EQ(tiffValue(tiff, 284), 1U);
    EXPECT_EQ(tiffValue(tiff, 296), 3U);
    const std::size_t strip = tiffValue(tiff, 273);
    EXPECT_EQ(Bytes(tiff.begin() + std::ptrdiff_t(strip), tiff.end()), overBlack(sample.rgba));
}

TEST_F(PictureEncoding, ATransparentTiffHasItsAlphaApart) {
    const PngSample sample = randomPng({6, 8, false, false}, 5, 4);
    const Bytes tiff = bytesOf(load(sample.file)->TIFFRepresentation());
    EXPECT_EQ(tiffValue(tiff, 277), 4U);
    EXPECT_EQ(tiffValue(tiff, 338), 2U);
    EXPECT_EQ(tiffValue(tiff, 296), 1U);
    const std::size_t strip = tiffValue(tiff, 273);
    EXPECT_EQ(Bytes(tiff.begin() + std::ptrdiff_t(strip), tiff.end()), sample.rgba);
}

TEST_F(PictureEncoding, ATiffWithAnyOtherHeadOrLengthIsRefused) {
    const Bytes tiff =
        bytesOf(load(randomPng({6, 8, false, false}, 3, 3).file)->TIFFRepresentation());
    const auto isRep = [&](const Bytes& bytes) {
        return pictures_.imageRepWithData(DataBytes::copyOf(bytes)) != nullptr;
    };
    ASSERT_TRUE(isRep(tiff));
    for (std::size_t length = 0; length < tiff.size(); ++length) {
        EXPECT_FALSE(isRep(Bytes(tiff.begin(), tiff.begin() + std::ptrdiff_t(length))));
    }
    for (std::size_t bit = 0; bit < (tiff.size() - 36) * 8; ++bit) {
        Bytes changed = tiff;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_FALSE(isRep(changed)) << bit;
    }
}

TEST_F(PictureEncoding, ARepIsMadeOfPngAndRawPicturesToo) {
    const PngSample sample = randomPng({3, 2, true, true}, 9, 9);
    const auto rep = pictures_.imageRepWithData(DataBytes::copyOf(sample.file));
    ASSERT_TRUE(rep);
    const auto png = rep->representationUsingType(NSBitmapImageFileTypePNG, {});
    EXPECT_EQ(readByLibpng(bytesOf(png))->rgba, sample.rgba);
    EXPECT_TRUE(pictures_.imageRepWithData(DataBytes::copyOf(ppm(ppmHead(3, 2), sixPixels))));
}

TEST_F(PictureEncoding, OpaquePicturesAreSavedWithoutAlpha) {
    constexpr std::size_t colourType = 25;
    EXPECT_EQ(bytesOf(encode(load(randomPng({0, 16, true, false}, 4, 4).file)))[colourType], 2);
    EXPECT_EQ(bytesOf(encode(load(randomPng({4, 16, true, false}, 4, 4).file)))[colourType], 6);
}

TEST_F(PictureEncoding, OtherFileTypesAreNotMade) {
    const auto rep =
        pictures_.imageRepWithData(DataBytes::copyOf(randomPng({2, 8, false, false}, 2, 2).file));
    EXPECT_EQ(rep->representationUsingType(static_cast<NSBitmapImageFileType>(3), {}), nullptr);
}

TEST_F(PictureEncoding, TheWholeWayFromStillToFrameFileKeepsEveryPixel) {
    Bytes pixels;
    for (std::uint32_t i = 0; i < 320 * 180 * 3; ++i) {
        pixels.push_back(static_cast<std::uint8_t>(i * i / 7));
    }
    const auto png = encode(load(ppm(ppmHead(320, 180), pixels)));
    ASSERT_TRUE(png->writeToFile(folder_.file("still.png"), false));
    const auto image = pictures_.imageWithContentsOfFile(folder_.file("still.png"));
    ASSERT_TRUE(image);
    EXPECT_EQ(draw(image, 320, 180).rgb, pixels);
}

} // namespace
} // namespace vistrane::testing
