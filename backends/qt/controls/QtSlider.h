#pragma once

#include <memory>
#include <utility>

#include <QObject>

#include "backends/qt/controls/Action.h"
#include "backends/qt/controls/SliderWidget.h"
#include "platform/SliderValue.h"
#include "platform/appkit/NSSlider.h"

namespace vistrane {

/// A slider on a widget that outlives it. The program may set any value of the range; the user
/// moves in whole steps from the minimum. Each mouse press and each move sends the action.
class QtSlider final : public NSSlider {
public:
    /// Takes over the widget's range and value.
    explicit QtSlider(SliderWidget& widget);
    ~QtSlider() override;
    QtSlider(const QtSlider&) = delete;
    QtSlider& operator=(const QtSlider&) = delete;

    void setMinValue(double value) override;
    void setMaxValue(double value) override;
    std::int32_t intValue() const override { return value_.intValue(); }
    NSInteger integerValue() const override { return value_.integerValue(); }
    float floatValue() const override { return value_.floatValue(); }
    void setIntegerValue(NSInteger value) override;

    void setAction(NSAction action) { action_.set(std::move(action)); }
    void setCell(std::shared_ptr<NSSliderCell> cell) { widget_.setCell(std::move(cell)); }

private:
    void show();
    void userMoved(int position);

    SliderWidget& widget_;
    SliderValue value_;
    Action action_;
    QObject connections_;
};

} // namespace vistrane
