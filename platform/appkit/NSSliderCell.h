#pragma once

#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Draws parts of a slider that does not have the standard look. The interface file names its
/// class. Main thread only.
class NSSliderCell : public NSObject {
public:
    /// Called once, after the interface file has created the cell and before it draws.
    virtual void awakeFromNib() = 0;

    /// Where a tick mark is drawn, in the slider's coordinates. Empty: no tick mark.
    virtual NSRect rectOfTickMarkAtIndex(NSInteger index) = 0;

    /// Draws the knob into the current graphics context, which belongs to the slider.
    virtual void drawKnob(NSRect knobRect) = 0;
};

} // namespace vistrane
