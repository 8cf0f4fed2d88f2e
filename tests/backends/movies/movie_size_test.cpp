#include "backends/movies/VideoEncoder.h"
#include "tests/backends/movies/MovieTest.h"
#include "tests/support/movie_boxes.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t largestSide = VideoEncoder::largestSide;

class MovieSize : public MovieTest {
protected:
    void expectSize(int width, int height) const {
        const MovieFacts facts = movieFacts(path);
        EXPECT_EQ(facts.width, width);
        EXPECT_EQ(facts.height, height);
    }
};

struct Size {
    int width;
    int height;
};

class MovieSizeOf : public MovieSize, public testing::WithParamInterface<Size> {};

TEST_P(MovieSizeOf, EveryReaderFindsTheExactSize) {
    const auto [width, height] = GetParam();
    make(3, 25, width, height);
    MovieBoxes boxes = boxesOf(path);
    ASSERT_FALSE(boxes.empty());
    EXPECT_EQ(boxes["tkhd"][19], width << 16);
    EXPECT_EQ(boxes["tkhd"][20], height << 16);
    EXPECT_EQ(boxes["stsd"][3], 0x61766331); // "avc1"
    EXPECT_EQ(boxes["stsd"][10], width << 16 | height);
    expectSize(width, height);
    EXPECT_EQ(mediaInfo(path, "Video;%Width% %Height%"),
              std::to_string(width) + " " + std::to_string(height));
    EXPECT_EQ(decodeToRgb(path).size(), static_cast<std::size_t>(3 * 3 * width * height));
}

INSTANTIATE_TEST_SUITE_P(Sizes, MovieSizeOf,
                         testing::Values(Size{1, 1}, Size{2, 2}, Size{3, 5}, Size{17, 16},
                                         Size{16, 17}, Size{641, 479}, Size{640, 480}),
                         [](const auto& made) {
                             return std::to_string(made.param.width) + "x" +
                                    std::to_string(made.param.height);
                         });

TEST_F(MovieSize, AMovieWithoutASizeTakesThatOfItsFirstPicture) {
    OpenMovie movie = open(0, 0);
    EXPECT_TRUE(movie.hasStarted);
    EXPECT_FALSE(movie.append(nullptr, kCMTimeZero));
    EXPECT_FALSE(movie.append(plain(largestSide + 1, 2, {}), kCMTimeZero));
    EXPECT_TRUE(movie.append(scene(51, 33, 1), frameTime(1)));
    EXPECT_TRUE(movie.append(scene(80, 80, 2), frameTime(2)));
    finish(movie);
    expectSize(51, 33);
}

TEST_F(MovieSize, ATooLargeMovieIsRefusedWithItsLimit) {
    OpenMovie movie = open(largestSide + 1, 16);
    EXPECT_FALSE(movie.hasStarted);
    EXPECT_FALSE(movie.append(scene(64, 48, 0), kCMTimeZero));
    EXPECT_THAT(movie.writer->error()->localizedDescription, HasSubstr("16385 x 16"));
    EXPECT_TRUE(movie.input->isReadyForMoreMediaData());
    std::optional<NSError> reported;
    EXPECT_TRUE(movies.whenFinished(path, [&](auto error) { reported = error; }));
    movie.finish(); // no thread has started: the callbacks come at once
    ASSERT_TRUE(reported);
    EXPECT_THAT(reported->localizedDescription, HasSubstr("limit"));
    EXPECT_EQ(observer.outcome(path), reported);
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST_F(MovieSize, TheLongestSideWorks) {
    OpenMovie movie = open(largestSide, 1);
    EXPECT_TRUE(movie.append(plain(largestSide, 1, {9, 99, 199}), kCMTimeZero));
    finish(movie);
    expectSize(largestSide, 1);
}

/// Expects that colour at (x, y) of a decoded frame 160 pixels wide.
void expectColor(const std::string& frame, std::size_t x, std::size_t y, Rgb expected) {
    for (std::size_t i = 0; i < 3; ++i) {
        const int actual = static_cast<unsigned char>(frame[3 * (y * 160 + x) + i]);
        EXPECT_NEAR(actual, expected[i], 4) << x << ", " << y;
    }
}

TEST_F(MovieSize, AFrameOfAnotherShapeIsCentredOnBlack) {
    MovieOptions options;
    options.constantRateFactor = 4;
    Movies fine(observer, options);
    OpenMovie movie(fine, path, 160, 120);
    const Rgb orange{220, 120, 40};
    const Rgb black{0, 0, 0};
    EXPECT_TRUE(movie.append(plain(160, 120, orange), kCMTimeZero));
    EXPECT_TRUE(movie.append(plain(320, 120, orange), frameTime(1)));
    EXPECT_TRUE(movie.append(plain(60, 120, orange), frameTime(2)));
    EXPECT_TRUE(movie.append(plain(1, 1, orange), frameTime(3)));
    finish(movie);

    const std::string rgb = decodeToRgb(path);
    const std::size_t frame = 3 * 160 * 120;
    ASSERT_EQ(rgb.size(), 4 * frame);
    const std::string wide = rgb.substr(frame, frame); // 160 x 60, from row 30 on
    for (const std::size_t y : {0U, 15U, 26U, 93U, 119U}) {
        expectColor(wide, 80, y, black);
    }
    for (const std::size_t y : {34U, 60U, 85U}) {
        expectColor(wide, 80, y, orange);
        expectColor(wide, 2, y, orange);
    }
    const std::string tall = rgb.substr(2 * frame, frame); // 60 x 120, from column 50 on
    for (const std::size_t x : {0U, 30U, 46U, 113U, 159U}) {
        expectColor(tall, x, 60, black);
    }
    for (const std::size_t x : {54U, 80U, 105U}) {
        expectColor(tall, x, 2, orange);
    }
    const std::string square = rgb.substr(3 * frame, frame); // 120 x 120, from column 20 on
    expectColor(square, 80, 60, orange);
    expectColor(square, 8, 60, black);
}

} // namespace
} // namespace vistrane
