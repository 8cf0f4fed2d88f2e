#include "platform/console/ConsoleRunLoop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

#include <poll.h>

#include "platform/console/ConsoleTimer.h"
#include "platform/console/MainQueue.h"

namespace vistrane {

namespace {

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

/// How long the loop sleeps at most when it has no pipe that could wake it.
constexpr int longestBlindWait = 20;

std::int64_t monotonicNow() {
    using namespace std::chrono;
    return duration_cast<nanoseconds>(steady_clock::now().time_since_epoch()).count();
}

/// The moment of the monotonic clock at which the wall clock, left alone, will show `date`.
std::int64_t deadlineOf(NSDate date) {
    using namespace std::chrono;
    const double wallNow = duration<double>(system_clock::now().time_since_epoch()).count();
    const double remaining = date.timeIntervalSince1970 - wallNow;
    if (!(remaining > 0.0)) {
        return monotonicNow();
    }
    constexpr double century = 3.2e9;
    return remaining > century ? never : monotonicNow() + std::llround(remaining * 1e9);
}

} // namespace

ConsoleRunLoop::ConsoleRunLoop() : mainQueue_(std::make_unique<MainQueue>()) {}

ConsoleRunLoop::~ConsoleRunLoop() {
    while (!timers_.empty()) {
        const std::shared_ptr<ConsoleTimer> timer = timers_.back();
        timer->invalidate();
    }
}

void ConsoleRunLoop::runUntilDate(NSDate date) {
    runUntil(deadlineOf(date));
}

void ConsoleRunLoop::run() {
    runUntil(never);
    stopped_ = false;
}

void ConsoleRunLoop::stop() {
    stopped_ = true;
    mainQueue_->wake();
}

std::shared_ptr<NSTimer>
ConsoleRunLoop::scheduleTimer(double interval, std::function<void(NSTimer&)> tick, bool repeats) {
    timers_.push_back(
        std::make_shared<ConsoleTimer>(*this, monotonicNow(), interval, std::move(tick), repeats));
    return timers_.back();
}

DispatchQueue& ConsoleRunLoop::mainQueue() {
    return *mainQueue_;
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
        runWaitingWork();
        runDueTimers();
        const bool isLast = stopped_ || monotonicNow() >= deadline;
        waitForInput(isLast ? 0 : waitingTime(deadline));
        if (isLast) {
            return;
        }
    }
}

void ConsoleRunLoop::runWaitingWork() {
    // What the items add waits for the next pass, so that timers get their turn.
    for (std::size_t left = mainQueue_->size(); left > 0; --left) {
        if (const std::function<void()> work = mainQueue_->take()) {
            work();
        }
    }
}

void ConsoleRunLoop::runDueTimers() {
    const std::int64_t now = monotonicNow();
    // A tick moves its timer behind `now`: each timer has one turn at most.
    for (auto timer = nextTimer(); timer && timer->nextDate() <= now; timer = nextTimer()) {
        timer->tick(monotonicNow());
    }
}

std::shared_ptr<ConsoleTimer> ConsoleRunLoop::nextTimer() const {
    std::shared_ptr<ConsoleTimer> next;
    for (const std::shared_ptr<ConsoleTimer>& timer : timers_) {
        const bool mayTick = modalDepth_ == 0 && !timer->isTicking();
        if (mayTick && (!next || timer->nextDate() < next->nextDate())) {
            next = timer;
        }
    }
    return next;
}

int ConsoleRunLoop::waitingTime(std::int64_t deadline) const {
    if (mainQueue_->size() > 0) {
        return 0;
    }
    const std::shared_ptr<ConsoleTimer> timer = nextTimer();
    const std::int64_t date = timer ? std::min(deadline, timer->nextDate()) : deadline;
    constexpr std::int64_t nanosecondsOfOne = 1000000;
    // Rounded up: a sleep that ends too early would be followed by many that are too short.
    const std::int64_t left = std::max<std::int64_t>(date - monotonicNow(), 0);
    const std::int64_t milliseconds = left / nanosecondsOfOne + (left % nanosecondsOfOne > 0);
    const int longest =
        mainQueue_->wakeDescriptor() >= 0 ? std::numeric_limits<int>::max() : longestBlindWait;
    return static_cast<int>(std::min<std::int64_t>(milliseconds, longest));
}

void ConsoleRunLoop::waitForInput(int milliseconds) {
    std::vector<pollfd> watched;
    watched.push_back({mainQueue_->wakeDescriptor(), POLLIN, 0});
    for (const Input& input : inputs_) {
        watched.push_back({input.descriptor, POLLIN, 0});
    }
    if (poll(watched.data(), watched.size(), milliseconds) <= 0) {
        return;
    }
    if (watched.front().revents != 0) {
        mainQueue_->clearWake();
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
