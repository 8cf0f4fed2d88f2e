#include "backends/console/ConsoleRunLoop.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <poll.h>

#include "backends/posix/clock.h"

namespace vistrane {

namespace {

/// How long the loop sleeps at most when it has no pipe that could wake it.
constexpr int longestBlindWait = 20;

} // namespace

void ConsoleRunLoop::runUntilDate(NSDate date) {
    runUntil(monotonicMomentOf(date));
}

void ConsoleRunLoop::run() {
    runUntil(neverInNanoseconds);
    stopped_ = false;
}

void ConsoleRunLoop::stop() {
    stopped_ = true;
    mainQueue_.wake();
}

std::shared_ptr<NSTimer>
ConsoleRunLoop::scheduleTimer(double interval, std::function<void(NSTimer&)> tick, bool repeats) {
    return timers_.schedule(interval, std::move(tick), repeats);
}

void ConsoleRunLoop::addInput(int descriptor, std::function<void()> readable) {
    removeInput(descriptor);
    inputs_.push_back(
        {descriptor, std::make_shared<const std::function<void()>>(std::move(readable))});
}

void ConsoleRunLoop::removeInput(int descriptor) {
    std::erase_if(inputs_,
                  [descriptor](const Input& input) { return input.descriptor == descriptor; });
}

bool ConsoleRunLoop::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

void ConsoleRunLoop::runUntil(std::int64_t deadline) {
    for (;;) {
        ++passes_;
        mainQueue_.runWaiting();
        timers_.runDue();
        const bool isLast =
            stopped_ || monotonicNow() >= deadline || (isInAHurry_ && hasNothingToWaitFor());
        waitForInput(isLast ? 0 : waitingTime(deadline));
        if (isLast) {
            return;
        }
    }
}

bool ConsoleRunLoop::hasNothingToWaitFor() const {
    return mainQueue_.size() == 0 && !timers_.nextDate() && inputs_.empty();
}

int ConsoleRunLoop::waitingTime(std::int64_t deadline) const {
    if (mainQueue_.size() > 0) {
        return 0;
    }
    const int longest =
        wakePipe_.descriptor() >= 0 ? std::numeric_limits<int>::max() : longestBlindWait;
    return millisecondsUntil(std::min(deadline, timers_.nextDate().value_or(deadline)), longest);
}

void ConsoleRunLoop::waitForInput(int milliseconds) {
    std::vector<pollfd> watched;
    watched.push_back({wakePipe_.descriptor(), POLLIN, 0});
    for (const Input& input : inputs_) {
        watched.push_back({input.descriptor, POLLIN, 0});
    }
    if (poll(watched.data(), watched.size(), milliseconds) <= 0) {
        return;
    }
    if (watched.front().revents != 0) {
        wakePipe_.clear();
        // After the reading: a wake in between leaves no byte, but the loop looks at everything
        // again before it next sleeps.
        mainQueue_.awake();
    }
    const std::uint64_t pass = passes_;
    for (std::size_t at = 1; at < watched.size() && pass == passes_; ++at) {
        // A handler that ran the loop has made the other answers old.
        serve(watched[at].fd, watched[at].revents);
    }
}

void ConsoleRunLoop::serve(int descriptor, short events) {
    const auto input = std::find_if(inputs_.begin(), inputs_.end(), [descriptor](const Input& one) {
        return one.descriptor == descriptor;
    });
    if (events == 0 || input == inputs_.end()) {
        return;
    }
    if ((events & POLLNVAL) != 0) {
        // Closed by its owner: it would be reported without end.
        inputs_.erase(input);
        return;
    }
    const auto readable = input->readable;
    (*readable)();
}

} // namespace vistrane
