#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string deviceErrorText =
    "It seems you do NOT have a supported profetional camera or video camera connected.\nPlease "
    "plugin a camera or video device(DV) and restart Vistrane. The best way of solving this issue "
    "is: download and install the macOS driver of your camera. test it with FaceTime, then start "
    "Vistrane again.\nIf you just want to make stop motion movie from pictures already in your "
    "folder, please search app named 'frameweave' or 'stillreel'.\n";

class Devices : public ControllerTest {
protected:
    std::vector<std::string> namesOf(const std::vector<std::shared_ptr<AVCaptureDevice>>& devices) {
        std::vector<std::string> names;
        for (const auto& device : devices) {
            names.push_back(nameOf(device.get()));
        }
        return names;
    }
    void select(NSInteger index) {
        devicePopUp().select(index);
        delegate.selectAVDevice(nullptr);
    }
};

TEST_F(Devices, TheScanAsksForThreeTypesAndListsWhatDeliversVideo) {
    sim.cameras().add("Built-in");
    sim.cameras().add("Microphone", {AVMediaTypeAudio});
    sim.cameras().add("Camcorder", {AVMediaTypeMuxed});
    sim.cameras().add("Nothing", {});
    sim.cameras().add("Both", {AVMediaTypeVideo, AVMediaTypeMuxed});
    const auto devices = delegate.devicesThatCanProduceVideo();
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("discoverySessionWithDeviceTypes: BuiltInWideAngleCamera, "
                            "ExternalUnknown, null mediaType: Video position: 0",
                            "AVDevicePopUp addItemWithTitle: Built-in",
                            "AVDevicePopUp addItemWithTitle: Camcorder",
                            "AVDevicePopUp addItemWithTitle: Both"));
    EXPECT_THAT(namesOf(devices), ElementsAre("Built-in", "Camcorder", "Both"));
    EXPECT_TRUE(delegate.allDivicesDiscovery);
    EXPECT_THAT(delegate.allAVdevices, IsEmpty());
}

TEST_F(Devices, AScanNeitherEmptiesThePopUpNorKeepsTheOldQuery) {
    sim.cameras().add("Camera");
    devicePopUp().addItemWithTitle("Old");
    delegate.devicesThatCanProduceVideo();
    const auto query = delegate.allDivicesDiscovery;
    delegate.devicesThatCanProduceVideo();
    EXPECT_THAT(devicePopUp().items(), ElementsAre("Old", "Camera"));
    EXPECT_NE(delegate.allDivicesDiscovery, query);
}

TEST_F(Devices, AScanWithoutDevicesGivesAnEmptyList) {
    EXPECT_THAT(delegate.devicesThatCanProduceVideo(), IsEmpty());
    EXPECT_THAT(devicePopUp().items(), IsEmpty());
    EXPECT_THAT(sim.alerts().shown(), IsEmpty());
}

TEST_F(Devices, VideoIsAskedForFirstAndMuxedOnlyThen) {
    sim.cameras().add("Plain");
    sim.cameras().add("Camcorder", {AVMediaTypeMuxed});
    sim.recordGetters();
    delegate.devicesThatCanProduceVideo();
    const std::vector<std::string> calls = sim.takeCalls();
    EXPECT_THAT(std::vector<std::string>(calls.begin() + 1, calls.end()),
                ElementsAre("Plain hasMediaType: Video", "Plain localizedName",
                            "AVDevicePopUp addItemWithTitle: Plain",
                            "Camcorder hasMediaType: Video", "Camcorder hasMediaType: Muxed",
                            "Camcorder localizedName",
                            "AVDevicePopUp addItemWithTitle: Camcorder"));
}

TEST_F(Devices, AListBuiltAtLaunchStaysWhenDevicesComeAndGo) {
    sim.cameras().add("Camera");
    launch();
    sim.cameras().unplugAll();
    sim.cameras().add("Late");
    sim.advance(60.0);
    EXPECT_THAT(devicePopUp().items(), ElementsAre("Camera"));
    EXPECT_THAT(namesOf(delegate.allAVdevices), ElementsAre("Camera"));
}

