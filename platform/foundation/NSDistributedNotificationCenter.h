#pragma once

#include <functional>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Notices between the system and its programs. Main thread only.
class NSDistributedNotificationCenter : public NSObject {
public:
    /// Calls `observer` on the main run loop each time any sender posts `name`, until the process
    /// ends: there is no way to unsubscribe, and the observer's captures must live that long.
    virtual void addObserver(std::function<void()> observer, const std::string& name) = 0;
};

} // namespace vistrane
