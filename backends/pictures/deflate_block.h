#pragma once

#include <cstddef>
#include <cstdint>

#include "backends/pictures/BitReader.h"
#include "backends/pictures/DeflateCodes.h"

namespace vistrane {

/// Where a block is decoded from and to.
struct DeflateBlock {
    /// More than one turn of the decoding loop reads, in bytes.
    static constexpr std::ptrdiff_t turnInput = 32;
    /// More than one turn writes: eight literals, the longest match, and the rest of the last 16
    /// bytes, which are copied at once.
    static constexpr std::size_t turnOutput = 320;

    BitReader reader;
    /// No turn begins with `reader.in` at or after this; `turnInput` more bytes can be read.
    const std::uint8_t* inLimit;

    std::uint8_t* out;
    /// Matches do not reach back beyond this.
    const std::uint8_t* window;
    /// No turn begins with `out` at or after this; `turnOutput` more bytes can be written.
    const std::uint8_t* outLimit;
};

enum class DeflateBlockState { More, Ended, Invalid };

/// Decodes literals and matches until the block ends or a limit is reached. `Invalid`: bits that
/// are not a code, or a match that begins before the window.
DeflateBlockState decodeBlock(DeflateBlock& block, const DeflateCodes& codes);

} // namespace vistrane
