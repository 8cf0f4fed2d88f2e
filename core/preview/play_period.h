#pragma once

#include "platform/foundation/NSDate.h"

namespace vistrane {

/// Seconds between two frames at `rate` frames per second. `rate` is at least 1. Divides in single
/// precision and widens the result, on purpose.
constexpr NSTimeInterval playPeriod(float rate) {
    return static_cast<NSTimeInterval>(1.0F / rate);
}

} // namespace vistrane
