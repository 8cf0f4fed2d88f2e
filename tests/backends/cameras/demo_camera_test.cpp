#include "tests/backends/cameras/CameraTestBed.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <set>
#include <thread>

#include <gmock/gmock.h>

#include "backends/cameras/MediaPreviewLayer.h"

namespace vistrane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char demo[] = "Demo Camera";

CameraOptions withDemo() {
    CameraOptions options;
    options.demoCamera = true;
    return options;
}

class DemoCamera : public testing::Test {
protected:
    CameraTestBed bed{withDemo()};
};

TEST_F(DemoCamera, IsListedLastAndOnlyOnRequest) {
    const auto devices = bed.devices();
    ASSERT_FALSE(devices.empty());
    EXPECT_EQ(devices.back()->localizedName(), demo);
    EXPECT_EQ(CameraTestBed(CameraOptions{}).device(demo), nullptr);
}

TEST_F(DemoCamera, NullTypesAloneFindNothing) {
    const auto found = [&](std::optional<AVCaptureDeviceType> type, AVMediaType media) {
        return bed.cameras
            ->discoverySessionWithDeviceTypes({type}, media, AVCaptureDevicePositionUnspecified)
            ->devices();
    };
    EXPECT_THAT(found(std::nullopt, AVMediaTypeVideo), IsEmpty());
    EXPECT_THAT(found(AVCaptureDeviceTypeExternalUnknown, AVMediaTypeAudio), IsEmpty());
}

TEST_F(DemoCamera, StillIsAWholePixmapOfTheCamerasSize) {
    ASSERT_TRUE(bed.pick(demo));
    bed.request();
    EXPECT_TRUE(bed.delegate.outcomes.empty());
    ASSERT_TRUE(bed.awaitOutcomes(1));
    ASSERT_THAT(bed.delegate.outcomes, ElementsAre(""));
    const auto pixmap = pixmapOf(*bed.delegate.files.at(0));
    ASSERT_TRUE(pixmap);
    EXPECT_EQ(pixmap->width, 1280);
    EXPECT_EQ(pixmap->height, 720);
    // It shows more than one value.
    EXPECT_GT(std::set<std::uint8_t>(pixmap->rgb.begin(), pixmap->rgb.end()).size(), 1U);
}

TEST_F(DemoCamera, ShowsASkyOrBarsOnRequest) {
    CameraOptions bars = withDemo();
    bars.demoBars = true;
    // Of a still's upper left corner: red, green, blue.
    const auto corner = [](CameraTestBed& camera) {
        EXPECT_TRUE(camera.pick(demo));
        EXPECT_EQ(camera.still(), "");
        const auto pixmap = pixmapOf(*camera.delegate.files.at(0));
        return std::vector<int>(pixmap->rgb.begin(), pixmap->rgb.begin() + 3);
    };
    const std::vector<int> sky = corner(bed);
    EXPECT_GT(sky[2], sky[0]);
    CameraTestBed other{bars};
    // The bars move, and each of these colours has channels that are full or empty.
    for (const int channel : corner(other)) {
        EXPECT_TRUE(channel < 8 || channel > 247) << channel;
    }
}

TEST_F(DemoCamera, EveryRequestGetsAPictureOfItsOwn) {
    ASSERT_TRUE(bed.pick(demo));
    for (int i = 0; i < 8; ++i) {
        bed.request();
    }
    ASSERT_TRUE(bed.awaitOutcomes(8));
    std::set<std::string> different;
    for (const auto& file : bed.delegate.files) {
        const std::vector<std::uint8_t> rgb = pixmapOf(*file)->rgb;
        different.emplace(rgb.begin(), rgb.end());
    }
    EXPECT_EQ(different.size(), 8U);
}

TEST_F(DemoCamera, AStopEndsOutstandingRequestsInErrorsInTheirOrder) {
    ASSERT_TRUE(bed.pick(demo));
    std::vector<const RecordingDelegate*> order;
    std::array<RecordingDelegate, 50> delegates;
    for (RecordingDelegate& delegate : delegates) {
        delegate.order = &order;
        bed.output->capturePhotoWithSettings(bed.settings, delegate);
    }
    bed.session->stopRunning();
    ASSERT_TRUE(bed.dispatch.runUntil([&] { return order.size() == delegates.size(); }));
    for (std::size_t i = 0; i < delegates.size(); ++i) {
        EXPECT_EQ(order[i], &delegates[i]) << i;
        EXPECT_EQ(delegates[i].outcomes.size(), 1U) << i;
    }
    EXPECT_THAT(delegates.back().outcomes.back(), HasSubstr("stopped"));
}

TEST_F(DemoCamera, AStopAtAnyMomentOfAStillLeavesItOneOutcome) {
    ASSERT_TRUE(bed.pick(demo));
    for (int turn = 0; turn < 12; ++turn) {
        bed.request();
        // The still waits for its picture, or is decoded, encoded or delivered.
        std::this_thread::sleep_for(std::chrono::milliseconds(7 * turn));
        bed.session->stopRunning();
        ASSERT_TRUE(bed.awaitOutcomes(static_cast<std::size_t>(turn) + 1));
        bed.session->startRunning();
    }
    // A second outcome would come before this one.
    bed.request();
    ASSERT_TRUE(bed.awaitOutcomes(13));
    EXPECT_EQ(bed.delegate.outcomes.size(), 13U);
}

