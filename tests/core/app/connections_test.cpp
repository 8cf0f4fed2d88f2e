#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

TEST_F(ControllerTest, EveryActionIsOfferedUnderItsSelector) {
    EXPECT_THAT(sim.nib().actions(),
                UnorderedElementsAre(
                    "realHide:", "realUnhide:", "whatisFPS:", "rateChanged:", "outputFolder:",
                    "selectAVDevice:", "timeIntervalchanged:", "startRunning:", "addFrameClick:",
                    "genneratingMovie:", "sliderDisplaying:", "playPictures:"));
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

TEST(Connections, NothingIsMissingInAWholeInterfaceAndNothingIsDone) {
    Sim sim;
    AppDelegate delegate(sim.platform());
    EXPECT_THAT(delegate.connectInterface(sim.nib()), IsEmpty());
    EXPECT_THAT(sim.calls(), IsEmpty());
}

TEST_F(ControllerTest, EveryActionReachesItsOperation) {
    launch();
    const std::pair<const char*, const char*> ofEach[] = {
        {"realHide:", "sharedApplication miniaturizeAll"},
        {"realUnhide:", "myWindow makeKeyAndOrderFront"},
        {"whatisFPS:", "sharedWorkspace openURL: https://en.wikipedia.org/wiki/Frame_rate"},
        {"rateChanged:", "fpsD setStringValue: ( fps = 30 )"},
        {"outputFolder:", "openPanel setTitle: Select Output Folder to Save the Capture"},
        {"selectAVDevice:", "session1 stopRunning"},
        {"timeIntervalchanged:", "timeD setStringValue: ( t = 5 s )"},
        {"startRunning:", "startB setState: 1"},
        {"addFrameClick:", "oneB setState: 1"},
        {"genneratingMovie:", "compilingB setState: 1"},
        {"sliderDisplaying:", "currentS setStringValue: Displaying frame 1 of 0"},
        {"playPictures:", "previewPlayButton setImage: play2-s"}};
    for (const auto& [selector, itsCall] : ofEach) {
        sim.takeCalls();
        sim.nib().send(selector);
        EXPECT_THAT(sim.calls(), Contains(itsCall)) << selector;
    }
}

} // namespace
} // namespace vistrane
