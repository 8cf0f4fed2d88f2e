#include <gtest/gtest.h>

#include "backends/console/MemoryUserDefaults.h"
#include "backends/movies/TrackClock.h"
#include "backends/qt/loop/core_application.h"
#include "frontends/SessionBackend.h"

namespace vistrane {
namespace {

/// The reasons that the kits of a session give for a refusal. No command reaches them: it refuses a
/// device that is not offered, captures only while the camera runs, and its frames' times rise. In
/// the window ticks of a running timer reach a session that another device has failed to start.
class Refusals : public testing::Test, public AVCapturePhotoCaptureDelegate {
protected:
    static void SetUpTestSuite() { makeCoreApplication(); }

    void captureOutputDidFinishProcessingPhoto(AVCapturePhotoOutput&, const AVCapturePhoto*,
                                               const std::optional<NSError>& error) override {
        photoError_ = error;
    }

    QtRunLoop loop_;
    MemoryUserDefaults defaults_;
    SessionObserver observer_{[](const std::string&) {}};
    SessionBackend backend_{
        loop_, defaults_, [](const std::string&) {}, observer_, {.version = "1.0.0"}};
    MediaAVFoundation& kit_ = backend_.avFoundation;
    std::optional<NSError> photoError_;
};

TEST_F(Refusals, WithoutADeviceThereIsNoInput) {
    const AVCaptureDeviceInputResult result = kit_.deviceInputWithDevice(nullptr);
    EXPECT_FALSE(result.input);
    EXPECT_EQ(result.error->localizedDescription, "There is no such device: pick one of the list");
}

TEST_F(Refusals, WithoutARunningSessionThereIsNoStill) {
    const auto session = kit_.captureSession();
    const auto output = kit_.photoOutput();
    session->addOutput(output);
    output->capturePhotoWithSettings(kit_.photoSettings(), *this);
    for (int step = 0; step < 1000 && !photoError_; ++step) {
        loop_.runUntilDate(backend_.foundation.dateWithTimeIntervalSinceNow(0.01));
    }
    ASSERT_TRUE(photoError_);
    EXPECT_EQ(photoError_->localizedDescription, "The camera is not running: pick a device first");
}

TEST_F(Refusals, APictureWhoseTimeDoesNotRiseIsNotAppended) {
    TrackClock clock;
    EXPECT_FALSE(clock.take(CMTimeMake(2, 25)).error);
    for (const std::int64_t ticks : {2, 1}) {
        EXPECT_EQ(clock.take(CMTimeMake(ticks, 25)).error->localizedDescription,
                  "The picture's time is not after that of the previous picture");
    }
}

} // namespace
} // namespace vistrane
