#include "backends/qt/controls/QtSlider.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QSignalBlocker>

namespace vistrane {

namespace {

/// The widget's positions, limited so that a page step beyond the range does not overflow.
int position(double value) {
    constexpr double most = std::numeric_limits<int>::max() >> 2;
    return static_cast<int>(std::clamp(value, -most, most));
}

} // namespace

QtSlider::QtSlider(SliderWidget& widget)
    : widget_(widget), value_(widget.minimum(), widget.maximum(), widget.value()) {
    QObject::connect(&widget, &QSlider::valueChanged, &connections_,
                     [this](int place) { userMoved(place); });
    widget.setUnmovedPressHandler([this] { action_.send(this); });
}

QtSlider::~QtSlider() {
    widget_.setUnmovedPressHandler(nullptr);
}

void QtSlider::setMinValue(double value) {
    value_.setMinimum(value);
    show();
}

void QtSlider::setMaxValue(double value) {
    value_.setMaximum(value);
    show();
}

void QtSlider::setIntegerValue(NSInteger value) {
    value_.set(static_cast<double>(value));
    show();
}

void QtSlider::show() {
    // Only moves by the user send the action.
    const QSignalBlocker blocker(widget_);
    const int first = position(std::round(value_.minimum()));
    const int last =
        first + position(std::ceil(std::max(0.0, value_.maximum() - value_.minimum())));
    widget_.setRange(first, last);
    constexpr int pages = 10;
    widget_.setPageStep(std::max(1, (last - first) / pages));
    widget_.setValue(first + position(std::round(value_.doubleValue() - value_.minimum())));
}

void QtSlider::userMoved(int place) {
    const int first = position(std::round(value_.minimum()));
    value_.set(value_.minimum() + (place - first));
    action_.send(this);
}

} // namespace vistrane
