// Every match that may be copied in a way of its own, beside zlib.

#include "backends/pictures/Inflation.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <random>

#include "backends/pictures/LiteralBlock.h"
#include "tests/backends/pictures/DeflateSamples.h"
#include "tests/backends/pictures/PngSamples.h"

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

Bytes noise(std::size_t length) {
    std::mt19937 random(3);
    Bytes bytes(length);
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<std::uint8_t>(random() % 30 * (random() % 3)); });
    return bytes;
}

Bytes literalBlock(std::span<const std::uint8_t> bytes, bool last) {
    const LiteralBlock block(bytes);
    Bytes data(block.room());
    data.resize(static_cast<std::size_t>(block.write(data.data(), last) - data.data()));
    return data;
}

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// A zlib stream of blocks of literals, each of so many bytes.
std::vector<Bytes> literalBlocks(const Bytes& bytes, std::size_t length) {
    std::vector<Bytes> blocks;
    for (std::size_t from = 0; from < bytes.size(); from += length) {
        const auto part = std::span<const std::uint8_t>(bytes).subspan(from, length);
        blocks.push_back(literalBlock(part, from + length == bytes.size()));
    }
    blocks.front().insert(blocks.front().begin(), {0x78, 0x01});
    const uLong sum = ::adler32(1, bytes.data(), static_cast<uInt>(bytes.size()));
    for (unsigned shift = 32; shift > 0; shift -= 8) {
        blocks.back().push_back(static_cast<std::uint8_t>(sum >> (shift - 8)));
    }
    return blocks;
}

Bytes framed(const std::vector<Bytes>& parts) {
    Bytes chunks;
    for (const Bytes& part : parts) {
        append(chunks, chunk("IDAT", part));
    }
    return chunks;
}

TEST(Inflation, ChunksOfLiteralsAreReadTwoAtATime) {
    constexpr std::size_t length = 120000;
    const Bytes bytes = noise(5 * length);
    const Bytes chunks = framed(literalBlocks(bytes, length));
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

TEST(Inflation, ChunksAreReadTwoAtATimeAgainAfterTwoThatCannotBe) {
    constexpr std::size_t length = 120000;
    const Bytes bytes = noise(9 * length);
    std::vector<Bytes> parts = literalBlocks(bytes, length);
    // Looks like one block from its ends.
    append(parts[1], parts[2]);
    parts.erase(parts.begin() + 2);
    const Bytes chunks = framed(parts);
    Inflation inflation(ImageData(chunks), bytes.size(), 0);
    Bytes made;
    std::size_t mostAtOnce = 0;
    auto outcome = Inflation::Outcome::Going;
    while (outcome == Inflation::Outcome::Going) {
        outcome = inflation.more();
        mostAtOnce = std::max(mostAtOnce, inflation.freshLength());
        made.insert(made.end(), inflation.fresh(), inflation.fresh() + inflation.freshLength());
        inflation.take(inflation.freshLength());
    }
    EXPECT_EQ(outcome, Inflation::Outcome::Ended);
    EXPECT_EQ(made, bytes);
    EXPECT_GE(mostAtOnce, 2 * length);
}

/// Whoever looks behind the empty chunks again at every block takes the better part of an hour, and
/// does not end in the time that a test has.
TEST(Inflation, WhatFollowsAChunkIsLookedForOnce) {
    const Bytes bytes = noise(5);
    std::vector<Bytes> parts = literalBlocks(bytes, bytes.size());
    const Bytes block = literalBlock({}, false);
    Bytes manyBlocks = {0x78, 0x01};
    while (manyBlocks.size() < std::size_t{2} * 1024 * 1024) {
        append(manyBlocks, block);
    }
    Bytes chunks = chunk("IDAT", manyBlocks);
    const Bytes empty = chunk("IDAT", {});
    for (std::size_t i = 0; i < 6'000'000; ++i) {
        append(chunks, empty);
    }
    append(chunks, chunk("IDAT", Bytes(parts[0].begin() + 2, parts[0].end())));
    Inflation inflation(ImageData(chunks), bytes.size(), 0);
    EXPECT_EQ(inflation.more(), Inflation::Outcome::Ended);
    EXPECT_EQ(Bytes(inflation.fresh(), inflation.fresh() + inflation.freshLength()), bytes);
}

} // namespace
} // namespace vistrane::testing
