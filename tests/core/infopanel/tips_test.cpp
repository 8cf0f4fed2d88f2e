#include "core/infopanel/tip_pages.h"
#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const std::string page1 =
    "  Benefit from the quality of modern professional cameras, time LAPSE movie making "
    "is easy and efficient...  *As the quality of the captured images could be too high "
    "from some cameras, We added an option to lower the captured picture resolution or "
    "video quality to prevent crashing of those old Macs.\n\n"
    "If you are evaluating Vistrane on your MacBook Pro and/or MacBook Air, please grant "
    "access to your default camera.";
const std::string page2 =
    "1. Your file saving folder is shared for all projects, it will be reused each time "
    "Vistrane start, all saved pictures located in this folder will be involved in movie "
    "compiling.\n\n"
    "2. Please set the time-lapse interval by input hours, minutes, and seconds "
    "separately. Please double-check the total seconds calculated and displayed here.";
const std::string page3 =
    "3. FPS adjust slider controls the FPS rate of both the preview video and the final "
    "generated movie.\n"
    "4. compiling the final movie would take some time and the process can NOT be "
    "terminated if the resolution of each frame image is too high, please be sure to use "
    "the auto preview function (5) or simply manually slide the preview bar before the "
    "final movie compiling.";
const std::string page4Beginning =
    "Actually, you can copy your time-lapse photos to the project folder and use the "
    "compiling function only. Yes, it works, but for better result, please search app "
    "named 'frameweave', 'stillreel' and 'Flipstep'.";

class Tips : public PanelTest {
protected:
    void open() { sim.nib().send("showEasyStartTip:"); }
    void next() { sim.nib().send("tipNext:"); }
    void previous() { sim.nib().send("tipPreverious:"); }
    void tick(NSInteger state) {
        sim.nib().button("tipButton").currentState = state;
        sim.nib().send("tipButtonChanged:");
    }
};

TEST_F(Tips, OpeningTakesItsStepsInOrder) {
    EXPECT_EQ(panel.demoCount, 0);
    open();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("tipButton setState: 0", "picCount setStringValue: 1 of 4",
                            "tipImage setImage: tip1.png", "tipText setStringValue: " + page1,
                            "tipText setNeedsDisplay: YES", "tipImage setNeedsDisplay: YES",
                            "tipWindow makeKeyAndOrderFront"));
    EXPECT_EQ(panel.demoCount, 1);
}

TEST_F(Tips, AStepTakesItsStepsInOrder) {
    open();
    sim.takeCalls();
    next();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("picCount setStringValue: 2 of 4", "tipImage setImage: tip2.png",
                            "tipText setStringValue: " + page2, "tipText setNeedsDisplay: YES",
                            "tipImage setNeedsDisplay: YES"));
    previous();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("picCount setStringValue: 1 of 4", "tipImage setImage: tip1.png",
                            "tipText setStringValue: " + page1, "tipText setNeedsDisplay: YES",
                            "tipImage setNeedsDisplay: YES"));
}

TEST_F(Tips, NextStopsAtTheLastPage) {
    open();
    next();
    next();
    EXPECT_EQ(pagePicture(), "tip3.png");
    EXPECT_EQ(pageText(), page3);
    EXPECT_EQ(counter(), "3 of 4");
    for (int press = 0; press < 3; ++press) {
        next();
        EXPECT_EQ(panel.demoCount, 4);
        EXPECT_EQ(pagePicture(), "tip4.png");
        EXPECT_EQ(counter(), "4 of 4");
    }
}

TEST_F(Tips, PreviousStopsAtTheFirstPage) {
    open();
    sim.takeCalls();
    previous();
    EXPECT_EQ(panel.demoCount, 1);
    EXPECT_EQ(counter(), "1 of 4");
    // The page is drawn again all the same.
    EXPECT_EQ(sim.takeCalls().size(), 5U);
}

TEST_F(Tips, TheLastPageClosesWithAPlaceAndASignature) {
    EXPECT_THAT(tipPage(4).text, StartsWith(page4Beginning + "\n\n"));
    EXPECT_GT(tipPage(4).text.size(), page4Beginning.size() + 10);
}

