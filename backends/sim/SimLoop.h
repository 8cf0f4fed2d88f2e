#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/TimerGrid.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSTimer.h"

namespace vistrane {

/// A timer of the virtual run loop.
class SimTimer final : public NSTimer, public SimObject {
public:
    SimTimer(CallLog& log, std::string name, std::int64_t now, double interval,
             std::function<void(NSTimer&)> tick, bool repeats);

    void fire() override;
    void invalidate() override;
    bool isValid() const override;

    double interval() const { return interval_; }
    bool repeats() const { return repeats_; }

private:
    friend class SimLoop;
    void tick(std::int64_t now);
    void callOut();

    TimerGrid grid_;
    double interval_;
    std::function<void(NSTimer&)> tick_;
    bool repeats_;
    bool valid_ = true;
};

/// The virtual clock, the main run loop with its timers, and the two queues. Time passes only when
/// a test lets it pass, and all due work runs then, in the order of its dates.
///
/// The main thread is the thread that calls `advance`; posting to the queues is legal anywhere.
class SimLoop final : public NSRunLoop, public Dispatch {
public:
    explicit SimLoop(CallLog& log);

    /// Nanoseconds since the sim began.
    std::int64_t now() const { return now_.load(std::memory_order_relaxed); }
    NSDate date() const;
    /// Sets the wall clock; the virtual clock and the timers are not touched.
    void setDate(NSDate date);

    /// Lets time pass and runs what falls due: both queues first, then events and timers by date.
    void advance(double seconds);

    /// Lets time pass while the main loop is busy: nothing runs meanwhile. Dates that a timer
    /// misses merge into one late tick, given when the loop has its turn again: before this
    /// returns, unless the loop itself is what is busy (called from a tick or an action).
    void stall(double seconds);

    /// Something that happens `seconds` from now, from outside of the program.
    void at(double seconds, std::function<void()> event);

    /// A modal alert or panel on the main thread: `whileUp` is called, then time passes. Queues
    /// and events run, timers hold back.
    void runModal(double seconds, const std::function<void()>& whileUp);

    std::shared_ptr<NSTimer> schedule(double interval, std::function<void(NSTimer&)> tick,
                                      bool repeats);
    /// The timers that are still valid, oldest first.
    std::vector<std::shared_ptr<SimTimer>> timers();
    /// Work items that no one has run yet.
    std::size_t waitingItems() const;

    void runUntilDate(NSDate date) override;
    DispatchQueue& dispatch_get_global_queue(std::intptr_t priority, std::uintptr_t flags) override;
    DispatchQueue& dispatch_get_main_queue() override { return mainQueue_; }

private:
    class Queue final : public DispatchQueue {
    public:
        Queue(CallLog& log, const char* name) : log_(log), name_(name) {}
        void async(std::function<void()> work) override;
        std::function<void()> take();
        std::size_t size() const;

    private:
        CallLog& log_;
        const char* name_;
        mutable std::mutex mutex_;
        std::deque<std::function<void()>> items_;
    };
    struct Event {
        std::int64_t date;
        std::function<void()> run;
    };

    void runTo(std::int64_t target);
    void drainQueues();
    bool runNext(std::int64_t target);
    std::shared_ptr<SimTimer> nextTimer(std::int64_t target);

    CallLog& log_;
    std::atomic<std::int64_t> now_{0};
    std::atomic<double> dateAtZero_;
    std::vector<std::shared_ptr<SimTimer>> timers_;
    std::vector<Event> events_;
    Queue globalQueue_;
    Queue mainQueue_;
    int running_ = 0;
    int modal_ = 0;
};

} // namespace vistrane
