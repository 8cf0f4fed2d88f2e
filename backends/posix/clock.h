#pragma once

#include <cstdint>
#include <limits>

#include "platform/foundation/NSDate.h"

namespace vistrane {

/// A moment of the monotonic clock that no run loop reaches.
inline constexpr std::int64_t neverInNanoseconds = std::numeric_limits<std::int64_t>::max();

/// Nanoseconds of a clock that nobody sets and that stands still while the machine sleeps.
std::int64_t monotonicNow();

/// The wall clock.
NSDate wallClockNow();

/// The moment of the monotonic clock at which the wall clock, left alone, will show `date`.
std::int64_t monotonicMomentOf(NSDate date);

/// From now to that moment, in whole milliseconds from 0 to `longest`, rounded up: a sleep that
/// ends too early would be followed by many that are too short.
int millisecondsUntil(std::int64_t moment, int longest);

} // namespace vistrane
