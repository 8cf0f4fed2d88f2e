#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimThreads.h"
#include "platform/TimerGrid.h"
#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/NSRunLoop.h"
#include "platform/foundation/NSTimer.h"

namespace vistrane {

/// A timer of the virtual run loop.
class SimTimer final : public SimOf<NSTimer> {
public:
    SimTimer(CallLog& log, std::string name, TimerGrid grid, std::function<void(NSTimer&)> tick,
             bool repeats)
        : SimOf(log, std::move(name)), grid_(grid), tick_(std::move(tick)), repeats_(repeats) {}

    void fire() override {
        mainCall("fire");
        if (valid_) {
            callOut();
        }
    }
    void invalidate() override {
        mainCall("invalidate");
        valid_ = false;
    }
    bool isValid() const override { return read("isValid", valid_); }

private:
    friend class SimLoop;
    void callOut() {
        tick_(*this);
        valid_ = valid_ && repeats_;
    }

    TimerGrid grid_;
    std::function<void(NSTimer&)> tick_;
    bool repeats_;
    bool valid_ = true;
};

/// The virtual clock, the main run loop with its timers, and the two queues. Time passes only when
/// a test lets it pass, and all due work runs then, in the order of its dates.
///
/// The main thread is the thread that calls `advance`; work may be posted to the queues on any
/// thread.
class SimLoop final : public NSRunLoop, public Dispatch {
public:
    explicit SimLoop(CallLog& log)
        : log_(log), globalQueue_(log, "globalQueue"), mainQueue_(log, "mainQueue") {}

    /// Nanoseconds since the sim began.
    std::int64_t now() const { return now_.load(std::memory_order_relaxed); }
    NSDate date() const {
        return {dateAtZero_.load(std::memory_order_relaxed) + static_cast<double>(now()) * 1e-9};
    }
    /// Sets the wall clock. The virtual clock and the timers do not change.
    void setDate(NSDate date) {
        dateAtZero_.store(date.timeIntervalSince1970 - static_cast<double>(now()) * 1e-9,
                          std::memory_order_relaxed);
    }

    /// Lets time pass and runs what falls due: both queues first, then events and timers by date.
    void advance(double seconds) { runTo(now() + nanoseconds(seconds)); }

    /// Lets time pass while the main loop is busy: nothing runs meanwhile. Dates that a timer
    /// misses merge into one late tick. It comes before this returns, unless the loop itself is
    /// busy (this was called from a tick or an action).
    void stall(double seconds) {
        passTo(now() + nanoseconds(seconds));
        if (running_ == 0) {
            runTo(now());
        }
    }

    /// An event from outside of the program, `seconds` from now.
    void at(double seconds, std::function<void()> event) {
        events_.push_back({now() + nanoseconds(seconds), std::move(event)});
    }

    /// A modal alert or panel on the main thread: `whileUp` is called, then time passes. Queues
    /// and events run, timers hold back.
    void runModal(double seconds, const std::function<void()>& whileUp) {
        ++modal_;
        if (whileUp) {
            whileUp();
        }
        advance(seconds);
        --modal_;
    }

    std::shared_ptr<NSTimer> schedule(double interval, std::function<void(NSTimer&)> tick,
                                      bool repeats) {
        timers_.push_back(std::make_shared<SimTimer>(
            log_, log_.nextName("timer"), TimerGrid(now(), interval), std::move(tick), repeats));
        log_.recordOnMain("scheduledTimerWithTimeInterval: % repeats: % -> %", interval, repeats,
                          timers_.back());
        return timers_.back();
    }
    /// The timers that are still valid, oldest first.
    std::vector<std::shared_ptr<SimTimer>> timers() {
        std::erase_if(timers_, [](const auto& timer) { return !timer->valid_; });
        return timers_;
    }

    void runUntilDate(NSDate date) override {
        log_.recordOnMain("runUntilDate: %", date.timeIntervalSince1970);
        // Today's date as a double is exact to microseconds only.
        const double seconds =
            date.timeIntervalSince1970 - dateAtZero_.load(std::memory_order_relaxed);
        runTo(std::llround(seconds * 1e6) * 1000);
    }
    DispatchQueue& dispatch_get_global_queue(std::intptr_t priority,
                                             std::uintptr_t flags) override {
        if (priority != DISPATCH_QUEUE_PRIORITY_DEFAULT || flags != 0) {
            log_.misuse(filled("dispatch_get_global_queue: priority %, flags %",
                               {text(priority), text(flags)}));
        }
        return globalQueue_;
    }
    DispatchQueue& dispatch_get_main_queue() override { return mainQueue_; }

private:
    class Queue final : public SimOf<DispatchQueue> {
    public:
        using SimOf::SimOf;
        void async(std::function<void()> work) override {
            call("async");
            const std::lock_guard lock(mutex_);
            items_.push_back(std::move(work));
        }
        std::function<void()> take() {
            const std::lock_guard lock(mutex_);
            if (items_.empty()) {
                return {};
            }
            std::function<void()> work = std::move(items_.front());
            items_.pop_front();
            return work;
        }

    private:
        std::mutex mutex_;
        std::deque<std::function<void()>> items_;
    };
    struct Event {
        std::int64_t date;
        std::function<void()> run;
    };

    static std::int64_t nanoseconds(double seconds) { return std::llround(seconds * 1e9); }
    void runTo(std::int64_t target) {
        const SimRole role = SimRole::main();
        ++running_;
        target = std::max(target, now());
        do {
            drainQueues();
        } while (runNext(target));
        passTo(target);
        --running_;
    }
    void drainQueues() {
        for (;;) {
            if (const auto work = globalQueue_.take()) {
                const SimRole role = SimRole::globalQueue();
                work();
            } else if (const auto mainWork = mainQueue_.take()) {
                mainWork();
            } else {
                return;
            }
        }
    }
    bool runNext(std::int64_t target) {
        const auto event =
            std::min_element(events_.begin(), events_.end(),
                             [](const Event& a, const Event& b) { return a.date < b.date; });
        const bool eventIsDue = event != events_.end() && event->date <= target;
        const std::shared_ptr<SimTimer> timer = modal_ > 0 ? nullptr : nextTimer(target);
        if (eventIsDue && (!timer || event->date <= timer->grid_.next())) {
            const Event due = std::move(*event);
            events_.erase(event);
            passTo(due.date);
            due.run();
            return true;
        }
        if (timer) {
            passTo(timer->grid_.next());
            // Before the call: a tick that takes longer than the interval is followed by one late
            // tick.
            timer->grid_.passUpTo(now());
            timer->callOut();
        }
        return timer != nullptr;
    }
    std::shared_ptr<SimTimer> nextTimer(std::int64_t target) {
        std::shared_ptr<SimTimer> next;
        for (const std::shared_ptr<SimTimer>& timer : timers()) {
            const std::int64_t date = timer->grid_.next();
            if (date <= target && (!next || date < next->grid_.next())) {
                next = timer;
            }
        }
        return next;
    }
    /// A callback may have let more time pass already.
    void passTo(std::int64_t date) { now_.store(std::max(now(), date), std::memory_order_relaxed); }

    CallLog& log_;
    std::atomic<std::int64_t> now_{0};
    /// The wall clock's seconds since 1970 when the virtual clock began: 2026-03-07 14:05:09 UTC.
    std::atomic<double> dateAtZero_{1772892309.0};
    std::vector<std::shared_ptr<SimTimer>> timers_;
    std::vector<Event> events_;
    Queue globalQueue_;
    Queue mainQueue_;
    int running_ = 0;
    int modal_ = 0;
};

} // namespace vistrane
