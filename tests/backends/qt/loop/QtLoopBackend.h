#pragma once

#include <chrono>
#include <string>
#include <thread>

#include "backends/console/MemoryUserDefaults.h"
#include "backends/qt/loop/QtDispatch.h"
#include "backends/qt/loop/QtFoundation.h"
#include "tests/support/ClockShift.h"

namespace vistrane {

/// The run loop and its kits for the contract suites, on the real clock.
class QtLoopBackend {
public:
    Foundation& foundation() { return foundation_; }
    Dispatch& dispatch() { return dispatch_; }
    QtRunLoop& loop() { return loop_; }
    void stall(double seconds) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }

    void skip(double seconds) { clockShift_.add(seconds); }

    NSUserDefaults& userDefaults() { return defaults_; }
    void storeText(const std::string& text, const std::string& key) {
        defaults_.setString(text, key);
    }
    bool reopen() { return false; }

private:
    ClockShift clockShift_;
    MemoryUserDefaults defaults_;
    QtRunLoop loop_;
    QtDispatch dispatch_{loop_};
    NotificationCenter notificationCenter_;
    QtFoundation foundation_{loop_, defaults_, notificationCenter_, [](const std::string&) {},
                             "1.2.3"};
};

} // namespace vistrane
