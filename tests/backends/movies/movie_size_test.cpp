#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backends/movies/H264Encoder.h"
#include "tests/backends/movies/MovieTestKit.h"
#include "tests/backends/movies/QuickTimeBoxes.h"

namespace vistrane {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

struct Size {
    std::int64_t width;
    std::int64_t height;
};

class MovieSize : public testing::TestWithParam<Size> {};

TEST_P(MovieSize, EveryReaderFindsTheExactSize) {
    const auto [width, height] = GetParam();
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, width, height, 3, 25), std::nullopt);

    const auto boxes = readBoxes(path);
    ASSERT_TRUE(boxes);
    EXPECT_EQ(boxes->trackWidth, static_cast<double>(width));
    EXPECT_EQ(boxes->trackHeight, static_cast<double>(height));
    EXPECT_EQ(boxes->sampleWidth, width);
    EXPECT_EQ(boxes->sampleHeight, height);
    EXPECT_EQ(boxes->codec, "avc1");

    const std::string w = std::to_string(width);
    const std::string h = std::to_string(height);
    EXPECT_EQ(probe(path, "stream=width,height"), w + "," + h + "\n");
    EXPECT_EQ(outputOf("mediainfo '--Inform=Video;%Width% %Height%' " + quoted(path)),
              w + " " + h + "\n");
    EXPECT_EQ(decodeToRgb(path).size(), static_cast<std::size_t>(3 * 3 * width * height));
}

INSTANTIATE_TEST_SUITE_P(Sizes, MovieSize,
                         testing::Values(Size{1, 1}, Size{2, 2}, Size{3, 5}, Size{17, 16},
                                         Size{16, 17}, Size{641, 479}, Size{640, 480}),
                         [](const auto& size) {
                             return std::to_string(size.param.width) + "x" +
                                    std::to_string(size.param.height);
                         });

TEST(MovieSize, AMovieWithoutASizeTakesThatOfItsFirstPicture) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, 0, 0);
    EXPECT_TRUE(movie.hasStarted);
    EXPECT_FALSE(movie.append(nullptr, kCMTimeZero));
    EXPECT_TRUE(movie.append(scene(51, 33, 1), frameTime(1, 25)));
    EXPECT_TRUE(movie.append(scene(80, 80, 2), frameTime(2, 25)));
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_EQ(probe(path, "stream=width,height"), "51,33\n");
}

TEST(MovieSize, ATooLargeMovieIsRefusedWithItsLimit) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, H264Encoder::largestSide + 1, 16);
    EXPECT_FALSE(movie.hasStarted);
    EXPECT_FALSE(movie.append(scene(64, 48, 0), kCMTimeZero));
    EXPECT_THAT(movie.writer->error()->localizedDescription, HasSubstr("16385 x 16"));
    EXPECT_TRUE(movie.input->isReadyForMoreMediaData());
    movie.finish();
    EXPECT_THAT(observer.outcome(path)->localizedDescription, HasSubstr("limit"));
    EXPECT_THAT(folder.names(), IsEmpty());
}

TEST(MovieSize, ALargestPictureThatNamesTheSizeIsRefusedAndTheNextOneNamesIt) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, 0, 0);
    EXPECT_FALSE(movie.append(plain(H264Encoder::largestSide + 1, 2, {}), kCMTimeZero));
    EXPECT_TRUE(movie.append(scene(32, 32, 1), frameTime(1, 25)));
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_EQ(probe(path, "stream=width,height"), "32,32\n");
}

TEST(MovieSize, TheLongestSideWorks) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, H264Encoder::largestSide, 1);
    EXPECT_TRUE(movie.append(plain(H264Encoder::largestSide, 1, {9, 99, 199}), kCMTimeZero));
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_EQ(probe(path, "stream=width,height"), "16384,1\n");
}

Rgb pixelOf(const std::string& rgb, std::size_t width, std::size_t x, std::size_t y) {
    const std::size_t at = 3 * (y * width + x);
    const auto byte = [&](std::size_t i) { return int{static_cast<unsigned char>(rgb[at + i])}; };
    return {byte(0), byte(1), byte(2)};
}

void expectNear(Rgb actual, Rgb expected, int tolerance) {
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance);
    }
}

TEST(MovieSize, AFrameOfAnotherShapeIsFittedIntoTheMiddleOfBlack) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    MovieOptions options;
    options.constantRateFactor = 4;
    Movies movies(observer, options);
    OpenMovie movie(movies, path, 160, 120);
    const Rgb orange{220, 120, 40};
    EXPECT_TRUE(movie.append(plain(160, 120, orange), kCMTimeZero));
    EXPECT_TRUE(movie.append(plain(320, 120, orange), frameTime(1, 25)));
    EXPECT_TRUE(movie.append(plain(60, 120, orange), frameTime(2, 25)));
    EXPECT_TRUE(movie.append(plain(1, 1, orange), frameTime(3, 25)));
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);

    const std::string rgb = decodeToRgb(path);
    const std::size_t frame = 3 * 160 * 120;
    ASSERT_EQ(rgb.size(), 4 * frame);
    const std::string wide = rgb.substr(frame, frame); // 160 x 60, from row 30 on
    for (const std::size_t y : {0U, 15U, 26U, 93U, 119U}) {
        expectNear(pixelOf(wide, 160, 80, y), {0, 0, 0}, 4);
    }
    for (const std::size_t y : {34U, 60U, 85U}) {
        expectNear(pixelOf(wide, 160, 80, y), orange, 4);
        expectNear(pixelOf(wide, 160, 2, y), orange, 4);
    }
    const std::string tall = rgb.substr(2 * frame, frame); // 60 x 120, from column 50 on
    for (const std::size_t x : {0U, 30U, 46U, 113U, 159U}) {
        expectNear(pixelOf(tall, 160, x, 60), {0, 0, 0}, 4);
    }
    for (const std::size_t x : {54U, 80U, 105U}) {
        expectNear(pixelOf(tall, 160, x, 2), orange, 4);
    }
    const std::string square = rgb.substr(3 * frame, frame); // 120 x 120, from column 20 on
    expectNear(pixelOf(square, 160, 80, 60), orange, 4);
    expectNear(pixelOf(square, 160, 8, 60), {0, 0, 0}, 4);
}

} // namespace
} // namespace vistrane
