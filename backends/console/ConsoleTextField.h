#pragma once

#include <string>

#include "platform/appkit/NSNib.h"
#include "platform/appkit/NSTextField.h"

namespace vistrane {

/// A text that nobody sees. What the user types counts at once as the field's value; the action is
/// sent when the edit ends. Setting a value gives an edit up.
class ConsoleTextField final : public NSTextField {
public:
    void setStringValue(const std::string& text) override;
    std::int32_t intValue() const override;
    NSInteger integerValue() const override;
    void setIntValue(std::int32_t value) override;
    void setIntegerValue(NSInteger value) override;

    void setNeedsDisplay(bool) override {}

    void setAction(NSAction action) { action_ = std::move(action); }
    const std::string& stringValue() const { return text_; }

    /// The user puts the cursor into the field and replaces its text; the edit goes on.
    void userEdits(const std::string& text);
    /// The user replaces the text and confirms it.
    void userTypes(const std::string& text);
    /// Sends the action if the user was editing.
    void endEditing();

private:
    std::string text_;
    bool isEdited_ = false;
    NSAction action_;
};

} // namespace vistrane
