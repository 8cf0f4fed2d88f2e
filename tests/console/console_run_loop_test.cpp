#include "platform/console/ConsoleRunLoop.h"

#include <chrono>
#include <limits>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include "tests/posix/Pipe.h"

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

double now() {
    using namespace std::chrono;
    return duration<double>(system_clock::now().time_since_epoch()).count();
}

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
        loop.runUntilDate({now() + 3600.0});
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

TEST(ConsoleRunLoop, WorkThatAddsWorkLeavesTimersTheirTurn) {
    ConsoleRunLoop loop;
    const auto guard = failAfterAMinute(loop);
    bool ended = false;
    std::function<void()> again = [&] {
        if (!ended) {
            loop.mainQueue().async(again);
        }
    };
    loop.mainQueue().async(again);
    const auto timer = loop.scheduleTimer(
        0.002,
        [&](NSTimer&) {
            ended = true;
            loop.stop();
        },
        false);
    loop.run();
    EXPECT_TRUE(ended);
}

TEST(ConsoleRunLoop, TimersHoldBackWhileAnAlertIsUpAndTickOnceAfterwards) {
    ConsoleRunLoop loop;
    int ticks = 0;
    bool worked = false;
    const auto timer = loop.scheduleTimer(
        0.02, [&](NSTimer&) { ++ticks; }, true);
    {
        const ConsoleRunLoop::ModalScope modal(loop);
        loop.mainQueue().async([&] { worked = true; });
        loop.runUntilDate({now() + 0.5});
        EXPECT_EQ(ticks, 0);
        EXPECT_TRUE(worked);
    }
    onePass(loop);
    EXPECT_EQ(ticks, 1);
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
                loop.runUntilDate({now() + 0.01});
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

TEST(ConsoleRunLoop, SleepsWhenThereIsNothingToDo) {
    ConsoleRunLoop loop;
    const auto timer = loop.scheduleTimer(
        3600.0, [](NSTimer&) {}, true);
    rusage before{};
    getrusage(RUSAGE_THREAD, &before);
    loop.runUntilDate({now() + 0.3});
    rusage after{};
    getrusage(RUSAGE_THREAD, &after);
    // A loop that spins would take all of the 300,000.
    const long microseconds = (after.ru_utime.tv_sec - before.ru_utime.tv_sec) * 1000000 +
                              after.ru_utime.tv_usec - before.ru_utime.tv_usec;
    EXPECT_LT(microseconds, 100000);
}

TEST(ConsoleRunLoop, AnyDateAndAnyIntervalAreTaken) {
    ConsoleRunLoop loop;
    using Limits = std::numeric_limits<double>;
    for (const double interval : {Limits::infinity(), Limits::max(), 1e15, 3599999.0}) {
        int ticks = 0;
        const auto timer = loop.scheduleTimer(
            interval, [&](NSTimer&) { ++ticks; }, true);
        onePass(loop);
        EXPECT_EQ(ticks, 0) << interval;
        timer->invalidate();
    }
    const auto timer = loop.scheduleTimer(
        Limits::quiet_NaN(), [&](NSTimer&) { loop.stop(); }, false);
    loop.run();
    loop.runUntilDate({Limits::quiet_NaN()});
    loop.runUntilDate({-Limits::infinity()});
    loop.mainQueue().async([&] { loop.stop(); });
    loop.runUntilDate({Limits::infinity()});
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

TEST(ConsoleRunLoop, TimersThatOutliveTheLoopAreInvalid) {
    std::shared_ptr<NSTimer> timer;
    {
        ConsoleRunLoop loop;
        timer = loop.scheduleTimer(
            3600.0, [](NSTimer&) {}, true);
    }
    EXPECT_FALSE(timer->isValid());
    timer->fire();
    timer->invalidate();
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

TEST(ConsoleRunLoop, KnowsItsThread) {
    ConsoleRunLoop loop;
    EXPECT_TRUE(loop.isMainThread());
    std::thread([&] { EXPECT_FALSE(loop.isMainThread()); }).join();
}

} // namespace
} // namespace vistrane
