#pragma once

#include <cstddef>
#include <cstdint>

#include "backends/pictures/BitReader.h"
#include "backends/pictures/DeflateCodes.h"

namespace vistrane {

/// The input and output of decoding a block.
struct DeflateBlock {
    /// More bytes than one iteration of the decoding loop reads.
    static constexpr std::ptrdiff_t turnInput = 32;
    /// More bytes than one iteration writes: eight literals, the longest match, and the excess of
    /// copying 16 bytes at a time.
    static constexpr std::size_t turnOutput = 320;

    BitReader reader;
    /// No iteration begins with `reader.in` at or after this; `turnInput` bytes more can be read.
    const std::uint8_t* inLimit;

    std::uint8_t* out;
    /// Matches must not reach back beyond this.
    const std::uint8_t* window;
    /// No iteration begins with `out` at or after this; `turnOutput` bytes more can be written.
    const std::uint8_t* outLimit;
};

enum class DeflateBlockState { More, Ended, Invalid };

/// Decodes literals and matches until the block ends or a limit is reached. `Invalid`: bits that
/// are not a code, or a match that starts before the window.
DeflateBlockState decodeBlock(DeflateBlock& block, const DeflateCodes& codes);

} // namespace vistrane
