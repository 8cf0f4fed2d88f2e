#pragma once

#include <optional>

#include "backends/pictures/ByteArray.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// The picture as an uncompressed baseline TIFF file at its own pixel size: little endian, one
/// strip, 8 bits a component, RGB where all of it is opaque, else RGBA with the alpha not
/// multiplied in; the resolution is the density, per centimetre. sRGB values.
///
/// `pictureFromTiff` reads exactly these files and no other TIFF.
std::variant<ByteArray, NSError> tiffFile(const PictureSource& picture);

} // namespace vistrane
