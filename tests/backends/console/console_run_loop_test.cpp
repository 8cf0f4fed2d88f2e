#include "backends/console/ConsoleRunLoop.h"

#include <algorithm>
#include <limits>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

#include "backends/posix/clock.h"
#include "tests/backends/posix/Pipe.h"
#include "tests/contract/RunLoopContract.h"

namespace vistrane {
namespace {

/// A pipe that carries single bytes.
struct BytePipe : Pipe {
    void send() { EXPECT_EQ(write(ends[1], "x", 1), 1); }
    void receive() {
        char byte = 0;
        EXPECT_EQ(read(ends[0], &byte, 1), 1);
    }
};

void onePass(ConsoleRunLoop& loop) {
    loop.runUntilDate({0.0});
}

/// Ends `run` should it still run after a minute.
std::shared_ptr<NSTimer> failAfterAMinute(ConsoleRunLoop& loop) {
    return loop.scheduleTimer(
        60.0,
        [&loop](NSTimer&) {
            ADD_FAILURE() << "the loop was not stopped";
            loop.stop();
        },
        false);
}

struct ConsoleLoop {
    using Loop = ConsoleRunLoop;

    bool runUntil(const std::function<bool()>& done) {
        const auto guard = failAfterAMinute(loop);
        const auto look = loop.scheduleTimer(
            0.002,
            [&](NSTimer&) {
                if (done()) {
                    loop.stop();
                }
            },
            true);
        loop.run();
        look->invalidate();
        guard->invalidate();
        return done();
    }

    Loop loop;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Console, RunLoopContract, ConsoleLoop, contract::Names);

TEST(ConsoleRunLoop, StopEndsRun) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    const auto timer = loop.scheduleTimer(
        0.001, [&](NSTimer&) { loop.stop(); }, false);
    loop.run();
    EXPECT_FALSE(timer->isValid());
}

TEST(ConsoleRunLoop, StopFromAnotherThreadWakesTheLoop) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    std::thread other([&] { loop.stop(); });
    loop.run();
    other.join();
}

TEST(ConsoleRunLoop, StopBeforeRunEndsItAfterOnePass) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    bool worked = false;
    loop.mainQueue().async([&] { worked = true; });
    loop.stop();
    loop.run();
    EXPECT_TRUE(worked);
}

TEST(ConsoleRunLoop, RunsAgainAfterAStop) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    loop.stop();
    loop.run();
    int ticks = 0;
    const auto timer = loop.scheduleTimer(
        0.001,
        [&](NSTimer&) {
            if (++ticks == 3) {
                loop.stop();
            }
        },
        true);
    loop.run();
    EXPECT_EQ(ticks, 3);
}

TEST(ConsoleRunLoop, StopEndsANestedLoopTooAndNotOnlyThat) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    bool nestedEnded = false;
    loop.mainQueue().async([&] {
        loop.mainQueue().async([&] { loop.stop(); });
        loop.runUntilDate({wallClockNow().timeIntervalSince1970 + 3600.0});
        nestedEnded = true;
    });
    loop.run();
    EXPECT_TRUE(nestedEnded);
}

TEST(ConsoleRunLoop, WorkFromAnotherThreadWakesTheLoop) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    int worked = 0;
    std::thread other([&] {
        for (int number = 0; number < 1000; ++number) {
            loop.mainQueue().async([&] {
                if (++worked == 1000) {
                    loop.stop();
                }
            });
        }
    });
    loop.run();
    other.join();
    EXPECT_EQ(worked, 1000);
}

TEST(ConsoleRunLoop, ATickThatRunsTheLoopIsNotTickedWithin) {
    ConsoleRunLoop loop;
    int depth = 0;
    int deepest = 0;
    int ticks = 0;
    const auto timer = loop.scheduleTimer(
        0.001,
        [&](NSTimer&) {
            deepest = std::max(deepest, ++depth);
            if (++ticks < 3) {
                loop.runUntilDate({wallClockNow().timeIntervalSince1970 + 0.01});
            } else {
                loop.stop();
            }
            --depth;
        },
        true);
    const auto guard = failAfterAMinute(loop);
    loop.run();
    EXPECT_EQ(deepest, 1);
    EXPECT_EQ(ticks, 3);
}

