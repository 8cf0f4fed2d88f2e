#include "backends/cameras/camera_modes.h"

#include <memory>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "backends/cameras/CameraList.h"
#include "backends/cameras/CaptureSession.h"

namespace vistrane {
namespace {

class CameraModes : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(startGStreamer()); }

    static std::vector<CameraMode> of(const char* capabilities) {
        const GstPointer<GstCaps> caps(gst_caps_from_string(capabilities));
        return modesOf(caps.get());
    }

    static std::string capsOf(const CameraMode* mode) {
        if (mode == nullptr) {
            return "none";
        }
        const GstPointer<gchar> text(gst_caps_to_string(mode->caps.get()));
        return text.get();
    }
};

constexpr char webcam[] =
    "video/x-raw,format=YUY2,width=2592,height=1944,framerate=2/1;"
    "video/x-raw,format=YUY2,width=640,height=480,framerate={(fraction)30/1,(fraction)15/1};"
    "image/jpeg,width=2592,height=1944,framerate=15/1;"
    "image/jpeg,width=1920,height=1080,framerate=30/1";

TEST_F(CameraModes, PhotoIsTheLargestSizeAtItsBetterRate) {
    const auto modes = of(webcam);
    const CameraMode* mode = photoMode(modes);
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->kind, CameraMode::Kind::jpeg);
    EXPECT_EQ(mode->width, 2592);
    EXPECT_EQ(mode->height, 1944);
    EXPECT_DOUBLE_EQ(mode->rate, 15.0);
}

TEST_F(CameraModes, MovingPicturesAreTheLargestAtASmoothRate) {
    const auto modes = of(webcam);
    const CameraMode* mode = movingPictureMode(modes);
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->width, 1920);
    EXPECT_EQ(capsOf(mode), "image/jpeg, width=(int)1920, height=(int)1080, "
                            "framerate=(fraction)30/1");
}

TEST_F(CameraModes, WithoutASmoothRateTheSmoothestCounts) {
    const auto modes = of("video/x-raw,format=YUY2,width=1280,height=720,framerate=5/1;"
                          "video/x-raw,format=YUY2,width=320,height=240,framerate=10/1");
    ASSERT_NE(movingPictureMode(modes), nullptr);
    EXPECT_EQ(movingPictureMode(modes)->width, 320);
}

TEST_F(CameraModes, RawBeatsJpegOfTheSameSizeAndRate) {
    const auto modes = of("image/jpeg,width=640,height=480,framerate=30/1;"
                          "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1");
    EXPECT_EQ(photoMode(modes)->kind, CameraMode::Kind::raw);
}

TEST_F(CameraModes, RangesGiveTheLargestSizeAndTheUsualRate) {
    const auto modes = of("video/x-raw,format=(string){NV12,I420},width=[32,1920,2],"
                          "height=[32,1080,2],framerate=[1/1,120/1]");
    EXPECT_EQ(capsOf(photoMode(modes)),
              "video/x-raw, format=(string){ NV12, I420 }, width=(int)1920, height=(int)1080, "
              "framerate=(fraction)30/1");
}

TEST_F(CameraModes, ASourceOfAnySizeIsAskedForAUsualOne) {
    const auto modes = of("video/x-raw,format=I420,width=[1,2147483647],height=[1,2147483647],"
                          "framerate=[0/1,2147483647/1]");
    EXPECT_EQ(photoMode(modes)->width, 1920);
    EXPECT_EQ(photoMode(modes)->height, 1080);
}

TEST_F(CameraModes, AnEncodedStreamIsVideoWithoutPhotos) {
    const auto modes = of("video/x-h264,width=1920,height=1080,framerate=30/1");
    EXPECT_EQ(photoMode(modes), nullptr);
    EXPECT_NE(movingPictureMode(modes), nullptr);
    EXPECT_TRUE(offersMediaType(modes, AVMediaTypeVideo));
    EXPECT_FALSE(offersMediaType(modes, AVMediaTypeMuxed));
}

TEST_F(CameraModes, ACamcorderIsMuxedOnly) {
    for (const char* caps : {"video/mpegts", "video/x-dv,systemstream=true",
                             "video/mpeg,systemstream=true,mpegversion=2"}) {
        const auto modes = of(caps);
        EXPECT_TRUE(offersMediaType(modes, AVMediaTypeMuxed)) << caps;
        EXPECT_FALSE(offersMediaType(modes, AVMediaTypeVideo)) << caps;
        EXPECT_EQ(photoMode(modes), nullptr) << caps;
    }
}

TEST_F(CameraModes, AQueryForVideoFindsCamcordersToo) {
    const auto camcorder = of("video/mpegts");
    EXPECT_TRUE(isFoundBy(AVMediaTypeVideo, camcorder));
    EXPECT_TRUE(isFoundBy(AVMediaTypeMuxed, camcorder));
    EXPECT_FALSE(isFoundBy(AVMediaTypeAudio, camcorder));
    const auto camera = of(webcam);
    EXPECT_TRUE(isFoundBy(AVMediaTypeVideo, camera));
    EXPECT_FALSE(isFoundBy(AVMediaTypeMuxed, camera));
    EXPECT_FALSE(isFoundBy(AVMediaTypeAudio, camera));
    EXPECT_FALSE(isFoundBy(AVMediaTypeVideo, {}));
}

class CameraDevices : public CameraModes {
protected:
    static CameraDevice device(const char* capabilities) {
        Camera camera;
        camera.facts.name = "Camera";
        camera.modes = std::make_shared<const std::vector<CameraMode>>(of(capabilities));
        return CameraDevice(std::move(camera));
    }
};

TEST_F(CameraDevices, WithAnEncodedStreamOnlyThereAreNoPhotos) {
    for (const char* caps : {"video/x-h264,width=1920,height=1080,framerate=30/1", "video/mpegts",
                             "video/x-dv,systemstream=true"}) {
        const CameraDevice camera = device(caps);
        EXPECT_FALSE(camera.supportsAVCaptureSessionPreset(AVCaptureSessionPresetPhoto)) << caps;
        EXPECT_TRUE(camera.supportsAVCaptureSessionPreset(AVCaptureSessionPresetHigh)) << caps;
    }
    EXPECT_TRUE(device("video/x-h264").hasMediaType(AVMediaTypeVideo));
    EXPECT_FALSE(device("video/mpegts").hasMediaType(AVMediaTypeVideo));
    EXPECT_TRUE(device("video/mpegts").hasMediaType(AVMediaTypeMuxed));
}

TEST_F(CameraModes, NothingDecodableIsNoMode) {
    EXPECT_TRUE(of("video/x-bayer,format=bggr,width=640,height=480").empty());
    EXPECT_TRUE(of("video/x-raw(memory:DMABuf),format=NV12,width=640,height=480").empty());
}

TEST_F(CameraModes, SilenceAboutTheModesCountsAsRawPictures) {
    const auto modes = of("ANY");
    ASSERT_NE(photoMode(modes), nullptr);
    EXPECT_EQ(capsOf(photoMode(modes)), "video/x-raw");
    EXPECT_TRUE(offersMediaType(modes, AVMediaTypeVideo));
}

} // namespace
} // namespace vistrane
