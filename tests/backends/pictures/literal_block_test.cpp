// Blocks of literals, decoded by zlib.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "backends/pictures/LiteralBlock.h"
#include "tests/backends/pictures/DeflateSamples.h"

namespace vistrane::testing {
namespace {

/// What zlib makes of blocks, which must be a whole stream.
Bytes inflated(const Bytes& blocks, std::size_t length) {
    Bytes stream = {0x78, 0x01};
    append(stream, blocks);
    const Inflated result = inflateByZlib(stream, length + 1);
    EXPECT_TRUE(result.ended);
    EXPECT_EQ(result.end, stream.size());
    return result.bytes;
}

/// Bytes whose values become rarer by `decay` from one to the next.
Bytes decayingBytes(std::mt19937& random, std::size_t length, double decay) {
    Bytes bytes(length);
    if (decay == 0.0) {
        return bytes; // beyond what the distribution takes
    }
    std::geometric_distribution<int> value(1.0 - decay);
    std::generate(bytes.begin(), bytes.end(),
                  [&] { return static_cast<std::uint8_t>(std::min(value(random), 255)); });
    return bytes;
}

TEST(LiteralBlockTest, AnyBytesAreDecodedAgain) {
    std::mt19937 random(1);
    for (const double decay : {0.0, 0.05, 0.4, 0.5, 0.9, 0.99, 0.9999}) {
        for (const std::size_t length : {0U, 1U, 2U, 3U, 5U, 64U, 999U, 70000U}) {
            const Bytes bytes = decayingBytes(random, length, decay);
            EXPECT_EQ(inflated(literalBlock(bytes, true), length), bytes)
                << decay << ", " << length;
        }
    }
}

TEST(LiteralBlockTest, BlocksBeginAndEndAtWholeBytes) {
    std::mt19937 random(2);
    Bytes all;
    Bytes stream;
    for (int i = 0; i < 50; ++i) {
        const Bytes bytes = decayingBytes(random, random() % 3000, 0.02 * i);
        const Bytes block = literalBlock(bytes, i == 49);
        if (i < 49) {
            EXPECT_EQ(Bytes(block.end() - 4, block.end()), (Bytes{0, 0, 0xFF, 0xFF}));
        }
        append(all, bytes);
        append(stream, block);
    }
    EXPECT_EQ(inflated(stream, all.size()), all);
}

TEST(LiteralBlockTest, RareBytesGetCodesOfElevenBitsAtMost) {
    // Each value is twice as frequent as the next one: without a limit, codes of 19 bits.
    Bytes bytes;
    for (std::size_t value = 0; value < 20; ++value) {
        bytes.insert(bytes.end(), std::size_t{1} << (19 - value), static_cast<std::uint8_t>(value));
    }
    const LiteralBlock block(bytes);
    for (std::uint8_t value = 0; value < 20; ++value) {
        EXPECT_LE(block.bitsOf(Bytes{value}), 11U);
    }
    EXPECT_EQ(inflated(literalBlock(bytes, true), bytes.size()), bytes);
}

TEST(LiteralBlockTest, NoiseTakesItsEntropy) {
    std::mt19937 random(3);
    const Bytes bytes = decayingBytes(random, 250000, 0.8);
    std::array<double, 256> counts{};
    for (const std::uint8_t byte : bytes) {
        ++counts[byte];
    }
    double bits = 0;
    for (const double count : counts) {
        bits += count > 0 ? count * std::log2(static_cast<double>(bytes.size()) / count) : 0;
    }
    EXPECT_LT(static_cast<double>(literalBlock(bytes, true).size()), bits / 8 * 1.02);
}

/// The least that codes can take together, by Huffman's algorithm: joining the two rarest.
std::uint64_t leastBits(std::vector<std::uint64_t> weights) {
    std::uint64_t sum = 0;
    std::sort(weights.rbegin(), weights.rend());
    while (weights.size() > 1) {
        const std::uint64_t joined = weights.back() + weights[weights.size() - 2];
        weights.resize(weights.size() - 2);
        sum += joined;
        weights.insert(std::lower_bound(weights.begin(), weights.end(), joined, std::greater<>()),
                       joined);
    }
    return sum;
}

TEST(LiteralBlockTest, CodesAreCompleteAndAsShortAsCanBe) {
    std::mt19937 random(4);
    for (int i = 0; i < 2000; ++i) {
        std::vector<std::uint32_t> counts(2 + random() % 287);
        const unsigned most = 1U << (random() % 16);
        std::generate(counts.begin(), counts.end(),
                      [&] { return static_cast<std::uint32_t>(random() % (most + 1)); });
        counts.front() = counts.back() = 1;
        std::vector<std::uint8_t> lengths(counts.size());
        const auto limit = static_cast<unsigned>(9 + random() % 7);
        chooseCodeLengths(counts, limit, lengths);

        std::uint64_t used = 0;
        std::uint64_t bits = 0;
        std::vector<std::uint64_t> weights;
        for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
            EXPECT_EQ(lengths[symbol] > 0, counts[symbol] > 0);
            EXPECT_LE(lengths[symbol], limit);
            used += lengths[symbol] > 0 ? std::uint64_t{1} << (15 - lengths[symbol]) : 0;
            bits += std::uint64_t{counts[symbol]} * lengths[symbol];
            if (counts[symbol] > 0) {
                weights.push_back(counts[symbol]);
            }
        }
        EXPECT_EQ(used, 1U << 15) << i;
        const std::uint64_t least = leastBits(weights);
        EXPECT_GE(bits, least);
        if (limit == 15 && most < 1U << 8) {
            EXPECT_EQ(bits, least);
        }
    }
}

} // namespace
} // namespace vistrane::testing
