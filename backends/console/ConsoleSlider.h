#pragma once

#include <utility>

#include "platform/SliderValue.h"
#include "platform/appkit/NSMenu.h"
#include "platform/appkit/NSSlider.h"

namespace vistrane {

/// A slider without a screen.
class ConsoleSlider final : public NSSlider {
public:
    ConsoleSlider(double minimum, double maximum, double value) : value_(minimum, maximum, value) {}

    void setMinValue(double value) override { value_.setMinimum(value); }
    void setMaxValue(double value) override { value_.setMaximum(value); }
    std::int32_t intValue() const override { return value_.intValue(); }
    NSInteger integerValue() const override { return value_.integerValue(); }
    float floatValue() const override { return value_.floatValue(); }
    void setIntegerValue(NSInteger value) override { value_.set(static_cast<double>(value)); }

    void setAction(NSAction action) { action_ = std::move(action); }

    /// Moves the knob, within the range, and sends the action.
    void userMoves(double value) {
        value_.set(value);
        if (action_) {
            action_(this);
        }
    }

private:
    SliderValue value_;
    NSAction action_;
};

} // namespace vistrane
