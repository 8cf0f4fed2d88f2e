#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A thread that runs one entry function once. Every method may be called from any thread.
///
/// A running thread keeps its own object alive. It is never joined, and ends with the process at
/// the latest.
class NSThread : public NSObject {
public:
    /// Call once.
    virtual void start() = 0;

    /// Only sets the flag that `isCancelled` returns; the entry function must check it.
    virtual void cancel() = 0;
    virtual bool isCancelled() const = 0;
};

} // namespace vistrane
