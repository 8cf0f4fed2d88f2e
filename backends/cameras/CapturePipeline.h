#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "backends/cameras/CameraList.h"
#include "backends/cameras/gst_pointers.h"

namespace vistrane {

/// The callbacks of a pipeline, called on its threads. None is called after `stop` has returned
/// true. Each must return quickly. Samples are borrowed.
struct PipelineEvents {
    /// The camera has delivered a picture. `time` is comparable with that of a still from the same
    /// pipeline; `GST_CLOCK_TIME_NONE` if unknown.
    std::function<void(GstClockTime time)> pictureArrived;
    /// A raw picture at full size.
    std::function<void(GstSample* sample)> still;
    /// A small picture, 32 bits per pixel.
    std::function<void(GstSample* sample)> preview;
    /// No more pictures will come. The reason is one line.
    std::function<void(const std::string& reason)> failed;
};

/// The GStreamer elements for one run of one camera:
///
///     source, mode filter -> tee -> [valve, queue, JPEG decoder] -> stills
///                                -> valve, queue, [JPEG decoder], scaler -> preview
///
/// JPEG pictures are decoded only for a still or the preview. Encoded streams are decoded before
/// the tee. Each branch keeps at most two pictures and drops older ones. One thread at a time,
/// except for the valves.
class CapturePipeline {
public:
    /// Returns null, and sets the reason, if an element is missing. Does not open the camera.
    static std::shared_ptr<CapturePipeline> create(const Camera& camera, const CameraMode& mode,
                                                   PipelineEvents events, std::string& reason);
    ~CapturePipeline();
    CapturePipeline(const CapturePipeline&) = delete;
    CapturePipeline& operator=(const CapturePipeline&) = delete;

    /// Opens and runs the camera in the background. Returns false if no thread can be started.
    bool start();

    /// Stops and closes the camera. Returns false if the driver takes longer than `timeout`;
    /// stopping then continues in the background until `hasEnded`.
    bool stop(std::chrono::milliseconds timeout);
    bool hasEnded() const;

    /// Open and close the valves. Any thread. A closed valve also saves the decoding of JPEG
    /// pictures.
    void wantStills(bool wanted);
    void wantPreview(bool wanted);

private:
    struct Elements;
    explicit CapturePipeline(std::shared_ptr<Elements> elements);
    std::shared_ptr<Elements> elements_;
};

} // namespace vistrane
