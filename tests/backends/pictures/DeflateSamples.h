#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "tests/backends/pictures/PngSamples.h"

namespace vistrane::testing {

/// A Huffman code as RFC 1951 assigns it to lengths in bits; 0 for symbols that have none. The
/// lengths may also be those of an incomplete or over-subscribed code.
struct DeflateCode {
    explicit DeflateCode(std::vector<std::uint8_t> given);
    bool has(std::size_t symbol) const { return symbol < lengths.size() && lengths[symbol] > 0; }

    std::vector<std::uint8_t> lengths;
    std::vector<unsigned> codes;
};

/// Writes a zlib stream block by block and keeps the bytes that it stands for.
class DeflateWriter {
public:
    DeflateWriter() : stream_{0x78, 0x01} {}

    void putBits(std::size_t bits, unsigned count);

    void stored(std::span<const std::uint8_t> bytes, bool last);
    /// Begins a block with the fixed codes, or with these.
    void beginFixed(bool last);
    void beginOwn(bool last, const DeflateCode& literals, const DeflateCode& distances);

    void literal(std::uint8_t byte);
    void match(std::size_t length, std::size_t distance);
    /// A match by its symbols and their extra bits. Symbols that the format does not have are made
    /// as if they were like the last valid one.
    void matchOf(std::size_t symbol, std::size_t more, std::size_t farSymbol, std::size_t farther);
    /// Ends a block.
    void end() { putSymbol(literals_, 256); }

    const DeflateCode& literals() const { return literals_; }
    const DeflateCode& distances() const { return distances_; }
    const Bytes& made() const { return made_; }
    /// Whole bytes that are written.
    std::size_t length() const { return stream_.size(); }

    /// The stream with its checksum.
    Bytes finish();

private:
    void align();
    void putSymbol(const DeflateCode& code, std::size_t symbol);
    void putLengths(const std::vector<std::uint8_t>& lengths);

    Bytes stream_;
    Bytes made_;
    std::size_t held_ = 0;
    unsigned heldCount_ = 0;
    DeflateCode literals_{{}};
    DeflateCode distances_{{}};
};

/// A complete code of `count` of the first `symbols` symbols, those of `needed` among them. Half of
/// these codes have lengths up to `longest`.
DeflateCode randomCode(std::mt19937& random, std::size_t symbols, std::size_t count,
                       const std::vector<std::size_t>& needed, unsigned longest = 15);

/// Random bytes of so many different values, of which the first of each row is a valid filter.
Bytes randomRows(std::mt19937& random, std::size_t rowBytes, std::size_t length,
                 std::size_t different = 256);

/// A zlib stream of random blocks of all kinds: literals and matches in codes of up to 15 bits. It
/// yields `rows` times `rowBytes` bytes, of which the first of each row is a valid filter. One in
/// four is then damaged, of these half with the right checksum of what zlib makes of them.
Bytes randomStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows);

/// The same by zlib from random bytes, with random settings.
Bytes zlibStream(std::mt19937& random, std::size_t rowBytes, std::size_t rows);

/// Literals, then a match.
struct Match {
    std::size_t literals = 0;
    std::size_t distance = 0;
    std::size_t length = 0;
};

/// A zlib stream of these with random literals, in one block of fixed codes.
Bytes matchStream(std::mt19937& random, std::span<const Match> matches);

/// What zlib makes of a stream, whose checksum it does not look at.
struct Inflated {
    Bytes bytes;
    /// Whether the last block ended, and where that was.
    bool ended = false;
    std::size_t end = 0;

    Bytes checksum() const;
};
Inflated inflateByZlib(std::span<const std::uint8_t> stream, std::size_t limit);

/// What `LiteralBlock` writes.
Bytes literalBlock(std::span<const std::uint8_t> bytes, bool last);

/// A zlib stream of what `LiteralBlock` writes, each block of `length` bytes.
std::vector<Bytes> literalBlocks(std::span<const std::uint8_t> bytes, std::size_t length);

/// A block of zlib's, without a header or checksum. `last`: ends the stream.
Bytes deflateByZlib(const Bytes& bytes, bool last);

} // namespace vistrane::testing
