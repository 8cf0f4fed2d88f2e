#include <algorithm>
#include <atomic>

#include <gmock/gmock.h>

// The hooks of tracers, through which the test reaches the camera's element.
#define GST_USE_UNSTABLE_API
#include <gst/base/gstbasesrc.h>
#include <gst/gsttracer.h>

#include "backends/cameras/CaptureEngine.h"
#include "tests/backends/cameras/CameraTestBed.h"

namespace vistrane {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::atomic<bool> isSilent{false};

GstPadProbeReturn dropIfSilent(GstPad*, GstPadProbeInfo*, gpointer) {
    return isSilent ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}

void onNewPad(GObject*, GstClockTime, GstElement* element, GstPad* pad) {
    if (GST_IS_BASE_SRC(element)) {
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, dropIfSilent, nullptr, nullptr);
    }
}

/// The demo camera, whose pictures the test stops and lets go on, as a camera does that hangs. It
/// stays listed and reports no error.
class SilentCamera : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(startGStreamer());
        const GType type = g_type_register_static_simple(
            GST_TYPE_TRACER, "TestTracer", sizeof(GstTracerClass), nullptr, sizeof(GstTracer),
            nullptr, static_cast<GTypeFlags>(0));
        auto* const tracer = static_cast<GstTracer*>(g_object_new(type, nullptr));
        gst_tracing_register_hook(tracer, "element-add-pad", G_CALLBACK(onNewPad));
    }
    ~SilentCamera() override { isSilent = false; }

    void start(const CameraOptions& options) {
        const auto keep = [this](std::uint64_t, const StillOutcome& outcome) {
            dispatch_.dispatch_get_main_queue().async([this, outcome] {
                outcomes_.push_back(textOf(outcome));
                pictures_.push_back(outcome.picture);
            });
        };
        engine_ =
            std::make_unique<CaptureEngine>(std::make_shared<CameraList>(), observer_, options,
                                            CaptureEngine::Receiver{keep, [](GstSample*) {}});
        // The bars: pictures of the scene wait behind the probe until they are painted.
        engine_->start(demoCamera(true), AVCaptureSessionPresetPhoto);
    }

    /// The error of a still, empty for a picture.
    std::string still() {
        const std::size_t count = outcomes_.size() + 1;
        engine_->requestStill(count);
        return awaitOutcomes(count) ? outcomes_.back() : "no outcome";
    }

    bool awaitOutcomes(std::size_t count) {
        return dispatch_.runUntil([&] { return outcomes_.size() >= count; });
    }

    void awaitMessages(std::size_t count) {
        EXPECT_TRUE(dispatch_.runUntil([&] { return observer_.messages().size() >= count; }));
    }

    static std::string textOf(const StillOutcome& outcome) {
        return outcome.error ? outcome.error->localizedDescription : "";
    }

    HandDrainedDispatch dispatch_;
    RecordingObserver observer_{dispatch_};
    std::vector<std::string> outcomes_;
    /// One for each outcome; null for an error.
    std::vector<std::shared_ptr<const PictureSource>> pictures_;
    std::unique_ptr<CaptureEngine> engine_;
};

TEST_F(SilentCamera, CountsAsGoneFailsItsStillsAndComesBack) {
    CameraOptions options;
    options.silence = milliseconds(1000);
    options.retry = milliseconds(50);
    options.still = std::chrono::minutes(10);
    start(options);
    EXPECT_EQ(still(), "");
    isSilent = true;
    EXPECT_THAT(still(), HasSubstr("gives no pictures"));
    awaitMessages(1);
    EXPECT_THAT(observer_.messages(), ElementsAre(HasSubstr("gives no pictures")));
    isSilent = false;
    awaitMessages(2);
    EXPECT_THAT(observer_.messages().back(), HasSubstr("is back"));
    EXPECT_EQ(still(), "");
}

TEST_F(SilentCamera, MakesAStillFailInTime) {
    CameraOptions options;
    options.silence = std::chrono::minutes(10);
    options.still = milliseconds(2000);
    start(options);
    EXPECT_EQ(still(), "");
    isSilent = true;
    EXPECT_THAT(still(), HasSubstr("gave no picture within 2000 ms"));
    EXPECT_THAT(observer_.messages(), IsEmpty());
}

TEST_F(SilentCamera, StillsAreEncodedAheadUnlessOthersWait) {
    CameraOptions options;
    options.silence = std::chrono::minutes(10);
    options.still = std::chrono::minutes(10);
    start(options);
    EXPECT_EQ(still(), "");
    isSilent = true;
    // At most one picture is on its way, so that the second and third wait at the same time.
    for (std::uint64_t request = 2; request <= 4; ++request) {
        engine_->requestStill(request);
    }
    isSilent = false;
    ASSERT_TRUE(awaitOutcomes(4));
    ASSERT_EQ(std::count(pictures_.begin(), pictures_.end(), nullptr), 0);
    EXPECT_TRUE(pictures_[0]->encodedAhead());
    EXPECT_FALSE(pictures_[2]->encodedAhead());
    EXPECT_TRUE(pictures_[3]->encodedAhead());
}

} // namespace
} // namespace vistrane
