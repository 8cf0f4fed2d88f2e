#include "tests/desktop/SleepInhibitionTest.h"

namespace vistrane {
namespace {

class CameraLoss : public SleepInhibitionTest<CameraDesktopTest> {};

/// Capturing continues when the camera is back.
TEST_F(CameraLoss, LetsTheMachineSleepOnlyAfterTheEndOfTheCapture) {
    startCapturing("Testcam");
    ASSERT_TRUE(camera("stop"));
    await("the loss of the camera", [this] {
        return program().log().find("Capturing continues when it is back") != std::string::npos;
    });
    expectIsHeld();
    stopCapturing();
}

} // namespace
} // namespace vistrane
