#include "backends/qt/loop/QtRunLoop.h"

#include <algorithm>
#include <clocale>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>

#include "backends/posix/clock.h"
#include "tests/contract/RunLoopContract.h"

namespace vistrane {
namespace {

/// Runs one of Qt's own loops until `done` holds, for a minute at most.
bool execUntil(const std::function<bool()>& done) {
    QEventLoop events;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        if (done()) {
            events.quit();
        }
    });
    look.start(2);
    QTimer::singleShot(60000, &events, &QEventLoop::quit);
    events.exec();
    return done();
}

struct QtLoop {
    using Loop = QtRunLoop;

    bool runUntil(const std::function<bool()>& done) { return execUntil(done); }

    Loop loop;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, RunLoopContract, QtLoop, contract::Names);

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

TEST(QtRunLoop, AnItemThatRunsTheLoopRunsTheOnesBehindIt) {
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

TEST(QtRunLoop, RunUntilDateKeepsEventsGoing) {
    QtRunLoop loop;
    bool came = false;
    QTimer::singleShot(1, [&] { came = true; });
    loop.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.1});
    EXPECT_TRUE(came);
}

TEST(QtRunLoop, ATickThatRunsTheLoopIsNotNested) {
    QtRunLoop loop;
    int depth = 0;
    int deepest = 0;
    int ticks = 0;
    const auto timer = loop.scheduleTimer(
        0.001,
        [&](NSTimer&) {
            deepest = std::max(deepest, ++depth);
            ++ticks;
            loop.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.01});
            --depth;
        },
        true);
    EXPECT_TRUE(execUntil([&] { return ticks >= 3; }));
    EXPECT_EQ(deepest, 1);
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

/// The program's main set LC_ALL to "C.UTF-8", which QCoreApplication by itself would adopt.
TEST(CoreApplication, LeavesTheLocaleAlone) {
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

} // namespace
} // namespace vistrane
