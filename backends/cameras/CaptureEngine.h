#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "backends/cameras/CameraList.h"
#include "backends/cameras/CameraOptions.h"
#include "backends/cameras/gst_pointers.h"
#include "backends/posix/MediaObserver.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// What came of a request: a PPM file, or why there is none.
struct StillOutcome {
    std::vector<std::uint8_t> file;
    std::optional<NSError> error;
};

/// Keeps one camera running on a thread of its own: opens it, notices when it is gone, gets it
/// back, and serves stills from it. It never takes another camera in its place.
///
/// The methods are for the main thread.
class CaptureEngine {
public:
    /// `still` and `preview` are called on threads of the engine, one call at a time for each
    /// request respectively picture, and return soon; `still` with an outcome for each request, in
    /// the order of the requests. A preview sample is lent; a null one says that the picture is to
    /// be taken off the screen.
    struct Receiver {
        std::function<void(std::uint64_t request, StillOutcome outcome)> still;
        std::function<void(GstSample* sample)> preview;
    };

    CaptureEngine(std::shared_ptr<CameraList> list, MediaObserver& observer, CameraOptions options,
                  Receiver receiver);
    /// Stops; no call of the receiver or the observer begins after this. A driver that hangs does
    /// not hold this up for longer than `CameraOptions::patience`.
    ~CaptureEngine();
    CaptureEngine(const CaptureEngine&) = delete;
    CaptureEngine& operator=(const CaptureEngine&) = delete;

    /// Waits for the first picture, at most `CameraOptions::patience`, and goes on trying after
    /// that.
    void start(Camera camera, AVCaptureSessionPreset preset);

    /// Every outstanding request has its outcome when this returns.
    void stop();

    bool isRunning() const;

    /// The outcome comes from a thread of the engine, or from within this call.
    void requestStill(std::uint64_t request);

    void wantPreview(bool wanted);

private:
    struct Core;
    std::shared_ptr<Core> core_;
    std::thread thread_;
};

} // namespace vistrane
