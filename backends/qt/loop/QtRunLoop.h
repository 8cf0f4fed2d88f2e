#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <QBasicTimer>
#include <QObject>

#include "backends/posix/RunLoopTimers.h"
#include "backends/posix/WorkQueue.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSTimer.h"

namespace vistrane {

/// The main thread's run loop, on Qt's event loop. Everything that runs that loop (the application,
/// `runUntilDate`, a modal dialog, a menu) also runs the timers and the main queue.
///
/// Create it on the main thread, after the application object. All methods are for the main thread
/// unless they say otherwise. Timers use the monotonic clock, which stops while the machine is
/// suspended, so that resuming causes no burst of ticks.
class QtRunLoop final : public QObject, public NSRunLoop {
public:
    QtRunLoop();
    /// Invalidates the remaining timers and discards the queued work.
    ~QtRunLoop() override;

    /// Makes at least one pass over everything that is due.
    void runUntilDate(NSDate date) override;

    /// `tick` gets the timer. An interval of 0 or less counts as 0.0001 s.
    std::shared_ptr<NSTimer> scheduleTimer(double interval, std::function<void(NSTimer&)> tick,
                                           bool repeats);

    /// Holds a timer back while the user drags something that it moves, or lets it go on: then it
    /// ticks at most once for the dates that have passed.
    void setHeld(const NSTimer& timer, bool held) { timers_.setHeld(timer, held); }

    /// A timer's interval, and the time until it is due, both in seconds. A timer that is held back
    /// ticks later.
    struct Schedule {
        double interval = 0.0;
        double untilNext = 0.0;
    };
    /// Nothing for an invalid timer, and for one of another loop.
    std::optional<Schedule> scheduleOf(const NSTimer& timer) const;

    /// Whether no timer can tick. While one is scheduled, a dialog is the reason.
    bool isHeldBack() const { return !timers_.nextDate(); }

    /// Work for the main thread. Any thread may post to it while the run loop lives.
    DispatchQueue& mainQueue() { return mainQueue_; }

    /// Whether the calling thread is the main thread. Any thread.
    bool isMainThread() const;

    /// Suspends timers while it exists, for a modal alert or dialog on the main thread.
    class ModalScope : public RunLoopTimers::ModalScope {
    public:
        explicit ModalScope(QtRunLoop& loop) : RunLoopTimers::ModalScope(loop.timers_) {}
    };

    /// While it exists, `runUntilDate` also returns if no timer is scheduled and no work is queued.
    /// Work that another thread posts later waits for the next pass.
    class HurryScope {
    public:
        explicit HurryScope(QtRunLoop& loop) : loop_(loop) { loop_.isInAHurry_ = true; }
        ~HurryScope() { loop_.isInAHurry_ = false; }
        HurryScope(const HurryScope&) = delete;
        HurryScope& operator=(const HurryScope&) = delete;

    private:
        QtRunLoop& loop_;
    };

protected:
    /// Called when the main queue has work.
    void customEvent(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    bool hasNothingToWaitFor() const;
    void postWake();
    void setAlarm();

    /// The ticks of a timer are due at `start + n * interval`, in nanoseconds of the monotonic
    /// clock.
    struct Grid {
        std::weak_ptr<NSTimer> timer;
        std::int64_t start = 0;
        double interval = 0.0;
    };

    const std::thread::id mainThread_ = std::this_thread::get_id();
    WorkQueue mainQueue_{[this] { postWake(); }};
    /// Fires when the next timer is due.
    QBasicTimer alarm_;
    RunLoopTimers timers_{[this] { setAlarm(); }};
    std::vector<Grid> grids_;
    bool isInAHurry_ = false;
};

} // namespace vistrane
