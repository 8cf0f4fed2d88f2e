#pragma once

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/dispatch/Dispatch.h"
#include "tests/contract/contract.h"

namespace vistrane {

/// Timers and the run loop. A backend has
///
///     Foundation& foundation();
///     Dispatch& dispatch();
///     void stall(double seconds);   keeps the main thread busy for that long
///     void skip(double seconds);    moves the clock forward at once; a backend may leave it out
///                                   when its run loop is tested by another one
template <typename Backend>
class TimerContract : public ::testing::Test {
protected:
    Foundation& foundation() { return backend_.foundation(); }

    std::shared_ptr<NSTimer> repeat(double interval, std::function<void(NSTimer&)> tick) {
        return foundation().scheduledTimerWithTimeInterval(interval, std::move(tick), true);
    }
    std::shared_ptr<NSTimer> once(double delay, std::function<void(NSTimer&)> tick) {
        return foundation().scheduledTimerWithTimeInterval(delay, std::move(tick), false);
    }
    /// Ends timers whose ticks refer to the test's variables: the run loop outlives these.
    void stop(std::initializer_list<std::shared_ptr<NSTimer>> timers) {
        for (const std::shared_ptr<NSTimer>& timer : timers) {
            timer->invalidate();
        }
    }
    double now() { return foundation().date().timeIntervalSince1970; }

    Backend backend_;
};

TYPED_TEST_SUITE_P(TimerContract);

TYPED_TEST_P(TimerContract, TheLongestIntervalIsTaken) {
    constexpr double interval = 3599999.0;
    int ticks = 0;
    const auto timer = this->repeat(interval, [&](NSTimer&) { ++ticks; });
    contract::runFor(this->foundation(), 0.01);
    EXPECT_EQ(ticks, 0);
    if constexpr (requires { this->backend_.skip(interval); }) {
        this->backend_.skip(interval - 1000.0);
        contract::runFor(this->foundation(), 0.01);
        EXPECT_EQ(ticks, 0);
        this->backend_.skip(1000.0);
        EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return ticks > 0; }));
        contract::runFor(this->foundation(), 0.01);
        EXPECT_EQ(ticks, 1);
    }
    EXPECT_TRUE(timer->isValid());
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, TimersTickInTheOrderOfTheirDatesAlsoWhenTheyAreLateTogether) {
    for (const double busy : {0.0, 0.05}) {
        std::string order;
        const auto third = this->once(0.03, [&](NSTimer&) { order += '3'; });
        const auto first = this->once(0.01, [&](NSTimer&) { order += '1'; });
        const auto second = this->once(0.02, [&](NSTimer&) { order += '2'; });
        this->backend_.stall(busy);
        contract::runUntil(this->foundation(), [&] { return order.size() == 3; });
        EXPECT_EQ(order, "123");
    }
}

TYPED_TEST_P(TimerContract, ARepeatingTimerTicksUntilItIsInvalidated) {
    int ticks = 0;
    NSTimer* given = nullptr;
    const auto timer = this->repeat(0.002, [&](NSTimer& ticking) {
        ++ticks;
        given = &ticking;
    });
    EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return ticks >= 3; }));
    EXPECT_EQ(given, timer.get());
    timer->invalidate();
    const int before = ticks;
    contract::runFor(this->foundation(), 0.02);
    timer->fire();
    timer->invalidate();
    EXPECT_EQ(ticks, before);
    EXPECT_FALSE(timer->isValid());
}

TYPED_TEST_P(TimerContract, ATimerThatDoesNotRepeatTicksOnceAndIsInvalidThen) {
    int ticks = 0;
    const auto timer = this->once(0.002, [&](NSTimer&) { ++ticks; });
    EXPECT_TRUE(timer->isValid());
    contract::runUntil(this->foundation(), [&] { return ticks > 0; });
    contract::runFor(this->foundation(), 0.01);
    EXPECT_EQ(ticks, 1);
    EXPECT_FALSE(timer->isValid());
}

