#include <algorithm>

#include "tests/support/PanelTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

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
const std::string page4 =
    "Actually, you can copy your time-lapse photos to the project folder and use the "
    "compiling function only. Yes, it works, but for better result, please search app "
    "named 'frameweave', 'stillreel' and 'Flipstep'.\n\n"
    "The pictures of these tips were taken at the developer's own desk.\n\n"
    "mantisQRX";

class Tips : public PanelTest {
protected:
    void open() { sim.nib().send("showEasyStartTip:"); }
    void next() { sim.nib().send("tipNext:"); }
    void previous() { sim.nib().send("tipPreverious:"); }
    void tick(NSInteger state) {
        checkBox().currentState = state;
        sim.nib().send("tipButtonChanged:");
    }
    SimButton& checkBox() { return sim.nib().button("tipButton"); }
    /// Wakes the panel. Returns whether the tips window came up.
    bool opensAtStart() {
        sim.takeCalls();
        panel.awakeFromNib();
        const auto calls = sim.takeCalls();
        return std::count(calls.begin(), calls.end(), "tipWindow makeKeyAndOrderFront") == 1;
    }
    void expectPage(std::int32_t number, const std::string& text) {
        const std::string digit = std::to_string(number);
        EXPECT_EQ(panel.demoCount, number);
        EXPECT_EQ(counter(), digit + " of 4");
        EXPECT_EQ(pagePicture(), "tip" + digit + ".png");
        EXPECT_EQ(pageText(), text);
    }
};

TEST_F(Tips, OpeningTakesItsStepsInOrder) {
    EXPECT_EQ(panel.demoCount, 0);
    open();
    EXPECT_THAT(takeProcedure(sim, {"tipImage setImage", "picCount"}),
                ElementsAre("tipButton setState: 0", "tipText setStringValue: " + page1,
                            "tipText setNeedsDisplay: YES", "tipImage setNeedsDisplay: YES",
                            "tipWindow makeKeyAndOrderFront"));
    expectPage(1, page1);
}

TEST_F(Tips, TheButtonsGoThroughThePagesAndStopAtTheEnds) {
    open();
    previous();
    expectPage(1, page1);
    next();
    expectPage(2, page2);
    next();
    expectPage(3, page3);
    next();
    // At the ends the page is drawn again.
    for (int press = 0; press < 3; ++press) {
        expectPage(4, page4);
        sim.nib().textField("tipText").text.clear();
        sim.takeCalls();
        next();
        EXPECT_THAT(sim.takeCalls(), ::testing::IsSupersetOf({"tipText setNeedsDisplay: YES",
                                                              "tipImage setNeedsDisplay: YES"}));
    }
    previous();
    expectPage(3, page3);
    previous();
    previous();
    expectPage(1, page1);
    next();
    open();
    expectPage(1, page1);
}

TEST_F(Tips, ANumberOutsideThePagesShowsTheEmptyPage) {
    for (const std::int32_t number : {0, 5, -1, 1000000}) {
        sim.nib().textField("tipText").text = "something";
        panel.demoCount = number;
        sim.nib().send("changePictures:");
        EXPECT_EQ(pagePicture(), "tip5.png");
        EXPECT_EQ(pageText(), "");
    }
}

TEST_F(Tips, AMissingPictureLeavesThePageWithoutOne) {
    sim.pictures().resources.erase("tip1.png");
    open();
    EXPECT_EQ(sim.nib().imageView("tipImage").image, nullptr);
    EXPECT_EQ(pageText(), page1);
}

TEST_F(Tips, TickingTheCheckBoxIsSavedAtOnce) {
    open();
    for (const NSInteger state : {1, 0}) {
        tick(state);
        EXPECT_EQ(panel.neverTip, state);
        EXPECT_EQ(savedInteger("iTip"), state);
    }
}

TEST_F(Tips, ClosingTheWindowSavesTheStateLastReadNotWhatTheCheckBoxShows) {
    open();
    tick(1);
    checkBox().currentState = 0;
    sim.defaults().durableValues.clear();
    sim.nib().send("windowWillClose:");
    EXPECT_EQ(savedInteger("iTip"), 1);
}

TEST_F(Tips, AFreshInstallationShowsThemWithTheCheckBoxOff) {
    checkBox().currentState = 1;
    EXPECT_TRUE(opensAtStart());
    EXPECT_EQ(checkBox().currentState, 0);
}

TEST_F(Tips, OnceTickedTheyStayAwayUntilTheyAreOpenedByHandAndUnticked) {
    sim.defaults().values["iTip"] = NSInteger{1};
    EXPECT_FALSE(opensAtStart());
    EXPECT_EQ(panel.demoCount, 0);
    open();
    EXPECT_EQ(checkBox().currentState, 1);
    EXPECT_EQ(counter(), "1 of 4");
    tick(0);
    sim.nib().send("windowWillClose:");
    EXPECT_TRUE(opensAtStart());
}

TEST_F(Tips, AnyOtherSettingThanOneShowsThem) {
    for (const NSInteger setting : {NSInteger{0}, NSInteger{2}, NSInteger{-1}}) {
        sim.defaults().values["iTip"] = setting;
        EXPECT_TRUE(opensAtStart());
        EXPECT_EQ(panel.neverTip, setting);
    }
}

} // namespace
} // namespace vistrane
