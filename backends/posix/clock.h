#pragma once

#include <cstdint>
#include <limits>

#include "platform/foundation/NSDate.h"

namespace vistrane {

/// A time that the monotonic clock never reaches.
inline constexpr std::int64_t neverInNanoseconds = std::numeric_limits<std::int64_t>::max();

/// Nanoseconds of a clock that is never adjusted and that stops while the machine is suspended.
std::int64_t monotonicNow();

/// The wall clock.
NSDate wallClockNow();

/// The time on the monotonic clock at which the wall clock will show `date`, unless it is adjusted.
std::int64_t monotonicMomentOf(NSDate date);

/// Milliseconds from now to `moment`, clamped to 0 and `longest`. Rounded up, because after a sleep
/// that ends too early the loop would spin.
int millisecondsUntil(std::int64_t moment, int longest);

} // namespace vistrane
