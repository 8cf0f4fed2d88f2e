#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "backends/movies/MovieIndex.h"
#include "tests/support/movie_boxes.h"

namespace vistrane {
namespace {

MovieTrack track(const std::vector<std::int64_t>& decodingOrder, std::int64_t end) {
    MovieTrack track;
    track.width = 64;
    track.height = 48;
    track.timescale = 25;
    track.end = end;
    track.configuration = {1, 100, 0, 10, 0xFF, 0xE0, 0};
    for (const std::int64_t time : decodingOrder) {
        track.samples.push_back({1000, 10, time, time == 0});
    }
    return track;
}

using Numbers = std::vector<std::int64_t>;

MovieBoxes boxesOfIndex(const MovieTrack& track) {
    const auto movie = movieBox(track);
    return boxesIn(std::string(movie.begin(), movie.end()));
}

TEST(MovieIndex, DurationsAreInPresentationOrder) {
    MovieBoxes boxes = boxesOfIndex(track({0, 5, 3, 2, 4, 6}, 7));
    EXPECT_EQ(boxes["stts"], (Numbers{0, 2, 1, 2, 5, 1}));
}

TEST(MovieIndex, OffsetsLeadToDecodingOrderAndMayBeNegative) {
    MovieBoxes boxes = boxesOfIndex(track({0, 5, 3, 2, 4, 6}, 7));
    EXPECT_EQ(boxes["ctts"],
              (Numbers{1 << 24, 8, 1, 0, 1, 3, 1, 0, 1, -2, 1, -1, 1, 0, 0, 0, 0, 0}));
    EXPECT_EQ(boxes["cslg"], (Numbers{0, 2, -2, 3, 0, 7}));
}

TEST(MovieIndex, WithoutReorderingThereAreNoOffsets) {
    MovieBoxes boxes = boxesOfIndex(track({0, 2, 3}, 4));
    EXPECT_TRUE(boxes.contains("stts"));
    EXPECT_FALSE(boxes.contains("ctts"));
    EXPECT_FALSE(boxes.contains("cslg"));
}

TEST(MovieIndex, OffsetsInTheFileHave64Bits) {
    MovieTrack large = track({0, 1}, 2);
    large.samples[1].offset = (std::uint64_t{3} << 32) + 7;
    EXPECT_EQ(boxesOfIndex(large)["co64"], (Numbers{0, 2, 0, 1000, 3, 7}));
}

TEST(MovieIndex, TheMediaBoxEndsWithTheLastSample) {
    const auto header = movieFileHeader();
    const auto size = mediaBoxSize((std::uint64_t{1} << 32) + header.size());
    const std::vector<std::uint8_t> expected{0, 0, 0, 1, 0, 0, 0, 16};
    EXPECT_EQ(std::vector<std::uint8_t>(size.begin(), size.end()), expected);
    EXPECT_EQ(mediaBoxSizeOffset + size.size(), header.size());
}

} // namespace
} // namespace vistrane
