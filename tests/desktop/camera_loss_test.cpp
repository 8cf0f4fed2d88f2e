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

TEST_F(CameraLoss, IsSaidInTheCamerasViewUntilTheCameraIsBack) {
    startCapturing("Testcam");
    ASSERT_TRUE(camera("stop"));
    await("the notice", [this] {
        return cameraView().description().find("gives no pictures") != std::string::npos;
    });
    keepScreen("camera gone");
    ASSERT_TRUE(camera("start"));
    await("the camera's picture", [this] {
        return cameraView().description() == "The picture of the camera that was picked";
    });
    stopCapturing();
}

} // namespace
} // namespace vistrane
