#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "backends/console/WakePipe.h"
#include "backends/posix/RunLoopTimers.h"
#include "backends/posix/WorkQueue.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSTimer.h"

namespace vistrane {

/// The main thread's run loop: timers, the main queue and readable file descriptors.
///
/// The thread that makes it is the main thread; every method is for that thread except where a
/// line says more. Between two events it sleeps in the kernel. Timers follow a monotonic clock:
/// setting the wall clock moves none of them.
class ConsoleRunLoop final : public NSRunLoop {
public:
    ConsoleRunLoop() = default;
    /// Timers that are still valid become invalid; waiting work is dropped.
    ~ConsoleRunLoop() override = default;

    /// Makes at least one pass over what is due. Comes back before the date only after `stop`.
    void runUntilDate(NSDate date) override;

    /// Runs until `stop`; returns at once when that was called since the last `run` returned.
    void run();

    /// Ends `run`, and every `runUntilDate` beneath it, after the current pass. Any thread.
    void stop();

    /// `tick` gets the timer. An interval of 0 or less counts as 0.0001 s.
    std::shared_ptr<NSTimer> scheduleTimer(double interval, std::function<void(NSTimer&)> tick,
                                           bool repeats);

    /// Work for the main thread. The queue may be posted to as long as the run loop lives.
    DispatchQueue& mainQueue() { return mainQueue_; }

    /// Calls `readable` whenever `descriptor` has something to read or was closed at its other
    /// end. The descriptor stays the caller's and should not block: with a nested run loop the
    /// call may find nothing left to read. The handler reads or takes the input away; else it is
    /// called again at once. A handler that is added twice for a descriptor replaces the first.
    void addInput(int descriptor, std::function<void()> readable);
    void removeInput(int descriptor);

    /// Whether the caller runs on the main thread. Any thread.
    bool isMainThread() const;

    /// While one lives, timers hold back: a modal alert is up on the main thread.
    class ModalScope : public RunLoopTimers::ModalScope {
    public:
        explicit ModalScope(ConsoleRunLoop& loop) : RunLoopTimers::ModalScope(loop.timers_) {}
    };

    /// While one lives, `runUntilDate` comes back as soon as nothing is left that could happen by
    /// then: no timer, no input, no work. What another thread posts later waits for the next pass.
    class HurryScope {
    public:
        explicit HurryScope(ConsoleRunLoop& loop) : loop_(loop) { loop_.isInAHurry_ = true; }
        ~HurryScope() { loop_.isInAHurry_ = false; }
        HurryScope(const HurryScope&) = delete;
        HurryScope& operator=(const HurryScope&) = delete;

    private:
        ConsoleRunLoop& loop_;
    };

private:
    struct Input {
        int descriptor;
        std::shared_ptr<const std::function<void()>> readable;
    };

    void runUntil(std::int64_t deadline);
    bool hasNothingToWaitFor() const;
    int waitingTime(std::int64_t deadline) const;
    void waitForInput(int milliseconds);
    void serve(int descriptor, short events);

    const std::thread::id mainThread_ = std::this_thread::get_id();
    const WakePipe wakePipe_;
    WorkQueue mainQueue_{[this] { wakePipe_.wake(); }};
    RunLoopTimers timers_;
    std::vector<Input> inputs_;
    std::atomic<bool> stopped_{false};
    bool isInAHurry_ = false;
    /// How many passes were begun, nested ones included.
    std::uint64_t passes_ = 0;
};

} // namespace vistrane
