#include <gmock/gmock.h>

#include "backends/sim/Sim.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SimLoopTest : public ::testing::Test {
protected:
    void every(double interval, const std::string& name) {
        sim.platform().foundation.scheduledTimerWithTimeInterval(
            interval, [this, name](NSTimer&) { note(name); }, true);
    }
    void note(const std::string& name) {
        order.push_back(name + " " + std::to_string(sim.loop().now() / 1000000));
    }

    Sim sim;
    std::vector<std::string> order;
};

TEST_F(SimLoopTest, TimersTickByDateAndThenByAge) {
    every(0.2, "slow");
    every(0.1, "fast");
    sim.advance(0.2);
    EXPECT_THAT(order, ElementsAre("fast 100", "slow 200", "fast 200"));
}

TEST_F(SimLoopTest, AnIntervalThatIsNotOverYetGivesNoTick) {
    every(5.0, "tick");
    sim.advance(4.999);
    EXPECT_THAT(order, IsEmpty());
    sim.advance(0.001);
    EXPECT_THAT(order, ElementsAre("tick 5000"));
}

TEST_F(SimLoopTest, AStallMergesTheMissedTicksAndKeepsTheGrid) {
    every(0.1, "tick");
    sim.stall(0.35);
    EXPECT_THAT(order, ElementsAre("tick 350"));
    sim.advance(0.15);
    EXPECT_THAT(order, ElementsAre("tick 350", "tick 400", "tick 500"));
}

TEST_F(SimLoopTest, AModalAlertHoldsTimersBackButNoQueuedWork) {
    every(0.1, "tick");
    sim.at(0.2, [&] {
        dispatch_async(sim.platform().dispatch.dispatch_get_main_queue(), [&] { note("work"); });
    });
    sim.alerts().stayUp(0.35);
    sim.platform().appKit.alert()->runModal();
    EXPECT_THAT(order, ElementsAre("work 200"));
    sim.advance(0.05);
    EXPECT_THAT(order, ElementsAre("work 200", "tick 350", "tick 400"));
}

TEST_F(SimLoopTest, AnAlertOfAnotherThreadHoldsNothingBack) {
    every(0.1, "tick");
    sim.alerts().stayUp(0.25);
    const auto thread = sim.platform().foundation.threadWithEntry(
        [&] { sim.platform().appKit.alert()->runModal(); });
    thread->start();
    sim.runThread(1);
    EXPECT_THAT(order, ElementsAre("tick 100", "tick 200"));
    EXPECT_FALSE(sim.alerts().shown().at(0).onMainThread);
}

TEST_F(SimLoopTest, RunUntilDateLetsTimePass) {
    every(0.1, "tick");
    Foundation& foundation = sim.platform().foundation;
    const double start = foundation.date().timeIntervalSince1970;
    foundation.currentRunLoop().runUntilDate(foundation.dateWithTimeIntervalSinceNow(0.2));
    EXPECT_THAT(order, ElementsAre("tick 100", "tick 200"));
    EXPECT_DOUBLE_EQ(foundation.date().timeIntervalSince1970, start + 0.2);
}

TEST_F(SimLoopTest, TheWallClockMayBeSetWithoutMovingTheTimers) {
    every(1.0, "tick");
    sim.advance(0.5);
    sim.setDate(1000.0);
    sim.advance(0.5);
    EXPECT_THAT(order, ElementsAre("tick 1000"));
    EXPECT_DOUBLE_EQ(sim.platform().foundation.date().timeIntervalSince1970, 1000.5);
}

TEST_F(SimLoopTest, GlobalItemsAreNotTheMainThreads) {
    Dispatch& dispatch = sim.platform().dispatch;
    bool main = true;
    dispatch_async(dispatch.dispatch_get_global_queue(0, 0), [&] { main = SimRole::isMain(); });
    EXPECT_EQ(sim.loop().waitingItems(), 1U);
    sim.advance(0.0);
    EXPECT_FALSE(main);
    EXPECT_EQ(sim.loop().waitingItems(), 0U);
}

TEST_F(SimLoopTest, ANoticeReachesItsObserversOnly) {
    NSDistributedNotificationCenter& center = sim.platform().foundation.defaultCenter();
    center.addObserver([&] { note("one"); }, "one");
    center.addObserver([&] { note("other"); }, "other");
    sim.postNotification("one");
    EXPECT_THAT(order, ElementsAre("one 0"));
}

} // namespace
} // namespace vistrane
