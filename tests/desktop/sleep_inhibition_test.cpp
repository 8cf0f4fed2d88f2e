#include <csignal>
#include <filesystem>

#include "tests/desktop/SleepInhibitionTest.h"

namespace vistrane {
namespace {

class SleepInhibition : public SleepInhibitionTest<DesktopTest> {
protected:
    void startCapturing() { SleepInhibitionTest::startCapturing("Demo Camera"); }
};

TEST_F(SleepInhibition, LastsFromTheStartOfEachCaptureToItsEnd) {
    startCapturing();
    expectIsHeld();
    stopCapturing();
    clickButton("Start Auto Capture");
    await("the next request", [this] { return services().inhibitions() == 1; });
    stopCapturing();
}

TEST_F(SleepInhibition, LastsWhileTheFolderIsGone) {
    startCapturing();
    std::filesystem::rename(folder, folder + " away");
    await("a lost frame",
          [this] { return program().log().find("A frame is lost") != std::string::npos; });
    expectIsHeld();
    stopCapturing();
}

TEST_F(SleepInhibition, EndsWhenTheWindowIsClosed) {
    startCapturing();
    EXPECT_EQ(quit(), 0);
    awaitRelease();
}

TEST_F(SleepInhibition, EndsWhenTheMenuQuits) {
    startCapturing();
    screen().press({"Control_L", "q"});
    EXPECT_EQ(awaitEnd(), 0);
    awaitRelease();
}

TEST_F(SleepInhibition, EndsWithATerminationSignal) {
    startCapturing();
    program().signal(SIGTERM);
    EXPECT_EQ(awaitEnd(), 128 + SIGTERM);
    awaitRelease();
}

TEST_F(SleepInhibition, EndsWithAKilledProgram) {
    startCapturing();
    program().signal(SIGKILL);
    EXPECT_EQ(awaitEnd(), -SIGKILL);
    awaitRelease();
}

} // namespace
} // namespace vistrane
