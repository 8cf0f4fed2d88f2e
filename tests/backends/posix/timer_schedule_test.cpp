// The dates of the timers on a virtual clock, through everything that delays a run loop.

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include "backends/posix/RunLoopTimers.h"

namespace {

/// In nanoseconds. The clocks are the kernel's own while `isVirtual` is false, for the test
/// framework.
bool isVirtual = false;
std::int64_t monotonicClock = 0;
std::int64_t wallClock = 0;

} // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept {
    if (!isVirtual || (clock != CLOCK_MONOTONIC && clock != CLOCK_REALTIME)) {
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    }
    const std::int64_t now = clock == CLOCK_MONOTONIC ? monotonicClock : wallClock;
    time->tv_sec = now / 1'000'000'000;
    time->tv_nsec = now % 1'000'000'000;
    return 0;
}

namespace vistrane {
namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t hour = 3600 * second;
constexpr std::int64_t day = 24 * hour;

/// A timer and the dates at which it must tick.
struct Watched {
    std::shared_ptr<NSTimer> timer;
    std::int64_t start = 0;
    std::int64_t interval = 0;
    /// Of the next date: it is start + number * interval.
    std::int64_t number = 1;
    std::int64_t ticks = 0;
    /// Dates that merged into a later tick.
    std::int64_t merged = 0;

    std::int64_t nextDate() const { return start + number * interval; }
};

/// A run loop that the test drives. `clock_gettime` is virtual while it exists.
class TimerSchedule : public ::testing::Test {
protected:
    TimerSchedule() { isVirtual = true; }
    ~TimerSchedule() override { isVirtual = false; }

    void schedule(std::int64_t interval) {
        auto& watched = *watched_.emplace_back(std::make_unique<Watched>());
        watched.start = monotonicClock;
        watched.interval = interval;
        watched.timer = timers_.schedule(
            static_cast<double>(interval) / second, [this, &watched](NSTimer&) { tick(watched); },
            true);
    }

    std::int64_t below(std::int64_t limit) {
        return std::uniform_int_distribution<std::int64_t>(0, limit - 1)(random_);
    }

    static void pass(std::int64_t time) {
        monotonicClock += time;
        wallClock += time;
    }

    /// One pass of the run loop. Each timer that is due, and no other, ticks once.
    void runDue();
    void sleepUntilDue();
    /// Rarely longer than the longest interval.
    void beBusy() { pass(below(below(200) == 0 ? 2 * hour : 3 * second)); }
    void showAlert();
    void holdATimer();

    RunLoopTimers timers_;
    std::vector<std::unique_ptr<Watched>> watched_;
    std::mt19937_64 random_{20261122};
    std::int64_t ticks_ = 0;
    int faults_ = 0;

private:
    void tick(Watched& watched);
    void require(bool holds, const char* what, const Watched& watched);
    std::optional<std::int64_t> earliestDate() const;

    bool mayTick_ = true;
    const Watched* held_ = nullptr;
};

void TimerSchedule::require(bool holds, const char* what, const Watched& watched) {
    // One line for each fault would fill the disk.
    if (!holds && ++faults_ <= 10) {
        ADD_FAILURE() << what << ": tick " << watched.ticks << " of the timer of "
                      << watched.interval << " ns, at " << monotonicClock - watched.start
                      << " ns after its start";
    }
}

void TimerSchedule::tick(Watched& watched) {
    require(mayTick_ && &watched != held_, "a tick that is held back", watched);
    require(watched.nextDate() <= monotonicClock, "a tick without a date", watched);
    const std::int64_t passed = (monotonicClock - watched.start) / watched.interval;
    watched.merged += passed - watched.number;
    watched.number = passed + 1;
    ++watched.ticks;
    ++ticks_;
    switch (below(50)) {
    case 0:
        beBusy();
        break;
    case 1:
        showAlert();
        break;
    default:
        break;
    }
}

/// The date of the first timer that may tick.
std::optional<std::int64_t> TimerSchedule::earliestDate() const {
    std::optional<std::int64_t> earliest;
    for (const auto& each : watched_) {
        if (mayTick_ && each.get() != held_ && (!earliest || each->nextDate() < *earliest)) {
            earliest = each->nextDate();
        }
    }
    return earliest;
}

void TimerSchedule::runDue() {
    std::vector<std::int64_t> expected;
    for (const auto& each : watched_) {
        const bool isDue = mayTick_ && each.get() != held_ && each->nextDate() <= monotonicClock;
        expected.push_back(each->ticks + (isDue ? 1 : 0));
    }
    timers_.runDue();
    for (std::size_t index = 0; index < watched_.size(); ++index) {
        require(watched_[index]->ticks == expected[index], "a burst or a lost tick",
                *watched_[index]);
    }
    require(timers_.nextDate() == earliestDate(), "the next date is off the grid",
            *watched_.front());
}

void TimerSchedule::sleepUntilDue() {
    if (const auto date = timers_.nextDate()) {
        // The system wakes a program a little late.
        pass(std::max<std::int64_t>(*date - monotonicClock, 0) + below(second / 100));
    }
}

void TimerSchedule::showAlert() {
    const bool before = mayTick_;
    {
        const RunLoopTimers::ModalScope modal(timers_);
        mayTick_ = false;
        for (std::int64_t passes = below(4); passes > 0; --passes) {
            beBusy();
            timers_.runDue();
        }
        EXPECT_EQ(timers_.nextDate(), std::nullopt);
    }
    mayTick_ = before;
}

/// Or lets go of the one that is held.
void TimerSchedule::holdATimer() {
    held_ = held_ ? nullptr : watched_[static_cast<std::size_t>(below(std::ssize(watched_)))].get();
    for (const auto& each : watched_) {
        timers_.setHeld(*each->timer, each.get() == held_);
    }
}

TEST_F(TimerSchedule, AMillionTicksStayOnTheGridWithoutBursts) {
    // The frame list, the player, and captures.
    for (const std::int64_t interval :
         {second / 10, second / 30, second, 7 * second, 90 * second, hour}) {
        pass(below(second));
        schedule(interval);
    }
    while (ticks_ < 1'000'000 && faults_ == 0) {
        switch (below(200)) {
        case 0:
            beBusy();
            break;
        case 1:
            showAlert();
            break;
        case 2:
            holdATimer();
            break;
        case 3: // suspend: only the wall clock goes on
            wallClock += below(day);
            break;
        case 4: // somebody sets the clock
            wallClock = below(30'000 * day);
            break;
        default:
            sleepUntilDue();
        }
        runDue();
    }
    for (const auto& each : watched_) {
        EXPECT_GT(each->ticks, 0) << each->interval;
        EXPECT_GT(each->merged, 0) << each->interval;
    }
}

TEST_F(TimerSchedule, AMillionStillsWithoutDelaysAreAllOnTheGrid) {
    schedule(second);
    while (ticks_ < 1'000'000 && faults_ == 0) {
        pass(*timers_.nextDate() - monotonicClock);
        runDue();
    }
    EXPECT_EQ(watched_.front()->merged, 0);
}

} // namespace
} // namespace vistrane
