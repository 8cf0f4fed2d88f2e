// The codes of a block against zlib.

#include "backends/pictures/DeflateCodes.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <utility>

#include "tests/backends/pictures/DeflateSamples.h"

namespace vistrane::testing {
namespace {

using Lengths = std::initializer_list<std::pair<std::size_t, std::uint8_t>>;

DeflateCode codeOf(std::size_t symbols, Lengths given) {
    std::vector<std::uint8_t> lengths(symbols, 0);
    for (const auto& [symbol, length] : given) {
        lengths[symbol] = length;
    }
    return DeflateCode(lengths);
}

/// Whether the codes that a stream begins with are accepted.
bool areAccepted(Bytes stream, DeflateCodes& tables) {
    stream.resize(stream.size() + DeflateCodes::longestHeader);
    BitReader reader;
    reader.startAt(stream.data() + 2);
    reader.take(3);
    return tables.read(reader);
}

bool areAccepted(const Bytes& stream) {
    DeflateCodes tables;
    return areAccepted(stream, tables);
}

TEST(DeflateCodes, CompleteCodesAreAcceptedAndOthersRefused) {
    const Lengths two = {{0, 1}, {256, 1}};
    const Lengths none = {};
    const struct {
        const char* name;
        std::size_t literals;
        Lengths literalLengths;
        std::size_t distances;
        Lengths distanceLengths;
        bool isValid;
        bool isValidForZlib;
    } cases[] = {
        {"complete", 257, two, 2, {{0, 1}, {1, 1}}, true, true},
        {"of three lengths", 257, {{0, 1}, {1, 2}, {256, 2}}, 2, {{0, 1}, {1, 1}}, true, true},
        {"no distance", 257, two, 1, none, true, true},
        {"one distance", 257, two, 5, {{4, 1}}, true, true},
        {"one distance of two bits", 257, two, 5, {{4, 2}}, false, false},
        {"two distances of two bits", 257, two, 5, {{3, 2}, {4, 2}}, false, false},
        {"too many distances", 257, two, 3, {{0, 1}, {1, 1}, {2, 1}}, false, false},
        {"a literal is missing", 257, {{0, 1}, {256, 2}}, 1, none, false, false},
        {"too many literals", 257, {{0, 1}, {1, 1}, {256, 1}}, 1, none, false, false},
        {"no end of block", 257, {{0, 1}, {1, 1}}, 1, none, false, false},
        // Left to zlib.
        {"only the end of block", 257, {{256, 1}}, 1, none, false, true},
        {"286 symbols", 286, two, 30, none, true, true},
        {"287 symbols", 287, two, 30, none, false, false},
        {"31 distances", 286, two, 31, none, false, false},
    };
    for (const auto& one : cases) {
        const DeflateCode literals = codeOf(one.literals, one.literalLengths);
        DeflateWriter writer;
        writer.beginOwn(true, literals, codeOf(one.distances, one.distanceLengths));
        if (literals.has(256)) {
            writer.end();
        }
        const Bytes stream = writer.finish();
        EXPECT_EQ(areAccepted(stream), one.isValid) << one.name;
        EXPECT_EQ(inflateByZlib(stream, 1).ended, one.isValidForZlib) << one.name;
    }
}

/// A block whose code lengths are written with these symbols and their extra bits.
Bytes blockOfLengths(std::initializer_list<std::pair<std::size_t, std::size_t>> symbols) {
    DeflateWriter writer;
    writer.putBits(5, 3);      // the last block, with codes of its own
    writer.putBits(0, 5 + 5);  // 257 literal and length codes, one distance code
    writer.putBits(18 - 4, 4); // how many of the following lengths there are
    const DeflateCode code = codeOf(19, {{0, 2}, {1, 2}, {16, 2}, {18, 2}});
    for (const std::size_t symbol :
         {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1}) {
        writer.putBits(code.lengths[symbol], 3);
    }
    for (const auto& [symbol, extra] : symbols) {
        writer.putBits(code.codes[symbol] >> 1, 1);
        writer.putBits(code.codes[symbol], 1);
        writer.putBits(extra, symbol == 16 ? 2 : symbol == 18 ? 7 : 0);
    }
    writer.putBits(1, 1); // the end of the block
    return writer.finish();
}

TEST(DeflateCodes, LengthsAreRepeatedWithinTheCodesOnly) {
    // 255 symbols without a code, two of one bit, no distance.
    const Bytes whole = blockOfLengths({{18, 127}, {18, 106}, {1, 0}, {1, 0}, {0, 0}});
    EXPECT_TRUE(areAccepted(whole));
    EXPECT_TRUE(inflateByZlib(whole, 1).ended);
    // The same, but the first three repeat a length that is not there.
    const Bytes before = blockOfLengths({{16, 0}, {18, 127}, {18, 103}, {1, 0}, {1, 0}, {0, 0}});
    // The last one is repeated three times where there is one place left.
    const Bytes beyond = blockOfLengths({{18, 127}, {18, 106}, {1, 0}, {1, 0}, {16, 0}});
    for (const Bytes& stream : {before, beyond}) {
        EXPECT_FALSE(areAccepted(stream));
        EXPECT_FALSE(inflateByZlib(stream, 1).ended);
    }
}

/// The entry for bits that begin with the code of a symbol.
DeflateEntry entryFor(const DeflateCode& code, std::size_t symbol, std::uint64_t others,
                      const DeflateEntry* table, unsigned tableBits) {
    const unsigned length = code.lengths[symbol];
    std::uint64_t bits = others << length;
    for (unsigned i = 0; i < length; ++i) {
        bits |= std::uint64_t{code.codes[symbol] >> (length - 1 - i) & 1U} << i;
    }
    const DeflateEntry entry = table[lowBits(bits, tableBits)];
    return (entry & isSubtable) == 0
               ? entry
               : table[(entry >> 16) + lowBits(bits >> tableBits, entry >> 8 & 15U)];
}

void expectEverySymbol(const DeflateCodes& tables, const DeflateCode& literals,
                       const DeflateCode& distances, std::mt19937& random) {
    for (std::size_t symbol = 0; symbol < literals.lengths.size(); ++symbol) {
        if (literals.has(symbol)) {
            const DeflateEntry entry = entryFor(literals, symbol, random(), tables.literals.data(),
                                                DeflateCodes::literalBits);
            EXPECT_EQ((entry & isLiteral) != 0, symbol < 256);
            EXPECT_EQ((entry & isBlockEnd) != 0, symbol == 256);
            EXPECT_EQ((entry & isRare) != 0, symbol == 256 || symbol > 285) << symbol;
            if (symbol < 256) {
                EXPECT_EQ(entry >> 16 & 255U, symbol);
            } else if (symbol > 256 && symbol < 265) {
                EXPECT_EQ(entry >> 16, symbol - 254);
            }
        }
    }
    for (std::size_t symbol = 0; symbol < distances.lengths.size(); ++symbol) {
        if (distances.has(symbol)) {
            const DeflateEntry entry = entryFor(
                distances, symbol, random(), tables.distances.data(), DeflateCodes::distanceBits);
            EXPECT_EQ((entry & isRare) != 0, symbol > 29) << symbol;
            if (symbol < 4) {
                EXPECT_EQ(entry >> 16, symbol + 1);
            }
        }
    }
}

TEST(DeflateCodes, EverySymbolIsFoundByItsCode) {
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
        const std::size_t symbols = 258 + random() % 29;
        const DeflateCode literals =
            randomCode(random, symbols, 2 + random() % (symbols - 1), {256});
        const DeflateCode distances = randomCode(random, 30, 2 + random() % 29, {});
        DeflateWriter writer;
        writer.beginOwn(true, literals, distances);
        DeflateCodes tables;
        ASSERT_TRUE(areAccepted(writer.finish(), tables));
        expectEverySymbol(tables, literals, distances, random);
    }
}

TEST(DeflateCodes, EverySymbolIsFoundByItsFixedCode) {
    std::mt19937 random(2);
    DeflateWriter writer;
    writer.beginFixed(true);
    expectEverySymbol(DeflateCodes::fixed(), writer.literals(), writer.distances(), random);
}

} // namespace
} // namespace vistrane::testing
