#pragma once

#include <cstdint>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The value of a slider, by the rules that every back end shares. If the minimum is above the
/// maximum, the value is the minimum. NaN is ignored. One thread at a time.
class SliderValue {
public:
    SliderValue(double minimum, double maximum, double value);

    void setMinimum(double minimum);
    void setMaximum(double maximum);
    /// Clamps to the range.
    void set(double value);

    double minimum() const { return minimum_; }
    double maximum() const { return maximum_; }
    double doubleValue() const { return value_; }
    /// Rounded to the nearest integer, halves away from zero; clamped to the type's range.
    std::int32_t intValue() const;
    NSInteger integerValue() const;
    float floatValue() const;

private:
    double minimum_;
    double maximum_;
    double value_;
};

} // namespace vistrane
