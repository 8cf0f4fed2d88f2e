#pragma once

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/NibTables.h"
#include "platform/SliderValue.h"
#include "platform/appkit/CALayer.h"
#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSPopUpButton.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSWindow.h"
#include "platform/foundation/NSString.h"

// Controls by name. Members that the interfaces do not have are for the user's or the test's own
// actions: they are not recorded and send no action. Main thread only.

namespace vistrane {

struct SimWindow final : SimOf<NSWindow> {
    using SimOf::SimOf;
    bool makeFirstResponder(NSObject* responder) override {
        mainCall("makeFirstResponder: %", nameOf(responder));
        if (endEditing) {
            endEditing();
        }
        return true;
    }
    void makeKeyAndOrderFront(NSObject*) override { mainCall("makeKeyAndOrderFront"); }
    void setTitle(const std::string& value) override { mainSet("setTitle:", title, value); }
    /// Any thread: alerts have windows too.
    void setTitlebarAppearsTransparent(bool value) override {
        set("setTitlebarAppearsTransparent:", titlebarAppearsTransparent, value);
    }

    std::string title;
    bool titlebarAppearsTransparent = false;
    /// What ending an edit does.
    std::function<void()> endEditing;
};

struct SimTextField final : SimOf<NSTextField> {
    using SimOf::SimOf;
    void setStringValue(const std::string& value) override {
        mainSet("setStringValue:", text, value);
    }
    std::int32_t intValue() const override { return read("intValue", vistrane::intValue(text)); }
    NSInteger integerValue() const override {
        return read("integerValue", vistrane::integerValue(text));
    }
    void setIntValue(std::int32_t value) override {
        mainSet("setIntValue:", text, std::to_string(value));
    }
    void setIntegerValue(NSInteger value) override {
        mainSet("setIntegerValue:", text, std::to_string(value));
    }
    void setNeedsDisplay(bool needed) override { mainCall("setNeedsDisplay: %", needed); }

    std::string text;
};

struct SimSlider final : SimOf<NSSlider> {
    using SimOf::SimOf;
    void setMinValue(double newValue) override {
        mainCall("setMinValue: %", newValue);
        value.setMinimum(newValue);
    }
    void setMaxValue(double newValue) override {
        mainCall("setMaxValue: %", newValue);
        value.setMaximum(newValue);
    }
    std::int32_t intValue() const override { return read("intValue", value.intValue()); }
    NSInteger integerValue() const override { return read("integerValue", value.integerValue()); }
    float floatValue() const override { return read("floatValue", value.floatValue()); }
    void setIntegerValue(NSInteger newValue) override {
        mainCall("setIntegerValue: %", newValue);
        value.set(static_cast<double>(newValue));
    }

    void setRange(double least, double greatest) {
        value = SliderValue(least, greatest, value.doubleValue());
    }
    void drag(double to) { value.set(to); }

    SliderValue value{0.0, 100.0, 0.0};
};

struct SimButton final : SimOf<NSButton> {
    using SimOf::SimOf;
    std::string title() const override { return read("title", currentTitle); }
    void setTitle(const std::string& value) override { mainSet("setTitle:", currentTitle, value); }
    NSInteger state() const override { return read("state", currentState); }
    void setState(NSInteger value) override { mainSet("setState:", currentState, value); }
    /// Any thread. The atomic flag orders no threads, so that race tests see the program's races.
    void setEnabled(bool enabled) override {
        call("setEnabled: %", enabled);
        enabled_.store(enabled, std::memory_order_relaxed);
    }
    void setImage(std::shared_ptr<NSImage> value) override { mainSet("setImage:", image, value); }
    void setAlternateImage(std::shared_ptr<NSImage> value) override {
        mainSet("setAlternateImage:", alternateImage, value);
    }

    bool isEnabled() const { return enabled_.load(std::memory_order_relaxed); }

