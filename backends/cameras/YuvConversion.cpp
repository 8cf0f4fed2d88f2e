#include "backends/cameras/YuvConversion.h"

#include <algorithm>
#include <cmath>

#include <gst/video/video.h>

namespace vistrane {

namespace {

constexpr int fractionBits = 16;
constexpr int grey = 128; // the level of Cb and Cr

std::int32_t fixed(double value) {
    return static_cast<std::int32_t>(std::lround(value * (1 << fractionBits)));
}

std::uint8_t level(std::int32_t value) {
    constexpr std::int32_t half = 1 << (fractionBits - 1);
    return static_cast<std::uint8_t>(std::clamp((value + half) >> fractionBits, 0, 255));
}

} // namespace

std::optional<YuvConversion> YuvConversion::of(const GstVideoColorimetry& colorimetry) {
    double kr = 0.0;
    double kb = 0.0;
    if (gst_video_color_matrix_get_Kr_Kb(colorimetry.matrix, &kr, &kb) == FALSE) {
        return std::nullopt;
    }
    gint offset[GST_VIDEO_MAX_COMPONENTS] = {};
    gint scale[GST_VIDEO_MAX_COMPONENTS] = {};
    gst_video_color_range_offsets(colorimetry.range,
                                  gst_video_format_get_info(GST_VIDEO_FORMAT_AYUV), offset, scale);
    // ITU-T H.273, the equations of E'R, E'G and E'B from E'Y, E'PB and E'PR.
    const double kg = 1.0 - kr - kb;
    const double perLuma = 255.0 / scale[0];
    const double perChroma = 255.0 / scale[1];
    YuvConversion result;
    result.black_ = offset[0];
    result.luma_ = fixed(perLuma);
    result.redOfV_ = fixed(2.0 * (1.0 - kr) * perChroma);
    result.blueOfU_ = fixed(2.0 * (1.0 - kb) * perChroma);
    result.greenOfU_ = fixed(-2.0 * (1.0 - kb) * kb / kg * perChroma);
    result.greenOfV_ = fixed(-2.0 * (1.0 - kr) * kr / kg * perChroma);
    return result;
}

YuvConversion::Pixel YuvConversion::pixel(const std::uint8_t* ayuv) const {
    const std::int32_t y = (ayuv[1] - black_) * luma_;
    const std::int32_t u = ayuv[2] - grey;
    const std::int32_t v = ayuv[3] - grey;
    return {level(y + redOfV_ * v), level(y + greenOfU_ * u + greenOfV_ * v),
            level(y + blueOfU_ * u)};
}

void YuvConversion::toRgb(const std::uint8_t* ayuv, std::size_t count, std::uint8_t* rgb) const {
    for (std::size_t i = 0; i < count; ++i) {
        const auto [red, green, blue] = pixel(ayuv + 4 * i);
        rgb[3 * i] = red;
        rgb[3 * i + 1] = green;
        rgb[3 * i + 2] = blue;
    }
}

void YuvConversion::toBgrx(const std::uint8_t* ayuv, std::size_t count, std::uint8_t* bgrx) const {
    for (std::size_t i = 0; i < count; ++i) {
        const auto [red, green, blue] = pixel(ayuv + 4 * i);
        bgrx[4 * i] = blue;
        bgrx[4 * i + 1] = green;
        bgrx[4 * i + 2] = red;
        bgrx[4 * i + 3] = 255;
    }
}

} // namespace vistrane
