#pragma once

#include <memory>

#include "platform/appkit/CALayer.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A rectangle of a window. Main thread only.
class NSView : public NSObject {
public:
    /// In points, in the view's own coordinates.
    virtual NSRect bounds() const = 0;

    virtual void setWantsLayer(bool wanted) = 0;
    /// Null until `setWantsLayer(true)`. Owned by the view.
    virtual std::shared_ptr<CALayer> layer() = 0;

    virtual void setNeedsDisplay(bool needed) = 0;
};

} // namespace vistrane
