#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSObject.h"

namespace vistrane {

/// The main thread's run loop. Main thread only.
class NSRunLoop : public NSObject {
public:
    /// Processes timers, the main queue and input until `date`, then returns. May be called from
    /// within a timer or an action.
    virtual void runUntilDate(NSDate date) = 0;
};

} // namespace vistrane
