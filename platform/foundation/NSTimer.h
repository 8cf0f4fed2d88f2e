#pragma once

#include "platform/foundation/NSObject.h"

namespace vistrane {

/// A repeating call on the main run loop, in its default mode.
///
/// Fire dates lie on the grid first + n * interval: a late tick never shifts the later ones. Dates
/// that pass while the loop is busy or a modal alert is up merge into one late tick. Main thread
/// only. The run loop keeps a reference to a valid timer and drops it after `invalidate`.
class NSTimer : public NSObject {
public:
    /// Ticks immediately, without moving the grid. Does nothing on an invalid timer.
    virtual void fire() = 0;

    /// No tick starts after this returns. May be called within a tick.
    virtual void invalidate() = 0;

    virtual bool isValid() const = 0;
};

} // namespace vistrane
