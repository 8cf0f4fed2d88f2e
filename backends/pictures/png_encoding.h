#pragma once

#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// The picture as a PNG file in its own size in pixels, with its density: 8 bits a component, RGB
/// if all of it is opaque, else RGBA. Lossless. Nothing when the picture cannot be decoded or there
/// is not enough memory.
///
/// Made for speed, because the next picture may come soon: one filter, Up, and the fastest level of
/// compression. A photograph's file is a tenth shorter than that of libpng at level 1.
std::optional<ByteArray> encodePng(const PictureSource& picture);

} // namespace vistrane
