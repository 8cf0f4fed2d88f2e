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

class MovieSizeOf : public MovieSize, public testing::WithParamInterface<TwoNumbers> {};

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
                         testing::Values(TwoNumbers{1, 1}, TwoNumbers{2, 2}, TwoNumbers{3, 5},
                                         TwoNumbers{17, 16}, TwoNumbers{16, 17},
                                         TwoNumbers{641, 479}, TwoNumbers{640, 480}),
                         nameOf);

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

TEST_F(MovieSize, AFrameOfAnotherShapeIsCentredOnBlack) {
    MovieOptions options;
    options.constantRateFactor = 4;
    Movies fine(observer, options);
    OpenMovie movie(fine, path, 160, 120);
    const Rgb orange{220, 120, 40};
    const Rgb black{0, 0, 0};
    using Points = std::vector<std::pair<std::size_t, std::size_t>>;
    const struct {
        TwoNumbers size;
        Points inside;
        Points outside;
    } frames[] = {
        {{160, 120}, {{1, 1}, {158, 118}}, {}},
        // 160 x 60, from row 30 on.
        {{320, 120}, {{80, 34}, {2, 60}, {80, 85}}, {{80, 0}, {80, 26}, {80, 93}, {80, 119}}},
        // 60 x 120, from column 50 on.
        {{60, 120}, {{54, 2}, {80, 2}, {105, 2}}, {{0, 60}, {46, 60}, {113, 60}, {159, 60}}},
        // 120 x 120, from column 20 on.
        {{1, 1}, {{80, 60}}, {{8, 60}}},
    };
    for (int i = 0; i < std::ssize(frames); ++i) {
        const auto [width, height] = frames[i].size;
        EXPECT_TRUE(
            movie.append(plain(std::size_t(width), std::size_t(height), orange), frameTime(i)));
    }
    finish(movie);

    const std::string rgb = decodeToRgb(path);
    const std::size_t frameBytes = 3 * 160 * 120;
    ASSERT_EQ(rgb.size(), std::size(frames) * frameBytes);
    for (std::size_t i = 0; i < std::size(frames); ++i) {
        const auto expectColor = [&](const Points& points, const Rgb& expected) {
            for (const auto& [x, y] : points) {
                for (std::size_t c = 0; c < 3; ++c) {
                    const char actual = rgb[i * frameBytes + 3 * (y * 160 + x) + c];
                    EXPECT_NEAR(static_cast<unsigned char>(actual), expected[c], 4)
                        << x << ' ' << y;
                }
            }
        };
        expectColor(frames[i].inside, orange);
        expectColor(frames[i].outside, black);
    }
}

} // namespace
} // namespace vistrane
