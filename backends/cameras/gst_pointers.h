#pragma once

#include <memory>

#include <gst/gst.h>
#include <gst/video/video.h>

namespace vistrane {

/// Owning pointers to GStreamer's reference-counted objects.
struct GstRelease {
    void operator()(gpointer object) const { gst_object_unref(object); }
    void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
    void operator()(GstSample* sample) const { gst_sample_unref(sample); }
    void operator()(GstStructure* structure) const { gst_structure_free(structure); }
    void operator()(GstMessage* message) const { gst_message_unref(message); }
    void operator()(GError* error) const { g_error_free(error); }
    void operator()(gchar* text) const { g_free(text); }
    void operator()(GstVideoConverter* converter) const { gst_video_converter_free(converter); }
};

template <typename T>
using GstPointer = std::unique_ptr<T, GstRelease>;

/// Another reference to `object`.
template <typename T>
GstPointer<T> retained(T* object) {
    return GstPointer<T>(static_cast<T*>(gst_object_ref(object)));
}

} // namespace vistrane
