#include "backends/qt/system/QtRunLoop.h"

#include <functional>
#include <string>
#include <thread>

#include <QDialog>
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

TEST(QtRunLoop, RunUntilDateKeepsEventsGoing) {
    QtRunLoop loop;
    bool came = false;
    QTimer::singleShot(1, [&] { came = true; });
    loop.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.1});
    EXPECT_TRUE(came);
}

} // namespace
} // namespace vistrane
