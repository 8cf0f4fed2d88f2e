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

TEST_F(CameraModes, PhotoIsTheLargestSizeAndMovingPicturesAreTheLargestAtASmoothRate) {
    constexpr char rangePhoto[] =
        "video/x-raw, format=(string){ NV12, I420 }, width=(int)1920, height=(int)1080, "
        "framerate=(fraction)30/1";
    const struct {
        const char* capabilities;
        const char* photo;
        const char* moving;
    } cases[] = {
        {webcam, "image/jpeg, width=(int)2592, height=(int)1944, framerate=(fraction)15/1",
         "image/jpeg, width=(int)1920, height=(int)1080, framerate=(fraction)30/1"},
        // Without a smooth rate the smoothest counts.
        {"video/x-raw,format=YUY2,width=1280,height=720,framerate=5/1;"
         "video/x-raw,format=YUY2,width=320,height=240,framerate=10/1",
         "video/x-raw, format=(string)YUY2, width=(int)1280, height=(int)720, "
         "framerate=(fraction)5/1",
         "video/x-raw, format=(string)YUY2, width=(int)320, height=(int)240, "
         "framerate=(fraction)10/1"},
        // Of the same size and rate, raw pictures come first.
        {"image/jpeg,width=640,height=480,framerate=30/1;"
         "video/x-raw,format=YUY2,width=640,height=480,framerate=30/1",
         "video/x-raw, format=(string)YUY2, width=(int)640, height=(int)480, "
         "framerate=(fraction)30/1",
         "video/x-raw, format=(string)YUY2, width=(int)640, height=(int)480, "
         "framerate=(fraction)30/1"},
        // A range gives its largest size and the usual rate, any size a usual one.
        {"video/x-raw,format=(string){NV12,I420},width=[32,1920,2],height=[32,1080,2],"
         "framerate=[1/1,120/1]",
         rangePhoto, rangePhoto},
        {"video/x-raw,format=(string){NV12,I420},width=[1,2147483647],height=[1,2147483647],"
         "framerate=[0/1,2147483647/1]",
         rangePhoto, rangePhoto},
        // Silence about the modes counts as raw pictures.
        {"ANY", "video/x-raw", "video/x-raw"},
        {"video/x-h264,width=1920,height=1080,framerate=30/1", "none",
         "video/x-h264, width=(int)1920, height=(int)1080, framerate=(fraction)30/1"},
    };
    for (const auto& each : cases) {
        const auto modes = of(each.capabilities);
        EXPECT_EQ(capsOf(photoMode(modes)), each.photo) << each.capabilities;
        EXPECT_EQ(capsOf(movingPictureMode(modes)), each.moving) << each.capabilities;
    }
}

TEST_F(CameraModes, AModeKnowsItsKindSizeAndRate) {
    const auto modes = of(webcam);
    const CameraMode* mode = photoMode(modes);
    ASSERT_NE(mode, nullptr);
    EXPECT_EQ(mode->kind, CameraMode::Kind::jpeg);
    EXPECT_EQ(mode->width, 2592);
    EXPECT_EQ(mode->height, 1944);
    EXPECT_DOUBLE_EQ(mode->rate, 15.0);
}

TEST_F(CameraModes, CamcordersAreMuxedOnlyAndFoundByAQueryForVideoToo) {
    const auto expectTypes = [](const char* capabilities, bool isVideo, bool isMuxed) {
        const auto modes = of(capabilities);
        EXPECT_EQ(offersMediaType(modes, AVMediaTypeVideo), isVideo) << capabilities;
        EXPECT_EQ(offersMediaType(modes, AVMediaTypeMuxed), isMuxed) << capabilities;
        EXPECT_TRUE(isFoundBy(AVMediaTypeVideo, modes)) << capabilities;
        EXPECT_EQ(isFoundBy(AVMediaTypeMuxed, modes), isMuxed) << capabilities;
        EXPECT_FALSE(isFoundBy(AVMediaTypeAudio, modes)) << capabilities;
    };
    for (const char* capabilities : {webcam, "ANY", "video/x-h264,width=1920,height=1080"}) {
        expectTypes(capabilities, true, false);
    }
    for (const char* capabilities : {"video/mpegts", "video/x-dv,systemstream=true",
                                     "video/mpeg,systemstream=true,mpegversion=2"}) {
        expectTypes(capabilities, false, true);
        EXPECT_EQ(photoMode(of(capabilities)), nullptr) << capabilities;
    }
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
    for (const char* caps : {"video/x-h264", "video/mpegts"}) {
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

} // namespace
} // namespace vistrane
