#pragma once

#include <memory>

#include "platform/coregraphics/CGColor.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// What a view shows behind and between its contents. Main thread only.
class CALayer : public NSObject {
public:
    /// In the coordinates of the layer above.
    virtual void setFrame(CGRect frame) = 0;
    virtual void setBackgroundColor(CGColor color) = 0;

    /// Puts `layer` on top of the layers already there and keeps it.
    virtual void addSublayer(std::shared_ptr<CALayer> layer) = 0;
};

} // namespace vistrane
