#include "backends/sim/SimLoop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "backends/sim/SimRole.h"

namespace vistrane {

namespace {

// 2026-03-07 14:05:09 UTC.
constexpr double firstDate = 1772892309.0;

std::int64_t nanoseconds(double seconds) {
    return std::llround(seconds * 1e9);
}

class Counted {
public:
    explicit Counted(int& count) : count_(count) { ++count_; }
    ~Counted() { --count_; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    int& count_;
};

} // namespace

SimTimer::SimTimer(CallLog& log, std::string name, std::int64_t now, double interval,
                   std::function<void(NSTimer&)> tick, bool repeats)
    : SimObject(log, std::move(name)), grid_(now, interval), interval_(interval),
      tick_(std::move(tick)), repeats_(repeats) {}

void SimTimer::fire() {
    mainCall("fire");
    if (valid_) {
        callOut();
    }
}

void SimTimer::invalidate() {
    mainCall("invalidate");
    valid_ = false;
}

bool SimTimer::isValid() const {
    mainGetter("isValid");
    return valid_;
}

void SimTimer::tick(std::int64_t now) {
    // Before the call: a tick that takes longer than the interval is followed by one late tick.
    grid_.passUpTo(now);
    callOut();
}

void SimTimer::callOut() {
    tick_(*this);
    valid_ = valid_ && repeats_;
}

SimLoop::SimLoop(CallLog& log)
    : log_(log), dateAtZero_(firstDate), globalQueue_(log, "globalQueue"),
      mainQueue_(log, "mainQueue") {}

NSDate SimLoop::date() const {
    return {dateAtZero_.load(std::memory_order_relaxed) + static_cast<double>(now()) * 1e-9};
}

void SimLoop::setDate(NSDate date) {
    dateAtZero_.store(date.timeIntervalSince1970 - static_cast<double>(now()) * 1e-9,
                      std::memory_order_relaxed);
}

void SimLoop::advance(double seconds) {
    runTo(now() + nanoseconds(seconds));
}

void SimLoop::stall(double seconds) {
    now_.store(now() + nanoseconds(seconds), std::memory_order_relaxed);
    if (running_ == 0) {
        runTo(now());
    }
}

void SimLoop::at(double seconds, std::function<void()> event) {
    events_.push_back({now() + nanoseconds(seconds), std::move(event)});
}

void SimLoop::runModal(double seconds, const std::function<void()>& whileUp) {
    const Counted modal(modal_);
    if (whileUp) {
        whileUp();
    }
    advance(seconds);
}

std::shared_ptr<NSTimer> SimLoop::schedule(double interval, std::function<void(NSTimer&)> tick,
                                           bool repeats) {
    auto timer = std::make_shared<SimTimer>(log_, log_.nextName("timer"), now(), interval,
                                            std::move(tick), repeats);
    const std::string call = "scheduledTimerWithTimeInterval: " + decimal(interval) +
                             " repeats: " + yesNo(repeats) + " -> " + timer->name();
    log_.requireMain(call);
    log_.record(call);
    timers_.push_back(timer);
    return timer;
}

std::vector<std::shared_ptr<SimTimer>> SimLoop::timers() {
    timers_.erase(std::remove_if(timers_.begin(), timers_.end(),
                                 [](const auto& timer) { return !timer->valid_; }),
                  timers_.end());
    return timers_;
}

std::size_t SimLoop::waitingItems() const {
    return globalQueue_.size() + mainQueue_.size();
}

void SimLoop::runUntilDate(NSDate date) {
    const std::string call = "runUntilDate: " + decimal(date.timeIntervalSince1970);
    log_.requireMain(call);
    log_.record(call);
    // A date of today has no more than microseconds.
    const double seconds = date.timeIntervalSince1970 - dateAtZero_.load(std::memory_order_relaxed);
    runTo(std::llround(seconds * 1e6) * 1000);
}

DispatchQueue& SimLoop::dispatch_get_global_queue(std::intptr_t priority, std::uintptr_t flags) {
    if (priority != DISPATCH_QUEUE_PRIORITY_DEFAULT || flags != 0) {
        log_.misuse("dispatch_get_global_queue: priority " + std::to_string(priority) + ", flags " +
                    std::to_string(flags));
    }
    return globalQueue_;
}

void SimLoop::runTo(std::int64_t target) {
    const ScopedSimRole role = ScopedSimRole::main();
    const Counted running(running_);
    target = std::max(target, now());
    do {
        drainQueues();
    } while (runNext(target));
    // A callback may have let more time pass than was asked for.
    now_.store(std::max(now(), target), std::memory_order_relaxed);
}

void SimLoop::drainQueues() {
    for (;;) {
        if (const auto work = globalQueue_.take()) {
            const ScopedSimRole role = ScopedSimRole::globalQueue();
            work();
        } else if (const auto mainWork = mainQueue_.take()) {
            mainWork();
        } else {
            return;
        }
    }
}

bool SimLoop::runNext(std::int64_t target) {
    const auto event =
        std::min_element(events_.begin(), events_.end(),
                         [](const Event& a, const Event& b) { return a.date < b.date; });
    const bool eventIsDue = event != events_.end() && event->date <= target;
    const std::shared_ptr<SimTimer> timer = modal_ > 0 ? nullptr : nextTimer(target);
    if (eventIsDue && (!timer || event->date <= timer->grid_.next())) {
        const Event due = std::move(*event);
        events_.erase(event);
        now_.store(std::max(now(), due.date), std::memory_order_relaxed);
        due.run();
        return true;
    }
    if (timer) {
        now_.store(std::max(now(), timer->grid_.next()), std::memory_order_relaxed);
        timer->tick(now());
        return true;
    }
    return false;
}

std::shared_ptr<SimTimer> SimLoop::nextTimer(std::int64_t target) {
    std::shared_ptr<SimTimer> next;
    for (const std::shared_ptr<SimTimer>& timer : timers()) {
        if (timer->grid_.next() <= target && (!next || timer->grid_.next() < next->grid_.next())) {
            next = timer;
        }
    }
    return next;
}

void SimLoop::Queue::async(std::function<void()> work) {
    log_.record(std::string(name_) + " async");
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(work));
}

std::function<void()> SimLoop::Queue::take() {
    const std::lock_guard lock(mutex_);
    if (items_.empty()) {
        return {};
    }
    std::function<void()> work = std::move(items_.front());
    items_.pop_front();
    return work;
}

std::size_t SimLoop::Queue::size() const {
    const std::lock_guard lock(mutex_);
    return items_.size();
}

} // namespace vistrane
