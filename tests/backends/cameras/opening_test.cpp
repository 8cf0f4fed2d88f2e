#include <gmock/gmock.h>

#include "backends/cameras/CaptureEngine.h"
#include "tests/backends/cameras/CameraTestBed.h"

namespace vistrane {
namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::IsEmpty;

/// The demo camera with a mode of its own.
Camera cameraWith(const char* mode) {
    Camera camera = demoCamera();
    const GstPointer<GstCaps> caps(gst_caps_from_string(mode));
    camera.modes = std::make_shared<const std::vector<CameraMode>>(modesOf(caps.get()));
    return camera;
}

CameraOptions shortTimeouts() {
    CameraOptions options;
    options.reappear = milliseconds(100);
    return options;
}

class Opening : public testing::Test {
protected:
    std::string errorOf(const char* mode) {
        const auto error = engine.open(cameraWith(mode), AVCaptureSessionPresetPhoto);
        return error ? error->localizedDescription : "";
    }

    HandDrainedDispatch dispatch;
    RecordingObserver observer{dispatch};
    std::vector<StillOutcome> outcomes;
    CaptureEngine engine{std::make_shared<CameraList>(),
                         observer,
                         shortTimeouts(),
                         {[this](std::uint64_t, const StillOutcome& outcome) {
                              dispatch.dispatch_get_main_queue().async(
                                  [this, outcome] { outcomes.push_back(outcome); });
                          },
                          [](GstSample*) {}}};
};

TEST_F(Opening, ACameraThatRefusesItsFormatGivesTheReasonAndIsClosed) {
    EXPECT_THAT(errorOf("video/x-raw,format=I420,width=64,height=48,framerate=30/1,"
                        "interlace-mode=alternate"),
                HasSubstr("(it refuses its picture format)"));
    EXPECT_FALSE(engine.isRunning());
    EXPECT_THAT(observer.messages(), IsEmpty());
}

TEST_F(Opening, ACameraWithoutAModeGivesTheReason) {
    EXPECT_THAT(errorOf("audio/x-raw"), HasSubstr("format is not supported"));
}

TEST_F(Opening, EndsWithTheFirstPictureAndTheStartGoesOn) {
    constexpr char mode[] = "video/x-raw,format=I420,width=64,height=48,framerate=30/1";
    ASSERT_EQ(errorOf(mode), "");
    engine.start(cameraWith(mode), AVCaptureSessionPresetPhoto);
    engine.requestStill(1);
    ASSERT_TRUE(dispatch.runUntil([&] { return !outcomes.empty(); }));
    EXPECT_TRUE(outcomes.front().picture);
}

} // namespace
} // namespace vistrane
