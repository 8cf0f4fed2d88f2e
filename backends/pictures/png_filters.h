#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// How a PNG filter predicts a byte: as 0, as the byte of the pixel to the left, as the one above,
/// as the mean of both, or as the one of left, above and above left that is nearest to left + above
/// - above left. The values are those of the file format.
enum class PngFilter : std::uint8_t { None, Sub, Up, Average, Paeth };

constexpr std::uint8_t lastPngFilter = 4;

/// How many bytes callers add to a row buffer, so that whole words can be read.
constexpr std::size_t filterMargin = 16;

/// Reverses the filter of a row.
///
/// `above`: the row above, all zeros for the first one. `row` must not overlap the others.
/// `pixelBytes`: the length of a pixel, 1 if a byte holds several. Reads up to 16 bytes past the
/// end of `filtered`; stays within `above` and `row`.
///
/// Uses SSE2 for pixels of 3 and 4 bytes. libpng has such routines, but no interface to them. Times
/// for all rows of 1920 x 1080, in milliseconds, with SSE2 and in plain C++ (gcc 12, -O3, rows in
/// the caches):
///
///   Sub      3 bytes 1.5 and 3.7     4 bytes 1.2 and 5.0
///   Up               0.2 and 0.3             0.2 and 0.4
///   Average          2.3 and 5.6             2.3 and 6.6
///   Paeth            8.5 and 16              8.4 and 29
///
/// Superfluous once compilers vectorise across the dependency on the pixel to the left.
void unfilterRow(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                 std::uint8_t* row, std::size_t length, std::size_t pixelBytes);

/// The reference implementation, also for processors without SSE2.
void unfilterRowPlainly(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                        std::uint8_t* row, std::size_t length, std::size_t pixelBytes);

/// Applies the filter Up: writes the filter number and `length` bytes. `above` is null for the
/// first row.
void filterRowUp(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* filtered,
                 std::size_t length);

} // namespace vistrane