TYPED_TEST_P(TimerContract, DatesThatPassWhileTheLoopIsBusyMergeIntoOneTick) {
    int ticks = 0;
    const auto timer = this->repeat(0.02, [&](NSTimer&) { ++ticks; });
    const double before = this->now();
    this->backend_.stall(1.0);
    contract::runOnePass(this->foundation());
    EXPECT_GE(ticks, 1);
    // On a real clock more dates may have passed since the stall ended.
    EXPECT_LE(ticks, 2 + (this->now() - before - 1.0) / 0.02);
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, DatesThatPassInAnotherTimersTickMergeIntoOneTick) {
    int ticks = 0;
    double stalledUntil = 0.0;
    const auto timer = this->repeat(0.02, [&](NSTimer&) { ++ticks; });
    const auto busy = this->once(0.001, [&](NSTimer&) {
        this->backend_.stall(1.0);
        stalledUntil = this->now();
    });
    contract::runUntil(this->foundation(), [&] { return stalledUntil > 0.0 && ticks > 0; });
    const double since = this->now() - stalledUntil;
    // On a slow machine one date may have passed before the stall.
    EXPECT_LE(ticks, 3 + since / 0.02);
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, DatesThatPassInATicksOwnTimeMergeIntoOneTick) {
    int ticks = 0;
    double stalledUntil = 0.0;
    const auto timer = this->repeat(0.02, [&](NSTimer&) {
        if (++ticks == 1) {
            this->backend_.stall(1.0);
            stalledUntil = this->now();
        }
    });
    contract::runUntil(this->foundation(), [&] { return ticks > 0; });
    contract::runOnePass(this->foundation());
    EXPECT_GE(ticks, 2);
    EXPECT_LE(ticks, 3 + (this->now() - stalledUntil) / 0.02);
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, ALateTickDoesNotShiftTheGrid) {
    constexpr double interval = 0.2;
    std::string order;
    const double start = this->now();
    const auto timer = this->repeat(interval, [&](NSTimer&) { order += 't'; });
    this->backend_.stall(2.5 * interval);
    contract::runOnePass(this->foundation());
    ASSERT_EQ(order.substr(0, 1), "t");
    order.clear();
    // Shortly after the next date of the grid, and less than one interval after the late tick.
    const double passed = this->now() - start;
    const double nextDate = (std::floor(passed / interval) + 1.0) * interval;
    const auto mark =
        this->once(nextDate + 0.25 * interval - passed, [&](NSTimer&) { order += 'm'; });
    contract::runUntil(this->foundation(),
                       [&] { return order.find('m') != std::string::npos && order.size() > 1; });
    EXPECT_EQ(order.substr(0, 2), "tm");
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, InvalidatingInsideTheTickEndsIt) {
    int ticks = 0;
    const auto timer = this->repeat(0.002, [&](NSTimer& ticking) {
        ++ticks;
        ticking.invalidate();
        EXPECT_FALSE(ticking.isValid());
    });
    contract::runUntil(this->foundation(), [&] { return ticks > 0; });
    contract::runFor(this->foundation(), 0.02);
    EXPECT_EQ(ticks, 1);
    EXPECT_FALSE(timer->isValid());
}

TYPED_TEST_P(TimerContract, ADueTimerThatAnotherTickInvalidatesDoesNotTick) {
    int ticks = 0;
    std::shared_ptr<NSTimer> second;
    const auto first = this->once(0.001, [&](NSTimer&) { second->invalidate(); });
    second = this->repeat(0.002, [&](NSTimer&) { ++ticks; });
    this->backend_.stall(0.01);
    // A virtual loop may have ticked the first timer during the stall.
    contract::runUntil(this->foundation(), [&] { return !second->isValid(); });
    contract::runFor(this->foundation(), 0.01);
    EXPECT_EQ(ticks, 0);
}

TYPED_TEST_P(TimerContract, FireTicksAtOnceAndSchedulingDoesNot) {
    int ticks = 0;
    const auto timer = this->repeat(3600.0, [&](NSTimer&) { ++ticks; });
    contract::runOnePass(this->foundation());
    EXPECT_EQ(ticks, 0);
    timer->fire();
    timer->fire();
    EXPECT_EQ(ticks, 2);
    EXPECT_TRUE(timer->isValid());
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, FireDoesNotMoveTheGrid) {
    std::string order;
    const auto timer = this->repeat(0.1, [&](NSTimer&) { order += 't'; });
    this->backend_.stall(0.06);
    const auto mark = this->once(0.08, [&](NSTimer&) { order += 'm'; });
    timer->fire();
    order.clear();
    contract::runUntil(this->foundation(),
                       [&] { return order.find('m') != std::string::npos && order.size() > 1; });
    EXPECT_EQ(order.substr(0, 1), "t");
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, ATickMayFireItsOwnTimer) {
    int ticks = 0;
    const auto timer = this->repeat(3600.0, [&](NSTimer& ticking) {
        if (++ticks == 1) {
            ticking.fire();
        }
    });
    timer->fire();
    EXPECT_EQ(ticks, 2);
    this->stop({timer});
}

TYPED_TEST_P(TimerContract, ATickMayScheduleTimers) {
    int ticks = 0;
    std::shared_ptr<NSTimer> later;
    const auto timer = this->once(
        0.001, [&](NSTimer&) { later = this->repeat(0.001, [&](NSTimer&) { ++ticks; }); });
    EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return ticks > 0; }));
    this->stop({later});
}

