#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "backends/movies/MovieIndex.h"

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

/// The 32-bit numbers of a box's content.
std::vector<std::int64_t> numbersOf(const std::vector<std::uint8_t>& movie, const char* type) {
    const std::string bytes(movie.begin(), movie.end());
    const std::size_t at = bytes.find(type);
    if (at == std::string::npos) {
        return {};
    }
    const auto number = [&](std::size_t from) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            value = value << 8 | movie[from + i];
        }
        return value;
    };
    std::vector<std::int64_t> numbers;
    for (std::size_t i = at + 4; i + 4 <= at - 4 + number(at - 4); i += 4) {
        numbers.push_back(static_cast<std::int32_t>(number(i)));
    }
    return numbers;
}

using Numbers = std::vector<std::int64_t>;

TEST(MovieIndex, DurationsFollowTheOrderOfShowing) {
    const auto movie = movieBox(track({0, 5, 3, 2, 4, 6}, 7));
    EXPECT_EQ(numbersOf(movie, "stts"), (Numbers{0, 2, 1, 2, 5, 1}));
}

TEST(MovieIndex, OffsetsLeadFromShowingToDecodingAndMayBeNegative) {
    const auto movie = movieBox(track({0, 5, 3, 2, 4, 6}, 7));
    EXPECT_EQ(numbersOf(movie, "ctts"),
              (Numbers{1 << 24, 6, 1, 0, 1, 3, 1, 0, 1, -2, 1, -1, 1, 0}));
    EXPECT_EQ(numbersOf(movie, "cslg"), (Numbers{0, 2, -2, 3, 0, 7}));
}

TEST(MovieIndex, WithoutReorderingThereAreNoOffsets) {
    const auto movie = movieBox(track({0, 2, 3}, 4));
    EXPECT_TRUE(numbersOf(movie, "ctts").empty());
    EXPECT_TRUE(numbersOf(movie, "cslg").empty());
}

TEST(MovieIndex, OffsetsInTheFileHave64Bits) {
    MovieTrack large = track({0, 1}, 2);
    large.samples[1].offset = (std::uint64_t{3} << 32) + 7;
    EXPECT_EQ(numbersOf(movieBox(large), "co64"), (Numbers{0, 2, 0, 1000, 3, 7}));
}

TEST(MovieIndex, TheMediaBoxEndsWithTheLastSample) {
    const auto head = movieFileHead();
    const auto size = mediaBoxSize((std::uint64_t{1} << 32) + head.size());
    const std::vector<std::uint8_t> expected{0, 0, 0, 1, 0, 0, 0, 16};
    EXPECT_EQ(std::vector<std::uint8_t>(size.begin(), size.end()), expected);
    EXPECT_EQ(mediaBoxSizeOffset + size.size(), head.size());
}

} // namespace
} // namespace vistrane
