#pragma once

namespace vistrane {

/// A colour in sRGB, each component from 0 to 1, not premultiplied.
struct CGColor {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
    double alpha = 1.0;
    bool operator==(const CGColor&) const = default;
};

/// Names of the constant colours.
enum CGConstantColor { kCGColorBlack };

constexpr CGColor CGColorGetConstantColor(CGConstantColor) {
    return {0.0, 0.0, 0.0, 1.0};
}

} // namespace vistrane
