#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/foundation/NSTimer.h"

namespace vistrane {

class RunLoopTimer;

/// The timers of one run loop, on the monotonic clock. One thread only.
class RunLoopTimers {
public:
    /// `dateChanged` is called, unless it is empty, whenever `nextDate` may have changed.
    explicit RunLoopTimers(std::function<void()> dateChanged = {});
    /// Invalidates all timers.
    ~RunLoopTimers();
    RunLoopTimers(const RunLoopTimers&) = delete;
    RunLoopTimers& operator=(const RunLoopTimers&) = delete;

    /// `tick` gets the timer. An interval of 0 or less counts as 0.0001 s.
    std::shared_ptr<NSTimer> schedule(double interval, std::function<void(NSTimer&)> tick,
                                      bool repeats);

    /// Holds one of these timers back, or lets it go on: then it ticks at most once for the dates
    /// that have passed. Another or an invalid timer is ignored.
    void setHeld(const NSTimer& timer, bool held);

    /// When the next timer is due, in nanoseconds of the monotonic clock. Nothing while no timer
    /// may tick.
    std::optional<std::int64_t> nextDate() const;

    /// Ticks each timer that is due at the moment of the call, at most once.
    void runDue();

    /// Suspends all timers while it exists, for a modal alert on the main thread.
    class ModalScope {
    public:
        explicit ModalScope(RunLoopTimers& timers) : timers_(timers) { timers_.addModal(1); }
        ~ModalScope() { timers_.addModal(-1); }
        ModalScope(const ModalScope&) = delete;
        ModalScope& operator=(const ModalScope&) = delete;

    private:
        RunLoopTimers& timers_;
    };

private:
    friend class RunLoopTimer;

    std::shared_ptr<RunLoopTimer> next() const;
    void remove(const RunLoopTimer& timer);
    void addModal(int count);
    void changed() const;

    const std::function<void()> dateChanged_;
    std::vector<std::shared_ptr<RunLoopTimer>> timers_;
    int modalDepth_ = 0;
};

} // namespace vistrane
