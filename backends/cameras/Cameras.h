#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "backends/cameras/CameraOptions.h"
#include "backends/posix/MediaObserver.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/dispatch/Dispatch.h"

namespace vistrane {

class CameraList;
class MainThreadGate;

/// The capture half of the AVFoundation kit on GStreamer: v4l2, PipeWire and libcamera cameras,
/// whichever of them this system has. The methods are those of `AVFoundation` and keep its
/// contract; a still's file data is a binary PPM file.
///
/// Main thread only. Everything towards the program arrives through the main queue; the observer
/// is told from a thread of this object. `dispatch` and `observer` outlive this object; what it
/// handed out may outlive it and is dead then: sessions have stopped, no outcome arrives.
class Cameras {
public:
    Cameras(Dispatch& dispatch, MediaObserver& observer, CameraOptions options = {});
    ~Cameras();
    Cameras(const Cameras&) = delete;
    Cameras& operator=(const Cameras&) = delete;

    /// Prepares the first listing without holding anything up.
    void prepare();

    /// Lists what is there now; waits at most `CameraOptions::listing`. The types make no
    /// difference (what is built in cannot be told reliably), as long as there is one. A query
    /// for video finds muxed sources as well.
    std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discoverySessionWithDeviceTypes(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                                    AVMediaType mediaType, AVCaptureDevicePosition position);

    AVCaptureDeviceInputResult
    deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device);

    std::shared_ptr<AVCaptureSession> captureSession();
    std::shared_ptr<AVCapturePhotoOutput> photoOutput();
    std::shared_ptr<AVCapturePhotoSettings> photoSettings();
    std::shared_ptr<AVCapturePhotoSettings>
    photoSettingsFromPhotoSettings(const AVCapturePhotoSettings& settings);

    /// Always a `MediaPreviewLayer`.
    std::shared_ptr<AVCaptureVideoPreviewLayer>
    layerWithSession(const std::shared_ptr<AVCaptureSession>& session);

private:
    /// Made with the first use: starting GStreamer takes a moment.
    std::shared_ptr<CameraList> cameraList();

    MediaObserver& observer_;
    CameraOptions options_;
    std::shared_ptr<MainThreadGate> mainQueue_;
    std::shared_ptr<CameraList> list_;
    std::vector<std::weak_ptr<AVCaptureSession>> sessions_;
};

} // namespace vistrane
