// Every match that may be copied in a way of its own, beside zlib.

#include "platform/media/pictures/Inflation.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <random>

#include "platform/media/pictures/LiteralBlock.h"
#include "tests/media/pictures/DeflateSamples.h"
#include "tests/media/pictures/PngSamples.h"

namespace vistrane::testing {
namespace {

constexpr std::size_t shortest = 3;
constexpr std::size_t longest = 258;
constexpr std::size_t farthest = 32768;
/// More than is kept at hand: what has been made is moved to make room at least once.
constexpr std::size_t beyondTheWindow = 600 * 1024;

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

/// Three chunks of noise as literals, then the end.
Bytes literalChunks(const Bytes& bytes, std::size_t length) {
    Bytes chunks;
    for (std::size_t from = 0; from < bytes.size(); from += length) {
        const LiteralBlock block(std::span<const std::uint8_t>(bytes).subspan(from, length));
        Bytes data(block.room());
        const bool last = from + length == bytes.size();
        data.resize(static_cast<std::size_t>(block.write(data.data(), last) - data.data()));
        if (from == 0) {
            data.insert(data.begin(), {0x78, 0x01});
        }
        if (last) {
            const uLong sum = ::adler32(1, bytes.data(), static_cast<uInt>(bytes.size()));
            for (unsigned shift = 32; shift > 0; shift -= 8) {
                data.push_back(static_cast<std::uint8_t>(sum >> (shift - 8)));
            }
        }
        const Bytes framed = chunk("IDAT", data);
        chunks.insert(chunks.end(), framed.begin(), framed.end());
    }
    return chunks;
}

TEST(Inflation, ChunksOfLiteralsAreReadTwoAtATime) {
    std::mt19937 random(3);
    constexpr std::size_t length = 120000;
    Bytes bytes(5 * length);
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<std::uint8_t>(random() % 30 * (random() % 3)); });
    const Bytes chunks = literalChunks(bytes, length);
    Inflation inflation(ImageData(chunks), bytes.size(), 0);
    Bytes made;
    auto outcome = Inflation::Outcome::Going;
    for (std::size_t turn = 0; outcome == Inflation::Outcome::Going; ++turn) {
        outcome = inflation.more();
        // What is read one code after the other stops within a chunk.
        EXPECT_EQ(inflation.freshLength(), turn < 2 ? 2 * length : length);
        made.insert(made.end(), inflation.fresh(), inflation.fresh() + inflation.freshLength());
        inflation.take(inflation.freshLength());
    }
    EXPECT_EQ(outcome, Inflation::Outcome::Ended);
    EXPECT_EQ(made, bytes);
}

} // namespace
} // namespace vistrane::testing
