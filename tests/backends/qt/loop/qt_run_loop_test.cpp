#include "backends/qt/loop/QtRunLoop.h"

#include <algorithm>
#include <clocale>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <thread>

#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "backends/posix/clock.h"

namespace vistrane {
namespace {

/// Runs one of Qt's own loops until `done`, for a minute at most. Returns `done()`.
bool execUntil(const std::function<bool()>& done) {
    QEventLoop events;
    QTimer check;
    QObject::connect(&check, &QTimer::timeout, [&] {
        if (done()) {
            events.quit();
        }
    });
    check.start(2);
    QTimer::singleShot(60000, &events, &QEventLoop::quit);
    events.exec();
    return done();
}

void runFor(QtRunLoop& loop, double seconds) {
    loop.runUntilDate({wallClockNow().timeIntervalSince1970 + seconds});
}

TEST(QtRunLoop, TimersAndWorkRunInQtsOwnLoop) {
    QtRunLoop loop;
    int ticks = 0;
    int worked = 0;
    const auto timer = loop.scheduleTimer(
        0.002, [&](NSTimer&) { ++ticks; }, true);
    std::thread other([&] {
        for (int number = 0; number < 100; ++number) {
            loop.mainQueue().async([&] { ++worked; });
        }
    });
    EXPECT_TRUE(execUntil([&] { return ticks >= 3 && worked == 100; }));
    other.join();
}

TEST(QtRunLoop, AHeldTimerTicksOnceForTheDatesThatPassedAndOthersGoOn) {
    QtRunLoop loop;
    int heldTicks = 0;
    int otherTicks = 0;
    const auto held = loop.scheduleTimer(
        0.001, [&](NSTimer&) { ++heldTicks; }, true);
    const auto other = loop.scheduleTimer(
        0.001, [&](NSTimer&) { ++otherTicks; }, true);
    loop.setHeld(*held, true);
    EXPECT_TRUE(execUntil([&] { return otherTicks >= 20; }));
    EXPECT_EQ(heldTicks, 0);
    other->invalidate();
    loop.setHeld(*held, false);
    runFor(loop, 0.0);
    EXPECT_EQ(heldTicks, 1);
    EXPECT_TRUE(execUntil([&] { return heldTicks >= 3; }));
    held->invalidate();
}

TEST(QtRunLoop, AScheduleGivesIntervalAndTimeToTheNextTickAndKnowsADialog) {
    QtRunLoop loop;
    const auto timer = loop.scheduleTimer(
        3600.0, [](NSTimer&) {}, true);
    const auto other = loop.scheduleTimer(
        0.001, [](NSTimer&) {}, true);
    EXPECT_EQ(loop.scheduleOf(*timer)->interval, 3600.0);
    EXPECT_LE(loop.scheduleOf(*timer)->untilNext, 3600.0);
    EXPECT_GT(loop.scheduleOf(*timer)->untilNext, 1800.0);
    const double before = loop.scheduleOf(*timer)->untilNext;
    // Many intervals of this one have passed: the next tick is at most one away.
    runFor(loop, 0.02);
    EXPECT_LE(loop.scheduleOf(*other)->untilNext, 0.001);
    EXPECT_GT(loop.scheduleOf(*other)->untilNext, 0.0);
    EXPECT_LT(loop.scheduleOf(*timer)->untilNext, before);

    EXPECT_FALSE(loop.isHeldBack());
    {
        const QtRunLoop::ModalScope modal(loop);
        EXPECT_TRUE(loop.isHeldBack());
        EXPECT_TRUE(loop.scheduleOf(*timer));
    }
    EXPECT_FALSE(loop.isHeldBack());
    timer->invalidate();
    EXPECT_FALSE(loop.scheduleOf(*timer));
    const QtRunLoop another;
    EXPECT_FALSE(another.scheduleOf(*other));
    other->invalidate();
}

TEST(QtRunLoop, WorkThatAddsWorkDoesNotStarveTimers) {
    QtRunLoop loop;
    bool ended = false;
    std::function<void()> again = [&] {
        if (!ended) {
            loop.mainQueue().async(again);
        }
    };
    loop.mainQueue().async(again);
    const auto timer = loop.scheduleTimer(
        0.002, [&](NSTimer&) { ended = true; }, false);
    EXPECT_TRUE(execUntil([&] { return ended; }));
}

TEST(QtRunLoop, AnItemThatRunsTheLoopRunsTheItemsAfterIt) {
    QtRunLoop loop;
    std::string order;
    loop.mainQueue().async([&] {
        order += '(';
        EXPECT_TRUE(execUntil([&] { return order == "(ab"; }));
        order += ')';
    });
    loop.mainQueue().async([&] { order += 'a'; });
    loop.mainQueue().async([&] { order += 'b'; });
    EXPECT_TRUE(execUntil([&] { return order.size() == 4; }));
    EXPECT_EQ(order, "(ab)");
}

TEST(QtRunLoop, ATickThatRunsTheLoopIsNotNestedAndBlocksNoOtherTimer) {
    QtRunLoop loop;
    int depth = 0;
    int deepest = 0;
    int ticks = 0;
    int others = 0;
    const auto other = loop.scheduleTimer(
        0.002, [&](NSTimer&) { ++others; }, true);
    const auto timer = loop.scheduleTimer(
        0.001,
        [&](NSTimer&) {
            deepest = std::max(deepest, ++depth);
            ++ticks;
            const int before = others;
            EXPECT_TRUE(execUntil([&] { return others > before; }));
            --depth;
        },
        true);
    EXPECT_TRUE(execUntil([&] { return ticks >= 3; }));
    EXPECT_EQ(deepest, 1);
}

TEST(QtRunLoop, EveryDateAndIntervalIsAccepted) {
    QtRunLoop loop;
    using Limits = std::numeric_limits<double>;
    int ticks = 0;
    for (const double interval : {Limits::infinity(), Limits::max(), 1e15, 3599999.0}) {
        const auto timer = loop.scheduleTimer(
            interval, [&](NSTimer&) { ++ticks; }, true);
        runFor(loop, 0.01);
        EXPECT_EQ(ticks, 0) << interval;
        timer->invalidate();
    }
    const auto timer = loop.scheduleTimer(
        Limits::quiet_NaN(), [&](NSTimer&) { ++ticks; }, false);
    EXPECT_TRUE(execUntil([&] { return ticks == 1; }));
    loop.runUntilDate({Limits::quiet_NaN()});
    loop.runUntilDate({-Limits::infinity()});
}

TEST(QtRunLoop, SleepsWhileNothingIsDue) {
    QtRunLoop loop;
    const auto timer = loop.scheduleTimer(
        3599999.0, [](NSTimer&) {}, true);
    rusage before{};
    getrusage(RUSAGE_THREAD, &before);
    runFor(loop, 0.3);
    rusage after{};
    getrusage(RUSAGE_THREAD, &after);
    // A loop that spins takes all of the 300,000 microseconds.
    const long microseconds = (after.ru_utime.tv_sec - before.ru_utime.tv_sec) * 1000000 +
                              after.ru_utime.tv_usec - before.ru_utime.tv_usec;
    EXPECT_LT(microseconds, 100000);
}

TEST(QtRunLoop, InAHurryItWaitsOnlyForTimersAndQueuedWork) {
    QtRunLoop loop;
    // Without the hurry the test would not end.
    const NSDate farAway{wallClockNow().timeIntervalSince1970 + 1e6};
    const QtRunLoop::HurryScope hurry(loop);
    loop.runUntilDate(farAway);

    int worked = 0;
    loop.mainQueue().async([&] { loop.mainQueue().async([&] { ++worked; }); });
    const auto timer = loop.scheduleTimer(
        0.02, [&](NSTimer&) { ++worked; }, false);
    loop.runUntilDate(farAway);
    EXPECT_EQ(worked, 2);
}

TEST(QtRunLoop, TimersThatOutliveTheLoopAreInvalid) {
    std::shared_ptr<NSTimer> timer;
    {
        QtRunLoop loop;
        timer = loop.scheduleTimer(
            3600.0, [](NSTimer&) {}, true);
    }
    EXPECT_FALSE(timer->isValid());
    timer->fire();
    timer->invalidate();
}

TEST(QtRunLoop, ATicksCaptureMayInvalidateAnotherTimerWhenItIsDestroyed) {
    QtRunLoop loop;
    const auto other = loop.scheduleTimer(
        3600.0, [](NSTimer&) {}, true);
    auto captured = std::shared_ptr<void>(nullptr, [other](void*) { other->invalidate(); });
    const auto timer = loop.scheduleTimer(
        3600.0, [held = std::move(captured)](NSTimer&) {}, true);
    timer->invalidate();
    EXPECT_FALSE(other->isValid());
}

/// `main` set LC_ALL to "C.UTF-8", which QCoreApplication by itself would adopt.
TEST(CoreApplication, LeavesTheLocaleAlone) {
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

} // namespace
} // namespace vistrane
