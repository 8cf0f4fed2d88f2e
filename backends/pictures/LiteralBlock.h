#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vistrane {

/// The lengths of the shortest codes for symbols that occur so often, none longer than `limit` bits
/// (package-merge: Larmore and Hirschberg, 1990). A symbol that does not occur has none. At least
/// two symbols must occur, 288 at most, and 2 to the power of `limit` at most.
void chooseCodeLengths(std::span<const std::uint32_t> counts, unsigned limit,
                       std::span<std::uint8_t> lengths);

/// Bytes as one deflate block without matches (RFC 1951, 3.2.7), with a code made for them. Under
/// a sensor's noise hardly anything repeats: such a block is then smaller than one with matches,
/// quicker to write, and much quicker to read, as all of its codes are short.
class LiteralBlock {
public:
    /// Counts the bytes, which must be there as long as the block: 2^31 at most.
    explicit LiteralBlock(std::span<const std::uint8_t> bytes);

    /// How many bits the codes of some of the bytes take.
    std::size_t bitsOf(std::span<const std::uint8_t> part) const;

    /// Room enough for `write`, in bytes.
    std::size_t room() const;

    /// Writes the block from a whole byte on, and returns the end, again a whole byte: what is not
    /// the last block of its stream is followed by an empty stored one.
    std::uint8_t* write(std::uint8_t* to, bool last) const;

private:
    struct Code {
        std::uint16_t bits = 0;
        std::uint16_t length = 0;
    };

    static constexpr std::size_t symbolCount = 257; // the bytes and the end

    std::span<const std::uint8_t> bytes_;
    std::array<std::uint8_t, symbolCount> lengths_{};
    std::array<Code, symbolCount> codes_{};
};

} // namespace vistrane
