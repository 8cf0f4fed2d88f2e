#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

// Conversion pixel by pixel: what every processor can do, and what is left of a row where the
// vectors of a faster way do not fit any more.

void convertLumaPlainly(const std::uint8_t* pixels, std::size_t width, std::uint8_t* luma);

/// The samples of the columns from `from`, which is even, to before `to`.
void convertChromaPlainly(const std::uint8_t* top, const std::uint8_t* bottom, std::size_t width,
                          std::size_t from, std::size_t to, std::uint8_t* blueDifference,
                          std::uint8_t* redDifference);

} // namespace vistrane
