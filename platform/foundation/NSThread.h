#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A thread with one entry function, run once. Every method may be called from any thread.
///
/// The running thread keeps itself alive; nobody joins it, and it ends with the process at the
/// latest.
class NSThread : public NSObject {
public:
    /// Call once.
    virtual void start() = 0;

    /// Only sets the flag that `isCancelled` reads; the entry function looks at it when it likes.
    virtual void cancel() = 0;
    virtual bool isCancelled() const = 0;
};

} // namespace vistrane