    std::string currentTitle;
    NSInteger currentState = 0;
    std::shared_ptr<NSImage> image;
    std::shared_ptr<NSImage> alternateImage;

private:
    std::atomic<bool> enabled_{true};
};

inline std::string text(CGColor color) {
    return filled("%,%,%,%",
                  {text(color.red), text(color.green), text(color.blue), text(color.alpha)});
}

/// A layer of the kind `Base`.
template <class Base>
struct SimLayerOf : SimOf<Base> {
    using SimOf<Base>::SimOf;
    void setFrame(CGRect frame) override { this->mainCall("setFrame: %", frame); }
    void setBackgroundColor(CGColor color) override {
        this->mainCall("setBackgroundColor: %", color);
    }
    void addSublayer(std::shared_ptr<CALayer> layer) override {
        this->mainCall("addSublayer: %", layer);
    }
};
using SimLayer = SimLayerOf<CALayer>;

template <class Base>
struct SimViewOf : SimOf<Base> {
    using SimOf<Base>::SimOf;
    NSRect bounds() const override {
        return this->read("bounds", NSRect{{0.0, 0.0}, {320.0, 240.0}});
    }
    void setWantsLayer(bool value) override { this->mainSet("setWantsLayer:", wantsLayer, value); }
    std::shared_ptr<CALayer> layer() override {
        return this->read("layer", wantsLayer ? viewLayer : nullptr);
    }
    void setNeedsDisplay(bool needed) override { this->mainCall("setNeedsDisplay: %", needed); }

    bool wantsLayer = false;
    std::shared_ptr<SimLayer> viewLayer =
        std::make_shared<SimLayer>(this->log_, this->name() + ".layer");
};
using SimView = SimViewOf<NSView>;

struct SimImageView final : SimViewOf<NSImageView> {
    using SimViewOf::SimViewOf;
    void setImage(std::shared_ptr<NSImage> value) override { mainSet("setImage:", image, value); }

    std::shared_ptr<NSImage> image;
};

struct SimPopUpButton final : SimOf<NSPopUpButton> {
    using SimOf::SimOf;
    void removeAllItems() override {
        mainCall("removeAllItems");
        items.clear();
        selected = -1;
    }
    void addItemWithTitle(const std::string& title) override {
        mainCall("addItemWithTitle: %", title);
        const auto same = std::find(items.begin(), items.end(), title);
        if (same != items.end()) {
            const NSInteger index = same - items.begin();
            items.erase(same);
            if (index == selected) {
                selected = items.empty() ? -1 : 0;
            } else if (index < selected) {
                --selected;
            }
        }
        items.push_back(title);
        if (items.size() == 1) {
            selected = 0;
        }
    }
    NSInteger indexOfSelectedItem() const override {
        mainCall("indexOfSelectedItem");
        return selected;
    }

    std::vector<std::string> items;
    NSInteger selected = -1;
};

struct SimProgressIndicator final : SimOf<NSProgressIndicator> {
    using SimOf::SimOf;
    void setMaxValue(double newMaximum) override { mainSet("setMaxValue:", maximum, newMaximum); }
    void setDoubleValue(double newValue) override { mainSet("setDoubleValue:", value, newValue); }

    double maximum = 100.0;
    double value = 0.0;
};

/// A menu's entry, named after its menu and its title, as in "menu1.Item".
struct SimMenuItem final : SimOf<NSMenuItem> {
    using SimOf::SimOf;
    std::optional<std::string> representedObject() const override {
        return read("representedObject", object);
    }
    void setRepresentedObject(const std::string& value) override {
        mainSet("setRepresentedObject:", object, value);
    }
    void setTarget(NSObject* newTarget) override {
        mainCall("setTarget: %", nameOf(newTarget));
        target = newTarget;
    }
    void setImage(std::shared_ptr<NSImage> value) override { mainSet("setImage:", image, value); }
    void setSubmenu(std::shared_ptr<NSMenu> value) override {
        mainSet("setSubmenu:", submenu, value);
    }

    /// The user chooses the item: nothing is sent without a target or an action.
    void choose() {
        if (target != nullptr && action) {
            action(this);
        }
    }

    std::string title;
    NSAction action;
    std::optional<std::string> object;
    NSObject* target = nullptr;
    std::shared_ptr<NSImage> image;
    /// A SimMenu.
    std::shared_ptr<NSMenu> submenu;
};

struct SimMenu final : SimOf<NSMenu> {
    using SimOf::SimOf;
    std::shared_ptr<NSMenuItem> addItemWithTitle(const std::string& title, NSAction action,
                                                 const std::string& keyEquivalent) override {
        mainCall("addItemWithTitle: % keyEquivalent: \"%\"", title, keyEquivalent);
        auto item = std::make_shared<SimMenuItem>(log_, name() + "." + title);
        item->title = title;
        item->action = std::move(action);
        items.push_back(item);
        return item;
    }
    void cancelTracking() override { mainCall("cancelTracking"); }

