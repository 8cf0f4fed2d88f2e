#pragma once

#include <memory>

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSView.h"

namespace vistrane {

/// A view that shows one picture. Main thread only.
class NSImageView : public NSView {
public:
    /// Null empties the view. The view shares the ownership of the picture.
    virtual void setImage(std::shared_ptr<NSImage> image) = 0;
};

} // namespace vistrane
