#include <QDialog>
#include <gtest/gtest.h>

#include "backends/posix/clock.h"
#include "backends/qt/loop/QtRunLoop.h"

namespace vistrane {
namespace {

TEST(DialogLoop, ADialogRunsTimersAndWork) {
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

TEST(DialogLoop, ATickThatRunsADialogDoesNotBlockOtherTimers) {
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
    for (int step = 0; step < 30000 && own < 2; ++step) {
        loop.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.002});
    }
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_GT(own, 1);
}

} // namespace
} // namespace vistrane
