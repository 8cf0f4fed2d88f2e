#pragma once

#include "platform/foundation/NSDistributedNotificationCenter.h"

namespace vistrane {

/// A notification center that no sender reaches: observers are never called.
class SilentNotificationCenter final : public NSDistributedNotificationCenter {
public:
    void addObserver(std::function<void()>, const std::string&) override {}
};

} // namespace vistrane
