#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "backends/pictures/DeflateCodes.h"

namespace vistrane {

/// Whether the data of a chunk may be one `LiteralBlock` and the empty stored block after it, as
/// far as its first byte and its last four tell.
bool mayBeLiteralChunk(std::span<const std::uint8_t> data);

/// Decodes two chunks of literals together, one code of each in turn: a code has to wait for the
/// one before it in its own chunk, but not for those of another.
///
/// The noise of a sensor is written in such chunks (see LiteralBlock.h). A frame of 1920 x 1080 of
/// it takes 7 ms to decompress instead of 15.
class LiteralChunkPair {
public:
    /// 24 bytes more can be read past the end of both. Returns the end of the decoded bytes, all of
    /// them together; null when a chunk turns out to hold anything else, or its bytes do not fit
    /// into half the room. Then the bytes at `out` are undefined.
    std::uint8_t* decode(std::span<const std::uint8_t> first, std::span<const std::uint8_t> second,
                         std::uint8_t* out, std::size_t room);

    /// For tests that count work.
    std::size_t codesBuilt() const { return codes_[0].timesBuilt() + codes_[1].timesBuilt(); }

private:
    std::array<DeflateCodes, 2> codes_;
};

} // namespace vistrane
