#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class LifeCycle : public ControllerTest {};

TEST_F(LifeCycle, NothingIsAskedOfTheSystemBeforeTheControllerAwakes) {
    EXPECT_THAT(sim.calls(), IsEmpty());
    EXPECT_EQ(delegate.pictureArray.load(), nullptr);
    EXPECT_EQ(delegate.finalMoviePath.load(), nullptr);
    EXPECT_EQ(delegate.myThread.load(), nullptr);
    EXPECT_EQ(delegate.aSession, nullptr);
    EXPECT_EQ(delegate.myTimer, nullptr);
    EXPECT_EQ(delegate.playing, 0);
}

TEST_F(LifeCycle, TheFirstAwakeningGoesThroughItsStepsInOrder) {
    delegate.awakeFromNib();
    EXPECT_THAT(
        sim.takeCalls(),
        ElementsAre(
            "myDisplay setWantsLayer: YES", "myDisplay.layer setBackgroundColor: 0,0,0,1",
            "standardUserDefaults stringForKey: AppleInterfaceStyle",
            "previewPlayButton setImage: play2", "previewPlayButton setAlternateImage: play1",
            "defaultCenter addObserver: AppleInterfaceThemeChangedNotification",
            "standardUserDefaults integerForKey: firstTimeRunning",
            "standardUserDefaults setInteger: 1 forKey: firstTimeRunning",
            "standardUserDefaults setInteger: 0 forKey: iSlow",
            "standardUserDefaults setInteger: 30 forKey: iFPS",
            "standardUserDefaults setInteger: 0 forKey: iHour",
            "standardUserDefaults setInteger: 0 forKey: iMinue",
            "standardUserDefaults setInteger: 5 forKey: iSecond", "NSBeep",
            "dateWithTimeIntervalSinceNow: 0.2", "runUntilDate: 1772892309.2",
            "standardUserDefaults integerForKey: iSlow", "slowB setState: 0",
            "standardUserDefaults integerForKey: iFPS", "fpsS setIntegerValue: 30",
            "fpsD setStringValue: ( fps = 30 )", "standardUserDefaults integerForKey: iHour",
            "hInput setIntegerValue: 0", "standardUserDefaults integerForKey: iMinute",
            "mInput setIntegerValue: 0", "standardUserDefaults integerForKey: iSecond",
            "sInput setIntegerValue: 5", "hInput setIntValue: 0", "mInput setIntValue: 0",
            "sInput setIntValue: 5", "timeD setStringValue: ( t = 5 s )",
            "standardUserDefaults objectForKey: iData",
            "outfolderB setTitle: click to select the output folder", "outfolderB setState: 1"));
}

TEST_F(LifeCycle, LaunchingWithoutAFolderGoesThroughItsStepsInOrderAndStartsNoTimer) {
    sim.cameras().add("Camera");
    delegate.awakeFromNib();
    sim.takeCalls();
    delegate.applicationDidFinishLaunching();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("captureSession -> session1", "session1 setSessionPreset: Photo",
                            "photoOutput -> photoOutput1", "photoSettings -> photoSettings1",
                            "session1 canAddOutput: photoOutput1",
                            "session1 addOutput: photoOutput1", "AVDevicePopUp removeAllItems",
                            "discoverySessionWithDeviceTypes: BuiltInWideAngleCamera, "
                            "ExternalUnknown, null mediaType: Video position: 0",
                            "Camera hasMediaType: Video", "AVDevicePopUp addItemWithTitle: Camera",
                            "layerWithSession: session1 -> previewLayer1",
                            "previewLayer1 setFrame: 0,0,320,240", "previewView setWantsLayer: YES",
                            "previewView.layer setBackgroundColor: 0,0,0,1",
                            "previewView.layer addSublayer: previewLayer1"));
    EXPECT_THAT(sim.loop().timers(), IsEmpty());
}

TEST_F(LifeCycle, LaunchingWithAFolderEndsWithTheFrameListTimer) {
    saveFolder();
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(sim.calls().back(), "scheduledTimerWithTimeInterval: 0.1 repeats: YES -> timer1");
}

