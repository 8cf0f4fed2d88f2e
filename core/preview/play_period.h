#pragma once

#include "platform/foundation/NSDate.h"

namespace vistrane {

/// Seconds from one frame to the next at that many frames a second, at least 1. On purpose the
/// division is one of 32-bit numbers, widened afterwards.
constexpr NSTimeInterval playPeriod(float rate) {
    return static_cast<NSTimeInterval>(1.0F / rate);
}

} // namespace vistrane
