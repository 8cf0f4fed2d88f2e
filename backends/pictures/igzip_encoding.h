#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// `encodePng` with igzip, the fastest deflate library: 75 to 90 ms for a picture of 3840 x 2160,
/// where libdeflate took 135 and libpng 254. Slabs of noise become literals, see LiteralBlock.h.
///
/// `rows`: RGBA if the shape may be transparent, else RGB; `stride`: bytes from row to row. The
/// file has the chunks and the filter of `encodeByLibpng`, its reference implementation (tests
/// `PngWriting.*`). Nothing when there is not enough memory.
std::optional<ByteArray> encodeByIgzip(const PictureShape& shape, const std::uint8_t* rows,
                                       std::size_t stride);

} // namespace vistrane
