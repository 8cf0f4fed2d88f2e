#pragma once

#include <memory>

#include "backends/cameras/gst_pointers.h"
#include "backends/pictures/PictureSource.h"

namespace vistrane {

/// Converts the sample's picture to 8-bit full-range RGB, with its own primaries and transfer
/// curve. Null when the picture cannot be read, is larger than `PictureLimits` allows, or there is
/// no memory for it.
std::shared_ptr<const PictureSource> stillPicture(GstSample* sample);

} // namespace vistrane