TEST_F(DemoCamera, NothingIsDeliveredForAnOutputThatIsGone) {
    const auto loose = bed.cameras->photoOutput();
    loose->capturePhotoWithSettings(bed.settings, bed.delegate);
    bed.request();
    bed.output.reset();
    bed.session.reset();
    bed.dispatch.wake();
    ASSERT_TRUE(bed.awaitOutcomes(1));
    EXPECT_EQ(bed.delegate.outcomes.size(), 1U);
}

TEST_F(DemoCamera, ASessionTakesOneOutputOfItsOwnKind) {
    EXPECT_FALSE(bed.session->canAddOutput(*bed.output));
    const auto second = bed.cameras->photoOutput();
    EXPECT_FALSE(bed.session->canAddOutput(*second));
    EXPECT_TRUE(bed.cameras->captureSession()->canAddOutput(*second));
}

TEST_F(DemoCamera, PickingItAgainGoesOn) {
    ASSERT_TRUE(bed.pick(demo));
    ASSERT_TRUE(bed.pick(demo));
    EXPECT_EQ(bed.session->inputs().size(), 1U);
    EXPECT_EQ(bed.still(), "");
}

TEST_F(DemoCamera, RemovingTheInputStopsTheSession) {
    ASSERT_TRUE(bed.pick(demo));
    bed.session->removeInput(*bed.session->inputs().front());
    EXPECT_FALSE(bed.session->isRunning());
}

TEST_F(DemoCamera, ManyStartsAndStopsLeaveNoFileAndNoThreadBehind) {
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(bed.pick(demo));
    }
    bed.session->stopRunning();
    const auto files = countOf(openFiles);
    const auto before = countOf(threads);
    for (int i = 0; i < 40; ++i) {
        bed.session->startRunning();
        ASSERT_TRUE(bed.session->isRunning());
        bed.session->stopRunning();
    }
    EXPECT_THAT(bed.observer.messages(), IsEmpty());
    EXPECT_LE(countOf(openFiles), files + 2);
    EXPECT_LE(countOf(threads), before + 4);
}

TEST_F(DemoCamera, CamerasMayGoWhileTheSessionRuns) {
    ASSERT_TRUE(bed.pick(demo));
    bed.request();
    const auto settings = bed.cameras->photoSettingsFromPhotoSettings(*bed.settings);
    bed.cameras.reset();
    EXPECT_FALSE(bed.session->isRunning());
    bed.output->capturePhotoWithSettings(settings, bed.delegate);
}

class Preview : public DemoCamera {
protected:
    std::shared_ptr<MediaPreviewLayer> layer =
        std::dynamic_pointer_cast<MediaPreviewLayer>(bed.cameras->layerWithSession(bed.session));
};

TEST_F(Preview, PicturesAreSmallWithTheirAspectKept) {
    std::vector<PreviewPicture> pictures;
    layer->setPictureHandler([&](PreviewPicture picture) { pictures.push_back(picture); });
    ASSERT_TRUE(bed.pick(demo));
    ASSERT_TRUE(bed.dispatch.runUntil([&] { return pictures.size() >= 3; }));
    const auto seen = std::find_if(pictures.begin(), pictures.end(),
                                   [](const auto& picture) { return picture.pixels != nullptr; });
    ASSERT_NE(seen, pictures.end());
    EXPECT_EQ(seen->width, 640);
    EXPECT_EQ(seen->height, 360);
    EXPECT_GE(seen->stride, 640U * 4U);
    // The last byte of the last row can be read.
    EXPECT_GE(seen->pixels.get()[seen->stride * 359 + 640 * 4 - 1], 0);
}

TEST_F(Preview, HandlerSetWhileRunningGetsPictures) {
    ASSERT_TRUE(bed.pick(demo));
    bool came = false;
    layer->setPictureHandler(
        [&](const PreviewPicture& picture) { came = picture.pixels != nullptr; });
    EXPECT_TRUE(bed.dispatch.runUntil([&] { return came; }));
}

TEST_F(Preview, AtMostOnePictureWaitsForASlowMainThread) {
    layer->setPictureHandler([](const PreviewPicture&) {});
    ASSERT_TRUE(bed.pick(demo));
    ASSERT_TRUE(bed.dispatch.waitForLength(1));
    // Waits for later pictures: each of these stills is one.
    for (int i = 0; i < 10; ++i) {
        bed.request();
    }
    ASSERT_TRUE(bed.dispatch.waitForLength(11));
    EXPECT_EQ(bed.dispatch.length(), 11U);
}

TEST_F(Preview, AnEmptyPictureComesWhenTheSessionStops) {
    PreviewPicture last;
    layer->setPictureHandler([&](PreviewPicture picture) { last = std::move(picture); });
    ASSERT_TRUE(bed.pick(demo));
    ASSERT_TRUE(bed.dispatch.runUntil([&] { return last.pixels != nullptr; }));
    bed.session->stopRunning();
    EXPECT_TRUE(bed.dispatch.runUntil([&] { return last.pixels == nullptr; }));
}

TEST_F(Preview, LayerKeepsWhatItIsTold) {
    layer->setFrame({{1, 2}, {3, 4}});
    layer->setBackgroundColor({0.5, 0.25, 0.125, 1.0});
    EXPECT_EQ(layer->frame(), (CGRect{{1, 2}, {3, 4}}));
    EXPECT_EQ(layer->backgroundColor(), (CGColor{0.5, 0.25, 0.125, 1.0}));
    layer->addSublayer(bed.cameras->layerWithSession(nullptr));
    EXPECT_EQ(layer->sublayers().size(), 1U);
}

} // namespace
} // namespace vistrane