TEST(ConsoleRunLoop, StopEndsARunUntilADateThatNeverComes) {
    ConsoleRunLoop loop;
    loop.mainQueue().async([&] { loop.stop(); });
    loop.runUntilDate({std::numeric_limits<double>::infinity()});
}

TEST(ConsoleRunLoop, InAHurryOnlyWhatMayHappenIsWaitedFor) {
    ConsoleRunLoop loop;
    const NSDate farAway{wallClockNow().timeIntervalSince1970 + 1e6};
    const ConsoleRunLoop::HurryScope hurry(loop);
    loop.runUntilDate(farAway);

    int worked = 0;
    loop.mainQueue().async([&] { loop.mainQueue().async([&] { ++worked; }); });
    const auto timer = loop.scheduleTimer(
        0.02, [&](NSTimer&) { ++worked; }, false);
    loop.runUntilDate(farAway);
    EXPECT_EQ(worked, 2);
}

TEST(ConsoleRunLoop, ReadableInputIsServed) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    BytePipe pipe;
    loop.addInput(pipe.ends[0], [&] {
        pipe.receive();
        loop.stop();
    });
    std::thread other([&] { pipe.send(); });
    loop.run();
    other.join();
}

TEST(ConsoleRunLoop, InputIsServedInTheOnePassOfAPastDate) {
    ConsoleRunLoop loop;
    BytePipe pipe;
    int served = 0;
    loop.addInput(pipe.ends[0], [&] {
        pipe.receive();
        ++served;
    });
    onePass(loop);
    EXPECT_EQ(served, 0);
    pipe.send();
    onePass(loop);
    EXPECT_EQ(served, 1);
}

TEST(ConsoleRunLoop, InputThatWasRemovedIsNotServed) {
    ConsoleRunLoop loop;
    BytePipe first;
    BytePipe second;
    int served = 0;
    // Whichever comes first takes the other away.
    loop.addInput(first.ends[0], [&] {
        ++served;
        loop.removeInput(first.ends[0]);
        loop.removeInput(second.ends[0]);
    });
    loop.addInput(second.ends[0], [&] {
        ++served;
        loop.removeInput(first.ends[0]);
        loop.removeInput(second.ends[0]);
    });
    first.send();
    second.send();
    onePass(loop);
    onePass(loop);
    EXPECT_EQ(served, 1);
}

TEST(ConsoleRunLoop, AnInputHandlerMayRunTheLoop) {
    ConsoleRunLoop loop;
    BytePipe first;
    BytePipe second;
    int served = 0;
    loop.addInput(first.ends[0], [&] {
        first.receive();
        onePass(loop);
        ++served;
    });
    loop.addInput(second.ends[0], [&] {
        second.receive();
        ++served;
    });
    first.send();
    second.send();
    onePass(loop);
    onePass(loop);
    EXPECT_EQ(served, 2);
}

TEST(ConsoleRunLoop, AClosedDescriptorIsForgotten) {
    ConsoleRunLoop loop;
    int served = 0;
    {
        BytePipe pipe;
        loop.addInput(pipe.ends[0], [&] { ++served; });
    }
    onePass(loop);
    onePass(loop);
    EXPECT_EQ(served, 0);
}

TEST(ConsoleRunLoop, WhatATickCapturedMayInvalidateOtherTimersWhenItIsLetGoOf) {
    ConsoleRunLoop loop;
    const auto other = loop.scheduleTimer(
        3600.0, [](NSTimer&) {}, true);
    auto captured = std::shared_ptr<void>(nullptr, [other](void*) { other->invalidate(); });
    const auto timer = loop.scheduleTimer(
        3600.0, [held = std::move(captured)](NSTimer&) {}, true);
    timer->invalidate();
    EXPECT_FALSE(other->isValid());
}

} // namespace
} // namespace vistrane