    std::vector<std::shared_ptr<SimMenuItem>> items;
};

/// An interface file with every outlet of the controller and of the panel, as a control of that
/// name. The rate slider "fpsS" has the range 1 to 60, the frame slider 0 to 100.
class SimNib final : public NibTables {
public:
    explicit SimNib(CallLog& log) : log_(log) {
        add<SimWindow>({"myWindow", "tipWindow"});
        add<SimTextField>({"hInput", "mInput", "sInput", "fpsD", "timeD", "currentS",
                           "versionLabel", "tipText", "picCount"});
        add<SimSlider>({"fpsS", "photoSlider"});
        slider("fpsS").setRange(1.0, 60.0);
        add<SimButton>({"startB", "oneB", "slowB", "compilingB", "outfolderB", "previewPlayButton",
                        "dockButton", "tipButton"});
        add<SimImageView>({"leadingImage", "myDisplay", "tipImage"});
        add<SimPopUpButton>({"AVDevicePopUp"});
        add<SimView>({"previewView", "tipView"});
        add<SimProgressIndicator>({"progressBar"});
        add<SimMenu>({"sMenu"});
        add<SimMenuItem>({"mantisSubmenuS", "mantisSubmenuD", "mantisSubmenuM"});
    }

    void sliderCell(const std::string& className,
                    std::function<std::shared_ptr<NSSliderCell>()> make) override {
        offer(cells_, className, std::move(make));
    }
    void action(const std::string& selector, NSAction method) override {
        offer(actions_, selector, std::move(method));
    }

    /// Leaves an outlet out; call it before the objects are connected.
    void leaveOut(const std::string& name) { addOutlet(name, nullptr); }

    // The control of that name. A wrong name or kind is an error of the test and ends it.
    SimWindow& window(const std::string& name) { return the<SimWindow>(name); }
    SimTextField& textField(const std::string& name) { return the<SimTextField>(name); }
    SimSlider& slider(const std::string& name) { return the<SimSlider>(name); }
    SimButton& button(const std::string& name) { return the<SimButton>(name); }
    SimImageView& imageView(const std::string& name) { return the<SimImageView>(name); }
    SimPopUpButton& popUp(const std::string& name) { return the<SimPopUpButton>(name); }
    SimView& view(const std::string& name) { return the<SimView>(name); }
    SimMenu& menu(const std::string& name) { return the<SimMenu>(name); }
    SimMenuItem& menuItem(const std::string& name) { return the<SimMenuItem>(name); }
    SimProgressIndicator& progress(const std::string& name) {
        return the<SimProgressIndicator>(name);
    }

    /// Makes a cell of that class and wakes it.
    std::shared_ptr<NSSliderCell> makeSliderCell(const std::string& className) const {
        auto cell = cells_.at(className)();
        cell->awakeFromNib();
        return cell;
    }

    /// Sends the action of that selector; a misuse when no object offers it.
    void send(const std::string& selector, NSObject* sender = nullptr) {
        const auto found = actions_.find(selector);
        if (found == actions_.end()) {
            log_.misuse("send: no object offers " + selector);
            return;
        }
        found->second(sender);
    }
    /// The selectors of all actions that were offered.
    std::set<std::string> actions() const {
        std::set<std::string> names;
        for (const auto& [selector, method] : actions_) {
            names.insert(selector);
        }
        return names;
    }

private:
    template <class Control>
    void add(std::initializer_list<const char*> names) {
        for (const char* name : names) {
            addOutlet(name, std::make_shared<Control>(log_, name));
        }
    }
    template <class Control>
    Control& the(const std::string& name) const {
        return dynamic_cast<Control&>(*control(name));
    }
    template <class Table, class Offer>
    void offer(Table& table, const std::string& name, Offer given) {
        if (!table.emplace(name, std::move(given)).second) {
            log_.misuse(name + " is offered twice");
        }
    }

    CallLog& log_;
    std::map<std::string, std::function<std::shared_ptr<NSSliderCell>()>> cells_;
    std::map<std::string, NSAction> actions_;
};

} // namespace vistrane
