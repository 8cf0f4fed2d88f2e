#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "backends/movies/color_rows.h"
#include "tests/backends/movies/MovieTest.h"

namespace vistrane {
namespace {

using testing::ElementsAreArray;

constexpr std::uint8_t untouched = 0xA5;
constexpr std::size_t margin = 64;

/// What a conversion makes of two rows, with a margin behind them that it must not touch.
struct RowPlanes {
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> blue;
    std::vector<std::uint8_t> red;
};

RowPlanes convert(const RowConversion& conversion, std::span<const std::uint8_t> top,
                  std::span<const std::uint8_t> bottom) {
    const std::size_t width = top.size() / 4;
    RowPlanes planes{std::vector<std::uint8_t>(width + margin, untouched),
                     std::vector<std::uint8_t>((width + 1) / 2 + margin, untouched),
                     std::vector<std::uint8_t>((width + 1) / 2 + margin, untouched)};
    conversion.luma(top.data(), width, planes.luma.data());
    conversion.chroma(top.data(), bottom.data(), width, planes.blue.data(), planes.red.data());
    return planes;
}

void expectEqual(std::span<const std::uint8_t> top, std::span<const std::uint8_t> bottom) {
    SCOPED_TRACE("at width " + std::to_string(top.size() / 4));
    const RowPlanes plain = convert(plainRowConversion(), top, bottom);
    const RowPlanes fastest = convert(fastestRowConversion(), top, bottom);
    ASSERT_THAT(fastest.luma, ElementsAreArray(plain.luma));
    ASSERT_THAT(fastest.blue, ElementsAreArray(plain.blue));
    ASSERT_THAT(fastest.red, ElementsAreArray(plain.red));
}

#if defined(__x86_64__)
TEST(ColorRows, TheFastestConversionUsesAvx2WhereTheProcessorHasIt) {
    EXPECT_EQ(fastestRowConversion().luma != plainRowConversion().luma,
              __builtin_cpu_supports("avx2") != 0);
}
#endif

TEST(ColorRows, EveryVariantGivesTheSameBytesAtEveryWidthAndPlaceAndWritesNoFurther) {
    for (std::size_t width = 1; width <= 200; ++width) {
        const std::size_t offset = width % 40;
        const auto bytes = randomBytes(offset + 8 * width, static_cast<std::uint32_t>(width));
        const std::span<const std::uint8_t> from = std::span(bytes).subspan(offset);
        expectEqual(from.first(4 * width), from.subspan(4 * width));
    }
}

/// Every value of each channel together with the least and the greatest of the others.
TEST(ColorRows, EveryVariantGivesTheSameBytesForTheExtremesOfEveryChannel) {
    for (int corner = 0; corner < 8; ++corner) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            std::vector<std::uint8_t> row;
            for (int value = 0; value < 256; ++value) {
                row.push_back(static_cast<std::uint8_t>(255 - value));
                for (std::size_t c = 0; c < 3; ++c) {
                    const int rest = (corner >> c & 1) * 255;
                    row.push_back(static_cast<std::uint8_t>(c == channel ? value : rest));
                }
            }
            expectEqual(row, row);
        }
    }
}

/// All 16 million colours.
TEST(ColorRows, EveryVariantGivesTheSameLumaForEveryColor) {
    std::vector<std::uint8_t> row(4 * 65536);
    std::vector<std::uint8_t> plain(65536);
    std::vector<std::uint8_t> fastest(65536);
    for (int red = 0; red < 256; ++red) {
        for (std::size_t i = 0; i < 65536; ++i) {
            row[4 * i + 1] = static_cast<std::uint8_t>(red);
            row[4 * i + 2] = static_cast<std::uint8_t>(i >> 8);
            row[4 * i + 3] = static_cast<std::uint8_t>(i & 0xFF);
        }
        plainRowConversion().luma(row.data(), plain.size(), plain.data());
        fastestRowConversion().luma(row.data(), fastest.size(), fastest.data());
        ASSERT_EQ(fastest, plain) << "red " << red;
    }
}

} // namespace
} // namespace vistrane
