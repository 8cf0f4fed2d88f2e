#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// `encodePng` by libpng alone: for systems without igzip, and the reference implementation.
/// `rows`: RGBA if the shape may be transparent, otherwise RGB; `stride` is in bytes.
std::optional<ByteArray> encodeByLibpng(const PictureShape& shape, const std::uint8_t* rows,
                                        std::size_t stride);

} // namespace vistrane
