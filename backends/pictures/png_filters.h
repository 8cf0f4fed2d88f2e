#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// How a PNG file foretells a byte of a row from those before it: not at all, from the pixel to
/// the left, from the one above, from the mean of both, from the nearest of these two and the one
/// that is left of above. The numbers stand in the file.
enum class PngFilter : std::uint8_t { None, Sub, Up, Average, Paeth };

constexpr std::uint8_t lastPngFilter = 4;

/// The longest pixel of a PNG file, in bytes.
constexpr std::size_t longestPngPixel = 8;

/// Where rows lie that filters work on: zeros stand before and after the row, so that whole
/// words can be read.
constexpr std::size_t filterMargin = 16;

/// Turns a filtered row back into its bytes.
///
/// `above` is the row above, all zeros for the first one; `row` may be neither of the others.
/// `pixelBytes` are those of a pixel, 1 if a byte holds several. 16 bytes can be read past the end
/// of `filtered`; no byte past the end of `row` is written, nor one of `above` read.
void unfilterRow(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                 std::uint8_t* row, std::size_t length, std::size_t pixelBytes);

/// The same in plain C++, for any processor; the tests compare the two.
void unfilterRowPlainly(PngFilter filter, const std::uint8_t* filtered, const std::uint8_t* above,
                        std::uint8_t* row, std::size_t length, std::size_t pixelBytes);

/// Writes a row as the filter Up has it, with the filter's number before it: `length` + 1 bytes.
/// `above` is null for the first row.
void filterRowUp(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* filtered,
                 std::size_t length);

} // namespace vistrane
