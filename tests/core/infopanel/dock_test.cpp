#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

class DockIcon : public PanelTest {
protected:
    void tick(NSInteger state) {
        sim.nib().button("dockButton").currentState = state;
        sim.nib().send("dockIconSwitching:");
    }
};

TEST_F(DockIcon, UntickingHidesItAndClosesTheMenuThenTheProgramComesToTheFront) {
    tick(0);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("sharedApplication setActivationPolicy: 1",
                                             "sMenu cancelTracking", "mainQueue async"));
    sim.advance(0.0);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("sharedApplication activateIgnoringOtherApps: YES"));
}

TEST_F(DockIcon, TickingShowsItThenTheProgramComesToTheFront) {
    tick(1);
    sim.advance(0.0);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("sharedApplication setActivationPolicy: 0", "mainQueue async",
                            "sharedApplication activateIgnoringOtherApps: YES"));
}

TEST_F(DockIcon, TheClickSavesNothing) {
    wake();
    tick(0);
    sim.advance(1.0);
    EXPECT_EQ(sim.defaults().integerForKey("iDock"), 1);
    EXPECT_EQ(savedInteger("iDock"), 1);
}

TEST_F(DockIcon, TheLastWindowsEndSavesTheCheckBoxAndEndsTheProgram) {
    for (const NSInteger state : {0, 1}) {
        sim.nib().button("dockButton").currentState = state;
        sim.takeCalls();
        EXPECT_TRUE(panel.applicationShouldTerminateAfterLastWindowClosed());
        EXPECT_THAT(sim.takeCalls(), ElementsAre("standardUserDefaults setInteger: " +
                                                     std::to_string(state) + " forKey: iDock",
                                                 "standardUserDefaults synchronize"));
        EXPECT_EQ(savedInteger("iDock"), state);
    }
}

TEST_F(DockIcon, AStartAppliesTheSavedSettingWithoutComingToTheFront) {
    wake(); // The first start: it is shown.
    for (const NSInteger state : {1, 0}) {
        sim.nib().button("dockButton").currentState = 1 - state;
        sim.takeCalls();
        panel.restoreDockSetting();
        EXPECT_EQ(sim.nib().button("dockButton").currentState, state);
        sim.advance(1.0);
        EXPECT_THAT(
            takeProcedure(sim, {"standardUserDefaults", "dockButton"}),
            ElementsAre("sharedApplication setActivationPolicy: " + std::to_string(1 - state)));
        sim.nib().button("dockButton").currentState = 0;
        panel.applicationShouldTerminateAfterLastWindowClosed();
    }
}

} // namespace
} // namespace vistrane
