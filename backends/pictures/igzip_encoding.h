#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// What `encodePng` does, compressed by igzip: the same chunks as from `encodeByLibpng`, and the
/// same filter, in a quarter of the time. `rows`: RGBA if the shape may be transparent, else RGB.
std::optional<ByteArray> encodeByIgzip(const PictureShape& shape, const std::uint8_t* rows,
                                       std::size_t stride);

} // namespace vistrane
