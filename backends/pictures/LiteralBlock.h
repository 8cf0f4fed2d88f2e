#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vistrane {

/// Computes the code lengths of an optimal prefix code of at most `limit` bits (package-merge:
/// Larmore and Hirschberg, 1990). `counts`: how often each symbol occurs. The length is 0 for a
/// symbol that does not occur. Two to 288 symbols must occur, but not more than 2 to the power of
/// `limit`.
void chooseCodeLengths(std::span<const std::uint32_t> counts, unsigned limit,
                       std::span<std::uint8_t> lengths);

/// Encodes bytes as one deflate block without matches (RFC 1951, 3.2.7), with an optimal code.
///
/// **Why our own.** Sensor noise hardly ever repeats, so such a block is smaller than one with
/// matches. It is also faster to write and to read: its codes are short, and `Inflation` decodes
/// two such blocks at a time. With igzip alone, our noise takes 38 ms to save instead of 18.5, and
/// 22.6 ms to load instead of 12.6.
///
/// **Reference implementation:** zlib reads every block in the tests `LiteralBlockTest.*`, and
/// Huffman's algorithm checks the code lengths.
///
/// **Superfluous** when a library writes noise as fast and as small, and reads it as fast (rows
/// `save-libpng1` and `load-ours-libpng` of `bench/run`, kind `noise`).
class LiteralBlock {
public:
    /// Counts the bytes: at most 2^31, which outlive this object.
    explicit LiteralBlock(std::span<const std::uint8_t> bytes);

    /// The encoded length in bits of some of the bytes.
    std::size_t bitsOf(std::span<const std::uint8_t> part) const;

    /// The room that `write` needs, in bytes.
    std::size_t room() const;

    /// Writes the block and returns its end, a byte boundary. Unless it is the last block of the
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
