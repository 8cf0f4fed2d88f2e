#pragma once

#include <memory>

#include "backends/cameras/gst_pointers.h"
#include "backends/pictures/DecodedPicture.h"

namespace vistrane {

/// Converts the sample's picture to 8-bit full-range RGB, keeping its primaries and transfer curve.
/// Null if the picture cannot be read, is larger than `PictureLimits` allows, or does not fit in
/// memory.
std::shared_ptr<DecodedPicture> stillPicture(GstSample* sample);

} // namespace vistrane
