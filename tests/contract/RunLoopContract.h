#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "backends/posix/clock.h"
#include "platform/foundation/NSTimer.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// The main run loop of a front end, on the real clock. A backend has
///
///     Loop, the class of the run loop
///     Loop loop;
///     bool runUntil(const std::function<bool()>& done);
///                    runs the loop as the front end does, for a minute at most; returns `done()`
template <typename Backend>
class RunLoopContract : public ::testing::Test {
protected:
    void runFor(double seconds) {
        backend_.loop.runUntilDate({wallClockNow().timeIntervalSince1970 + seconds});
    }
    void runOnePass() { backend_.loop.runUntilDate({0.0}); }

    Backend backend_;
};

TYPED_TEST_SUITE_P(RunLoopContract);

TYPED_TEST_P(RunLoopContract, TimersHoldBackInAModalScopeAndTickOnceAfterwards) {
    auto& loop = this->backend_.loop;
    int ticks = 0;
    bool worked = false;
    const auto timer = loop.scheduleTimer(
        0.02, [&](NSTimer&) { ++ticks; }, true);
    {
        const typename TypeParam::Loop::ModalScope modal(loop);
        loop.mainQueue().async([&] { worked = true; });
        this->runFor(0.5);
        EXPECT_EQ(ticks, 0);
        EXPECT_TRUE(worked);
    }
    this->runOnePass();
    EXPECT_EQ(ticks, 1);
    EXPECT_TRUE(this->backend_.runUntil([&] { return ticks > 2; }));
}

TYPED_TEST_P(RunLoopContract, WorkThatAddsWorkLeavesTimersTheirTurn) {
    auto& loop = this->backend_.loop;
    bool ended = false;
    std::function<void()> again = [&] {
        if (!ended) {
            loop.mainQueue().async(again);
        }
    };
    loop.mainQueue().async(again);
    const auto timer = loop.scheduleTimer(
        0.002, [&](NSTimer&) { ended = true; }, false);
    EXPECT_TRUE(this->backend_.runUntil([&] { return ended; }));
}

TYPED_TEST_P(RunLoopContract, AnyDateAndAnyIntervalAreTaken) {
    auto& loop = this->backend_.loop;
    using Limits = std::numeric_limits<double>;
    int ticks = 0;
    for (const double interval : {Limits::infinity(), Limits::max(), 1e15, 3599999.0}) {
        const auto timer = loop.scheduleTimer(
            interval, [&](NSTimer&) { ++ticks; }, true);
        this->runOnePass();
        this->runFor(0.01);
        EXPECT_EQ(ticks, 0) << interval;
        timer->invalidate();
    }
    const auto timer = loop.scheduleTimer(
        Limits::quiet_NaN(), [&](NSTimer&) { ++ticks; }, false);
    EXPECT_TRUE(this->backend_.runUntil([&] { return ticks == 1; }));
    loop.runUntilDate({Limits::quiet_NaN()});
    loop.runUntilDate({-Limits::infinity()});
}

TYPED_TEST_P(RunLoopContract, SleepsWhenThereIsNothingToDo) {
    const auto timer = this->backend_.loop.scheduleTimer(
        3599999.0, [](NSTimer&) {}, true);
    rusage before{};
    getrusage(RUSAGE_THREAD, &before);
    this->runFor(0.3);
    rusage after{};
    getrusage(RUSAGE_THREAD, &after);
    // A loop that spins would take all of the 300,000.
    const long microseconds = (after.ru_utime.tv_sec - before.ru_utime.tv_sec) * 1000000 +
                              after.ru_utime.tv_usec - before.ru_utime.tv_usec;
    EXPECT_LT(microseconds, 100000);
}

TYPED_TEST_P(RunLoopContract, KnowsItsThread) {
    EXPECT_TRUE(this->backend_.loop.isMainThread());
    std::thread([this] { EXPECT_FALSE(this->backend_.loop.isMainThread()); }).join();
}

TYPED_TEST_P(RunLoopContract, TimersThatOutliveTheLoopAreInvalid) {
    std::shared_ptr<NSTimer> timer;
    {
        TypeParam shortLived;
        timer = shortLived.loop.scheduleTimer(
            3600.0, [](NSTimer&) {}, true);
    }
    EXPECT_FALSE(timer->isValid());
    timer->fire();
    timer->invalidate();
}

REGISTER_TYPED_TEST_SUITE_P(RunLoopContract, TimersHoldBackInAModalScopeAndTickOnceAfterwards,
                            WorkThatAddsWorkLeavesTimersTheirTurn, AnyDateAndAnyIntervalAreTaken,
                            SleepsWhenThereIsNothingToDo, KnowsItsThread,
                            TimersThatOutliveTheLoopAreInvalid);

} // namespace vistrane
