#include "tests/support/ControllerTest.h"

namespace vistrane {
namespace {

using ::testing::ElementsAre;

class Schedule : public ControllerTest {
protected:
    void SetUp() override {
        launchWithCamera();
        setInterval("0", "0", "5");
    }
    /// The clamping of the fields has tests of its own.
    const std::vector<std::string> fields = {"hInput", "mInput", "sInput"};
    void click() { delegate.startRunning(nullptr); }
    std::size_t stills() { return sim.cameras().pendingStills().size(); }
    std::string title() { return button("startB").currentTitle; }
};

TEST_F(Schedule, StartingAndStoppingTakeTheirStepsInOrder) {
    click();
    EXPECT_THAT(takeProcedure(fields),
                ElementsAre("startB setState: 1", "session1 isRunning",
                            "timeD setStringValue: ( t = 5 s )",
                            "myWindow makeFirstResponder: (null)",
                            "photoSettingsFromPhotoSettings: photoSettings1 -> photoSettings2",
                            "photoOutput1 capturePhotoWithSettings: photoSettings2",
                            "scheduledTimerWithTimeInterval: 5 repeats: YES -> timer1",
                            "startB setTitle: Stop Auto Capture"));
    click();
    EXPECT_THAT(takeProcedure(fields),
                ElementsAre("startB setState: 1", "session1 isRunning",
                            "timeD setStringValue: ( t = 5 s )",
                            "myWindow makeFirstResponder: (null)", "timer1 invalidate",
                            "startB setTitle: Start Auto Capture"));
    sim.advance(60.0);
    EXPECT_EQ(stills(), 1U);
}

TEST_F(Schedule, StoppingKeepsTheTimerObjectAndStartingAgainReplacesIt) {
    click();
    const auto first = delegate.myTimer;
    click();
    EXPECT_EQ(delegate.myTimer, first);
    EXPECT_FALSE(first->isValid());
    click();
    EXPECT_NE(delegate.myTimer, first);
    EXPECT_TRUE(delegate.myTimer->isValid());
    EXPECT_EQ(title(), "Stop Auto Capture");
}

TEST_F(Schedule, TheFirstFrameComesAtOnceAndTheSecondOneIntervalLater) {
    click();
    EXPECT_EQ(stills(), 1U);
    sim.advance(4.999);
    EXPECT_EQ(stills(), 1U);
    sim.advance(0.001);
    EXPECT_EQ(stills(), 2U);
    sim.advance(50.0);
    EXPECT_EQ(stills(), 12U);
}

TEST_F(Schedule, FieldsAreClampedBeforeTheTimerIsMade) {
    setInterval("-1", "", "0");
    click();
    sim.advance(2.999);
    EXPECT_EQ(stills(), 3U);
}

TEST_F(Schedule, AnEditThatTheClickEndsCountsForTheTimer) {
    sim.nib().window("myWindow").endEditing = [&] {
        textField("sInput").text = "9";
        sim.nib().send("timeIntervalchanged:");
    };
    click();
    sim.advance(8.999);
    EXPECT_EQ(stills(), 1U);
    sim.advance(0.001);
    EXPECT_EQ(stills(), 2U);
}

TEST_F(Schedule, AClickWithoutARunningSessionSetsTheStateOnly) {
    sim.cameras().session()->runs = false;
    setInterval("-1", "", "0");
    click();
    EXPECT_EQ(button("startB").currentState, 1);
    EXPECT_EQ(title(), "");
    EXPECT_EQ(interval(), "-1::0");
    EXPECT_EQ(delegate.myTimer, nullptr);
    EXPECT_EQ(stills(), 0U);
    expectNoMessage();
}

TEST_F(Schedule, AClickIsIgnoredWhenTheSessionHasStoppedAndTheTimerGoesOn) {
    click();
    sim.cameras().session()->runs = false;
    click();
    EXPECT_EQ(title(), "Stop Auto Capture");
    sim.advance(5.0);
    EXPECT_EQ(stills(), 2U);
}

TEST_F(Schedule, ATickAsksForAStillAndForNothingElse) {
    click();
    sim.cameras().session()->runs = false;
    sim.takeCalls();
    sim.advance(5.0);
    EXPECT_THAT(sim.takeCalls(),
                ElementsAre("photoSettingsFromPhotoSettings: photoSettings1 -> photoSettings3",
                            "photoOutput1 capturePhotoWithSettings: photoSettings3"));
    delegate.startTheTimer(nullptr);
    EXPECT_EQ(stills(), 3U);
}

TEST_F(Schedule, ChangedFieldsChangeTheReadOutButNotTheRunningTimer) {
    click();
    setInterval("0", "0", "2");
    sim.nib().send("timeIntervalchanged:");
    EXPECT_EQ(delegate.realInterval, 2);
    EXPECT_EQ(textField("timeD").text, "( t = 2 s )");
    sim.advance(4.999);
    EXPECT_EQ(stills(), 1U);
    sim.advance(0.001);
    EXPECT_EQ(stills(), 2U);
    click();
    click();
    sim.advance(2.0);
    EXPECT_EQ(stills(), 4U);
}

TEST_F(Schedule, AnAlertHoldsTheTicksBackAndOneFollowsIt) {
    sim.alerts().stayUp(12.0);
    click();
    sim.cameras().deliverPhoto("picture"); // There is no folder: an alert.
    EXPECT_EQ(stills(), 0U);
    sim.advance(0.0);
    EXPECT_EQ(stills(), 1U);
    sim.advance(3.0);
    EXPECT_EQ(stills(), 2U);
}

TEST_F(Schedule, SampleAccurateRecordingIsNeverWanted) {
    EXPECT_FALSE(delegate.captureOutputShouldProvideSampleAccurateRecordingStart(nullptr));
}

TEST_F(ControllerTest, AClickBeforeTheLaunchSetsTheStateOnly) {
    delegate.startRunning(nullptr);
    delegate.addFrameClick(nullptr);
    EXPECT_THAT(sim.takeCalls(), ElementsAre("startB setState: 1", "oneB setState: 1"));
}

} // namespace
} // namespace vistrane
