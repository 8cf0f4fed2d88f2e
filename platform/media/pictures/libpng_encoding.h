#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/media/pictures/ByteArray.h"
#include "platform/media/pictures/PictureSource.h"

namespace vistrane {

/// What `encodePng` does, by libpng alone: where igzip is missing, and for the tests. `rows`: RGBA
/// if the shape may be transparent, else RGB.
std::optional<ByteArray> encodeByLibpng(const PictureShape& shape, const std::uint8_t* rows,
                                        std::size_t stride);

} // namespace vistrane
