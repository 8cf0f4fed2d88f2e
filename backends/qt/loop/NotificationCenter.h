#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/NSDistributedNotificationCenter.h"

namespace vistrane {

/// Notifications, posted by the back end in place of the system. Main thread only.
class NotificationCenter final : public NSDistributedNotificationCenter {
public:
    void addObserver(std::function<void()> observer, const std::string& name) override {
        observers_[name].push_back(std::move(observer));
    }

    /// Calls the observers of that name in the order in which they were added.
    void post(const std::string& name) const {
        const auto found = observers_.find(name);
        if (found == observers_.end()) {
            return;
        }
        // An observer may add observers.
        const std::vector<std::function<void()>> observers = found->second;
        for (const std::function<void()>& observer : observers) {
            observer();
        }
    }

private:
    std::map<std::string, std::vector<std::function<void()>>> observers_;
};

} // namespace vistrane
