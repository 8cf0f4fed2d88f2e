#pragma once

#include <utility>

#include "platform/appkit/NSNib.h"

namespace vistrane {

/// The action that a control sends to whom the interface file connected it with, if anybody.
class Action {
public:
    void set(NSAction action) { action_ = std::move(action); }

    void send(NSObject* sender) const {
        // A copy: the action may run a loop of its own, in which anything may happen.
        if (const NSAction action = action_) {
            action(sender);
        }
    }

private:
    NSAction action_;
};

} // namespace vistrane
