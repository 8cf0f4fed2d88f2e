#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/appkit/NSNib.h"

namespace vistrane {

/// An interface file as two tables: which control an outlet means, and which controls send an
/// action.
class ConsoleNib final : public NSNib {
public:
    /// Makes `control` the outlet of that name, in place of an earlier one.
    void addOutlet(const std::string& name, std::shared_ptr<NSObject> control);

    /// Lets `control` send the action of that selector. The nib keeps the control.
    template <typename Control>
    void addSender(const std::string& selector, std::shared_ptr<Control> control) {
        senders_[selector].push_back(
            [control = std::move(control)](const NSAction& action) { control->setAction(action); });
    }

    // A field is filled only with a control of its own type.
    void outlet(const std::string& name, std::shared_ptr<NSWindow>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSTextField>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSSlider>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSButton>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSImageView>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSPopUpButton>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSView>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSProgressIndicator>& field) override;

    void outlet(const std::string& name, std::shared_ptr<NSMenu>& field) override;
    void outlet(const std::string& name, std::shared_ptr<NSMenuItem>& field) override;

    /// Panels have no window here, and no slider draws itself.
    void window(NSPanel&) override {}
    void sliderCell(const std::string&, std::function<std::shared_ptr<NSSliderCell>()>) override {}

    void action(const std::string& selector, NSAction method) override;

    /// Sends an action that was offered, also one that no control sends. Returns whether there is
    /// one of that selector.
    bool send(const std::string& selector, NSObject* sender) const;

private:
    template <typename Type>
    void fill(const std::string& name, std::shared_ptr<Type>& field) const;

    std::map<std::string, std::shared_ptr<NSObject>> outlets_;
    std::map<std::string, std::vector<std::function<void(const NSAction&)>>> senders_;
    std::map<std::string, NSAction> actions_;
};

} // namespace vistrane
