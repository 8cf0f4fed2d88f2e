// Streams against zlib, and what hostile ones cost.

#include "backends/pictures/Inflation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>

#include "backends/pictures/png_header.h"
#include "tests/backends/pictures/DeflateSamples.h"

namespace vistrane::testing {
namespace {

constexpr std::size_t shortest = 3;
constexpr std::size_t longest = 258;
constexpr std::size_t farthest = 32768;
/// Longer than the window: what was made moves at least once to make room.
constexpr std::size_t beyondTheWindow = 600 * 1024;

std::size_t lengthOf(const std::vector<Match>& matches) {
    std::size_t length = 0;
    for (const Match& match : matches) {
        length += match.literals + match.length;
    }
    return length;
}

/// The bytes of a whole stream; of those made, `untaken` are left until there are more. Nothing
/// when the stream is refused.
Bytes byInflation(const Bytes& stream, std::size_t length, std::size_t untaken) {
    const Bytes chunks = chunk("IDAT", stream);
    Inflation inflation(chunks, length, untaken);
    Bytes bytes;
    auto outcome = Inflation::Outcome::Going;
    while (outcome == Inflation::Outcome::Going) {
        outcome = inflation.more();
        const std::size_t left = outcome == Inflation::Outcome::Going ? untaken : 0;
        const std::size_t taken = inflation.freshLength() - std::min(inflation.freshLength(), left);
        append(bytes, {inflation.fresh(), taken});
        inflation.take(taken);
    }
    return outcome == Inflation::Outcome::Ended ? bytes : Bytes();
}

void expectLikeZlib(const std::vector<Match>& matches, std::size_t untaken = 0) {
    std::mt19937 random(1);
    const std::size_t length = lengthOf(matches);
    const Bytes stream = matchStream(random, matches);
    const Inflated expected = inflateByZlib(stream, length);
    ASSERT_TRUE(expected.ended);
    EXPECT_EQ(byInflation(stream, length, untaken), expected.bytes)
        << "distance " << matches.front().distance << ", length " << matches.front().length;
}

TEST(Inflation, MatchesAreCopiedFromEveryShortDistance) {
    std::vector<std::size_t> every(longest - shortest + 1);
    std::iota(every.begin(), every.end(), shortest);
    const std::vector<std::size_t> some = {3, 7, 8, 9, 15, 16, 17, 32, 33, 100, 257, 258};
    for (std::size_t distance = 1; distance <= 300; ++distance) {
        for (const std::size_t length : distance <= 40 ? every : some) {
            expectLikeZlib({{distance, distance, length}});
        }
    }
}

TEST(Inflation, MatchesThatTheFormatDoesNotHaveAreRefused) {
    for (std::size_t symbol = 257; symbol < 288; ++symbol) {
        for (std::size_t farSymbol = 0; farSymbol < 32; farSymbol += symbol == 257 ? 1 : 7) {
            DeflateWriter writer;
            writer.beginFixed(true);
            while (writer.made().size() < 25000) {
                writer.literal(static_cast<std::uint8_t>(writer.made().size() * 7));
            }
            writer.matchOf(symbol, 0, farSymbol, 0);
            writer.end();
            const Bytes stream = writer.finish();
            const bool isValid = symbol < 286 && farSymbol < 30;
            EXPECT_EQ(inflateByZlib(stream, 30000).ended, isValid);
            EXPECT_EQ(byInflation(stream, writer.made().size(), 0),
                      isValid ? writer.made() : Bytes())
                << symbol << ", " << farSymbol;
        }
    }
}

/// Matches of all lengths from one distance until the window has moved. Literals between them keep
/// the bytes from repeating.
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
        expectLikeZlib(manyMatches(distance), distance % 5 * 100);
    }
}

TEST(Inflation, TheFarthestBytesAreStillThereWhenTheWindowHasMoved) {
    for (std::size_t distance = farthest - 40; distance <= farthest; ++distance) {
        expectLikeZlib(manyMatches(distance));
        expectLikeZlib(manyMatches(distance), 2 * farthest);
    }
}

// Hostile streams: hardly any pixels, but many blocks or chunks.

