#include "backends/posix/RunLoopTimer.h"

#include <algorithm>
#include <utility>

#include "backends/posix/RunLoopTimers.h"

namespace vistrane {

namespace {

/// More than a hundred years. With it, every date fits in the clock's 64 bits.
constexpr double longestInterval = 4e9;

} // namespace

RunLoopTimer::RunLoopTimer(RunLoopTimers& timers, std::int64_t now, double interval,
                           std::function<void(NSTimer&)> tick, bool repeats)
    : timers_(&timers), grid_(now, std::min(interval, longestInterval)),
      tick_(std::make_shared<const std::function<void(NSTimer&)>>(std::move(tick))),
      repeats_(repeats) {}

void RunLoopTimer::fire() {
    if (isValid()) {
        callOut();
    }
}

void RunLoopTimer::invalidate() {
    if (!isValid()) {
        return;
    }
    // The loop's reference may be the last one, and destroying the tick's captures may call this
    // timer again. Keeps both until the state is consistent.
    const std::shared_ptr<RunLoopTimer> self = shared_from_this();
    const auto tick = std::move(tick_);
    std::exchange(timers_, nullptr)->remove(*this);
}

void RunLoopTimer::tick(std::int64_t now) {
    // Before the call, so that one late tick follows a tick that takes longer than the interval.
    grid_.passUpTo(now);
    callOut();
}

void RunLoopTimer::callOut() {
    const std::shared_ptr<RunLoopTimer> self = shared_from_this();
    const auto tick = tick_;
    ++ticking_;
    if (timers_ != nullptr) {
        timers_->changed();
    }
    (*tick)(*this);
    --ticking_;
    if (!repeats_) {
        invalidate();
    } else if (timers_ != nullptr) {
        timers_->changed();
    }
}

} // namespace vistrane
