#pragma once

#include <utility>

#include "platform/appkit/NSMenu.h"

namespace vistrane {

/// The action that a control sends, if the interface file connects it with an object.
class Action {
public:
    void set(NSAction action) { action_ = std::move(action); }

    void send(NSObject* sender) const {
        // A copy: the action may run a nested loop that replaces it.
        if (const NSAction action = action_) {
            action(sender);
        }
    }

private:
    NSAction action_;
};

} // namespace vistrane
