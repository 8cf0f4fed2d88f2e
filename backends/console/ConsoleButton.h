#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSMenu.h"

namespace vistrane {

/// A push button without a screen. `performClick` acts like a user's click.
class ConsoleButton final : public NSButton {
public:
    explicit ConsoleButton(std::string title) : title_(std::move(title)) {}

    std::string title() const override { return title_; }
    void setTitle(const std::string& title) override { title_ = title; }
    NSInteger state() const override { return state_; }
    void setState(NSInteger state) override {
        state_ = state == NSControlStateValueOff ? NSControlStateValueOff : NSControlStateValueOn;
    }
    void setEnabled(bool enabled) override { enabled_ = enabled; }
    void setImage(std::shared_ptr<NSImage>) override {}
    void setAlternateImage(std::shared_ptr<NSImage>) override {}

    void setAction(NSAction action) { action_ = std::move(action); }
    /// Any thread.
    bool isEnabled() const { return enabled_; }

    /// Sends the action. A disabled button does nothing.
    void performClick() {
        if (enabled_ && action_) {
            action_(this);
        }
    }

private:
    std::string title_;
    NSInteger state_ = NSControlStateValueOff;
    /// The compile thread writes it too.
    std::atomic<bool> enabled_{true};
    NSAction action_;
};

} // namespace vistrane