TEST_F(Tips, ANumberOutsideThePagesShowsTheEmptyPage) {
    for (const std::int32_t number : {0, 5, -1, 1000000}) {
        sim.nib().textField("tipText").text = "something";
        panel.demoCount = number;
        sim.takeCalls();
        sim.nib().send("changePictures:");
        EXPECT_THAT(sim.takeCalls(),
                    ElementsAre("tipImage setImage: tip5.png", "tipText setStringValue: ",
                                "tipText setNeedsDisplay: YES", "tipImage setNeedsDisplay: YES"));
    }
}

TEST_F(Tips, AMissingPictureLeavesThePageWithoutOne) {
    sim.pictures().resources.erase("tip1.png");
    open();
    EXPECT_EQ(sim.nib().imageView("tipImage").image, nullptr);
    EXPECT_EQ(pageText(), page1);
}

TEST_F(Tips, OpeningAgainStartsAtTheFirstPage) {
    open();
    next();
    next();
    open();
    EXPECT_EQ(counter(), "1 of 4");
    EXPECT_EQ(pagePicture(), "tip1.png");
}

TEST_F(Tips, TickingTheCheckBoxIsSavedAtOnce) {
    open();
    sim.takeCalls();
    tick(1);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("standardUserDefaults setInteger: 1 forKey: iTip",
                                             "standardUserDefaults synchronize"));
    EXPECT_EQ(panel.neverTip, 1);
    tick(0);
    EXPECT_EQ(panel.neverTip, 0);
    EXPECT_EQ(savedInteger("iTip"), 0);
}

TEST_F(Tips, ClosingTheWindowSavesTheStateAgain) {
    open();
    tick(1);
    // What counts is the state last read, not what the check box shows.
    sim.nib().button("tipButton").currentState = 0;
    sim.takeCalls();
    sim.nib().send("windowWillClose:");
    EXPECT_THAT(sim.takeCalls(), ElementsAre("standardUserDefaults setInteger: 1 forKey: iTip",
                                             "standardUserDefaults synchronize"));
}

TEST_F(Tips, AFreshInstallationShowsThemWithTheCheckBoxOff) {
    sim.nib().button("tipButton").currentState = 1;
    panel.awakeFromNib();
    EXPECT_THAT(sim.calls(), ::testing::Contains("tipWindow makeKeyAndOrderFront"));
    EXPECT_EQ(sim.nib().button("tipButton").currentState, 0);
}

TEST_F(Tips, OnceTickedTheyStayAwayUntilTheyAreOpenedByHand) {
    sim.defaults().values["iTip"] = NSInteger{1};
    panel.awakeFromNib();
    EXPECT_THAT(sim.calls(), ::testing::Not(::testing::Contains(StartsWith("tip"))));
    EXPECT_EQ(panel.demoCount, 0);
    open();
    EXPECT_EQ(sim.nib().button("tipButton").currentState, 1);
    EXPECT_EQ(counter(), "1 of 4");
}

TEST_F(Tips, UntickingAfterOpeningByHandTurnsThemOnAgain) {
    sim.defaults().values["iTip"] = NSInteger{1};
    wake();
    open();
    tick(0);
    sim.nib().send("windowWillClose:");
    sim.takeCalls();
    panel.awakeFromNib();
    EXPECT_THAT(sim.calls(), ::testing::Contains("tipWindow makeKeyAndOrderFront"));
}

TEST_F(Tips, AnyOtherSettingThanOneShowsThem) {
    for (const NSInteger setting : {NSInteger{0}, NSInteger{2}, NSInteger{-1}}) {
        sim.defaults().values["iTip"] = setting;
        panel.awakeFromNib();
        EXPECT_EQ(panel.neverTip, setting);
        EXPECT_THAT(sim.takeCalls(), ::testing::Contains("tipWindow makeKeyAndOrderFront"));
    }
}

} // namespace
} // namespace vistrane
