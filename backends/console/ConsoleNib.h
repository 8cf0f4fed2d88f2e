#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/NibOutlets.h"

namespace vistrane {

/// An interface file as tables: which control an outlet means, and which controls send an action.
class ConsoleNib final : public NibOutlets {
public:
    /// Lets `control` send the action of that selector. The nib keeps the control.
    template <typename Control>
    void addSender(const std::string& selector, std::shared_ptr<Control> control) {
        senders_[selector].push_back(
            [control = std::move(control)](const NSAction& action) { control->setAction(action); });
    }

    /// Panels have no window here, and no slider draws itself.
    void window(NSPanel&) override {}
    void sliderCell(const std::string&, std::function<std::shared_ptr<NSSliderCell>()>) override {}

    void action(const std::string& selector, NSAction method) override;

    /// Sends an action that was offered, also one that no control sends. Returns whether there is
    /// one of that selector.
    bool send(const std::string& selector, NSObject* sender) const;

private:
    std::map<std::string, std::vector<std::function<void(const NSAction&)>>> senders_;
    std::map<std::string, NSAction> actions_;
};

} // namespace vistrane
