#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "backends/pictures/BitReader.h"

namespace vistrane {

/// An entry of a decoding table. From the lowest bit up:
///   0..4    bits to use up: those of the code and the extra bits of its value
///   8..11   the number of these that belong to the code; in a literal entry, that of its literals
///   12..15  the kind, see below
///   16..31  the literals, or the value to which the extra bits are added
/// In an entry that points to a subtable, 8..11 is the subtable's size in bits and 16..31 its
/// index.
using DeflateEntry = std::uint32_t;

constexpr DeflateEntry isLiteral = 1U << 12;
/// Neither a literal nor a length or distance: a subtable, the end of the block, or bits that are
/// not a code.
constexpr DeflateEntry isRare = 1U << 13;
constexpr DeflateEntry isSubtable = 1U << 14;
constexpr DeflateEntry isBlockEnd = 1U << 15;

/// The decoding tables of one deflate block (RFC 1951, 3.2).
///
/// A lookup takes as many bits as most codes have; longer codes continue in a subtable. An entry of
/// the literal table holds two literals if both codes fit into its bits.
struct DeflateCodes {
    static constexpr unsigned literalBits = 11;
    static constexpr unsigned distanceBits = 8;
    /// The most that complete codes of 288 and 32 symbols, of at most 15 bits, need with their
    /// subtables (computed by zlib's "enough").
    static constexpr std::size_t literalEntries = 2342;
    static constexpr std::size_t distanceEntries = 402;
    /// `read` reads no more bytes than this.
    static constexpr std::size_t longestHeader = 1024;

    /// Reads the header of a block with its own codes. Returns false if zlib would refuse it.
    bool read(BitReader& reader);

    /// The tables of blocks with fixed codes. Built once: such a block can be as short as 10 bits,
    /// so building them for each block would take a thousand times as long as reading it.
    static const DeflateCodes& fixed();

    /// How many times this thread has built tables. For tests that count work.
    static std::size_t timesBuilt() { return timesBuilt_; }

    std::array<DeflateEntry, literalEntries> literals{};
    std::array<DeflateEntry, distanceEntries> distances{};

private:
    bool build(std::span<const std::uint8_t> literalLengths,
               std::span<const std::uint8_t> distanceLengths);

    static thread_local std::size_t timesBuilt_;
};

} // namespace vistrane
