#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSNib.h"

namespace vistrane {

/// A button that nobody sees. `performClick` is the user's click.
class ConsoleButton final : public NSButton {
public:
    enum class Kind {
        push,
        /// A click turns the state over before the action is sent.
        checkBox
    };

    explicit ConsoleButton(std::string title, Kind kind = Kind::push)
        : kind_(kind), title_(std::move(title)) {}

    std::string title() const override { return title_; }
    void setTitle(const std::string& title) override { title_ = title; }
    NSInteger state() const override { return state_; }
    void setState(NSInteger state) override {
        state_ = state == NSControlStateValueOff ? NSControlStateValueOff : NSControlStateValueOn;
    }
    void setEnabled(bool enabled) override { enabled_ = enabled; }
    void setImage(std::shared_ptr<NSImage> image) override { image_ = std::move(image); }
    void setAlternateImage(std::shared_ptr<NSImage> image) override {
        alternateImage_ = std::move(image);
    }

    void setAction(NSAction action) { action_ = std::move(action); }
    /// Any thread.
    bool isEnabled() const { return enabled_; }
    std::shared_ptr<NSImage> image() const { return image_; }
    std::shared_ptr<NSImage> alternateImage() const { return alternateImage_; }

    /// Sends the action; does nothing while the button is disabled.
    void performClick() {
        if (!enabled_) {
            return;
        }
        if (kind_ == Kind::checkBox) {
            setState(state_ == NSControlStateValueOff ? NSControlStateValueOn
                                                      : NSControlStateValueOff);
        }
        if (action_) {
            action_(this);
        }
    }

private:
    const Kind kind_;
    std::string title_;
    NSInteger state_ = NSControlStateValueOff;
    /// Written by the compile thread too.
    std::atomic<bool> enabled_{true};
    std::shared_ptr<NSImage> image_;
    std::shared_ptr<NSImage> alternateImage_;
    NSAction action_;
};

} // namespace vistrane
