#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/appkit/NSImageView.h"

namespace vistrane {

/// A layer that is never drawn. It keeps its sublayers alive.
class ConsoleLayer final : public CALayer {
public:
    void setFrame(CGRect) override {}
    void setBackgroundColor(CGColor) override {}
    void addSublayer(std::shared_ptr<CALayer> layer) override {
        sublayers_.push_back(std::move(layer));
    }

private:
    std::vector<std::shared_ptr<CALayer>> sublayers_;
};

/// A view that is on no screen: its bounds are zero. Also used for views without a picture.
class ConsoleImageView final : public NSImageView {
public:
    NSRect bounds() const override { return NSZeroRect; }
    void setWantsLayer(bool wanted) override {
        if (wanted && !layer_) {
            layer_ = std::make_shared<ConsoleLayer>();
        }
    }
    std::shared_ptr<CALayer> layer() override { return layer_; }
    void setNeedsDisplay(bool) override {}
    void setImage(std::shared_ptr<NSImage>) override {}

private:
    std::shared_ptr<ConsoleLayer> layer_;
};

} // namespace vistrane
