#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "backends/cameras/CameraObserver.h"
#include "backends/cameras/CameraOptions.h"
#include "platform/avfoundation/AVCaptureDevice.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"
#include "platform/avfoundation/AVCaptureSession.h"
#include "platform/dispatch/Dispatch.h"

namespace vistrane {

class CameraList;
class MainThreadGate;

/// The capture half of the AVFoundation kit, on GStreamer: v4l2, PipeWire and libcamera cameras,
/// as far as this system has them. The methods fulfil the contract of `AVFoundation`; the file data
/// of a still carries its picture (`PictureData`).
///
/// Main thread only. The program is called through the main queue, the observer on threads of this
/// object. `dispatch` and `observer` outlive this object. The objects that it returned may outlive
/// it: then sessions have stopped and no outcome arrives.
class Cameras {
public:
    Cameras(Dispatch& dispatch, CameraObserver& observer, CameraOptions options = {});
    ~Cameras();
    Cameras(const Cameras&) = delete;
    Cameras& operator=(const Cameras&) = delete;

    /// Prepares the first listing in the background.
    void prepare();

    /// Lists the cameras that are connected now; waits at most `CameraOptions::listing`. The types
    /// make no difference, as long as there is one: whether a camera is built in cannot be told
    /// reliably. A query for video finds muxed sources too.
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
    /// Made on first use, because starting GStreamer takes time.
    std::shared_ptr<CameraList> cameraList();

    CameraObserver& observer_;
    CameraOptions options_;
    std::shared_ptr<MainThreadGate> mainQueue_;
    std::shared_ptr<CameraList> list_;
    std::vector<std::weak_ptr<AVCaptureSession>> sessions_;
};

} // namespace vistrane
