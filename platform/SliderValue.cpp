#include "platform/SliderValue.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vistrane {

namespace {

/// The nearest integer, halves away from zero, clamped to the type's range.
template <typename Integer>
Integer rounded(double value) {
    using Limits = std::numeric_limits<Integer>;
    // The bounds are plus and minus a power of two, which a double holds exactly.
    const double above = -static_cast<double>(Limits::min());
    const double whole = std::round(value);
    if (whole >= above) {
        return Limits::max();
    }
    return whole <= -above ? Limits::min() : static_cast<Integer>(whole);
}

} // namespace

SliderValue::SliderValue(double minimum, double maximum, double value)
    : minimum_(minimum), maximum_(maximum), value_(value) {
    set(value);
}

void SliderValue::setMinimum(double minimum) {
    minimum_ = std::isnan(minimum) ? minimum_ : minimum;
    set(value_);
}

void SliderValue::setMaximum(double maximum) {
    maximum_ = std::isnan(maximum) ? maximum_ : maximum;
    set(value_);
}

void SliderValue::set(double value) {
    if (!std::isnan(value)) {
        value_ = std::max(minimum_, std::min(value, maximum_));
    }
}

std::int32_t SliderValue::intValue() const {
    return rounded<std::int32_t>(value_);
}

NSInteger SliderValue::integerValue() const {
    return rounded<NSInteger>(value_);
}

float SliderValue::floatValue() const {
    constexpr double most = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value_, -most, most));
}

} // namespace vistrane
