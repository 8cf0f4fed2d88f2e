#pragma once

#include <memory>

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSSliderCell.h"

namespace vistrane {

class AppKit;

/// Draws a slider's knob as a picture and no tick marks. Everything else is drawn as usual. The
/// name is misspelled on purpose: it is part of the interface.
class hidenSlidercell final : public NSSliderCell {
public:
    explicit hidenSlidercell(AppKit& appKit) : appKit_(appKit) {}

    /// An empty rectangle for every index, because there are no tick marks.
    NSRect rectOfTickMarkAtIndex(NSInteger index) override;
    /// Stretches the picture over the whole rectangle. Without a picture there is no knob.
    void drawKnob(NSRect knobRect) override;
    void awakeFromNib() override;

    /// Null before `awakeFromNib`, and if the resources lack the picture.
    std::shared_ptr<NSImage> knobImage;

private:
    AppKit& appKit_;
};

} // namespace vistrane
