// Our own PNG encoder against libpng's: the same picture, the same chunks, and hardly more bytes.

#include <gtest/gtest.h>

#include <random>

#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/libpng_decoding.h"
#include "backends/pictures/libpng_encoding.h"
#include "backends/pictures/png_decoding.h"
#include "backends/pictures/png_encoding.h"
#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

Bytes copyOf(const std::optional<ByteArray>& file) {
    return file ? Bytes(file->bytes().begin(), file->bytes().end()) : Bytes();
}

Bytes encoded(const PictureShape& shape, const Bytes& pixels) {
    return copyOf(encodePng(DecodedPicture(shape, "test", *ByteArray::copyOf(pixels))));
}

std::size_t strideOf(const PictureShape& shape) {
    return std::size_t{shape.width} * (shape.mayBeTransparent ? 4 : 3);
}

/// All chunks; those of the pixels are one item without their data.
std::vector<Bytes> partsOf(const Bytes& file) {
    std::vector<Bytes> parts;
    for (const ChunkPlace& place : chunksOf(file)) {
        const auto start = file.begin() + std::ptrdiff_t(place.offset);
        Bytes part(start, start + std::ptrdiff_t(place.dataLength + 12));
        if (place.type == "IDAT") {
            part = {'I', 'D', 'A', 'T'};
        }
        if (place.type != "IDAT" || parts.back() != part) {
            parts.push_back(part);
        }
    }
    return parts;
}

/// Expects both decoders to read the same picture from a file.
void expectReadBack(const PictureShape& shape, const Bytes& pixels, const Bytes& file) {
    const auto read = readPngHeader(file, PictureLimits());
    const auto* header = std::get_if<PngHeader>(&read);
    ASSERT_NE(header, nullptr);
    EXPECT_EQ(header->width, shape.width);
    EXPECT_EQ(header->height, shape.height);
    const PixelForm form = shape.compactForm();
    const auto stride = static_cast<std::ptrdiff_t>(strideOf(shape));
    Bytes ours(pixels.size());
    EXPECT_TRUE(decodeUsualPng(file, *header, form, ours.data(), stride));
    EXPECT_EQ(ours, pixels);
    Bytes theirs(pixels.size());
    EXPECT_FALSE(decodeByLibpng(file, *header, form, theirs.data(), stride));
    EXPECT_EQ(theirs, pixels);
}

void expectSameAsLibpng(const PictureShape& shape, const Bytes& pixels) {
    SCOPED_TRACE(std::to_string(shape.width) + " x " + std::to_string(shape.height));
    const Bytes ours = encoded(shape, pixels);
    const Bytes theirs = copyOf(encodeByLibpng(shape, pixels.data(), strideOf(shape)));
    expectReadBack(shape, pixels, ours);
    EXPECT_EQ(partsOf(ours), partsOf(theirs));
}

/// With one to 256 values, half of them repeated.
Bytes randomPixels(const PictureShape& shape, std::mt19937& random) {
    Bytes pixels(strideOf(shape) * shape.height);
    const unsigned different = 1U << random() % 9;
    const std::size_t repeats = 1 + random() % 50;
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = i >= repeats && random() % 2 == 0
                        ? pixels[i - repeats]
                        : static_cast<std::uint8_t>(random() % different);
    }
    return pixels;
}

TEST(PngWriting, AnyPictureIsWrittenLikeByLibpng) {
    std::mt19937 random(1);
    for (int i = 0; i < 1500; ++i) {
        PictureShape shape;
        shape.width = static_cast<std::uint32_t>(1 + random() % 60);
        shape.height = static_cast<std::uint32_t>(1 + random() % 20);
        shape.mayBeTransparent = random() % 2 == 0;
        if (random() % 2 == 0) {
            shape.density = PixelDensity{static_cast<std::uint32_t>(1 + random() % 10000),
                                         static_cast<std::uint32_t>(1 + random() % 10000)};
        }
        expectSameAsLibpng(shape, randomPixels(shape, random));
    }
}

TEST(PngWriting, PicturesOfManyChunksAreReadBack) {
    std::mt19937 random(2);
    constexpr std::pair<std::uint32_t, std::uint32_t> sizes[] = {
        {640, 480}, {1, 4000}, {4000, 1}, {4096, 70}, {257, 1023}, {1000, 262}};
    for (const auto& [width, height] : sizes) {
        for (int i = 0; i < 3; ++i) {
            const PictureShape shape{width, height, std::nullopt, i == 1};
            // The third is nothing that could be compressed.
            expectSameAsLibpng(shape, i < 2 ? randomPixels(shape, random)
                                            : randomBytes(random, strideOf(shape) * shape.height));
        }
    }
}

/// Slabs of literals and slabs with matches, each after the other.
TEST(PngWriting, PicturesOfLiteralsAndMatchesAreReadBack) {
    std::mt19937 random(5);
    for (const bool transparent : {false, true}) {
        const PictureShape shape{500, 2000, std::nullopt, transparent};
        Bytes pixels(strideOf(shape) * shape.height);
        for (std::size_t y = 0; y < shape.height; ++y) {
            const std::size_t kind = y / 150 % 3;
            for (std::size_t x = 0; x < strideOf(shape); ++x) {
                pixels[y * strideOf(shape) + x] =
                    static_cast<std::uint8_t>(kind == 0   ? 40
                                              : kind == 1 ? random() % 20
                                                          : (x * y) % 251);
            }
        }
        expectSameAsLibpng(shape, pixels);
    }
}

/// With alpha a row of these is longer than a slab.
TEST(PngWriting, TheWidestPicturesAreReadBack) {
    std::mt19937 random(6);
    for (const bool transparent : {false, true}) {
        const PictureShape shape{PictureLimits().largestSide, 4, std::nullopt, transparent};
        const Bytes pixels = randomBytes(random, strideOf(shape) * shape.height);
        expectReadBack(shape, pixels, encoded(shape, pixels));
    }
}

/// A sky over a ground with the noise of a sensor.
TEST(PngWriting, APhotographIsNoLongerThanByLibpng) {
    std::mt19937 random(3);
    const PictureShape shape{640, 480, std::nullopt, false};
    Bytes pixels;
    for (std::uint32_t y = 0; y < shape.height; ++y) {
        for (std::uint32_t x = 0; x < shape.width * 3; ++x) {
            const std::uint32_t light = y < shape.height / 2 ? 120 + y / 8 : 60 + x / 100;
            pixels.push_back(static_cast<std::uint8_t>(light + random() % 6 + random() % 6));
        }
    }
    const Bytes theirs = copyOf(encodeByLibpng(shape, pixels.data(), strideOf(shape)));
    EXPECT_LE(encoded(shape, pixels).size(), theirs.size());
}

TEST(PngWriting, OneColourTakesHardlyAnyRoom) {
    const PictureShape shape{1920, 1080, std::nullopt, false};
    const Bytes pixels(strideOf(shape) * shape.height, 0x60);
    EXPECT_LT(encoded(shape, pixels).size(), pixels.size() / 100);
}

} // namespace
} // namespace vistrane::testing
