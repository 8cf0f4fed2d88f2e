#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numeric>

#include "tests/backends/movies/MovieTestKit.h"
#include "tests/backends/movies/QuickTimeBoxes.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Every place that tells a duration tells `ticks` at `frameRate`.
void expectDuration(const std::string& path, std::uint32_t ticks, std::uint32_t frameRate) {
    const auto boxes = readBoxes(path);
    ASSERT_TRUE(boxes);
    EXPECT_EQ(boxes->movieTimescale, frameRate);
    EXPECT_EQ(boxes->mediaTimescale, frameRate);
    EXPECT_EQ(boxes->movieDuration, ticks);
    EXPECT_EQ(boxes->trackDuration, ticks);
    EXPECT_EQ(boxes->mediaDuration, ticks);
    EXPECT_EQ(boxes->sumOfSampleDurations(), ticks);
    EXPECT_THAT(boxes->edits, ElementsAre(Edit{static_cast<std::int32_t>(ticks), 0}));

    EXPECT_EQ(probe(path, "stream=time_base,start_pts,duration_ts"),
              "1/" + std::to_string(frameRate) + ",0," + std::to_string(ticks) + "\n");
    EXPECT_NEAR(std::stod(probe(path, "format=duration")), double(ticks) / frameRate, 1e-6);
    const auto milliseconds =
        std::stod(outputOf("mediainfo '--Inform=Video;%Duration%' " + quoted(path)));
    EXPECT_NEAR(milliseconds, 1000.0 * ticks / frameRate, 1);
}

TEST(MovieTiming, TwoFramesAt25StartAt0And2) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, 64, 48, 2, 25), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(0, 2));
    expectDuration(path, 3, 25);
}

TEST(MovieTiming, ThreeFramesAt10StartAt0And2And3) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, 64, 48, 3, 10), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(0, 2, 3));
    expectDuration(path, 4, 10);
}

TEST(MovieTiming, SixFramesLastSevenTicks) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, 64, 48, 6, 25), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(0, 2, 3, 4, 5, 6));
    EXPECT_THAT(readBoxes(path)->sampleDurations, ElementsAre(TimeRun{1, 2}, TimeRun{5, 1}));
    expectDuration(path, 7, 25);
}

class MovieTimingAtRate : public testing::TestWithParam<int> {};

TEST_P(MovieTimingAtRate, EveryFrameFollowsTheOtherWithoutGapOrOverlap) {
    const int frameRate = GetParam();
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    constexpr int frames = 40;
    ASSERT_EQ(makeMovie(path, 96, 64, frames, frameRate), std::nullopt);

    std::vector<std::int64_t> expected(frames);
    std::iota(expected.begin(), expected.end(), 1);
    expected.front() = 0;
    EXPECT_EQ(shownTimes(path), expected);
    EXPECT_THAT(readBoxes(path)->sampleDurations,
                ElementsAre(TimeRun{1, 2}, TimeRun{frames - 1, 1}));
    expectDuration(path, frames + 1, static_cast<std::uint32_t>(frameRate));
}

INSTANTIATE_TEST_SUITE_P(Rates, MovieTimingAtRate, testing::Values(1, 24, 25, 30, 60));

TEST(MovieTiming, ReorderedPicturesAreDecodedInTheOrderOfTheirTimes) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, 96, 64, 40, 25), std::nullopt);
    // Without reordering this test and the durations above would prove little.
    EXPECT_GT(readBoxes(path)->compositionOffsets.size(), 1U);
    std::vector<std::int64_t> expected(40);
    std::iota(expected.begin(), expected.end(), 1);
    expected.front() = 0;
    EXPECT_EQ(decodedTimes(path), expected);
}

TEST(MovieTiming, ALonelyFrameLastsOneTickOf25) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    ASSERT_EQ(makeMovie(path, 64, 48, 1, 30), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(0));
    expectDuration(path, 1, 25);
}

TEST(MovieTiming, ARefusedFrameLeavesItsTimeToTheOneBefore) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, 64, 48);
    for (int i = 0; i < 12; ++i) {
        const bool isUnreadable = i == 3 || i == 4 || i == 8;
        EXPECT_NE(movie.append(isUnreadable ? nullptr : scene(64, 48, i), frameTime(i, 25)),
                  isUnreadable);
    }
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(0, 2, 3, 6, 7, 8, 10, 11, 12));
    expectDuration(path, 13, 25);
}

TEST(MovieTiming, AMovieWhoseFirstFrameIsRefusedStartsWithAnEmptyEdit) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, 64, 48);
    EXPECT_FALSE(movie.append(nullptr, kCMTimeZero));
    for (int i = 1; i < 4; ++i) {
        EXPECT_TRUE(movie.append(scene(64, 48, i), frameTime(i, 25)));
    }
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(2, 3, 4));
    const auto boxes = readBoxes(path);
    ASSERT_TRUE(boxes);
    EXPECT_EQ(boxes->movieDuration, 5U);
    EXPECT_EQ(boxes->trackDuration, 5U);
    EXPECT_EQ(boxes->mediaDuration, 3U);
    EXPECT_THAT(boxes->edits, ElementsAre(Edit{2, -1}, Edit{3, 0}));
}

TEST(MovieTiming, TimesThatDoNotRiseAreRefusedAndTheMovieGoesOn) {
    const TestFolder folder;
    const std::string path = folder / "m.mov";
    RecordingObserver observer;
    Movies movies(observer);
    OpenMovie movie(movies, path, 64, 48);
    EXPECT_TRUE(movie.append(scene(64, 48, 0), kCMTimeZero));
    EXPECT_TRUE(movie.append(scene(64, 48, 1), CMTimeMake(3, 25)));
    EXPECT_FALSE(movie.append(scene(64, 48, 2), CMTimeMake(3, 25)));
    EXPECT_THAT(movie.writer->error()->localizedDescription, HasSubstr("does not come after"));
    EXPECT_FALSE(movie.append(scene(64, 48, 2), CMTimeMake(2, 25)));
    EXPECT_FALSE(movie.append(scene(64, 48, 2), CMTimeMake(5, 0)));
    EXPECT_TRUE(movie.append(scene(64, 48, 2), CMTimeMake(4, 25)));
    movie.finish();
    ASSERT_EQ(observer.outcome(path), std::nullopt);
    EXPECT_THAT(shownTimes(path), ElementsAre(0, 3, 4));
}

} // namespace
} // namespace vistrane
