#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/NibOutlets.h"

namespace vistrane {

/// An interface file as two tables: the control of each outlet, and the controls that send each
/// action.
class ConsoleNib final : public NibOutlets {
public:
    /// Makes `control` send the action of that selector. The nib keeps the control.
    template <typename Control>
    void addSender(const std::string& selector, std::shared_ptr<Control> control) {
        senders_[selector].push_back(
            [control = std::move(control)](const NSAction& action) { control->setAction(action); });
    }

    /// Panels have no window here, and sliders have no cell.
    void window(NSPanel&) override {}
    void sliderCell(const std::string&, std::function<std::shared_ptr<NSSliderCell>()>) override {}

    /// Does nothing for an action that no control sends.
    void action(const std::string& selector, NSAction method) override {
        for (const auto& connect : senders_[selector]) {
            connect(method);
        }
    }

private:
    std::map<std::string, std::vector<std::function<void(const NSAction&)>>> senders_;
};

} // namespace vistrane
