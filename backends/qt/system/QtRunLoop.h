#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

#include <QBasicTimer>
#include <QObject>

#include "backends/posix/RunLoopTimers.h"
#include "backends/posix/WorkQueue.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSTimer.h"

namespace vistrane {

/// The main thread's run loop on Qt's event loop: whatever runs that, be it the application, a
/// modal dialog or a menu, runs the timers and the main queue too.
///
/// Made on the main thread when the application object is there; every method is for that thread
/// except where a line says more. Timers follow the monotonic clock, which stands still while the
/// machine sleeps: waking up is followed by no burst.
class QtRunLoop final : public QObject, public NSRunLoop {
public:
    QtRunLoop();
    /// Timers that are still valid become invalid; waiting work is dropped.
    ~QtRunLoop() override;

    /// Makes at least one pass over what is due.
    void runUntilDate(NSDate date) override;

    /// `tick` gets the timer. An interval of 0 or less counts as 0.0001 s.
    std::shared_ptr<NSTimer> scheduleTimer(double interval, std::function<void(NSTimer&)> tick,
                                           bool repeats);

    /// Work for the main thread. The queue may be posted to as long as the run loop lives.
    DispatchQueue& mainQueue() { return mainQueue_; }

    /// Whether the caller runs on the main thread. Any thread.
    bool isMainThread() const;

    /// While one lives, timers hold back: something modal is up on the main thread.
    class ModalScope : public RunLoopTimers::ModalScope {
    public:
        explicit ModalScope(QtRunLoop& loop) : RunLoopTimers::ModalScope(loop.timers_) {}
    };

protected:
    /// The main queue's wake.
    void customEvent(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    void postWake();
    void setAlarm();

    const std::thread::id mainThread_ = std::this_thread::get_id();
    WorkQueue mainQueue_{[this] { postWake(); }};
    /// Rings when a timer is next due.
    QBasicTimer alarm_;
    RunLoopTimers timers_{[this] { setAlarm(); }};
};

} // namespace vistrane
