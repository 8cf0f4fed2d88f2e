#pragma once

#include "platform/coregraphics/CGGeometry.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// What a slider asks while it draws itself. A slider of the standard look has none; the interface
/// file gives a class of cells to those that differ. Main thread only.
class NSSliderCell : public NSObject {
public:
    /// Once, when the interface file has made the cell and before it draws.
    virtual void awakeFromNib() = 0;

    /// Where a tick mark is drawn, in the slider's coordinates; an empty rectangle for nowhere.
    virtual NSRect rectOfTickMarkAtIndex(NSInteger index) = 0;

    /// Draws the knob into the current graphics context, which is the slider's.
    virtual void drawKnob(NSRect knobRect) = 0;
};

} // namespace vistrane
