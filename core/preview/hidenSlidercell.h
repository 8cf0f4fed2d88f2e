#pragma once

#include <memory>

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSSliderCell.h"

namespace vistrane {

class AppKit;

/// The cell of a slider with a picture as its knob and no tick marks. All else is the standard
/// slider's. The name is misspelled on purpose: it is part of the interface.
class hidenSlidercell final : public NSSliderCell {
public:
    explicit hidenSlidercell(AppKit& appKit) : appKit_(appKit) {}

    /// The same empty rectangle for every index.
    NSRect rectOfTickMarkAtIndex(NSInteger index) override;
    /// Stretches the picture over the whole rectangle. Without a picture there is no knob.
    void drawKnob(NSRect knobRect) override;
    void awakeFromNib() override;

    /// Null before the cell is awake, and when the resources have no such picture.
    std::shared_ptr<NSImage> knobImage;

private:
    AppKit& appKit_;
};

} // namespace vistrane
