#pragma once

#include <cstdint>
#include <limits>

#include "platform/foundation/NSDate.h"

namespace vistrane {

/// A time on the monotonic clock that is never reached.
inline constexpr std::int64_t neverInNanoseconds = std::numeric_limits<std::int64_t>::max();

/// Nanoseconds on a clock that is never set and that stops while the machine is suspended.
std::int64_t monotonicNow();

/// The wall clock.
NSDate wallClockNow();

/// The time on the monotonic clock at which the wall clock will show `date`, unless it is set.
std::int64_t monotonicMomentOf(NSDate date);

/// Milliseconds from now to `moment`, from 0 to `longest`. Rounded up: a sleep that ends just too
/// early would be followed by several of no length.
int millisecondsUntil(std::int64_t moment, int longest);

} // namespace vistrane
