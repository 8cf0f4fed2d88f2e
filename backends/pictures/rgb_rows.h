#pragma once

#include <cstddef>
#include <cstdint>

#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Writes rows that lie in memory without gaps, 3 (RGB) or 4 (RGBA) bytes a pixel, in the form
/// asked for; see `PictureSource::readPixels`.
void convertRows(const std::uint8_t* from, PixelForm fromForm, const PictureShape& shape,
                 PixelForm form, std::uint8_t* rows, std::ptrdiff_t stride);

} // namespace vistrane
