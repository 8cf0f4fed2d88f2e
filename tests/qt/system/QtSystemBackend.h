#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "platform/posix/FileUserDefaults.h"
#include "platform/qt/system/QtDispatch.h"
#include "platform/qt/system/QtFoundation.h"
#include "tests/posix/TemporaryFolder.h"

namespace vistrane {

/// The system half of the window for the contract suites, on the real clock.
class QtSystemBackend {
public:
    Foundation& foundation() { return foundation_; }
    Dispatch& dispatch() { return dispatch_; }
    void stall(double seconds) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }

    NSUserDefaults& userDefaults() { return defaults_; }

private:
    TemporaryFolder folder_;
    QtRunLoop loop_;
    QtDispatch dispatch_{loop_};
    NotificationCenter notificationCenter_;
    FileUserDefaults defaults_{folder_ / "settings", [](const std::string&) {}};
    QtFoundation foundation_{loop_, defaults_, notificationCenter_, [](const std::string&) {},
                             "1.2.3"};
};

} // namespace vistrane
