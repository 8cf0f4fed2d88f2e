#include <gmock/gmock.h>

#include "backends/cameras/CaptureEngine.h"
#include "tests/backends/cameras/CameraTestBed.h"

namespace vistrane {
namespace {

using std::chrono::milliseconds;
using testing::IsEmpty;

/// The demo camera with a mode of one picture a second.
Camera slowCamera() {
    Camera camera = demoCamera();
    const GstPointer<GstCaps> caps(
        gst_caps_from_string("video/x-raw,format=I420,width=64,height=48,framerate=1/1"));
    camera.modes = std::make_shared<const std::vector<CameraMode>>(modesOf(caps.get()));
    return camera;
}

/// Each of these timeouts is much shorter than the camera's period.
CameraOptions shorterThanAPeriod() {
    CameraOptions options;
    options.firstPicture = milliseconds(40);
    options.secondTry = milliseconds(20);
    options.doubt = milliseconds(20);
    options.silence = milliseconds(40);
    options.still = milliseconds(40);
    options.retry = milliseconds(20);
    return options;
}

TEST(SlowCamera, IsWaitedForAsLongAsItsOwnRateAsks) {
    HandDrainedDispatch dispatch;
    RecordingObserver observer(dispatch);
    std::vector<StillOutcome> outcomes;
    const auto keep = [&](std::uint64_t, const StillOutcome& outcome) {
        dispatch.dispatch_get_main_queue().async(
            [&outcomes, outcome] { outcomes.push_back(outcome); });
    };
    CaptureEngine engine(std::make_shared<CameraList>(), observer, shorterThanAPeriod(),
                         {keep, [](GstSample*) {}});
    engine.start(slowCamera(), AVCaptureSessionPresetPhoto);

    for (std::size_t still = 1; still <= 3; ++still) {
        engine.requestStill(still);
        ASSERT_TRUE(dispatch.runUntil([&] { return outcomes.size() == still; }));
        const StillOutcome& outcome = outcomes.back();
        EXPECT_FALSE(outcome.error) << outcome.error->localizedDescription;
        EXPECT_TRUE(outcome.picture);
    }
    EXPECT_THAT(observer.messages(), IsEmpty());
    engine.stop();
}

} // namespace
} // namespace vistrane
