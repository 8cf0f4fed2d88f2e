#pragma once

namespace vistrane {

/// Lengths and positions in points. The origin of a view or context is its bottom left corner.
struct CGPoint {
    double x = 0.0;
    double y = 0.0;
    bool operator==(const CGPoint&) const = default;
};

struct CGSize {
    double width = 0.0;
    double height = 0.0;
    bool operator==(const CGSize&) const = default;
};

struct CGRect {
    CGPoint origin;
    CGSize size;
    bool operator==(const CGRect&) const = default;
};

using NSPoint = CGPoint;
using NSSize = CGSize;
using NSRect = CGRect;

inline constexpr NSRect NSZeroRect{};

} // namespace vistrane