TEST_F(Devices, TheFirstSelectionOpensTheDeviceStepByStep) {
    sim.cameras().add("Camera");
    launch();
    delegate.selectAVDevice(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("session1 stopRunning", "photoOutput1 connectionWithMediaType: Video",
                            "AVDevicePopUp indexOfSelectedItem", "deviceInputWithDevice: Camera",
                            "session1 addInput: Camera", "session1 startRunning"));
    EXPECT_TRUE(delegate.aSession->isRunning());
    EXPECT_EQ(sim.cameras().session()->preset, AVCaptureSessionPresetPhoto);
}

TEST_F(Devices, TheSameDeviceAgainIsRemovedAddedAndStartedAnew) {
    launchWithCamera();
    delegate.selectAVDevice(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("session1 stopRunning", "session1 removeInput: Camera",
                            "photoOutput1 connectionWithMediaType: Video",
                            "AVDevicePopUp indexOfSelectedItem", "deviceInputWithDevice: Camera",
                            "session1 addInput: Camera", "session1 startRunning"));
    EXPECT_EQ(sim.cameras().session()->currentInputs.size(), 1U);
    EXPECT_EQ(sim.cameras().session()->outputs.size(), 1U);
}

TEST_F(Devices, EveryInputIsRemovedOneByOne) {
    launchWithCamera();
    const auto other = sim.cameras().add("Other");
    sim.cameras().session()->currentInputs.push_back(
        sim.platform().avFoundation.deviceInputWithDevice(other).input);
    sim.takeCalls();
    delegate.selectAVDevice(nullptr);
    const std::vector<std::string> calls = sim.takeCalls();
    EXPECT_THAT(std::vector<std::string>(calls.begin(), calls.begin() + 3),
                ElementsAre("session1 stopRunning", "session1 removeInput: Camera",
                            "session1 removeInput: Other"));
}

TEST_F(Devices, TheConnectionIsReadWhileThereIsNoInput) {
    launchWithCamera();
    EXPECT_EQ(delegate.con, nullptr);
    // Now that there is an input, there is a connection; a selection reads it without one.
    delegate.con = delegate.stillPhotoOutput->connectionWithMediaType(AVMediaTypeVideo);
    ASSERT_TRUE(delegate.con);
    delegate.selectAVDevice(nullptr);
    EXPECT_EQ(delegate.con, nullptr);
}

TEST_F(Devices, TheSelectedIndexChoosesTheDevice) {
    sim.cameras().add("First");
    sim.cameras().add("Second");
    launch();
    select(1);
    EXPECT_EQ(nameOf(sim.cameras().session()->currentInputs.at(0)->device().get()), "Second");
    select(0);
    EXPECT_EQ(nameOf(sim.cameras().session()->currentInputs.at(0)->device().get()), "First");
}

TEST_F(Devices, ADeviceWithoutPhotoSupportLeavesTheHighPresetForTheRestOfTheRun) {
    sim.cameras().add("Photo");
    sim.cameras().add("Stream", {AVMediaTypeVideo}, false);
    launch();
    select(1);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("session1 stopRunning", "photoOutput1 connectionWithMediaType: Video",
                            "AVDevicePopUp indexOfSelectedItem", "deviceInputWithDevice: Stream",
                            "session1 setSessionPreset: High", "session1 addInput: Stream",
                            "session1 startRunning"));
    select(0);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("session1 stopRunning", "session1 removeInput: Stream",
                            "photoOutput1 connectionWithMediaType: Video",
                            "AVDevicePopUp indexOfSelectedItem", "deviceInputWithDevice: Photo",
                            "session1 addInput: Photo", "session1 startRunning"));
    EXPECT_EQ(sim.cameras().session()->preset, AVCaptureSessionPresetHigh);
}

