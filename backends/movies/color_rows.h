#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vistrane {

/// One way to convert rows of 4-byte pixels (one byte that means nothing, red, green, blue) to the
/// planes of `convertToPlanar709`, where the formulas are told. All ways give the same bytes.
struct RowConversion {
    const char* name;
    /// Writes `width` luma samples, at least one.
    void (*luma)(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma);
    /// Writes a sample of either difference for every second column of two rows of `width` pixels,
    /// at least one; where it is odd, the last column counts as repeated.
    void (*chroma)(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                   std::uint8_t* blueDifference, std::uint8_t* redDifference);
};

/// The ways that this processor can go: the one that every processor can go first, the fastest
/// last.
std::span<const RowConversion> rowConversions();

} // namespace vistrane
