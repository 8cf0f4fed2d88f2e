#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSView.h"

namespace vistrane {

/// A layer that only holds what it was told.
class ConsoleLayer final : public CALayer {
public:
    void setFrame(CGRect frame) override { frame_ = frame; }
    void setBackgroundColor(CGColor color) override { backgroundColor_ = color; }
    void addSublayer(std::shared_ptr<CALayer> layer) override {
        sublayers_.push_back(std::move(layer));
    }

    CGRect frame() const { return frame_; }
    CGColor backgroundColor() const { return backgroundColor_; }
    const std::vector<std::shared_ptr<CALayer>>& sublayers() const { return sublayers_; }

private:
    CGRect frame_;
    CGColor backgroundColor_ = CGColorGetConstantColor(kCGColorClear);
    std::vector<std::shared_ptr<CALayer>> sublayers_;
};

/// A view without a place on any screen: its bounds are zero. `Interface` is `NSView` or an
/// interface that extends it.
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

/// Keeps the picture that was set last.
class ConsoleImageView final : public ConsoleViewOf<NSImageView> {
public:
    void setImage(std::shared_ptr<NSImage> image) override { image_ = std::move(image); }
    std::shared_ptr<NSImage> image() const { return image_; }

private:
    std::shared_ptr<NSImage> image_;
};

} // namespace vistrane
