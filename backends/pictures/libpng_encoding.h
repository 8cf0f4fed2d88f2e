#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// `encodePng` by libpng alone, for systems without igzip, and the reference implementation.
/// `rows`: RGBA if the shape may be transparent, else RGB; `stride`: bytes from row to row.
std::optional<ByteArray> encodeByLibpng(const PictureShape& shape, const std::uint8_t* rows,
                                        std::size_t stride);

} // namespace vistrane
