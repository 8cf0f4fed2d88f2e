#pragma once

#include <cstdint>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A value between a minimum and a maximum. Main thread only.
///
/// Values are clamped to the range. Changing the range clamps the current value.
class NSSlider : public NSObject {
public:
    virtual void setMinValue(double value) = 0;
    virtual void setMaxValue(double value) = 0;

    /// The value, rounded to the nearest integer, halves away from zero.
    virtual std::int32_t intValue() const = 0;
    virtual NSInteger integerValue() const = 0;
    virtual float floatValue() const = 0;

    virtual void setIntegerValue(NSInteger value) = 0;
};

} // namespace vistrane
