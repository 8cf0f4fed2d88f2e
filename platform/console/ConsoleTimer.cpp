#include "platform/console/ConsoleTimer.h"

#include <algorithm>
#include <utility>

#include "platform/console/ConsoleRunLoop.h"

namespace vistrane {

namespace {

/// More than a hundred years: within it every date fits the clock's 64 bits.
constexpr double longestInterval = 4e9;

} // namespace

ConsoleTimer::ConsoleTimer(ConsoleRunLoop& loop, std::int64_t now, double interval,
                           std::function<void(NSTimer&)> tick, bool repeats)
    : loop_(&loop), grid_(now, std::min(interval, longestInterval)),
      tick_(std::make_shared<const std::function<void(NSTimer&)>>(std::move(tick))),
      repeats_(repeats) {}

void ConsoleTimer::fire() {
    if (isValid()) {
        callOut();
    }
}

void ConsoleTimer::invalidate() {
    if (!isValid()) {
        return;
    }
    // The loop's reference may be the last one, and what the tick had captured may come back here
    // when it is let go of: everything is in order before that.
    const std::shared_ptr<ConsoleTimer> self = shared_from_this();
    const auto tick = std::move(tick_);
    auto& timers = std::exchange(loop_, nullptr)->timers_;
    timers.erase(std::find(timers.begin(), timers.end(), self));
}

void ConsoleTimer::tick(std::int64_t now) {
    // Before the call: a tick that takes longer than the interval is followed by one late tick.
    grid_.passUpTo(now);
    callOut();
}

void ConsoleTimer::callOut() {
    const std::shared_ptr<ConsoleTimer> self = shared_from_this();
    const auto tick = tick_;
    ++ticking_;
    (*tick)(*this);
    --ticking_;
    if (!repeats_) {
        invalidate();
    }
}

} // namespace vistrane
