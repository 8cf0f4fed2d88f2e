#pragma once

#include "platform/appkit/NSNib.h"
#include "platform/appkit/NSSlider.h"

namespace vistrane {

/// A slider that nobody sees. With a minimum above the maximum the value is the minimum. What is
/// no number is not taken.
class ConsoleSlider final : public NSSlider {
public:
    ConsoleSlider(double minimum, double maximum, double value);

    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    std::int32_t intValue() const override;
    NSInteger integerValue() const override;
    float floatValue() const override;
    void setIntegerValue(NSInteger value) override;

    void setAction(NSAction action) { action_ = std::move(action); }
    double minValue() const { return minimum_; }
    double maxValue() const { return maximum_; }
    double doubleValue() const { return value_; }

    /// The user moves the knob, as far as the range goes; sends the action.
    void userMoves(double value);

private:
    void setValue(double value);

    double minimum_;
    double maximum_;
    double value_;
    NSAction action_;
};

} // namespace vistrane
