#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "backends/cameras/CameraList.h"
#include "backends/cameras/gst_pointers.h"

namespace vistrane {

/// What a pipeline tells. Called on its threads until `stop` has returned true, possibly later
/// otherwise; each returns soon.
struct PipelineEvents {
    /// A picture came from the camera. Its time, to compare with that of a still from the same
    /// pipeline; `GST_CLOCK_TIME_NONE` if it has none.
    std::function<void(GstClockTime time)> pictureArrived;
    /// A full-size raw picture. Lent.
    std::function<void(GstSample* sample)> still;
    /// A small picture, 32 bits a pixel. Lent.
    std::function<void(GstSample* sample)> preview;
    /// No further picture will come. The reason is one line.
    std::function<void(const std::string& reason)> failed;
};

/// The GStreamer elements behind one run of one camera:
///
///     source, mode filter -> tee -> [valve, queue, JPEG decoder] -> stills
///                                -> valve, queue, [JPEG decoder], scaler -> preview
///
/// JPEG pictures are decoded for a still or the preview only; encoded streams are decoded before
/// the tee. Neither branch keeps more than a picture or two: what is not fetched is dropped.
/// One thread at a time, except for the valves.
class CapturePipeline {
public:
    /// Null, with a reason, when an element is missing. Nothing is opened yet.
    static std::shared_ptr<CapturePipeline> create(const Camera& camera, const CameraMode& mode,
                                                   PipelineEvents events, std::string& reason);
    ~CapturePipeline();
    CapturePipeline(const CapturePipeline&) = delete;
    CapturePipeline& operator=(const CapturePipeline&) = delete;

    /// Opens the camera and lets it run, in the background. False when the system grants no thread
    /// for that.
    bool start();

    /// Ends what goes on and frees the camera. False when a driver has not let go within
    /// `patience`: that goes on in the background, and `hasEnded` tells when it is over.
    bool stop(std::chrono::milliseconds patience);
    bool hasEnded() const;

    /// Any thread. While nobody wants stills of a JPEG camera, none is decoded.
    void wantStills(bool wanted);
    void wantPreview(bool wanted);

private:
    struct Elements;
    explicit CapturePipeline(std::shared_ptr<Elements> elements);
    std::shared_ptr<Elements> elements_;
};

/// Opens the camera for a moment. Why that did not work, if so.
std::optional<std::string> whyNotOpen(const Camera& camera, std::chrono::milliseconds patience);

} // namespace vistrane
