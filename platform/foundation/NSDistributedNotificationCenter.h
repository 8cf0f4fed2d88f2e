#pragma once

#include <functional>
#include <string>

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// Notifications between the system and its programs. Main thread only.
class NSDistributedNotificationCenter : public NSObject {
public:
    /// Calls `observer` on the main run loop each time any sender posts `name`. There is no way to
    /// unsubscribe, so the observer's captures must live as long as the process.
    virtual void addObserver(std::function<void()> observer, const std::string& name) = 0;
};

} // namespace vistrane
