#include "backends/cameras/still_pictures.h"

#include <cstring>
#include <new>
#include <string>

namespace vistrane {

namespace {

/// A picture's memory, mapped for as long as this lives.
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

/// A view of `pixels` as a buffer that `info` describes: rows without gaps.
BufferPointer tightBuffer(const GstVideoInfo& info, std::uint8_t* pixels, std::size_t length) {
    BufferPointer buffer(gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), pixels, length,
                                                     0, length, nullptr, nullptr));
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

std::optional<std::vector<std::uint8_t>> portablePixmap(GstSample* sample) {
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    const GstCaps* caps = gst_sample_get_caps(sample);
    GstVideoInfo info;
    if (buffer == nullptr || caps == nullptr || !gst_video_info_from_caps(&info, caps)) {
        return std::nullopt;
    }
    const int width = GST_VIDEO_INFO_WIDTH(&info);
    const int height = GST_VIDEO_INFO_HEIGHT(&info);
    GstVideoInfo rgb;
    if (!gst_video_info_set_format(&rgb, GST_VIDEO_FORMAT_RGB, static_cast<guint>(width),
                                   static_cast<guint>(height))) {
        return std::nullopt;
    }
    GST_VIDEO_INFO_FPS_N(&rgb) = GST_VIDEO_INFO_FPS_N(&info);
    GST_VIDEO_INFO_FPS_D(&rgb) = GST_VIDEO_INFO_FPS_D(&info);
    GST_VIDEO_INFO_INTERLACE_MODE(&rgb) = GST_VIDEO_INFO_INTERLACE_MODE(&info);

    const std::string header =
        "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
    const std::size_t pixels =
        std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<std::uint8_t> file;
    try {
        file.resize(header.size() + pixels);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
    std::memcpy(file.data(), header.data(), header.size());

    MappedFrame from(info, buffer, GST_MAP_READ);
    const BufferPointer target = tightBuffer(rgb, file.data() + header.size(), pixels);
    MappedFrame to(rgb, target.get(), GST_MAP_WRITE);
    if (!from.isMapped() || !to.isMapped() || !convert(from, info, to, rgb)) {
        return std::nullopt;
    }
    return file;
}

} // namespace vistrane
