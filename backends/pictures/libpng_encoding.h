#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// What `encodePng` does, by libpng alone: where igzip is missing, and for the tests. `rows`: RGBA
/// if the shape may be transparent, else RGB.
std::optional<ByteArray> encodeByLibpng(const PictureShape& shape, const std::uint8_t* rows,
                                        std::size_t stride);

} // namespace vistrane
