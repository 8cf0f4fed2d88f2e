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
class CaptureSession;
class MainThreadGate;

/// The capture half of the AVFoundation kit, on GStreamer: v4l2, PipeWire and libcamera cameras, as
/// far as the system has them. The methods fulfil the contract of `AVFoundation`; the file data of
/// a still carries its decoded picture (`PictureData`).
///
/// Main thread only. Calls the program through the main queue, and the observer on its own threads.
/// `dispatch` and `observer` outlive this object. The objects that it returns may outlive it; their
/// sessions are then stopped and no outcome arrives.
class Cameras {
public:
    Cameras(Dispatch& dispatch, CameraObserver& observer, CameraOptions options = {});
    ~Cameras();
    Cameras(const Cameras&) = delete;
    Cameras& operator=(const Cameras&) = delete;

    /// Prepares the first listing in the background.
    void prepare();

    /// Lists the connected cameras; waits at most `CameraOptions::loading` and `listing`. The types
    /// are ignored unless there is none, because built-in cameras cannot be recognised reliably. A
    /// query for video also finds muxed sources.
    std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discoverySessionWithDeviceTypes(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                                    AVMediaType mediaType, AVCaptureDevicePosition position);

    /// Opens the camera and waits for its first picture, at most `CameraOptions::opening`; for a
    /// camera whose three periods are longer, only until it has started. It stays open for the
    /// start of the newest session, if there is one.
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
    bool canList();

    /// Made on first use, because initialising GStreamer takes time.
    std::shared_ptr<CameraList> cameraList();

    CameraObserver& observer_;
    CameraOptions options_;
    std::shared_ptr<MainThreadGate> mainQueue_;
    std::shared_ptr<CameraList> list_;
    std::vector<std::weak_ptr<CaptureSession>> sessions_;
};

} // namespace vistrane
