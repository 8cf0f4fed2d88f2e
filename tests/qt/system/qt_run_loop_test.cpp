#include "platform/qt/system/QtRunLoop.h"

#include <functional>
#include <limits>
#include <thread>

#include <QDialog>
#include <QEventLoop>
#include <QTimer>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "platform/posix/clock.h"

namespace vistrane {
namespace {

NSDate fromNow(double seconds) {
    return {wallClockNow().timeIntervalSince1970 + seconds};
}

void onePass(QtRunLoop& loop) {
    loop.runUntilDate({0.0});
}

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

TEST(QtRunLoop, ADialogRunsTimersAndWork) {
    QtRunLoop loop;
    QDialog dialog;
    bool worked = false;
    int ticks = 0;
    const auto timer = loop.scheduleTimer(
        0.002,
        [&](NSTimer&) {
            if (++ticks >= 3 && worked) {
                dialog.accept();
            }
        },
        true);
    loop.mainQueue().async([&] { worked = true; });
    EXPECT_EQ(dialog.exec(), QDialog::Accepted);
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

TEST(QtRunLoop, ATickThatRunsADialogLeavesOtherTimersTheirTicks) {
    QtRunLoop loop;
    QDialog dialog;
    int own = 0;
    const auto other = loop.scheduleTimer(
        0.02, [&](NSTimer&) { dialog.accept(); }, false);
    const auto timer = loop.scheduleTimer(
        0.001,
        [&](NSTimer&) {
            if (++own == 1) {
                dialog.exec();
            }
        },
        true);
    EXPECT_TRUE(execUntil([&] { return dialog.result() == QDialog::Accepted && own > 1; }));
}

TEST(QtRunLoop, TimersHoldBackInAModalScopeAndTickOnceAfterwards) {
    QtRunLoop loop;
    int ticks = 0;
    bool worked = false;
    const auto timer = loop.scheduleTimer(
        0.02, [&](NSTimer&) { ++ticks; }, true);
    {
        const QtRunLoop::ModalScope modal(loop);
        loop.mainQueue().async([&] { worked = true; });
        QEventLoop events;
        QTimer::singleShot(500, &events, &QEventLoop::quit);
        events.exec();
        EXPECT_EQ(ticks, 0);
        EXPECT_TRUE(worked);
    }
    onePass(loop);
    EXPECT_EQ(ticks, 1);
    EXPECT_TRUE(execUntil([&] { return ticks > 2; }));
}

TEST(QtRunLoop, WorkThatAddsWorkLeavesTimersTheirTurn) {
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

TEST(QtRunLoop, AnyDateAndAnyIntervalAreTaken) {
    QtRunLoop loop;
    using Limits = std::numeric_limits<double>;
    for (const double interval : {Limits::infinity(), Limits::max(), 1e15, 3599999.0}) {
        int ticks = 0;
        const auto timer = loop.scheduleTimer(
            interval, [&](NSTimer&) { ++ticks; }, true);
        onePass(loop);
        loop.runUntilDate(fromNow(0.01));
        EXPECT_EQ(ticks, 0) << interval;
        timer->invalidate();
    }
    loop.runUntilDate({Limits::quiet_NaN()});
    loop.runUntilDate({-Limits::infinity()});
}

TEST(QtRunLoop, SleepsWhenThereIsNothingToDo) {
    QtRunLoop loop;
    const auto timer = loop.scheduleTimer(
        3599999.0, [](NSTimer&) {}, true);
    rusage before{};
    getrusage(RUSAGE_THREAD, &before);
    loop.runUntilDate(fromNow(0.3));
    rusage after{};
    getrusage(RUSAGE_THREAD, &after);
    // A loop that spins would take all of the 300,000.
    const long microseconds = (after.ru_utime.tv_sec - before.ru_utime.tv_sec) * 1000000 +
                              after.ru_utime.tv_usec - before.ru_utime.tv_usec;
    EXPECT_LT(microseconds, 100000);
}

TEST(QtRunLoop, RunUntilDateKeepsEventsGoing) {
    QtRunLoop loop;
    bool came = false;
    QTimer::singleShot(1, [&] { came = true; });
    loop.runUntilDate(fromNow(0.1));
    EXPECT_TRUE(came);
}

TEST(QtRunLoop, KnowsItsThread) {
    QtRunLoop loop;
    EXPECT_TRUE(loop.isMainThread());
    std::thread([&] { EXPECT_FALSE(loop.isMainThread()); }).join();
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

} // namespace
} // namespace vistrane
