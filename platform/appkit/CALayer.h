#pragma once

#include <memory>

#include "platform/coregraphics/CGColor.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A drawing surface of a view, behind its contents. Main thread only.
class CALayer : public NSObject {
public:
    /// In points, in the coordinates of the layer that contains it.
    virtual void setFrame(CGRect frame) = 0;
    virtual void setBackgroundColor(CGColor color) = 0;

    /// Adds `layer` above the existing sublayers and shares its ownership.
    virtual void addSublayer(std::shared_ptr<CALayer> layer) = 0;
};

} // namespace vistrane
