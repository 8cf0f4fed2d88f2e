#include "backends/console/ConsoleTextField.h"

#include <utility>

#include "platform/foundation/NSString.h"

namespace vistrane {

void ConsoleTextField::setStringValue(const std::string& text) {
    text_ = text;
    isEdited_ = false;
}

std::int32_t ConsoleTextField::intValue() const {
    return vistrane::intValue(text_);
}

NSInteger ConsoleTextField::integerValue() const {
    return vistrane::integerValue(text_);
}

void ConsoleTextField::setIntValue(std::int32_t value) {
    setStringValue(std::to_string(value));
}

void ConsoleTextField::setIntegerValue(NSInteger value) {
    setStringValue(std::to_string(value));
}

void ConsoleTextField::userEdits(const std::string& text) {
    text_ = text;
    isEdited_ = true;
}

void ConsoleTextField::userTypes(const std::string& text) {
    userEdits(text);
    endEditing();
}

void ConsoleTextField::endEditing() {
    // First: the action may well end the edit of every field.
    if (std::exchange(isEdited_, false) && action_) {
        action_(this);
    }
}

} // namespace vistrane
