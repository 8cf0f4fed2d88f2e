#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSView.h"

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

/// A view that is on no screen: its bounds are zero. `Interface` is `NSView` or an interface that
/// extends it.
template <typename Interface>
class ConsoleViewOf : public Interface {
public:
    NSRect bounds() const override { return NSZeroRect; }
    void setWantsLayer(bool wanted) override {
        if (!wanted) {
            layer_.reset();
        } else if (!layer_) {
            layer_ = std::make_shared<ConsoleLayer>();
        }
    }
    std::shared_ptr<CALayer> layer() override { return layer_; }
    void setNeedsDisplay(bool) override {}

private:
    std::shared_ptr<ConsoleLayer> layer_;
};

class ConsoleView final : public ConsoleViewOf<NSView> {};

class ConsoleImageView final : public ConsoleViewOf<NSImageView> {
public:
    void setImage(std::shared_ptr<NSImage>) override {}
};

} // namespace vistrane
