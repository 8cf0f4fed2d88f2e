#include "backends/cameras/still_pictures.h"

#include <optional>
#include <utility>

#include "backends/pictures/DecodedPicture.h"

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

/// Wraps `pixels` as a buffer of contiguous RGB rows, of the size in `info`.
BufferPointer tightBuffer(const GstVideoInfo& info, ByteArray& pixels) {
    BufferPointer buffer(gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels.data(),
                                                     pixels.length(), 0, pixels.length(), nullptr,
                                                     nullptr));
    gsize offset[GST_VIDEO_MAX_PLANES] = {0};
    gint stride[GST_VIDEO_MAX_PLANES] = {3 * GST_VIDEO_INFO_WIDTH(&info)};
    gst_buffer_add_video_meta_full(buffer.get(), GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_RGB,
                                   static_cast<guint>(GST_VIDEO_INFO_WIDTH(&info)),
                                   static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&info)), 1, offset,
                                   stride);
    return buffer;
}

bool convert(MappedFrame& from, const GstVideoInfo& fromInfo, MappedFrame& to,
             const GstVideoInfo& toInfo) {
    const GstPointer<GstVideoConverter> converter(
        gst_video_converter_new(&fromInfo, &toInfo, nullptr));
    if (!converter) {
        return false;
    }
    gst_video_converter_frame(converter.get(), from.get(), to.get());
    return true;
}

} // namespace

std::shared_ptr<const PictureSource> stillPicture(GstSample* sample) {
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    const GstCaps* caps = gst_sample_get_caps(sample);
    GstVideoInfo info;
    if (buffer == nullptr || caps == nullptr || !gst_video_info_from_caps(&info, caps)) {
        return nullptr;
    }
    const auto width = static_cast<guint>(GST_VIDEO_INFO_WIDTH(&info));
    const auto height = static_cast<guint>(GST_VIDEO_INFO_HEIGHT(&info));
    GstVideoInfo rgb;
    if (!PictureLimits().allows(width, height) ||
        !gst_video_info_set_format(&rgb, GST_VIDEO_FORMAT_RGB, width, height)) {
        return nullptr;
    }
    GST_VIDEO_INFO_FPS_N(&rgb) = GST_VIDEO_INFO_FPS_N(&info);
    GST_VIDEO_INFO_FPS_D(&rgb) = GST_VIDEO_INFO_FPS_D(&info);
    GST_VIDEO_INFO_INTERLACE_MODE(&rgb) = GST_VIDEO_INFO_INTERLACE_MODE(&info);

    auto pixels = ByteArray::ofLength(std::size_t{3} * width * height);
    if (!pixels) {
        return nullptr;
    }
    {
        MappedFrame from(info, buffer, GST_MAP_READ);
        const BufferPointer target = tightBuffer(rgb, *pixels);
        MappedFrame to(rgb, target.get(), GST_MAP_WRITE);
        if (!from.isMapped() || !to.isMapped() || !convert(from, info, to, rgb)) {
            return nullptr;
        }
    }
    return std::make_shared<DecodedPicture>(PictureShape{width, height, std::nullopt, false},
                                            "in memory", std::move(*pixels));
}

} // namespace vistrane
