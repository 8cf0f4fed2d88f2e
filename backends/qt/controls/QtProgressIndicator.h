#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>

#include <QProgressBar>
#include <QString>

#include "platform/appkit/NSProgressIndicator.h"

namespace vistrane {

/// Such as "12 of 150 frames, 8 %, about 30 s left", after that many seconds since the first frame.
/// Empty if there is nothing to tell.
QString progressText(double value, double maximum, double seconds);

/// A bar on a widget that outlives it. The bar of an empty range is empty. While it is neither
/// empty nor full, its tool tip and its description for screen readers are the progress in words.
class QtProgressIndicator final : public NSProgressIndicator {
public:
    explicit QtProgressIndicator(QProgressBar& widget)
        : widget_(widget), usualToolTip_(widget.toolTip()),
          usualDescription_(widget.accessibleDescription()) {
        widget.setRange(0, steps);
        show();
    }

    void setMaxValue(double value) override {
        maximum_ = value;
        begin_ = std::chrono::steady_clock::now();
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
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin_;
        const QString words = progressText(value_, maximum_, passed.count());
        widget_.setToolTip(words.isEmpty() ? usualToolTip_ : words);
        // Screen readers are told of each change.
        constexpr int percent = steps / 100;
        if (words.isEmpty() || widget_.value() / percent != described_) {
            described_ = words.isEmpty() ? -1 : widget_.value() / percent;
            widget_.setAccessibleDescription(words.isEmpty() ? usualDescription_ : words);
        }
    }

    QProgressBar& widget_;
    double maximum_ = 100.0;
    double value_ = 0.0;
    /// When the maximum was set.
    std::chrono::steady_clock::time_point begin_{};
    /// The percentage in the description; -1 for the usual one.
    int described_ = -1;
    const QString usualToolTip_;
    const QString usualDescription_;
};

} // namespace vistrane
