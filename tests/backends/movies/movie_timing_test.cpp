#include <filesystem>

#include "tests/backends/movies/MovieTest.h"
#include "tests/support/Program.h"
#include "tests/support/movie_boxes.h"
#include "tests/support/movie_facts.h"

namespace vistrane {
namespace {

using testing::ElementsAre;

using Numbers = std::vector<std::int64_t>;

class MovieTiming : public MovieTest {
protected:
    /// Every place that has a duration has `ticks` at `frameRate`.
    void expectDuration(long ticks, int frameRate) const {
        MovieBoxes boxes = boxesOf(path);
        ASSERT_FALSE(boxes.empty());
        for (const char* header : {"mvhd", "mdhd"}) {
            EXPECT_EQ(boxes[header][3], frameRate) << header;
            EXPECT_EQ(boxes[header][4], ticks) << header;
        }
        EXPECT_EQ(boxes["tkhd"][5], ticks);
        EXPECT_EQ(boxes["elst"], (Numbers{0, 1, ticks, 0, 1 << 16}));
        long sum = 0;
        for (std::size_t i = 2; i + 1 < boxes["stts"].size(); i += 2) {
            sum += boxes["stts"][i] * boxes["stts"][i + 1];
        }
        EXPECT_EQ(sum, ticks);

        const MovieFacts facts = movieFacts(path);
        EXPECT_EQ(facts.timeBase, "1/" + std::to_string(frameRate));
        EXPECT_EQ(facts.start, 0);
        EXPECT_EQ(facts.duration, ticks);
        EXPECT_NEAR(std::stod(mediaInfo(path, "Video;%Duration%")),
                    1000 * static_cast<double>(ticks) / frameRate, 1);
    }
};

/// Frames, and their rate.
class MovieTimingOf : public MovieTiming, public testing::WithParamInterface<TwoNumbers> {};

TEST_P(MovieTimingOf, FramesThatFollowOneAnotherWithoutGapOrOverlap) {
    const auto [frames, rate] = GetParam();
    make(frames, rate, 96, 64);
    EXPECT_EQ(movieFacts(path).times, frameTimes(frames));
    // The first frame lasts two ticks, every other one.
    EXPECT_EQ(boxesOf(path)["stts"], (Numbers{0, 2, 1, 2, frames - 1, 1}));
    expectDuration(frames + 1, rate);
}

INSTANTIATE_TEST_SUITE_P(Rates, MovieTimingOf,
                         testing::Values(TwoNumbers{2, 25}, TwoNumbers{3, 10}, TwoNumbers{6, 25},
                                         TwoNumbers{40, 1}, TwoNumbers{40, 24}, TwoNumbers{40, 25},
                                         TwoNumbers{40, 30}, TwoNumbers{40, 60}),
                         nameOf);

TEST_F(MovieTiming, ReorderedPicturesAreDecodedInPresentationOrder) {
    make(40, 25, 96, 64);
    // Without reordering, this test and the durations above would prove little.
    EXPECT_GT(boxesOf(path)["ctts"].size(), 4U);
    EXPECT_EQ(movieFacts(path).decodedTimes, frameTimes(40));
}

TEST_F(MovieTiming, NoPictureIsPresentedBeforeItIsDecoded) {
    for (int frames = 1; frames <= 40; frames += frames < 12 ? 1 : 7) {
        make(frames);
        EXPECT_FALSE(movieFacts(path).isPresentedBeforeDecoding) << frames;
        // ffmpeg warns of such packets when it copies them.
        const Ended copied = runTool({"ffmpeg", "-v", "warning", "-nostdin", "-y", "-i",
                                      "file:" + path, "-c", "copy", "file:" + folder / "copy.mov"});
        EXPECT_EQ(copied.errors, "") << frames;
        std::filesystem::remove(path);
    }
}

TEST_F(MovieTiming, ALoneFrameLastsOneTickOf25) {
    make(1, 30);
    EXPECT_THAT(movieFacts(path).times, ElementsAre(0));
    expectDuration(1, 25);
}

TEST_F(MovieTiming, ARefusedFrameLeavesItsTimeToThePreviousOne) {
    OpenMovie movie = open();
    for (int i = 0; i < 12; ++i) {
        const bool isUnreadable = i == 3 || i == 4 || i == 8;
        EXPECT_NE(movie.append(isUnreadable ? nullptr : scene(64, 48, i), frameTime(i)),
                  isUnreadable);
    }
    finish(movie);
    EXPECT_THAT(movieFacts(path).times, ElementsAre(0, 2, 3, 6, 7, 8, 10, 11, 12));
    expectDuration(13, 25);
}

TEST_F(MovieTiming, AMovieWhoseFirstFrameIsRefusedStartsWithAnEmptyEdit) {
    OpenMovie movie = open();
    EXPECT_FALSE(movie.append(nullptr, kCMTimeZero));
    for (int i = 1; i < 4; ++i) {
        EXPECT_TRUE(movie.append(scene(64, 48, i), frameTime(i)));
    }
    finish(movie);
    EXPECT_THAT(movieFacts(path).times, ElementsAre(2, 3, 4));
    MovieBoxes boxes = boxesOf(path);
    EXPECT_EQ(boxes["mvhd"][4], 5);
    EXPECT_EQ(boxes["tkhd"][5], 5);
    EXPECT_EQ(boxes["mdhd"][4], 3);
    EXPECT_EQ(boxes["elst"], (Numbers{0, 2, 2, -1, 1 << 16, 3, 0, 1 << 16}));
}

} // namespace
} // namespace vistrane
