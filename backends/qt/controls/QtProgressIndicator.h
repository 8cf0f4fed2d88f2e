#pragma once

#include <algorithm>
#include <cmath>

#include <QProgressBar>

#include "platform/appkit/NSProgressIndicator.h"

namespace vistrane {

/// A bar on a widget that outlives it. The bar of an empty range is empty.
class QtProgressIndicator final : public NSProgressIndicator {
public:
    explicit QtProgressIndicator(QProgressBar& widget) : widget_(widget) {
        widget.setRange(0, steps);
        show();
    }

    void setMaxValue(double value) override {
        maximum_ = value;
        show();
    }
    void setDoubleValue(double value) override {
        value_ = value;
        show();
    }

private:
    static constexpr int steps = 1000;

    void show() {
        // The bar is full only at the maximum, however close the value is.
        const double part = std::floor(std::min(value_, maximum_) * steps / maximum_);
        // The comparison is false for NaN.
        widget_.setValue(maximum_ > 0.0 && part > 0.0
                             ? static_cast<int>(std::min(part, static_cast<double>(steps)))
                             : 0);
    }

    QProgressBar& widget_;
    double maximum_ = 100.0;
    double value_ = 0.0;
};

} // namespace vistrane
