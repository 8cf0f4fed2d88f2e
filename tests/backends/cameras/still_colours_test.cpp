#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include <gst/video/video.h>
#include <gtest/gtest.h>

#include "backends/cameras/YuvConversion.h"
#include "backends/cameras/still_pictures.h"

namespace vistrane {
namespace {

using Levels = std::array<int, 3>;

struct Colorimetry {
    /// As in capabilities.
    const char* name;
    double kr;
    double kb;
    bool isLimited;
};

constexpr Colorimetry colorimetries[] = {
    {"bt601", 0.299, 0.114, true},
    {"1:4:0:0", 0.299, 0.114, false}, // of JPEG
    {"bt709", 0.2126, 0.0722, true},
    {"1:3:5:1", 0.2126, 0.0722, false},
};

/// ITU-T H.273, in floating point.
Levels exactRgb(const Colorimetry& c, const Levels& yuv) {
    const double y = c.isLimited ? (yuv[0] - 16) / 219.0 : yuv[0] / 255.0;
    const double scale = c.isLimited ? 224.0 : 255.0;
    const double u = (yuv[1] - 128) / scale;
    const double v = (yuv[2] - 128) / scale;
    const double red = y + 2 * (1 - c.kr) * v;
    const double blue = y + 2 * (1 - c.kb) * u;
    const double green = (y - c.kr * red - c.kb * blue) / (1 - c.kr - c.kb);
    const auto level = [](double value) {
        return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
    };
    return {level(red), level(green), level(blue)};
}

GstVideoInfo infoOf(const char* format, const char* colorimetry) {
    GstVideoInfo info;
    const GstPointer<GstCaps> caps(
        gst_caps_from_string((std::string("video/x-raw,width=8,height=4,framerate=1/1,format=") +
                              format + ",colorimetry=" + colorimetry)
                                 .c_str()));
    EXPECT_TRUE(gst_video_info_from_caps(&info, caps.get()));
    return info;
}

/// Each pixel has these levels.
GstPointer<GstSample> flatSample(const char* format, const char* colorimetry, const Levels& yuv) {
    GstVideoInfo info = infoOf(format, colorimetry);
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
    GstVideoFrame frame;
    EXPECT_TRUE(gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE));
    for (guint component = 0; component < GST_VIDEO_FRAME_N_COMPONENTS(&frame); ++component) {
        for (int y = 0; y < GST_VIDEO_FRAME_COMP_HEIGHT(&frame, component); ++y) {
            for (int x = 0; x < GST_VIDEO_FRAME_COMP_WIDTH(&frame, component); ++x) {
                auto* const first =
                    static_cast<std::uint8_t*>(GST_VIDEO_FRAME_COMP_DATA(&frame, component));
                first[y * GST_VIDEO_FRAME_COMP_STRIDE(&frame, component) +
                      x * GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, component)] =
                    static_cast<std::uint8_t>(component < yuv.size() ? yuv[component] : 255);
            }
        }
    }
    gst_video_frame_unmap(&frame);
    const GstPointer<GstCaps> caps(gst_video_info_to_caps(&info));
    GstPointer<GstSample> sample(gst_sample_new(buffer, caps.get(), nullptr, nullptr));
    gst_buffer_unref(buffer);
    return sample;
}

void expectNear(const std::uint8_t* rgb, const Levels& expected, int tolerance,
                const std::string& what) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(rgb[i], expected[i], tolerance) << what << ", component " << i;
    }
}

class StillColours : public testing::Test {
protected:
    static void SetUpTestSuite() { gst_init(nullptr, nullptr); }
};

TEST_F(StillColours, TheConversionGivesTheNearestLevel) {
    for (const Colorimetry& colorimetry : colorimetries) {
        const auto conversion = YuvConversion::of(infoOf("AYUV", colorimetry.name).colorimetry);
        ASSERT_TRUE(conversion);
        for (int y = 0; y < 256; y += 5) {
            for (int u = 0; u < 256; u += 17) {
                for (int v = 0; v < 256; v += 15) {
                    const std::uint8_t ayuv[] = {255, static_cast<std::uint8_t>(y),
                                                 static_cast<std::uint8_t>(u),
                                                 static_cast<std::uint8_t>(v)};
                    const Levels expected = exactRgb(colorimetry, {y, u, v});
                    std::uint8_t rgb[3];
                    conversion->toRgb(ayuv, 1, rgb);
                    // Half a level is rounded either way.
                    expectNear(rgb, expected, 1, colorimetry.name);
                    std::uint8_t bgrx[4];
                    conversion->toBgrx(ayuv, 1, bgrx);
                    EXPECT_TRUE(bgrx[0] == rgb[2] && bgrx[1] == rgb[1] && bgrx[2] == rgb[0]);
                }
            }
        }
    }
}

TEST_F(StillColours, AStillHasTheCamerasColorimetry) {
    const Levels samples[] = {{235, 128, 128}, {16, 128, 128}, {255, 128, 128}, {81, 90, 240},
                              {145, 54, 34},   {41, 240, 110}, {126, 128, 128}, {180, 100, 150}};
    for (const Colorimetry& colorimetry : colorimetries) {
        for (const char* format : {"I420", "NV12", "YUY2", "UYVY", "Y42B", "Y444"}) {
            for (const Levels& yuv : samples) {
                const auto still = stillPicture(flatSample(format, colorimetry.name, yuv).get());
                ASSERT_TRUE(still) << format;
                std::vector<std::uint8_t> rgb(std::size_t{8} * 4 * 3);
                ASSERT_FALSE(still->readPixels(PixelForm::RGB, rgb.data(), 24));
                expectNear(rgb.data(), exactRgb(colorimetry, yuv), 1,
                           std::string(format) + " " + colorimetry.name);
            }
        }
    }
}

TEST_F(StillColours, RgbCamerasAreTakenAsTheyAre) {
    const Levels colour = {200, 100, 50};
    for (const char* format : {"RGB", "BGRx", "RGBA"}) {
        const auto still = stillPicture(flatSample(format, "sRGB", colour).get());
        ASSERT_TRUE(still) << format;
        std::vector<std::uint8_t> rgb(std::size_t{8} * 4 * 3);
        ASSERT_FALSE(still->readPixels(PixelForm::RGB, rgb.data(), 24));
        expectNear(rgb.data(), colour, 0, format);
    }
}

} // namespace
} // namespace vistrane
