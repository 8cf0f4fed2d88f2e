#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "backends/cameras/gst_pointers.h"

namespace vistrane {

/// The sample's picture as a binary PPM file: "P6\n<width> <height>\n255\n", then the rows from
/// the top, three bytes (red, green, blue) a pixel, nothing between the rows. The colours are
/// full-range RGB with the picture's own primaries and transfer curve. Null when the picture
/// cannot be read or there is no memory for it.
std::optional<std::vector<std::uint8_t>> portablePixmap(GstSample* sample);

} // namespace vistrane
