#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/backends/movies/MovieTestKit.h"

namespace vistrane {
namespace {

constexpr std::size_t side = 64;

/// One frame, hardly compressed, decoded by the movie's tags.
std::string throughAMovie(const BufferPointer& picture, double constantRateFactor) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    MovieOptions options;
    options.constantRateFactor = constantRateFactor;
    Movies movies(observer, options);
    OpenMovie movie(movies, path, static_cast<std::int64_t>(picture->width()),
                    static_cast<std::int64_t>(picture->height()));
    movie.append(picture, kCMTimeZero);
    movie.finish();
    if (observer.outcome(path)) {
        return {};
    }
    return decodeToRgb(path);
}

class MovieColor : public testing::TestWithParam<Rgb> {};

TEST_P(MovieColor, ComesBackAsItWas) {
    const std::string rgb = throughAMovie(plain(side, side, GetParam()), 4);
    ASSERT_EQ(rgb.size(), 3 * side * side);
    for (std::size_t i = 0; i < rgb.size(); ++i) {
        ASSERT_NEAR(static_cast<unsigned char>(rgb[i]), GetParam()[i % 3], 2) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Colors, MovieColor,
                         testing::Values(Rgb{255, 0, 0}, Rgb{0, 255, 0}, Rgb{0, 0, 255},
                                         Rgb{255, 255, 255}, Rgb{0, 0, 0}, Rgb{255, 255, 0},
                                         Rgb{0, 255, 255}, Rgb{255, 0, 255}, Rgb{128, 128, 128},
                                         Rgb{64, 64, 64}, Rgb{192, 192, 192}, Rgb{200, 120, 60}));

double signalToNoise(const BufferPointer& picture, const std::string& rgb) {
    double squares = 0;
    for (std::size_t y = 0; y < picture->height(); ++y) {
        for (std::size_t x = 0; x < picture->width(); ++x) {
            for (std::size_t c = 0; c < 3; ++c) {
                const int before = picture->bytes()[y * picture->bytesPerRow() + 4 * x + 1 + c];
                const int after =
                    static_cast<unsigned char>(rgb[3 * (y * picture->width() + x) + c]);
                squares += (before - after) * (before - after);
            }
        }
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(rgb.size()) / squares);
}

TEST(MovieColor, AGradientKeepsItsQualityWithTheDefaultSettings) {
    const auto picture = paint(128, 96, [](std::size_t x, std::size_t y) {
        return Rgb{static_cast<int>(2 * x), static_cast<int>(2 * y), static_cast<int>(255 - x - y)};
    });
    const std::string rgb = throughAMovie(picture, MovieOptions().constantRateFactor);
    ASSERT_EQ(rgb.size(), 3U * 128 * 96);
    EXPECT_GT(signalToNoise(picture, rgb), 38);
}

// Colour that lies one luma pixel aside costs 6 dB here: the decoder expects it on even columns.
TEST(MovieColor, ColorEdgesLieWhereTheyWere) {
    const auto picture = paint(128, 96, [](std::size_t x, std::size_t) {
        const double wave = std::sin(static_cast<double>(x) / 3.0);
        return Rgb{128 + static_cast<int>(100 * wave), 128, 128 - static_cast<int>(100 * wave)};
    });
    const std::string rgb = throughAMovie(picture, 4);
    ASSERT_EQ(rgb.size(), 3U * 128 * 96);
    EXPECT_GT(signalToNoise(picture, rgb), 34);
}

TEST(MovieColor, StreamAndFileAreTaggedAsBt709InLimitedRange) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, 64, 48, 2, 25), std::nullopt);
    EXPECT_EQ(probe(path, "stream=codec_name,pix_fmt,color_range,color_space,color_transfer,"
                          "color_primaries,chroma_location"),
              "h264,yuv420p,tv,bt709,bt709,bt709,left\n");
    EXPECT_EQ(outputOf("mediainfo '--Inform=Video;%colour_range% %colour_primaries% "
                       "%transfer_characteristics% %matrix_coefficients%"
                       " %matrix_coefficients_Source%' " +
                       quoted(path)),
              "Limited BT.709 BT.709 BT.709 Container / Stream\n");
}

} // namespace
} // namespace vistrane
