#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

#include "backends/movies/color_conversion.h"
#include "tests/backends/movies/MovieTest.h"

namespace vistrane {
namespace {

struct Planes {
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> blue;
    std::vector<std::uint8_t> red;
};

Planes convert(const std::vector<std::uint8_t>& pixels, std::size_t width, std::size_t height) {
    const std::size_t evenWidth = width + width % 2;
    const std::size_t evenHeight = height + height % 2;
    const std::vector<std::uint8_t> chroma(evenWidth * evenHeight / 4);
    Planes planes{std::vector<std::uint8_t>(4 * chroma.size()), chroma, chroma};
    convertToPlanar709({pixels.data(), width, height, 4 * width},
                       {planes.luma.data(), planes.blue.data(), planes.red.data(), evenWidth,
                        evenWidth / 2, evenWidth, evenHeight});
    return planes;
}

std::vector<std::uint8_t> random(std::size_t width, std::size_t height) {
    return randomBytes(4 * width * height, 1);
}

TEST(ColorConversion, LumaIsRoundedFromTheExactValue) {
    const auto pixels = random(640, 100);
    const Planes planes = convert(pixels, 640, 100);
    for (std::size_t i = 0; i < planes.luma.size(); ++i) {
        const double light =
            0.2126 * pixels[4 * i + 1] + 0.7152 * pixels[4 * i + 2] + 0.0722 * pixels[4 * i + 3];
        ASSERT_NEAR(planes.luma[i], 16 + 219.0 / 255 * light, 0.51) << i;
    }
}

TEST(ColorConversion, ChromaIsTheWeightedMeanAroundTheEvenColumn) {
    const std::size_t width = 64;
    const std::size_t height = 32;
    const auto pixels = random(width, height);
    const Planes planes = convert(pixels, width, height);
    for (std::size_t y = 0; y < height; y += 2) {
        for (std::size_t x = 0; x < width; x += 2) {
            double rgb[3] = {};
            for (std::size_t row = y; row < y + 2; ++row) {
                for (int d = -1; d <= 1; ++d) {
                    const auto column = static_cast<std::size_t>(
                        std::clamp<int>(static_cast<int>(x) + d, 0, static_cast<int>(width) - 1));
                    for (std::size_t c = 0; c < 3; ++c) {
                        rgb[c] +=
                            pixels[4 * (row * width + column) + 1 + c] * (d == 0 ? 2 : 1) / 8.0;
                    }
                }
            }
            const double luma = 0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2];
            const std::size_t at = y / 2 * (width / 2) + x / 2;
            ASSERT_NEAR(planes.blue[at], 128 + 224.0 / 255 * (rgb[2] - luma) / 1.8556, 0.51);
            ASSERT_NEAR(planes.red[at], 128 + 224.0 / 255 * (rgb[0] - luma) / 1.5748, 0.51);
        }
    }
}

TEST(ColorConversion, EveryGreyHasNoColor) {
    std::vector<std::uint8_t> pixels(std::size_t{4} * 256);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<std::uint8_t>(i / 4);
    }
    const Planes planes = convert(pixels, 1, 256);
    EXPECT_EQ(planes.luma.front(), 16);
    EXPECT_EQ(planes.luma.back(), 235);
    EXPECT_THAT(planes.blue, testing::Each(128));
    EXPECT_THAT(planes.red, testing::Each(128));
}

TEST(ColorConversion, AnOddPictureRepeatsItsLastColumnAndRow) {
    const Planes planes = convert(random(3, 5), 3, 5);
    ASSERT_EQ(planes.luma.size(), 4U * 6U);
    for (std::size_t y = 0; y < 6; ++y) {
        EXPECT_EQ(planes.luma[4 * y + 3], planes.luma[4 * y + 2]);
    }
    for (std::size_t x = 0; x < 4; ++x) {
        EXPECT_EQ(planes.luma[20 + x], planes.luma[16 + x]);
    }
}

TEST(ColorConversion, TheIgnoredByteChangesNothing) {
    auto pixels = random(16, 16);
    const Planes before = convert(pixels, 16, 16);
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        pixels[i] ^= 0xFF;
    }
    const Planes after = convert(pixels, 16, 16);
    EXPECT_EQ(before.luma, after.luma);
    EXPECT_EQ(before.blue, after.blue);
    EXPECT_EQ(before.red, after.red);
}

} // namespace
} // namespace vistrane
