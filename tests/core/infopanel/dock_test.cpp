#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DockIcon : public PanelTest {
protected:
    void tick(NSInteger state) {
        sim.nib().button("dockButton").currentState = state;
        sim.nib().send("dockIconSwitching:");
    }
};

TEST_F(DockIcon, UntickingHidesItAndClosesTheMenu) {
    tick(0);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("sharedApplication setActivationPolicy: 1",
                                             "sMenu cancelTracking", "mainQueue async"));
}

TEST_F(DockIcon, TickingShowsIt) {
    tick(1);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("sharedApplication setActivationPolicy: 0", "mainQueue async"));
}

TEST_F(DockIcon, TheProgramComesToTheFrontAfterTheClick) {
    for (const NSInteger state : {0, 1}) {
        tick(state);
        sim.takeCalls();
        EXPECT_EQ(sim.loop().waitingItems(), 1U);
        sim.advance(0.0);
        EXPECT_THAT(sim.takeCalls(),
                    ElementsAre("sharedApplication activateIgnoringOtherApps: YES"));
    }
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

TEST_F(DockIcon, TheFirstStartShowsIt) {
    wake();
    panel.restoreDockSetting();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults integerForKey: iDock", "dockButton setState: 1",
                            "sharedApplication setActivationPolicy: 0"));
}

TEST_F(DockIcon, ALaterStartRestoresWhatWasSavedWithoutComingToTheFront) {
    wake();
    tick(0);
    panel.applicationShouldTerminateAfterLastWindowClosed();
    sim.advance(0.0);
    sim.nib().button("dockButton").currentState = 1;

    mantisQRXpanel next(sim.platform());
    next.dockButton = panel.dockButton;
    sim.takeCalls();
    next.restoreDockSetting();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("standardUserDefaults integerForKey: iDock", "dockButton setState: 0",
                            "sharedApplication setActivationPolicy: 1"));
    sim.advance(1.0);
    EXPECT_THAT(sim.takeCalls(), IsEmpty());
}

} // namespace
} // namespace vistrane
