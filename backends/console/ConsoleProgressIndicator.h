#pragma once

#include <functional>
#include <utility>

#include "platform/appkit/NSProgressIndicator.h"

namespace vistrane {

/// A progress bar that reports every change to an observer.
class ConsoleProgressIndicator final : public NSProgressIndicator {
public:
    void setMaxValue(double value) override {
        maximum_ = value;
        notify();
    }
    void setDoubleValue(double value) override {
        value_ = value;
        notify();
    }

    double maxValue() const { return maximum_; }
    double doubleValue() const { return value_; }
    /// Called with the value and the maximum, on the main thread.
    void setObserver(std::function<void(double value, double maximum)> observer) {
        observer_ = std::move(observer);
    }

private:
    void notify() {
        if (observer_) {
            observer_(value_, maximum_);
        }
    }

    double value_ = 0.0;
    double maximum_ = 100.0;
    std::function<void(double, double)> observer_;
};

} // namespace vistrane
