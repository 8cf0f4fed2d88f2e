#include <cmath>

#include "tests/backends/movies/MovieTest.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

constexpr std::size_t side = 64;

/// One frame, decoded by the movie's tags.
std::string throughAMovie(const BufferPointer& picture, double constantRateFactor) {
    const WorkFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    MovieOptions options;
    options.constantRateFactor = constantRateFactor;
    Movies movies(observer, options);
    OpenMovie movie(movies, path, static_cast<std::int64_t>(picture->width()),
                    static_cast<std::int64_t>(picture->height()));
    movie.append(picture, kCMTimeZero);
    movie.finish();
    return observer.outcome(path) ? std::string() : decodeToRgb(path);
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

/// In decibels; not a number where the movie could not be decoded.
double signalToNoise(const BufferPointer& picture, double constantRateFactor) {
    const std::string rgb = throughAMovie(picture, constantRateFactor);
    if (rgb.size() != 3 * picture->width() * picture->height()) {
        return NAN;
    }
    double squares = 0;
    for (std::size_t y = 0; y < picture->height(); ++y) {
        for (std::size_t x = 0; x < 3 * picture->width(); ++x) {
            const int before = picture->bytes()[y * picture->bytesPerRow() + x / 3 * 4 + 1 + x % 3];
            const int after = static_cast<unsigned char>(rgb[3 * y * picture->width() + x]);
            squares += (before - after) * (before - after);
        }
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(rgb.size()) / squares);
}

TEST(MovieColor, AGradientKeepsItsQualityWithTheDefaultSettings) {
    const auto picture = paint(128, 96, [](std::size_t x, std::size_t y) {
        return Rgb{static_cast<int>(2 * x), static_cast<int>(2 * y), static_cast<int>(255 - x - y)};
    });
    EXPECT_GT(signalToNoise(picture, MovieOptions().constantRateFactor), 38);
}

// Chroma that is off by one luma column costs 6 dB here: the decoder expects it on even columns.
TEST(MovieColor, ColorEdgesLieWhereTheyWere) {
    const auto picture = paint(128, 96, [](std::size_t x, std::size_t) {
        const double wave = std::sin(static_cast<double>(x) / 3.0);
        return Rgb{128 + static_cast<int>(100 * wave), 128, 128 - static_cast<int>(100 * wave)};
    });
    EXPECT_GT(signalToNoise(picture, 4), 34);
}

using MovieTags = MovieTest;

TEST_F(MovieTags, AreBt709InLimitedRangeInStreamAndFile) {
    make(2);
    EXPECT_EQ(movieFacts(path).colour, "yuv420p tv bt709 bt709 bt709 left");
    EXPECT_EQ(mediaInfo(path, "Video;%colour_range% %colour_primaries% %transfer_characteristics% "
                              "%matrix_coefficients% %matrix_coefficients_Source%"),
              "Limited BT.709 BT.709 BT.709 Container / Stream");
}

} // namespace
} // namespace vistrane
