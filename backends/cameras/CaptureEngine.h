#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "backends/cameras/CameraList.h"
#include "backends/cameras/CameraObserver.h"
#include "backends/cameras/CameraOptions.h"
#include "backends/cameras/gst_pointers.h"
#include "backends/pictures/PictureSource.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The outcome of a request. Exactly one of the two is set. The picture has its PNG file
/// (`encodedAhead`), unless other requests wait or there is not enough memory.
struct StillOutcome {
    std::shared_ptr<const PictureSource> picture;
    std::optional<NSError> error;
};

struct CaptureCore;

/// Runs one camera on its own thread: opens it, detects its disconnection, reopens it when it
/// returns, and serves stills. Never uses another camera instead. Call the methods on the main
/// thread.
class CaptureEngine {
public:
    /// Called on threads of the engine; `still` also from within `requestStill` and `stop`. Both
    /// must return quickly. `still` is called once for each request, in the order of the requests.
    /// The preview sample is borrowed; null: show no picture any more.
    struct Receiver {
        std::function<void(std::uint64_t request, StillOutcome outcome)> still;
        std::function<void(GstSample* sample)> preview;
    };

    CaptureEngine(std::shared_ptr<CameraList> list, CameraObserver& observer, CameraOptions options,
                  Receiver receiver);
    /// Stops. No call of the receiver or the observer begins after this returns. Waits for a
    /// hanging driver for at most `CameraOptions::driverTimeout`.
    ~CaptureEngine();
    CaptureEngine(const CaptureEngine&) = delete;
    CaptureEngine& operator=(const CaptureEngine&) = delete;

    /// Waits for the first picture, at most `CameraOptions::opening`; for a camera whose three
    /// periods are longer, only until it has started. Returns the reason if there is none; the
    /// camera is then closed.
    std::optional<NSError> open(const Camera& camera, AVCaptureSessionPreset preset);

    /// Goes on with a camera that `open` has opened in the preset's mode. Otherwise waits for the
    /// first picture, at most `CameraOptions::driverTimeout`, and keeps trying after that.
    void start(Camera camera, AVCaptureSessionPreset preset);

    /// When this returns, every pending request has its outcome.
    void stop();

    bool isRunning() const;

    /// The outcome is delivered on a thread of the engine, or from within this call.
    void requestStill(std::uint64_t request);

    void wantPreview(bool wanted);

private:
    std::shared_ptr<CaptureCore> core_;
    std::thread thread_;
};

} // namespace vistrane
