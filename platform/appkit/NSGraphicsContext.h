#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A drawing context that pictures can be drawn into; see `AppKit::setCurrentContext`.
class NSGraphicsContext : public NSObject {};

} // namespace vistrane
