#pragma once

#include <chrono>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "platform/posix/FileUserDefaults.h"
#include "platform/posix/settings_text.h"
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

    NSUserDefaults& userDefaults() { return *defaults_; }
    void storeText(const std::string& text, const std::string& key) {
        std::ofstream(path_) << settingsText({{key, text}});
        reopen();
    }
    bool reopen() {
        defaults_.emplace(path_, [](const std::string&) {});
        return true;
    }

private:
    TemporaryFolder folder_;
    QtRunLoop loop_;
    QtDispatch dispatch_{loop_};
    NotificationCenter notificationCenter_;
    const std::string path_ = folder_ / "settings";
    std::optional<FileUserDefaults> defaults_{std::in_place, path_, [](const std::string&) {}};
    QtFoundation foundation_{loop_, *defaults_, notificationCenter_, [](const std::string&) {},
                             "1.2.3"};
};

} // namespace vistrane
