#include "backends/qt/loop/QtRunLoop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QTimerEvent>

#include "backends/posix/clock.h"

namespace vistrane {

namespace {

/// A Qt timer counts milliseconds in an int, which is too small for the longest interval. For a
/// date further away than this, the timer fires after an hour and starts again.
constexpr int longestAlarm = 3600 * 1000;

} // namespace

QtRunLoop::QtRunLoop() = default;

QtRunLoop::~QtRunLoop() = default;

void QtRunLoop::runUntilDate(NSDate date) {
    const std::int64_t deadline = monotonicMomentOf(date);
    QTimer awakener;
    awakener.setTimerType(Qt::PreciseTimer);
    awakener.setSingleShot(true);
    for (;;) {
        mainQueue_.runWaiting();
        timers_.runDue();
        if (monotonicNow() >= deadline || (isInAHurry_ && hasNothingToWaitFor())) {
            QCoreApplication::processEvents();
            return;
        }
        awakener.start(millisecondsUntil(deadline, longestAlarm));
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
}

std::shared_ptr<NSTimer>
QtRunLoop::scheduleTimer(double interval, std::function<void(NSTimer&)> tick, bool repeats) {
    std::erase_if(grids_, [](const Grid& grid) { return grid.timer.expired(); });
    const std::int64_t start = monotonicNow();
    std::shared_ptr<NSTimer> timer = timers_.schedule(interval, std::move(tick), repeats);
    constexpr double shortest = 0.0001;
    grids_.push_back({timer, start, std::max(interval, shortest)});
    return timer;
}

std::optional<QtRunLoop::Schedule> QtRunLoop::scheduleOf(const NSTimer& timer) const {
    const auto grid = std::find_if(grids_.begin(), grids_.end(), [&](const Grid& each) {
        return each.timer.lock().get() == &timer;
    });
    if (grid == grids_.end() || !timer.isValid()) {
        return std::nullopt;
    }
    constexpr double nanosecondsInASecond = 1e9;
    const double passed = static_cast<double>(monotonicNow() - grid->start) / nanosecondsInASecond;
    return Schedule{grid->interval, grid->interval - std::fmod(passed, grid->interval)};
}

bool QtRunLoop::isMainThread() const {
    return std::this_thread::get_id() == mainThread_;
}

bool QtRunLoop::hasNothingToWaitFor() const {
    return mainQueue_.size() == 0 && !timers_.nextDate();
}

void QtRunLoop::customEvent(QEvent*) {
    mainQueue_.awake();
    if (mainQueue_.size() > 1) {
        // The first item may run a nested loop, in which the other items must then run.
        mainQueue_.wake();
    }
    mainQueue_.runWaiting();
}

void QtRunLoop::timerEvent(QTimerEvent*) {
    timers_.runDue();
    setAlarm();
}

void QtRunLoop::postWake() {
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void QtRunLoop::setAlarm() {
    const std::optional<std::int64_t> date = timers_.nextDate();
    if (date) {
        alarm_.start(millisecondsUntil(*date, longestAlarm), Qt::PreciseTimer, this);
    } else {
        alarm_.stop();
    }
}

} // namespace vistrane
