#pragma once

#include <memory>
#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Encodes the picture as a PNG file at its pixel size, with its density: 8 bits per component, RGB
/// if all pixels are opaque, otherwise RGBA. Lossless. Nothing if the picture cannot be decoded or
/// there is not enough memory.
///
/// Tuned for speed, because the next picture may come soon: one filter (Up) and the fastest
/// compression level. A photograph's file is a tenth smaller than with libpng at level 1.
std::optional<ByteArray> encodePng(const PictureSource& picture);

/// The file that was made ahead if there is one, otherwise `encodePng`. Null instead of nothing.
std::shared_ptr<const ByteArray> pngFileOf(const PictureSource& picture);

} // namespace vistrane
