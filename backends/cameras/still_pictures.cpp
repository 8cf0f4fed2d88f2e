#include "backends/cameras/still_pictures.h"

#include <optional>
#include <utility>

#include "backends/cameras/YuvConversion.h"

namespace vistrane {

namespace {

/// Maps a picture's memory while it exists.
class MappedFrame {
public:
    MappedFrame(const GstVideoInfo& info, GstBuffer* buffer, GstMapFlags flags)
        : isMapped_(gst_video_frame_map(&frame_, &info, buffer, flags) != FALSE) {}
    ~MappedFrame() {
        if (isMapped_) {
            gst_video_frame_unmap(&frame_);
        }
    }
    MappedFrame(const MappedFrame&) = delete;
    MappedFrame& operator=(const MappedFrame&) = delete;

    bool isMapped() const { return isMapped_; }
    GstVideoFrame* get() { return &frame_; }

private:
    GstVideoFrame frame_{};
    bool isMapped_;
};

struct BufferRelease {
    void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using BufferPointer = std::unique_ptr<GstBuffer, BufferRelease>;

/// A view of `pixels` as a buffer of rows without gaps, of the form, size and colorimetry in
/// `info`.
BufferPointer tightBuffer(const GstVideoInfo& info, ByteArray& pixels) {
    BufferPointer buffer(gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels.data(),
                                                     pixels.length(), 0, pixels.length(), nullptr,
                                                     nullptr));
    const auto pixelBytes = static_cast<gint>(GST_VIDEO_INFO_COMP_PSTRIDE(&info, 0));
    gsize offset[GST_VIDEO_MAX_PLANES] = {0};
    gint stride[GST_VIDEO_MAX_PLANES] = {pixelBytes * GST_VIDEO_INFO_WIDTH(&info)};
    gst_buffer_add_video_meta_full(
        buffer.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_INFO_FORMAT(&info),
        static_cast<guint>(GST_VIDEO_INFO_WIDTH(&info)),
        static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&info)), 1, offset, stride);
    return buffer;
}

/// The size and rate of `info` with another pixel form.
std::optional<GstVideoInfo> infoWithForm(const GstVideoInfo& info, GstVideoFormat form) {
    GstVideoInfo result;
    if (!gst_video_info_set_format(&result, form, static_cast<guint>(GST_VIDEO_INFO_WIDTH(&info)),
                                   static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&info)))) {
        return std::nullopt;
    }
    GST_VIDEO_INFO_FPS_N(&result) = GST_VIDEO_INFO_FPS_N(&info);
    GST_VIDEO_INFO_FPS_D(&result) = GST_VIDEO_INFO_FPS_D(&info);
    GST_VIDEO_INFO_INTERLACE_MODE(&result) = GST_VIDEO_INFO_INTERLACE_MODE(&info);
    return result;
}

/// The picture in buffer `buffer`, as rows without gaps of the form in `toInfo`.
std::optional<ByteArray> converted(const GstVideoInfo& info, GstBuffer* buffer,
                                   const GstVideoInfo& toInfo) {
    auto pixels =
        ByteArray::ofLength(static_cast<std::size_t>(GST_VIDEO_INFO_COMP_PSTRIDE(&toInfo, 0)) *
                            static_cast<std::size_t>(GST_VIDEO_INFO_WIDTH(&info)) *
                            static_cast<std::size_t>(GST_VIDEO_INFO_HEIGHT(&info)));
    if (!pixels) {
        return std::nullopt;
    }
    MappedFrame from(info, buffer, GST_MAP_READ);
    const BufferPointer target = tightBuffer(toInfo, *pixels);
    MappedFrame to(toInfo, target.get(), GST_MAP_WRITE);
    if (!from.isMapped() || !to.isMapped()) {
        return std::nullopt;
    }
    const GstPointer<GstVideoConverter> converter(gst_video_converter_new(&info, &toInfo, nullptr));
    if (!converter) {
        return std::nullopt;
    }
    gst_video_converter_frame(converter.get(), from.get(), to.get());
    return pixels;
}

/// GStreamer brings the picture to one form of Y'CbCr, with its colorimetry.
std::optional<ByteArray> rgbOfYuv(const GstVideoInfo& info, GstBuffer* buffer,
                                  const YuvConversion& conversion) {
    auto form = infoWithForm(info, GST_VIDEO_FORMAT_AYUV);
    if (!form) {
        return std::nullopt;
    }
    form->colorimetry = info.colorimetry;
    const auto ayuv = converted(info, buffer, *form);
    auto rgb = ayuv ? ByteArray::ofLength(ayuv->length() / 4 * 3) : std::nullopt;
    if (rgb) {
        conversion.toRgb(ayuv->data(), ayuv->length() / 4, rgb->data());
    }
    return rgb;
}

std::optional<ByteArray> rgbOf(const GstVideoInfo& info, GstBuffer* buffer) {
    const bool isYuv = GST_VIDEO_INFO_IS_YUV(&info) || GST_VIDEO_INFO_IS_GRAY(&info);
    const auto conversion =
        isYuv ? YuvConversion::of(info.colorimetry) : std::optional<YuvConversion>();
    if (conversion) {
        return rgbOfYuv(info, buffer, *conversion);
    }
    const auto form = infoWithForm(info, GST_VIDEO_FORMAT_RGB);
    return form ? converted(info, buffer, *form) : std::nullopt;
}

} // namespace

std::shared_ptr<DecodedPicture> stillPicture(GstSample* sample) {
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    const GstCaps* caps = gst_sample_get_caps(sample);
    GstVideoInfo info;
    if (buffer == nullptr || caps == nullptr || !gst_video_info_from_caps(&info, caps)) {
        return nullptr;
    }
    const auto width = static_cast<guint>(GST_VIDEO_INFO_WIDTH(&info));
    const auto height = static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&info));
    auto pixels =
        PictureLimits().allows(width, height) ? rgbOf(info, buffer) : std::optional<ByteArray>();
    if (!pixels) {
        return nullptr;
    }
    return std::make_shared<DecodedPicture>(PictureShape{width, height, std::nullopt, false},
                                            "in memory", std::move(*pixels));
}

} // namespace vistrane