TEST_F(Devices, TheLowerQualityBoxPlaysNoPart) {
    sim.defaults().values = {{"firstTimeRunning", NSInteger{1}}, {"iSlow", NSInteger{1}}};
    sim.cameras().add("Photo");
    sim.cameras().add("Stream", {AVMediaTypeVideo}, false);
    launch();
    ASSERT_EQ(button("slowB").currentState, 1);
    select(0);
    EXPECT_EQ(sim.cameras().session()->preset, AVCaptureSessionPresetPhoto);
    select(1);
    EXPECT_EQ(sim.cameras().session()->preset, AVCaptureSessionPresetHigh);
}

TEST_F(Devices, ADeviceThatCannotBeOpenedIsLoggedAndShownInTwoAlerts) {
    sim.cameras().add("Good");
    sim.cameras().add("Busy")->refusal = NSError{"Cameras", 7, "The camera is in use."};
    launch();
    select(0);
    sim.takeCalls();
    select(1);
    EXPECT_THAT(takeProcedure(),
                ElementsAre("session1 stopRunning", "session1 removeInput: Good",
                            "photoOutput1 connectionWithMediaType: Video",
                            "AVDevicePopUp indexOfSelectedItem", "deviceInputWithDevice: Busy",
                            "NSLog: deviceInputWithDevice: failed (Error Domain=Cameras Code=7 "
                            "\"The camera is in use.\")",
                            "alertWithError: The camera is in use. -> alert1", "alert1 runModal",
                            "alert2 runModal"));
    const std::vector<SimShownAlert> alerts = sim.alerts().shown();
    ASSERT_EQ(alerts.size(), 2U);
    EXPECT_EQ(alerts[0].error->code, 7);
    expectStandardAlert(alerts[1], "Video Device Error", deviceErrorText);
    EXPECT_FALSE(sim.cameras().session()->runs);
    EXPECT_THAT(sim.cameras().session()->currentInputs, IsEmpty());
    EXPECT_EQ(devicePopUp().indexOfSelectedItem(), 1);
}

TEST_F(Devices, ASelectionWithoutDevicesFailsLikeADeviceThatIsGone) {
    launch();
    delegate.selectAVDevice(nullptr);
    EXPECT_EQ(sim.alerts().shown().size(), 2U);
    EXPECT_FALSE(sim.cameras().session()->runs);
}

TEST_F(Devices, TwoDevicesOfOneNameShareAnItemAndTheIndexIsTakenAsItIs) {
    sim.cameras().add("Twin");
    sim.cameras().add("Other");
    sim.cameras().add("Twin");
    launch();
    EXPECT_THAT(devicePopUp().items(), ElementsAre("Other", "Twin"));
    EXPECT_THAT(namesOf(delegate.allAVdevices), ElementsAre("Twin", "Other", "Twin"));
    select(0);
    EXPECT_EQ(nameOf(sim.cameras().session()->currentInputs.at(0)->device().get()), "Twin");
}

TEST_F(Devices, AnIndexBeyondTheDevicesIsAFailureAndNoCrash) {
    sim.cameras().add("Camera");
    launch();
    for (const NSInteger index : {NSInteger{-1}, NSInteger{1}, NSInteger{1} << 40}) {
        select(index);
        EXPECT_EQ(sim.alerts().takeShown().size(), 2U);
    }
}

TEST_F(Devices, WithoutASessionANewOneIsMadeThatHasNoOutput) {
    const auto camera = sim.cameras().add("Camera");
    delegate.allAVdevices = {camera};
    devicePopUp().select(0);
    delegate.selectAVDevice(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("captureSession -> session1", "AVDevicePopUp indexOfSelectedItem",
                            "deviceInputWithDevice: Camera", "session1 addInput: Camera",
                            "session1 startRunning"));
    EXPECT_THAT(sim.cameras().session()->outputs, IsEmpty());
    EXPECT_EQ(sim.cameras().session()->preset, std::nullopt);
}

TEST_F(Devices, TheSessionIsNeverReplaced) {
    launchWithCamera();
    const auto session = delegate.aSession;
    delegate.selectAVDevice(nullptr);
    devicePopUp().select(5);
    delegate.selectAVDevice(nullptr);
    EXPECT_EQ(delegate.aSession, session);
}

} // namespace
} // namespace vistrane