/// So many empty blocks, then a few bytes.
Bytes manyBlocks(std::size_t count, const std::function<void(DeflateWriter&)>& putEmptyBlock) {
    DeflateWriter writer;
    for (std::size_t i = 0; i < count; ++i) {
        putEmptyBlock(writer);
    }
    writer.stored(Bytes{0, 1, 2}, true);
    return writer.finish();
}

Inflation::Work workOf(const Bytes& chunks) {
    Inflation inflation(chunks, 3, 0);
    EXPECT_EQ(inflation.more(), Inflation::Outcome::Ended);
    EXPECT_EQ(Bytes(inflation.fresh(), inflation.fresh() + inflation.freshLength()),
              (Bytes{0, 1, 2}));
    return inflation.work();
}

void putFixed(DeflateWriter& writer) {
    writer.beginFixed(false);
    writer.end();
}

void putOwn(DeflateWriter& writer) {
    std::vector<std::uint8_t> lengths(257, 0);
    lengths[0] = lengths[256] = 1;
    writer.beginOwn(false, DeflateCode(lengths), DeflateCode({0}));
    writer.end();
}

TEST(Inflation, EmptyBlocksTakeAFewStepsEachAndNoNeedlessTables) {
    const struct {
        const char* name;
        std::function<void(DeflateWriter&)> put;
        std::size_t codesBuilt;
    } kinds[] = {{"stored", [](auto& writer) { writer.stored({}, false); }, 0},
                 {"fixed", putFixed, 0},
                 {"own", putOwn, 1},
                 {"own and fixed", [](auto& writer) { putOwn(writer), putFixed(writer); }, 1}};
    // The fixed codes are built with their first use, once in the process.
    DeflateCodes::fixed();
    for (const auto& kind : kinds) {
        for (const std::size_t count : {1000U, 10000U}) {
            const Bytes chunks = chunk("IDAT", manyBlocks(count, kind.put));
            const std::size_t before = DeflateCodes::timesBuilt();
            const auto work = workOf(chunks);
            EXPECT_LE(work.steps, 5 * count) << kind.name;
            EXPECT_EQ(DeflateCodes::timesBuilt() - before, kind.codesBuilt * count) << kind.name;
            EXPECT_LE(work.chunksVisited, 2U) << kind.name;
        }
    }
}

/// The data, and the same again ahead of it for pairs of literal chunks, visit each chunk once.
TEST(Inflation, EmptyChunksAreVisitedTwiceAtMostWhateverTheBlocks) {
    for (const std::size_t count : {1000U, 10000U}) {
        Bytes empty;
        for (std::size_t i = 0; i < count; ++i) {
            append(empty, chunk("IDAT", {}));
        }
        // Both ends look like a literal chunk, which is why the next chunk is looked for.
        Bytes blocks = {0x78, 0x01};
        while (blocks.size() < 20000) {
            append(blocks, literalBlock({}, false));
        }
        const Bytes end = manyBlocks(0, putFixed);
        Bytes chunks = empty;
        append(chunks, chunk("IDAT", blocks));
        append(chunks, empty);
        append(chunks, chunk("IDAT", std::span(end).subspan(2)));
        append(chunks, empty);
        const auto work = workOf(chunks);
        EXPECT_LE(work.chunksVisited, 3 * (3 * count + 2));
        EXPECT_LE(work.steps, blocks.size());
    }
}

TEST(PngHeader, EveryChunkIsVisitedOnceHoweverManyThereAre) {
    const Bytes file = randomPng({2, 8, true, false}, 3, 3).file;
    for (const std::size_t count : {1000U, 10000U}) {
        Bytes tiny;
        for (std::size_t i = 0; i < count; ++i) {
            append(tiny, chunk("tEXt", Bytes{'a', 0}));
        }
        const Bytes hostile = withChunkBefore(withChunkBefore(file, "IEND", tiny), "IDAT", tiny);
        const auto header = std::get<PngHeader>(readPngHeader(hostile, PictureLimits()));
        EXPECT_EQ(header.chunksVisited, chunksOf(file).size() + 2 * count);
    }
}

} // namespace
} // namespace vistrane::testing
