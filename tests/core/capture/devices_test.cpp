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
    SimCaptureSession& session() { return *sim.cameras().session(); }
    /// The devices of the session's inputs.
    std::vector<std::string> inputs() {
        std::vector<std::shared_ptr<AVCaptureDevice>> devices;
        for (const auto& input : session().currentInputs) {
            devices.push_back(input->device());
        }
        return namesOf(devices);
    }
    void select(NSInteger index) {
        devicePopUp().selected = index;
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
                            "Built-in hasMediaType: Video",
                            "AVDevicePopUp addItemWithTitle: Built-in",
                            "Microphone hasMediaType: Video", "Microphone hasMediaType: Muxed",
                            "Camcorder hasMediaType: Video", "Camcorder hasMediaType: Muxed",
                            "AVDevicePopUp addItemWithTitle: Camcorder",
                            "Nothing hasMediaType: Video", "Nothing hasMediaType: Muxed",
                            "Both hasMediaType: Video", "AVDevicePopUp addItemWithTitle: Both"));
    EXPECT_THAT(namesOf(devices), ElementsAre("Built-in", "Camcorder", "Both"));
    EXPECT_TRUE(delegate.allDivicesDiscovery);
    EXPECT_THAT(delegate.allAVdevices, IsEmpty());
}

TEST_F(Devices, AScanNeitherEmptiesThePopUpNorKeepsTheOldQuery) {
    EXPECT_THAT(delegate.devicesThatCanProduceVideo(), IsEmpty());
    sim.cameras().add("Camera");
    devicePopUp().addItemWithTitle("Old");
    const auto query = delegate.allDivicesDiscovery;
    delegate.devicesThatCanProduceVideo();
    EXPECT_THAT(devicePopUp().items, ElementsAre("Old", "Camera"));
    EXPECT_NE(delegate.allDivicesDiscovery, query);
}

TEST_F(Devices, AListBuiltAtLaunchStaysWhenDevicesComeAndGo) {
    sim.cameras().add("Camera");
    launch();
    sim.cameras().unplugAll();
    sim.cameras().add("Late");
    sim.advance(60.0);
    EXPECT_THAT(devicePopUp().items, ElementsAre("Camera"));
    EXPECT_THAT(namesOf(delegate.allAVdevices), ElementsAre("Camera"));
}

TEST_F(Devices, ASelectionTakesItsStepsInOrder) {
    launchWithCamera();
    EXPECT_TRUE(session().runs);
    delegate.selectAVDevice(nullptr);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("session1 stopRunning", "session1 removeInput: Camera",
                            "photoOutput1 connectionWithMediaType: Video",
                            "AVDevicePopUp indexOfSelectedItem", "deviceInputWithDevice: Camera",
                            "session1 addInput: Camera", "session1 startRunning"));
    EXPECT_TRUE(session().runs);
    EXPECT_THAT(inputs(), ElementsAre("Camera"));
    EXPECT_EQ(session().outputs.size(), 1U);
    EXPECT_EQ(session().preset, AVCaptureSessionPresetPhoto);
}

TEST_F(Devices, EveryInputIsRemoved) {
    launchWithCamera();
    const auto other = sim.cameras().add("Other");
    session().currentInputs.push_back(
        sim.platform().avFoundation.deviceInputWithDevice(other).input);
    delegate.selectAVDevice(nullptr);
    EXPECT_THAT(inputs(), ElementsAre("Camera"));
}

TEST_F(Devices, TheConnectionIsReadWhileThereIsNoInput) {
    launchWithCamera();
    EXPECT_EQ(delegate.con, nullptr);
    // With an input there is a connection; a selection reads it while there is none.
    delegate.con = delegate.stillPhotoOutput->connectionWithMediaType(AVMediaTypeVideo);
    ASSERT_TRUE(delegate.con);
    delegate.selectAVDevice(nullptr);
    EXPECT_EQ(delegate.con, nullptr);
}

