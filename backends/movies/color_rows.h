#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// Converts rows of 4-byte pixels (one byte ignored, red, green, blue) to the planes of
/// `convertToPlanar709`, which documents the formulas. Every variant writes the same bytes.
struct RowConversion {
    /// Writes `width` luma samples. `width` is at least 1.
    void (*luma)(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma);
    /// Writes a sample of either difference for every second column of two rows of `width` pixels.
    /// `width` is at least 1; where it is odd, the last column counts as repeated.
    void (*chroma)(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                   std::uint8_t* blueDifference, std::uint8_t* redDifference);
};

/// The reference implementation, for every processor.
RowConversion plainRowConversion();

/// The fastest variant that this processor can run.
const RowConversion& fastestRowConversion();

// The parts of the reference implementation, also for what is left of a row beside full vectors.

void convertLumaPlainly(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma);

/// Writes the samples of the columns from `from`, which is even, to before `to`.
void convertChromaPlainly(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                          std::size_t from, std::size_t to, std::uint8_t* blueDifference,
                          std::uint8_t* redDifference);

} // namespace vistrane
