#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// `encodePng` with igzip, the fastest deflate library: 75 to 90 ms for a picture of 3840 x 2160;
/// libdeflate took 135 ms and libpng 254 ms. Slabs of noise become literal blocks, see
/// LiteralBlock.h.
///
/// `rows`: RGBA if the shape may be transparent, otherwise RGB; `stride` is in bytes. The file has
/// the chunks and the filter of `encodeByLibpng`, its reference implementation (tests
/// `PngWriting.*`). Nothing if there is not enough memory.
std::optional<ByteArray> encodeByIgzip(const PictureShape& shape, const std::uint8_t* rows,
                                       std::size_t stride);

} // namespace vistrane
