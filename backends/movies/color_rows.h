#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// Converts rows of 4-byte pixels (one ignored, red, green, blue) to the planes of
/// `convertToPlanar709`, which documents the formulas. All variants write the same bytes.
struct RowConversion {
    /// Writes `width` luma samples. `width` is at least 1.
    void (*luma)(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma);
    /// Writes a Cb and a Cr sample for every second column of two rows of `width` pixels. `width`
    /// is at least 1; if it is odd, the last column is repeated.
    void (*chroma)(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                   std::uint8_t* blueDifference, std::uint8_t* redDifference);
};

/// The reference implementation, which every processor can run.
RowConversion plainRowConversion();

/// The fastest variant for this processor.
const RowConversion& fastestRowConversion();

// The parts of the reference implementation. The others use them for the rest of a row after the
// last full vector.

void convertLumaPlainly(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma);

/// Writes the samples of the columns from `from`, which is even, up to but excluding `to`.
void convertChromaPlainly(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                          std::size_t from, std::size_t to, std::uint8_t* blueDifference,
                          std::uint8_t* redDifference);

} // namespace vistrane