TEST_F(LifeCycle, ASessionThatRefusesThePhotoOutputGoesOnWithoutItAndSaysNothing) {
    sim.cameras().refusesOutputs = true;
    sim.cameras().add("Camera");
    launch();
    EXPECT_THAT(sim.cameras().session()->outputs, IsEmpty());
    EXPECT_THAT(devicePopUp().items, ElementsAre("Camera"));
    EXPECT_TRUE(delegate.stillPhotoOutput);
    expectNoMessage();
}

TEST_F(LifeCycle, WithoutACameraTheLaunchShowsNoAlertAndStartsNoSession) {
    launch();
    EXPECT_THAT(devicePopUp().items, IsEmpty());
    EXPECT_THAT(delegate.allAVdevices, IsEmpty());
    EXPECT_FALSE(sim.cameras().session()->runs);
    EXPECT_THAT(sim.cameras().session()->currentInputs, IsEmpty());
    expectNoMessage();
}

TEST(LifeCycleWithoutPreview, TheLayerGetsAZeroFrame) {
    Sim sim;
    AppDelegate delegate(sim.platform());
    sim.nib().leaveOut("previewView");
    delegate.connectInterface(sim.nib());
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    EXPECT_THAT(sim.calls(), Contains("previewLayer1 setFrame: 0,0,0,0"));
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("previewView"))));
    EXPECT_THAT(sim.misuses(), IsEmpty());
}

TEST_F(LifeCycle, TerminatingStopsTheSessionAndThenSavesTheSettings) {
    launchWithCamera();
    delegate.applicationWillTerminate();
    EXPECT_THAT(sim.takeCalls(), ElementsAre("session1 stopRunning",
                                             "standardUserDefaults setInteger: 0 forKey: iSlow",
                                             "standardUserDefaults setInteger: 30 forKey: iFPS",
                                             "standardUserDefaults setInteger: 0 forKey: iHour",
                                             "standardUserDefaults setInteger: 0 forKey: iMinute",
                                             "standardUserDefaults setInteger: 5 forKey: iSecond",
                                             "standardUserDefaults synchronize"));
}

TEST_F(LifeCycle, TerminatingWithoutASessionOnlySavesTheSettings) {
    delegate.awakeFromNib();
    delegate.applicationWillTerminate();
    EXPECT_THAT(sim.calls(), Not(Contains(StartsWith("session"))));
    EXPECT_TRUE(sim.defaults().durableValues.contains("iSecond"));
}

TEST_F(LifeCycle, TerminatingStopsNoTimerAndNoCompile) {
    saveFolder();
    sim.files().addFile("/f/1.png");
    sim.files().addFile("/f/2.png");
    launchWithCamera();
    sim.advance(0.1);
    delegate.startRunning(nullptr);
    delegate.genneratingMovie(nullptr);
    delegate.applicationWillTerminate();
    EXPECT_TRUE(delegate.myTimer->isValid());
    EXPECT_TRUE(delegate.arrayTimer->isValid());
    EXPECT_FALSE(delegate.myThread.load()->isCancelled());
}

TEST_F(LifeCycle, ClosingTheLastWindowQuitsAndChangesNothingBeforeTheEnd) {
    launchWithCamera();
    setInterval("0", "0", "42");
    const auto saved = sim.defaults().values;
    EXPECT_TRUE(delegate.applicationShouldTerminateAfterLastWindowClosed());
    EXPECT_TRUE(sim.cameras().session()->runs);
    EXPECT_EQ(sim.defaults().values, saved);
    EXPECT_THAT(sim.calls(), IsEmpty());
}

TEST_F(LifeCycle, HidingMiniaturisesAllWindowsAndUnhidingBringsTheMainWindowToTheFront) {
    delegate.realHide(nullptr);
    delegate.realUnhide(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("sharedApplication miniaturizeAll", "myWindow makeKeyAndOrderFront",
                            "sharedApplication activateIgnoringOtherApps: YES"));
}

TEST_F(LifeCycle, TheFrameRateHelpOpensOneWebPageAndReportsNoFailure) {
    for (const bool opens : {true, false}) {
        sim.workspace().opens = opens;
        delegate.whatisFPS(nullptr);
        EXPECT_THAT(sim.takeCalls(), ElementsAre(StartsWith("sharedWorkspace openURL: https://")));
    }
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

} // namespace
} // namespace vistrane
