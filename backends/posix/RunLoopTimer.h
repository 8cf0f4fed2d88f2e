#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "platform/TimerGrid.h"
#include "platform/foundation/NSTimer.h"

namespace vistrane {

class RunLoopTimers;

/// A timer of a run loop. It does not tick within its own tick, even if that runs the loop: the
/// dates that pass meanwhile merge into the next tick.
class RunLoopTimer final : public NSTimer, public std::enable_shared_from_this<RunLoopTimer> {
public:
    /// `now` is in nanoseconds of the loop's clock.
    RunLoopTimer(RunLoopTimers& timers, std::int64_t now, double interval,
                 std::function<void(NSTimer&)> tick, bool repeats);

    void fire() override;
    void invalidate() override;
    bool isValid() const override { return timers_ != nullptr; }

    /// When it is due next.
    std::int64_t nextDate() const { return grid_.next(); }
    bool isTicking() const { return ticking_ > 0; }
    bool isHeld() const { return isHeld_; }
    void setHeld(bool held) { isHeld_ = held; }
    /// Ticks for every date up to `now`.
    void tick(std::int64_t now);

private:
    void callOut();

    /// Null once invalid.
    RunLoopTimers* timers_;
    TimerGrid grid_;
    /// Shared with a running tick, so that it survives an invalidation from within.
    std::shared_ptr<const std::function<void(NSTimer&)>> tick_;
    bool repeats_;
    int ticking_ = 0;
    bool isHeld_ = false;
};

} // namespace vistrane