TYPED_TEST_P(TimerContract, TheRunLoopKeepsAValidTimer) {
    int ticks = 0;
    std::weak_ptr<NSTimer> timer = this->repeat(0.001, [&](NSTimer&) { ++ticks; });
    EXPECT_TRUE(contract::runUntil(this->foundation(), [&] { return ticks > 0; }));
    const std::shared_ptr<NSTimer> kept = timer.lock();
    ASSERT_TRUE(kept);
    this->stop({kept});
}

TYPED_TEST_P(TimerContract, TheRunLoopReleasesAnInvalidTimer) {
    const auto captured = std::make_shared<int>(0);
    std::shared_ptr<NSTimer> timer = this->repeat(3600.0, [captured](NSTimer&) {});
    const std::weak_ptr<NSTimer> watched = timer;
    timer->invalidate();
    timer.reset();
    contract::runOnePass(this->foundation());
    EXPECT_TRUE(watched.expired());
    EXPECT_EQ(captured.use_count(), 1);
}

TYPED_TEST_P(TimerContract, ATickMayDropTheLastReferenceToItsTimer) {
    std::string text;
    std::shared_ptr<NSTimer> timer;
    timer = this->repeat(0.001, [&, tail = std::string("still here, still whole")](NSTimer& own) {
        own.invalidate();
        timer.reset();
        text = tail;
    });
    contract::runUntil(this->foundation(), [&] { return !text.empty(); });
    EXPECT_EQ(text, "still here, still whole");
}

TYPED_TEST_P(TimerContract, AnIntervalOfZeroLeavesRoomForOthers) {
    int fast = 0;
    int slow = 0;
    bool worked = false;
    const auto zero = this->repeat(0.0, [&](NSTimer&) { ++fast; });
    const auto negative = this->repeat(-1.0, [&](NSTimer&) { ++fast; });
    const auto other = this->repeat(0.005, [&](NSTimer&) { ++slow; });
    dispatch_async(this->backend_.dispatch().dispatch_get_main_queue(), [&] { worked = true; });
    EXPECT_TRUE(
        contract::runUntil(this->foundation(), [&] { return worked && slow > 2 && fast > 2; }));
    this->stop({zero, negative, other});
}

TYPED_TEST_P(TimerContract, ATickMayRunTheLoop) {
    std::string order;
    const auto other = this->once(0.005, [&](NSTimer&) { order += 'o'; });
    const auto outer = this->once(0.001, [&](NSTimer&) {
        dispatch_async(this->backend_.dispatch().dispatch_get_main_queue(), [&] { order += 'w'; });
        order += '(';
        contract::runUntil(this->foundation(), [&] { return order.size() == 3; });
        order += ')';
    });
    contract::runUntil(this->foundation(), [&] { return order.size() == 4; });
    EXPECT_EQ(order.front(), '(');
    EXPECT_EQ(order.back(), ')');
    EXPECT_THAT(order, ::testing::HasSubstr("w"));
    EXPECT_THAT(order, ::testing::HasSubstr("o"));
}

TYPED_TEST_P(TimerContract, ADateThatHasPassedGivesOnePass) {
    bool worked = false;
    dispatch_async(this->backend_.dispatch().dispatch_get_main_queue(), [&] { worked = true; });
    contract::runFor(this->foundation(), -5.0);
    EXPECT_TRUE(worked);
}

TYPED_TEST_P(TimerContract, RunUntilDateComesBackWithTheDate) {
    const double start = this->now();
    contract::runFor(this->foundation(), 0.02);
    // The wall clock and the loop's clock may differ in their last digits.
    EXPECT_GE(this->now(), start + 0.019);
}

REGISTER_TYPED_TEST_SUITE_P(
    TimerContract, TheLongestIntervalIsTaken,
    TimersTickInTheOrderOfTheirDatesAlsoWhenTheyAreLateTogether,
    ARepeatingTimerTicksUntilItIsInvalidated, ATimerThatDoesNotRepeatTicksOnceAndIsInvalidThen,
    DatesThatPassWhileTheLoopIsBusyMergeIntoOneTick,
    DatesThatPassInAnotherTimersTickMergeIntoOneTick, DatesThatPassInATicksOwnTimeMergeIntoOneTick,
    ALateTickDoesNotShiftTheGrid, InvalidatingInsideTheTickEndsIt,
    ADueTimerThatAnotherTickInvalidatesDoesNotTick, FireTicksAtOnceAndSchedulingDoesNot,
    FireDoesNotMoveTheGrid, ATickMayFireItsOwnTimer, ATickMayScheduleTimers,
    TheRunLoopKeepsAValidTimer, TheRunLoopReleasesAnInvalidTimer,
    ATickMayDropTheLastReferenceToItsTimer, AnIntervalOfZeroLeavesRoomForOthers, ATickMayRunTheLoop,
    ADateThatHasPassedGivesOnePass, RunUntilDateComesBackWithTheDate);

} // namespace vistrane
