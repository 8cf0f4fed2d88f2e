#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <vector>

#include "backends/movies/color_conversion.h"

namespace vistrane {
namespace {

struct Planes {
    std::size_t width;
    std::size_t height;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> blue;
    std::vector<std::uint8_t> red;
};

Planes convert(const std::vector<std::uint8_t>& pixels, std::size_t width, std::size_t height) {
    const std::size_t evenWidth = width + width % 2;
    const std::size_t evenHeight = height + height % 2;
    Planes planes{evenWidth, evenHeight, {}, {}, {}};
    planes.luma.resize(evenWidth * evenHeight);
    planes.blue.resize(evenWidth * evenHeight / 4);
    planes.red.resize(evenWidth * evenHeight / 4);
    convertToPlanar709({pixels.data(), width, height, 4 * width},
                       {planes.luma.data(), planes.blue.data(), planes.red.data(), evenWidth,
                        evenWidth / 2, evenWidth, evenHeight});
    return planes;
}

std::vector<std::uint8_t> random(std::size_t width, std::size_t height) {
    std::vector<std::uint8_t> pixels(4 * width * height);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : pixels) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return pixels;
}

double exactLuma(double red, double green, double blue) {
    return 16 + 219.0 / 255 * (0.2126 * red + 0.7152 * green + 0.0722 * blue);
}

TEST(ColorConversion, LumaIsRoundedFromTheExactValue) {
    const auto pixels = random(640, 100);
    const Planes planes = convert(pixels, 640, 100);
    for (std::size_t i = 0; i < planes.luma.size(); ++i) {
        const double exact = exactLuma(pixels[4 * i + 1], pixels[4 * i + 2], pixels[4 * i + 3]);
        ASSERT_NEAR(planes.luma[i], exact, 0.51) << i;
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
    std::vector<std::uint8_t> pixels;
    for (int grey = 0; grey < 256; ++grey) {
        for (int i = 0; i < 4; ++i) {
            pixels.push_back(static_cast<std::uint8_t>(grey));
        }
    }
    const Planes planes = convert(pixels, 1, 256);
    EXPECT_EQ(planes.luma.front(), 16);
    EXPECT_EQ(planes.luma.back(), 235);
    for (std::size_t i = 0; i < planes.blue.size(); ++i) {
        EXPECT_EQ(planes.blue[i], 128);
        EXPECT_EQ(planes.red[i], 128);
    }
}

TEST(ColorConversion, AnOddPictureRepeatsItsLastColumnAndRow) {
    const auto pixels = random(3, 5);
    const Planes planes = convert(pixels, 3, 5);
    ASSERT_EQ(planes.width, 4U);
    ASSERT_EQ(planes.height, 6U);
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
