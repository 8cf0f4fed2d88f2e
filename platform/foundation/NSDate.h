#pragma once

namespace vistrane {

/// Seconds; fractions allowed.
using NSTimeInterval = double;

/// A moment of wall-clock time.
struct NSDate {
    /// Seconds since 1970-01-01 00:00:00 UTC, leap seconds not counted.
    NSTimeInterval timeIntervalSince1970 = 0.0;

    bool operator==(const NSDate&) const = default;
};

} // namespace vistrane
