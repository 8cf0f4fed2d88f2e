#pragma once

#include <cstdint>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A line of text, editable or not. Main thread only.
class NSTextField : public NSObject {
public:
    virtual void setStringValue(const std::string& text) = 0;

    /// The leading integer of the text, clamped to the type's range; 0 if there is none.
    virtual std::int32_t intValue() const = 0;
    virtual NSInteger integerValue() const = 0;

    /// Sets the text to the number's decimal digits.
    virtual void setIntValue(std::int32_t value) = 0;
    virtual void setIntegerValue(NSInteger value) = 0;

    virtual void setNeedsDisplay(bool needed) = 0;
};

} // namespace vistrane
