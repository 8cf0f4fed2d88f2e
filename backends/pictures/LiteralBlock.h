#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vistrane {

/// Computes the lengths of optimal prefix codes of at most `limit` bits (package-merge: Larmore and
/// Hirschberg, 1990). `counts`: how often each symbol occurs; one that does not occur gets length
/// 0. Between two and 288 symbols must occur, and at most 2 to the power of `limit`.
void chooseCodeLengths(std::span<const std::uint32_t> counts, unsigned limit,
                       std::span<std::uint8_t> lengths);

/// Bytes as one deflate block without matches (RFC 1951, 3.2.7), with an optimal code for them.
///
/// **Why our own.** In a sensor's noise hardly anything repeats, so such a block is smaller than
/// one with matches. It is also quicker to write, and quicker to read: its codes are short, and
/// `Inflation` decodes two such blocks at a time. With igzip alone our noise takes 38 ms to save
/// instead of 18.5, and 22.6 ms to load instead of 12.6.
///
/// **Reference implementation:** zlib reads every block in the tests `LiteralBlockTest.*`, and
/// Huffman's algorithm checks the code lengths.
///
/// **Superfluous** when a library writes noise as fast and as short (rows `save-libpng1` and
/// `load-ours-libpng` of `bench/run`, kind `noise`).
class LiteralBlock {
public:
    /// Counts the bytes, at most 2^31, which must outlive this object.
    explicit LiteralBlock(std::span<const std::uint8_t> bytes);

    /// The length of some of the bytes in this code, in bits.
    std::size_t bitsOf(std::span<const std::uint8_t> part) const;

    /// Enough room for `write`, in bytes.
    std::size_t room() const;

    /// Writes the block and returns its end, a byte boundary: unless it is the last block of its
    /// stream, an empty stored block follows it.
    std::uint8_t* write(std::uint8_t* to, bool last) const;

private:
    struct Code {
        std::uint16_t bits = 0;
        std::uint16_t length = 0;
    };

    static constexpr std::size_t symbolCount = 257; // all bytes and the end of the block

    std::span<const std::uint8_t> bytes_;
    std::array<std::uint8_t, symbolCount> lengths_{};
    std::array<Code, symbolCount> codes_{};
};

} // namespace vistrane
