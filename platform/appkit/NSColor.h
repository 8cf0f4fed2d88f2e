#pragma once

#include "platform/coregraphics/CGColor.h"

namespace vistrane {

/// A colour of the interface.
struct NSColor {
    static constexpr NSColor blackColor() { return {CGColorGetConstantColor(kCGColorBlack)}; }

    vistrane::CGColor CGColor;
};

} // namespace vistrane
