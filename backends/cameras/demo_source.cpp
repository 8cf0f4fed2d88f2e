#include "backends/cameras/demo_source.h"

#include <atomic>
#include <memory>
#include <new>

#include "backends/cameras/DemoScene.h"
#include "backends/cameras/gst_pointers.h"

namespace vistrane {

namespace {

/// Paints the scene into the pictures of a source. On the source's thread.
struct Painter {
    std::unique_ptr<const DemoScene> scene;
    GstVideoInfo format;
};

/// ThreadSanitizer cannot see how GStreamer synchronises passing the painter to its thread, and
/// freeing it after that thread. This counter makes it visible.
std::atomic<unsigned> handovers{0};

void paint(Painter& painter, GstBuffer* buffer) {
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &painter.format, buffer, GST_MAP_WRITE)) {
        return;
    }
    DemoScene::Planes planes{};
    for (unsigned plane = 0; plane < planes.rows.size(); ++plane) {
        planes.rows[plane] = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane));
        planes.strides[plane] = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane);
    }
    const GstClockTime time = GST_BUFFER_PTS(buffer);
    painter.scene->draw(GST_CLOCK_TIME_IS_VALID(time)
                            ? static_cast<double>(time) / static_cast<double>(GST_SECOND)
                            : 0.0,
                        planes);
    gst_video_frame_unmap(&frame);
}

GstPadProbeReturn onPicture(GstPad* pad, GstPadProbeInfo* info, gpointer data) {
    static_cast<void>(handovers.load(std::memory_order_acquire));
    auto& painter = *static_cast<Painter*>(data);
    if (!painter.scene) {
        const GstPointer<GstCaps> caps(gst_pad_get_current_caps(pad));
        if (!caps || !gst_video_info_from_caps(&painter.format, caps.get()) ||
            GST_VIDEO_INFO_FORMAT(&painter.format) != GST_VIDEO_FORMAT_I420) {
            return GST_PAD_PROBE_OK;
        }
        try {
            painter.scene = std::make_unique<const DemoScene>(
                GST_VIDEO_INFO_WIDTH(&painter.format), GST_VIDEO_INFO_HEIGHT(&painter.format));
        } catch (const std::bad_alloc&) {
            return GST_PAD_PROBE_OK; // black until there is memory
        }
    }
    GstBuffer* const buffer = gst_buffer_make_writable(GST_PAD_PROBE_INFO_BUFFER(info));
    GST_PAD_PROBE_INFO_DATA(info) = buffer;
    paint(painter, buffer);
    handovers.fetch_add(1, std::memory_order_release);
    return GST_PAD_PROBE_OK;
}

} // namespace

GstElement* demoSource(bool showsBars) {
    GstElement* const element = gst_element_factory_make("videotestsrc", nullptr);
    if (element == nullptr) {
        return nullptr;
    }
    g_object_set(element, "is-live", TRUE, nullptr);
    if (showsBars) {
        // Moving, so that successive stills differ.
        gst_util_set_object_arg(G_OBJECT(element), "pattern", "smpte");
        g_object_set(element, "horizontal-speed", 4, nullptr);
        return element;
    }
    gst_util_set_object_arg(G_OBJECT(element), "pattern", "black");
    const GstPointer<GstPad> pad(gst_element_get_static_pad(element, "src"));
    auto* const painter = new Painter{};
    handovers.fetch_add(1, std::memory_order_release);
    gst_pad_add_probe(pad.get(), GST_PAD_PROBE_TYPE_BUFFER, onPicture, painter, [](gpointer made) {
        static_cast<void>(handovers.load(std::memory_order_acquire));
        delete static_cast<Painter*>(made);
    });
    return element;
}

} // namespace vistrane
