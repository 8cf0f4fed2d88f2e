#include "platform/console/ConsoleSlider.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vistrane {

namespace {

/// The nearest integer, halves away from zero; the nearest in range when there is none.
template <typename Integer>
Integer rounded(double value) {
    using Limits = std::numeric_limits<Integer>;
    // Both bounds are powers of two, up to sign: exact.
    const double above = -static_cast<double>(Limits::min());
    const double whole = std::round(value);
    if (whole >= above) {
        return Limits::max();
    }
    return whole <= -above ? Limits::min() : static_cast<Integer>(whole);
}

} // namespace

ConsoleSlider::ConsoleSlider(double minimum, double maximum, double value)
    : minimum_(minimum), maximum_(maximum), value_(value) {
    setValue(value);
}

void ConsoleSlider::setMinValue(double value) {
    minimum_ = std::isnan(value) ? minimum_ : value;
    setValue(value_);
}

void ConsoleSlider::setMaxValue(double value) {
    maximum_ = std::isnan(value) ? maximum_ : value;
    setValue(value_);
}

std::int32_t ConsoleSlider::intValue() const {
    return rounded<std::int32_t>(value_);
}

NSInteger ConsoleSlider::integerValue() const {
    return rounded<NSInteger>(value_);
}

float ConsoleSlider::floatValue() const {
    constexpr double most = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value_, -most, most));
}

void ConsoleSlider::setIntegerValue(NSInteger value) {
    setValue(static_cast<double>(value));
}

void ConsoleSlider::userMoves(double value) {
    setValue(value);
    if (action_) {
        action_(this);
    }
}

void ConsoleSlider::setValue(double value) {
    if (!std::isnan(value)) {
        value_ = std::max(minimum_, std::min(value, maximum_));
    }
}

} // namespace vistrane
