#include "platform/qt/controls/QtSlider.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QSignalBlocker>

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

/// A number that the widget can count to, with room for a page beyond it.
int position(double value) {
    constexpr double most = std::numeric_limits<int>::max() >> 2;
    return static_cast<int>(std::clamp(value, -most, most));
}

} // namespace

QtSlider::QtSlider(SliderWidget& widget)
    : widget_(widget), minimum_(widget.minimum()), maximum_(widget.maximum()),
      value_(widget.value()) {
    QObject::connect(&widget, &QSlider::valueChanged, &connections_,
                     [this](int place) { userMoved(place); });
    widget.setUnmovedPressHandler([this] { action_.send(this); });
}

QtSlider::~QtSlider() {
    widget_.setUnmovedPressHandler(nullptr);
}

void QtSlider::setMinValue(double value) {
    minimum_ = std::isnan(value) ? minimum_ : value;
    setValue(value_);
}

void QtSlider::setMaxValue(double value) {
    maximum_ = std::isnan(value) ? maximum_ : value;
    setValue(value_);
}

std::int32_t QtSlider::intValue() const {
    return rounded<std::int32_t>(value_);
}

NSInteger QtSlider::integerValue() const {
    return rounded<NSInteger>(value_);
}

float QtSlider::floatValue() const {
    constexpr double most = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value_, -most, most));
}

void QtSlider::setIntegerValue(NSInteger value) {
    setValue(static_cast<double>(value));
}

void QtSlider::setValue(double value) {
    value_ = std::max(minimum_, std::min(value, maximum_));
    show();
}

void QtSlider::show() {
    // Only what the user does counts as a move.
    const QSignalBlocker blocker(widget_);
    const int first = position(std::round(minimum_));
    const int last = first + position(std::ceil(std::max(0.0, maximum_ - minimum_)));
    widget_.setRange(first, last);
    constexpr int pages = 10;
    widget_.setPageStep(std::max(1, (last - first) / pages));
    widget_.setValue(first + position(std::round(value_ - minimum_)));
}

void QtSlider::userMoved(int place) {
    const int first = position(std::round(minimum_));
    value_ = std::max(minimum_, std::min(minimum_ + (place - first), maximum_));
    action_.send(this);
}

} // namespace vistrane
