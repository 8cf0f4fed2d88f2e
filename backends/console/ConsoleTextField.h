#pragma once

#include <string>
#include <utility>

#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSTextField.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

/// A text field without a screen. `userTypes` acts like a user.
class ConsoleTextField final : public NSTextField {
public:
    void setStringValue(const std::string& text) override { text_ = text; }
    std::int32_t intValue() const override { return vistrane::intValue(text_); }
    NSInteger integerValue() const override { return vistrane::integerValue(text_); }
    void setIntValue(std::int32_t value) override { text_ = std::to_string(value); }
    void setIntegerValue(NSInteger value) override { text_ = std::to_string(value); }
    void setNeedsDisplay(bool) override {}

    void setAction(NSAction action) { action_ = std::move(action); }
    const std::string& stringValue() const { return text_; }

    /// Replaces the text and confirms it, which sends the action.
    void userTypes(const std::string& text) {
        text_ = text;
        if (action_) {
            action_(this);
        }
    }

private:
    std::string text_;
    NSAction action_;
};

} // namespace vistrane