TEST_F(Devices, ADeviceWithoutPhotoSupportLeavesTheHighPresetForTheRestOfTheRun) {
    // The lower-quality check box has no part in it.
    sim.defaults().values = {{"firstTimeRunning", NSInteger{1}}, {"iSlow", NSInteger{1}}};
    sim.cameras().add("Photo");
    sim.cameras().add("Stream", {AVMediaTypeVideo}, false);
    launch();
    ASSERT_EQ(button("slowB").currentState, 1);
    select(0);
    EXPECT_EQ(session().preset, AVCaptureSessionPresetPhoto);
    select(1);
    EXPECT_EQ(session().preset, AVCaptureSessionPresetHigh);
    EXPECT_THAT(inputs(), ElementsAre("Stream"));
    select(0);
    EXPECT_EQ(session().preset, AVCaptureSessionPresetHigh);
    EXPECT_THAT(inputs(), ElementsAre("Photo"));
    EXPECT_TRUE(session().runs);
}

TEST_F(Devices, ADeviceThatCannotBeOpenedIsLoggedAndShownInTwoAlerts) {
    sim.cameras().add("Good");
    sim.cameras().add("Busy")->refusal = NSError{"Cameras", 7, "The camera is in use."};
    launch();
    select(0);
    sim.takeCalls();
    select(1);
    EXPECT_THAT(takeProcedure({"session1", "photoOutput1", "AVDevicePopUp"}),
                ElementsAre("deviceInputWithDevice: Busy",
                            "NSLog: deviceInputWithDevice: failed (Error Domain=Cameras Code=7 "
                            "\"The camera is in use.\")",
                            "alertWithError: The camera is in use. -> alert1", "alert1 runModal",
                            "alert2 runModal"));
    const std::vector<SimShownAlert> alerts = sim.alerts().shown();
    ASSERT_EQ(alerts.size(), 2U);
    EXPECT_EQ(alerts[0].error->code, 7);
    expectStandardAlert(alerts[1], "Video Device Error", deviceErrorText);
    EXPECT_FALSE(session().runs);
    EXPECT_THAT(inputs(), IsEmpty());
    EXPECT_EQ(devicePopUp().indexOfSelectedItem(), 1);
}

TEST_F(Devices, AnIndexThatNamesNoDeviceIsAFailureAndNoCrash) {
    launch();
    select(-1);
    EXPECT_EQ(sim.alerts().takeShown().size(), 2U);
    delegate.allAVdevices = {sim.cameras().add("Camera")};
    for (const NSInteger index : {NSInteger{-1}, NSInteger{1}, NSInteger{1} << 40}) {
        select(index);
        EXPECT_EQ(sim.alerts().takeShown().size(), 2U);
        EXPECT_FALSE(session().runs);
        EXPECT_EQ(nameOf(delegate.aSession.get()), "session1");
    }
}

TEST_F(Devices, TwoDevicesOfOneNameShareAnItemAndTheIndexIsTakenAsItIs) {
    sim.cameras().add("Twin");
    sim.cameras().add("Other");
    sim.cameras().add("Twin");
    launch();
    EXPECT_THAT(devicePopUp().items, ElementsAre("Other", "Twin"));
    EXPECT_THAT(namesOf(delegate.allAVdevices), ElementsAre("Twin", "Other", "Twin"));
    select(0);
    EXPECT_THAT(inputs(), ElementsAre("Twin"));
}

TEST_F(Devices, WithoutASessionANewOneIsMadeThatHasNoOutput) {
    delegate.allAVdevices = {sim.cameras().add("Camera")};
    select(0);
    EXPECT_EQ(nameOf(delegate.aSession.get()), "session1");
    EXPECT_TRUE(session().runs);
    EXPECT_THAT(inputs(), ElementsAre("Camera"));
    EXPECT_THAT(session().outputs, IsEmpty());
    EXPECT_EQ(session().preset, std::nullopt);
}

} // namespace
} // namespace vistrane
