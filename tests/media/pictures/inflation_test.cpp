// Every match that may be copied in a way of its own, beside zlib.

#include "platform/media/pictures/Inflation.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <random>

#include "tests/media/pictures/DeflateSamples.h"
#include "tests/media/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

constexpr std::size_t shortest = 3;
constexpr std::size_t longest = 258;
constexpr std::size_t farthest = 32768;
/// More than is kept at hand: what has been made is moved to make room at least once.
constexpr std::size_t beyondTheWindow = 260 * 1024;

std::size_t lengthOf(const std::vector<Match>& matches) {
    std::size_t length = 0;
    for (const Match& match : matches) {
        length += match.literals + match.length;
    }
    return length;
}

/// Nothing but the bytes of a stream that is whole and `length` bytes long.
Bytes byZlib(const Bytes& stream, std::size_t length) {
    Bytes bytes(length);
    uLongf made = length;
    const int result = ::uncompress(bytes.data(), &made, stream.data(), stream.size());
    return result == Z_OK && made == length ? bytes : Bytes();
}

/// The same by our own. Of what has been made, `untaken` bytes are left until there is more.
Bytes byInflation(const Bytes& stream, std::size_t length, std::size_t untaken) {
    const Bytes chunks = chunk("IDAT", stream);
    Inflation inflation(ImageData(chunks), length, untaken);
    Bytes bytes;
    auto outcome = Inflation::Outcome::Going;
    while (outcome == Inflation::Outcome::Going) {
        outcome = inflation.more();
        const std::size_t left = outcome == Inflation::Outcome::Going ? untaken : 0;
        const std::size_t taken = inflation.freshLength() - std::min(inflation.freshLength(), left);
        bytes.insert(bytes.end(), inflation.fresh(), inflation.fresh() + taken);
        inflation.take(taken);
    }
    return outcome == Inflation::Outcome::Ended ? bytes : Bytes();
}

bool isMadeAlike(const std::vector<Match>& matches, std::size_t untaken = 0) {
    std::mt19937 random(1);
    const std::size_t length = lengthOf(matches);
    const Bytes stream = matchStream(random, matches);
    const Bytes expected = byZlib(stream, length);
    return !expected.empty() && byInflation(stream, length, untaken) == expected;
}

TEST(Inflation, MatchesOfEveryLengthAreCopiedFromEveryShortDistance) {
    for (std::size_t distance = 1; distance <= 40; ++distance) {
        for (std::size_t length = shortest; length <= longest; ++length) {
            EXPECT_TRUE(isMadeAlike({{distance, distance, length}})) << distance << ", " << length;
        }
    }
}

TEST(Inflation, MatchesAreCopiedFromLongerDistances) {
    for (std::size_t distance = 41; distance <= 300; ++distance) {
        for (const std::size_t length : {3, 7, 8, 9, 15, 16, 17, 32, 33, 100, 257, 258}) {
            EXPECT_TRUE(isMadeAlike({{distance, distance, length}})) << distance << ", " << length;
        }
    }
}

/// Matches of all lengths from one distance, again and again, until the window has moved. Literals
/// between them keep the bytes from repeating.
std::vector<Match> manyMatches(std::size_t distance) {
    std::vector<Match> matches = {{distance, distance, shortest}};
    std::size_t made = distance + shortest;
    for (std::size_t i = 0; made < beyondTheWindow + distance; ++i) {
        const std::size_t length = shortest + i * 89 % (longest - shortest + 1);
        matches.push_back({i % 3, distance, length});
        made += i % 3 + length;
    }
    return matches;
}

TEST(Inflation, MatchesAreCopiedAcrossTheWindowsMove) {
    for (std::size_t distance = 1; distance <= 300; ++distance) {
        EXPECT_TRUE(isMadeAlike(manyMatches(distance), distance % 5 * 100)) << distance;
    }
}

TEST(Inflation, TheFarthestBytesAreStillThereWhenTheWindowHasMoved) {
    for (std::size_t distance = farthest - 40; distance <= farthest; ++distance) {
        EXPECT_TRUE(isMadeAlike(manyMatches(distance))) << distance;
        EXPECT_TRUE(isMadeAlike(manyMatches(distance), 2 * farthest)) << distance;
    }
}

} // namespace
} // namespace vistrane::testing
