#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

TEST_F(ControllerTest, EveryOutletIsAskedForByItsName) {
    EXPECT_THAT(sim.nib().outlets(),
                ::testing::UnorderedElementsAre(
                    "myWindow", "hInput", "mInput", "sInput", "fpsD", "timeD", "fpsS", "startB",
                    "oneB", "slowB", "compilingB", "outfolderB", "leadingImage", "AVDevicePopUp",
                    "previewView", "photoSlider", "myDisplay", "currentS", "progressBar",
                    "previewPlayButton"));
}

TEST_F(ControllerTest, EveryActionIsOfferedUnderItsSelector) {
    EXPECT_THAT(
        sim.nib().actions(),
        IsSupersetOf({"realHide:", "realUnhide:", "whatisFPS:", "rateChanged:", "outputFolder:",
                      "selectAVDevice:", "timeIntervalchanged:", "startRunning:", "addFrameClick:",
                      "genneratingMovie:", "sliderDisplaying:", "playPictures:"}));
}

TEST_F(ControllerTest, EachOutletGetsTheControlOfItsName) {
    EXPECT_EQ(delegate.hInput.get(), &textField("hInput"));
    EXPECT_EQ(delegate.mInput.get(), &textField("mInput"));
    EXPECT_EQ(delegate.sInput.get(), &textField("sInput"));
    EXPECT_EQ(delegate.fpsD.get(), &textField("fpsD"));
    EXPECT_EQ(delegate.timeD.get(), &textField("timeD"));
    EXPECT_EQ(delegate.currentS.get(), &textField("currentS"));
    EXPECT_EQ(delegate.fpsS.get(), &slider("fpsS"));
    EXPECT_EQ(delegate.photoSlider.get(), &slider("photoSlider"));
    EXPECT_EQ(delegate.startB.get(), &button("startB"));
    EXPECT_EQ(delegate.oneB.get(), &button("oneB"));
    EXPECT_EQ(delegate.slowB.get(), &button("slowB"));
    EXPECT_EQ(delegate.compilingB.get(), &button("compilingB"));
    EXPECT_EQ(delegate.outfolderB.get(), &button("outfolderB"));
    EXPECT_EQ(delegate.previewPlayButton.get(), &button("previewPlayButton"));
    EXPECT_EQ(delegate.myDisplay.get(), &display());
    EXPECT_EQ(delegate.leadingImage.get(), &sim.nib().imageView("leadingImage"));
    EXPECT_EQ(delegate.AVDevicePopUp.get(), &devicePopUp());
    EXPECT_EQ(delegate.previewView.get(), &sim.nib().view("previewView"));
    EXPECT_EQ(delegate.progressBar.get(), &progressBar());
    EXPECT_EQ(delegate.myWindow.get(), &sim.nib().window("myWindow"));
}

TEST(Connections, MissingOutletsAreNamedUnlessTheProgramCanDoWithoutThem) {
    Sim sim;
    AppDelegate delegate(sim.platform());
    for (const char* name : {"leadingImage", "previewView", "startB", "fpsS"}) {
        sim.nib().leaveOut(name);
    }
    EXPECT_THAT(delegate.connectInterface(sim.nib()), ElementsAre("fpsS", "startB"));
}

TEST(Connections, NothingIsMissingInAWholeInterface) {
    Sim sim;
    AppDelegate delegate(sim.platform());
    EXPECT_THAT(delegate.connectInterface(sim.nib()), IsEmpty());
    EXPECT_THAT(sim.calls(), IsEmpty());
}

TEST_F(ControllerTest, EveryActionReachesItsOperation) {
    launch();
    sim.nib().send("realHide:");
    EXPECT_THAT(sim.takeCalls(), ElementsAre("sharedApplication miniaturizeAll"));
    sim.nib().send("rateChanged:");
    EXPECT_THAT(sim.takeCalls(), ElementsAre("fpsD setStringValue: ( fps = 30 )"));
    sim.nib().send("startRunning:");
    EXPECT_THAT(sim.takeCalls(), ElementsAre("startB setState: 1", "session1 isRunning"));
    sim.nib().send("addFrameClick:");
    EXPECT_THAT(sim.takeCalls(), ElementsAre("oneB setState: 1", "session1 isRunning"));
    sim.nib().send("timeIntervalchanged:");
    EXPECT_EQ(sim.takeCalls().back(), "timeD setStringValue: ( t = 5 s )");
    sim.nib().send("genneratingMovie:");
    EXPECT_EQ(sim.takeCalls().front(), "compilingB setState: 1");
    sim.nib().send("outputFolder:");
    EXPECT_EQ(sim.takeCalls().front(),
              "openPanel setTitle: Select Output Folder to Save the Capture");
    sim.nib().send("selectAVDevice:");
    EXPECT_EQ(sim.takeCalls().front(), "session1 stopRunning");
    sim.nib().send("realUnhide:");
    EXPECT_EQ(sim.takeCalls().front(), "myWindow makeKeyAndOrderFront");
    sim.nib().send("whatisFPS:");
    EXPECT_EQ(sim.takeCalls().size(), 1U);
}

} // namespace
} // namespace vistrane
