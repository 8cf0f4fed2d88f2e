#include "backends/posix/RunLoopTimers.h"

#include <algorithm>
#include <utility>

#include "backends/posix/RunLoopTimer.h"
#include "backends/posix/clock.h"

namespace vistrane {

RunLoopTimers::RunLoopTimers(std::function<void()> dateChanged)
    : dateChanged_(std::move(dateChanged)) {}

RunLoopTimers::~RunLoopTimers() {
    while (!timers_.empty()) {
        const std::shared_ptr<RunLoopTimer> timer = timers_.back();
        timer->invalidate();
    }
}

std::shared_ptr<NSTimer> RunLoopTimers::schedule(double interval,
                                                 std::function<void(NSTimer&)> tick, bool repeats) {
    auto timer =
        std::make_shared<RunLoopTimer>(*this, monotonicNow(), interval, std::move(tick), repeats);
    timers_.push_back(timer);
    changed();
    return timer;
}

void RunLoopTimers::setHeld(const NSTimer& timer, bool held) {
    for (const std::shared_ptr<RunLoopTimer>& each : timers_) {
        if (each.get() == &timer) {
            each->setHeld(held);
        }
    }
    changed();
}

std::optional<std::int64_t> RunLoopTimers::nextDate() const {
    const std::shared_ptr<RunLoopTimer> timer = next();
    return timer ? std::optional(timer->nextDate()) : std::nullopt;
}

void RunLoopTimers::runDue() {
    const std::int64_t now = monotonicNow();
    // A tick moves its timer's date beyond `now`, so that each timer ticks at most once.
    for (auto timer = next(); timer && timer->nextDate() <= now; timer = next()) {
        timer->tick(monotonicNow());
    }
}

std::shared_ptr<RunLoopTimer> RunLoopTimers::next() const {
    std::shared_ptr<RunLoopTimer> found;
    for (const std::shared_ptr<RunLoopTimer>& timer : timers_) {
        const bool mayTick = modalDepth_ == 0 && !timer->isTicking() && !timer->isHeld();
        if (mayTick && (!found || timer->nextDate() < found->nextDate())) {
            found = timer;
        }
    }
    return found;
}

void RunLoopTimers::remove(const RunLoopTimer& timer) {
    const auto found = std::find_if(timers_.begin(), timers_.end(),
                                    [&timer](const auto& each) { return each.get() == &timer; });
    const std::shared_ptr<RunLoopTimer> kept = *found;
    timers_.erase(found);
    changed();
}

void RunLoopTimers::addModal(int count) {
    modalDepth_ += count;
    changed();
}

void RunLoopTimers::changed() const {
    if (dateChanged_) {
        dateChanged_();
    }
}

} // namespace vistrane
