#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/SliderValue.h"
#include "platform/appkit/CALayer.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSPopUpButton.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSWindow.h"

// Controls by name. A method that the interfaces do not have is the user's or the test's own doing:
// it is not recorded and sends no action. All of it is for the main thread.

namespace vistrane {

class SimWindow final : public NSWindow, public SimObject {
public:
    SimWindow(CallLog& log, const std::string& name) : SimObject(log, name) {}

    bool makeFirstResponder(NSObject* responder) override;
    void makeKeyAndOrderFront(NSObject* sender) override;
    void setTitle(const std::string& newTitle) override;
    void setTitlebarAppearsTransparent(bool transparent) override;

    std::string title;
    bool titlebarAppearsTransparent = false;
    /// What ending an edit does.
    std::function<void()> endEditing;
};

class SimTextField final : public NSTextField, public SimObject {
public:
    SimTextField(CallLog& log, const std::string& name) : SimObject(log, name) {}

    void setStringValue(const std::string& text) override;
    std::int32_t intValue() const override;
    NSInteger integerValue() const override;
    void setIntValue(std::int32_t value) override;
    void setIntegerValue(NSInteger value) override;
    void setNeedsDisplay(bool needed) override { mainCall("setNeedsDisplay: " + yesNo(needed)); }

    std::string text;
};

class SimSlider final : public NSSlider, public SimObject {
public:
    SimSlider(CallLog& log, const std::string& name) : SimObject(log, name) {}

    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    std::int32_t intValue() const override;
    NSInteger integerValue() const override;
    float floatValue() const override;
    void setIntegerValue(NSInteger value) override;

    void setRange(double least, double greatest);
    void drag(double to) { value_.set(to); }
    double minimum() const { return value_.minimum(); }
    double maximum() const { return value_.maximum(); }
    double value() const { return value_.doubleValue(); }

private:
    SliderValue value_{0.0, 100.0, 0.0};
};

class SimButton final : public NSButton, public SimObject {
public:
    SimButton(CallLog& log, const std::string& name) : SimObject(log, name) {}

    std::string title() const override;
    void setTitle(const std::string& title) override;
    NSInteger state() const override;
    void setState(NSInteger state) override;
    /// Any thread, and recorded only, so that a race test sees nothing of it: `isEnabled` is for
    /// when no other thread sets it.
    void setEnabled(bool enabled) override;
    void setImage(std::shared_ptr<NSImage> image) override;
    void setAlternateImage(std::shared_ptr<NSImage> image) override;

    bool isEnabled() const { return enabled_.load(std::memory_order_relaxed); }

    std::string currentTitle;
    NSInteger currentState = 0;
    std::shared_ptr<NSImage> image;
    std::shared_ptr<NSImage> alternateImage;

private:
    std::atomic<bool> enabled_{true};
};

/// The layer of a view, or a layer of its own kind.
template <class Base>
class SimLayerOf : public Base, public SimObject {
public:
    SimLayerOf(CallLog& log, const std::string& name) : SimObject(log, name) {}

    void setFrame(CGRect newFrame) override {
        mainCall("setFrame: " + describe(newFrame));
        frame = newFrame;
    }
    void setBackgroundColor(CGColor color) override {
        mainCall("setBackgroundColor: " + decimal(color.red) + "," + decimal(color.green) + "," +
                 decimal(color.blue) + "," + decimal(color.alpha));
        backgroundColor = color;
    }
    void addSublayer(std::shared_ptr<CALayer> layer) override {
        mainCall("addSublayer: " + nameOf(layer.get()));
        sublayers.push_back(std::move(layer));
    }

    CGRect frame;
    std::optional<CGColor> backgroundColor;
    std::vector<std::shared_ptr<CALayer>> sublayers;
};
using SimLayer = SimLayerOf<CALayer>;

template <class Base>
class SimViewOf : public Base, public SimObject {
public:
    SimViewOf(CallLog& log, const std::string& name)
        : SimObject(log, name), viewLayer(std::make_shared<SimLayer>(log, name + ".layer")) {}

    NSRect bounds() const override {
        mainGetter("bounds");
        return viewBounds;
    }
    void setWantsLayer(bool wanted) override {
        mainCall("setWantsLayer: " + yesNo(wanted));
        wantsLayer = wanted;
    }
    std::shared_ptr<CALayer> layer() override {
        mainGetter("layer");
        return wantsLayer ? viewLayer : nullptr;
    }
    void setNeedsDisplay(bool needed) override { mainCall("setNeedsDisplay: " + yesNo(needed)); }

    NSRect viewBounds{{0.0, 0.0}, {320.0, 240.0}};
    bool wantsLayer = false;
    std::shared_ptr<SimLayer> viewLayer;
};
using SimView = SimViewOf<NSView>;

class SimImageView final : public SimViewOf<NSImageView> {
public:
    using SimViewOf::SimViewOf;

    void setImage(std::shared_ptr<NSImage> newImage) override;

    std::shared_ptr<NSImage> image;
};

class SimPopUpButton final : public NSPopUpButton, public SimObject {
public:
    SimPopUpButton(CallLog& log, const std::string& name) : SimObject(log, name) {}

    void removeAllItems() override;
    void addItemWithTitle(const std::string& title) override;
    NSInteger indexOfSelectedItem() const override;

    void select(NSInteger index) { selected_ = index; }
    const std::vector<std::string>& items() const { return items_; }

private:
    std::vector<std::string> items_;
    NSInteger selected_ = -1;
};

class SimProgressIndicator final : public NSProgressIndicator, public SimObject {
public:
    SimProgressIndicator(CallLog& log, const std::string& name) : SimObject(log, name) {}

    void setMaxValue(double value) override;
    void setDoubleValue(double value) override;

    double maximum = 100.0;
    double value = 0.0;
};

} // namespace vistrane
