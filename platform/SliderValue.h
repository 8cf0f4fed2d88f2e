#pragma once

#include <cstdint>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The value of a slider, by the rules that every backend shares. With a minimum above the maximum
/// the value is the minimum. What is no number is not taken.
class SliderValue {
public:
    SliderValue(double minimum, double maximum, double value);

    void setMinimum(double minimum);
    void setMaximum(double maximum);
    /// As far as the range goes.
    void set(double value);

    double minimum() const { return minimum_; }
    double maximum() const { return maximum_; }
    double doubleValue() const { return value_; }
    /// The nearest there is, halves away from zero.
    std::int32_t intValue() const;
    NSInteger integerValue() const;
    float floatValue() const;

private:
    double minimum_;
    double maximum_;
    double value_;
};

} // namespace vistrane
