// Chunks of literals, decoded in pairs: directly, and as a stream takes them.

#include "backends/pictures/literal_chunks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "backends/pictures/Inflation.h"
#include "tests/backends/pictures/DeflateSamples.h"

namespace vistrane::testing {
namespace {

constexpr std::size_t margin = 24;

Bytes noise(std::size_t length) {
    std::mt19937 random(3);
    Bytes bytes(length);
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<std::uint8_t>(random() % 30 * (random() % 3)); });
    return bytes;
}

/// The bytes of two chunks; nothing when they are refused.
Bytes decodedPair(Bytes first, Bytes second, std::size_t room) {
    const std::size_t lengths[] = {first.size(), second.size()};
    first.resize(first.size() + margin);
    second.resize(second.size() + margin);
    Bytes out(room);
    LiteralChunkPair pair;
    const auto* end = pair.decode(std::span(first).first(lengths[0]),
                                  std::span(second).first(lengths[1]), out.data(), room);
    out.resize(end != nullptr ? std::size_t(end - out.data()) : 0);
    return out;
}

TEST(LiteralChunks, TwoAreDecodedTogetherWhateverTheirLengths) {
    for (const std::size_t length : {0, 1, 7, 100, 5000}) {
        for (const std::size_t other : {0, 3, 99, 4000}) {
            Bytes bytes = noise(length + other);
            const auto middle = bytes.begin() + std::ptrdiff_t(length);
            const Bytes first = literalBlock(Bytes(bytes.begin(), middle), false);
            const Bytes second = literalBlock(Bytes(middle, bytes.end()), false);
            EXPECT_EQ(decodedPair(first, second, 20000), bytes) << length << ", " << other;
        }
    }
}

TEST(LiteralChunks, ChunksOfAnythingElseAreRefused) {
    const Bytes bytes = noise(4000);
    const Bytes good = literalBlock(bytes, false);
    Bytes twoBlocks = good;
    append(twoBlocks, good);
    Bytes withMore = good;
    append(withMore, Bytes{0, 0, 0xFF, 0xFF});
    const Bytes withoutEnd(good.begin(), good.end() - 5);
    const Bytes cut(good.begin(), good.begin() + 1000);
    const Bytes withMatches = deflateByZlib(Bytes(4000, 1), false);
    for (const Bytes& bad : {twoBlocks, withMore, withoutEnd, cut, withMatches}) {
        EXPECT_TRUE(decodedPair(good, bad, 20000).empty());
        EXPECT_TRUE(decodedPair(bad, good, 20000).empty());
    }
    EXPECT_TRUE(decodedPair(good, good, 7900).empty());
    EXPECT_FALSE(decodedPair(good, good, 8100).empty());
}

TEST(LiteralChunks, TheirEndsTellWhichMayBeSome) {
    const Bytes good = literalBlock(noise(4000), false);
    EXPECT_TRUE(mayBeLiteralChunk(good));
    EXPECT_FALSE(mayBeLiteralChunk(literalBlock(noise(4000), true)));
    EXPECT_FALSE(mayBeLiteralChunk(literalBlock(noise(100), false)));
    EXPECT_FALSE(mayBeLiteralChunk(std::span(good).subspan(1)));
}

/// How many bytes came at once, turn by turn. Expects all of them.
std::vector<std::size_t> turnsOf(const std::vector<Bytes>& blocks, const Bytes& bytes) {
    Bytes chunks;
    for (const Bytes& block : blocks) {
        append(chunks, chunk("IDAT", block));
    }
    Inflation inflation(chunks, bytes.size(), 0);
    Bytes made;
    std::vector<std::size_t> turns;
    auto outcome = Inflation::Outcome::Going;
    while (outcome == Inflation::Outcome::Going) {
        outcome = inflation.more();
        turns.push_back(inflation.freshLength());
        append(made, {inflation.fresh(), inflation.freshLength()});
        inflation.take(inflation.freshLength());
    }
    EXPECT_EQ(outcome, Inflation::Outcome::Ended);
    EXPECT_EQ(made, bytes);
    return turns;
}

/// What is decoded one code after the other stops within a chunk.
TEST(LiteralChunks, AStreamOfThemIsDecodedTwoAtATime) {
    constexpr std::size_t length = 120000;
    const Bytes bytes = noise(5 * length);
    EXPECT_EQ(turnsOf(literalBlocks(bytes, length), bytes),
              (std::vector<std::size_t>{2 * length, 2 * length, length}));
}

TEST(LiteralChunks, PairsAreDecodedAgainAfterOneThatCannotBe) {
    constexpr std::size_t length = 120000;
    const Bytes bytes = noise(9 * length);
    std::vector<Bytes> blocks = literalBlocks(bytes, length);
    // Two blocks that look like one from their ends.
    append(blocks[1], blocks[2]);
    blocks.erase(blocks.begin() + 2);
    const std::vector<std::size_t> turns = turnsOf(blocks, bytes);
    EXPECT_GE(*std::max_element(turns.begin(), turns.end()), 2 * length);
}

} // namespace
} // namespace vistrane::testing
