#pragma once

#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Draws parts of a slider. A slider of the standard look has no cell; the interface file names a
/// class of cells for the others. Main thread only.
class NSSliderCell : public NSObject {
public:
    /// Called once, after the interface file has created the cell and before it draws.
    virtual void awakeFromNib() = 0;

    /// Where a tick mark is drawn, in the slider's coordinates; empty for no tick mark.
    virtual NSRect rectOfTickMarkAtIndex(NSInteger index) = 0;

    /// Draws the knob into the current graphics context, which is the slider's.
    virtual void drawKnob(NSRect knobRect) = 0;
};

} // namespace vistrane
