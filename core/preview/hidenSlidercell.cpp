#include "core/preview/hidenSlidercell.h"

#include "platform/appkit/AppKit.h"

namespace vistrane {

NSRect hidenSlidercell::rectOfTickMarkAtIndex(NSInteger) {
    return NSZeroRect;
}

void hidenSlidercell::drawKnob(NSRect knobRect) {
    if (knobImage) {
        knobImage->drawInRect(knobRect, NSZeroRect, NSCompositingOperationSourceOver, 1.0);
    }
}

void hidenSlidercell::awakeFromNib() {
    knobImage = appKit_.imageNamed("12");
}

} // namespace vistrane
