#include "backends/cameras/Cameras.h"

#include <algorithm>
#include <utility>

#include "backends/cameras/CaptureSession.h"
#include "backends/cameras/camera_errors.h"
#include "backends/posix/Descriptor.h"

namespace vistrane {

namespace {

class DiscoverySession final : public AVCaptureDeviceDiscoverySession {
public:
    explicit DiscoverySession(std::vector<std::shared_ptr<AVCaptureDevice>> devices)
        : devices_(std::move(devices)) {}
    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return devices_; }

private:
    std::vector<std::shared_ptr<AVCaptureDevice>> devices_;
};

} // namespace

Cameras::Cameras(Dispatch& dispatch, CameraObserver& observer, CameraOptions options)
    : observer_(observer), options_(options),
      mainQueue_(std::make_shared<MainThreadGate>(dispatch)) {}

Cameras::~Cameras() {
    mainQueue_->close();
    for (const auto& weak : sessions_) {
        if (const auto session = weak.lock()) {
            session->stopRunning();
        }
    }
}

void Cameras::prepare() {
    if (options_.findsCameras) {
        cameraList()->prepare();
    }
}

std::shared_ptr<AVCaptureDeviceDiscoverySession> Cameras::discoverySessionWithDeviceTypes(
    const std::vector<std::optional<AVCaptureDeviceType>>& types, AVMediaType mediaType,
    AVCaptureDevicePosition) {
    std::vector<std::shared_ptr<AVCaptureDevice>> devices;
    const bool anyType =
        std::any_of(types.begin(), types.end(), [](const auto& type) { return type.has_value(); });
    std::vector<Camera> cameras;
    const bool isWanted = anyType && (options_.findsCameras || options_.demoCamera);
    if (isWanted && canList()) {
        if (options_.findsCameras) {
            cameras = cameraList()->list(options_.listing);
        }
        if (options_.demoCamera) {
            cameras.push_back(demoCamera(options_.demoBars));
        }
    }
    for (Camera& camera : cameras) {
        if (isFoundBy(mediaType, *camera.modes)) {
            devices.push_back(std::make_shared<CameraDevice>(std::move(camera)));
        }
    }
    return std::make_shared<DiscoverySession>(std::move(devices));
}

/// Loads what a listing needs. Reports why if that is not possible.
bool Cameras::canList() {
    if (!hasFreeDescriptors(safeDescriptors)) {
        observer_.cameraChanged(cannotListCameras());
        return false;
    }
    const bool isLoaded = options_.findsCameras ? cameraList()->load(options_.loading)
                                                : startGStreamerWithin(options_.loading);
    if (!isLoaded) {
        observer_.cameraChanged(mediaFrameworkHangs(options_.loading));
    }
    return isLoaded;
}

AVCaptureDeviceInputResult
Cameras::deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) {
    const auto known = std::dynamic_pointer_cast<CameraDevice>(device);
    if (!known) {
        return {nullptr, noSuchDevice()};
    }
    // The newest session opens the camera and keeps it open: its start does not open it again.
    std::shared_ptr<CaptureSession> session;
    for (const auto& weak : sessions_) {
        const auto candidate = weak.lock();
        session = candidate && !candidate->isRunning() ? candidate : session;
    }
    if (!session) {
        session = std::make_shared<CaptureSession>(cameraList(), observer_, options_, mainQueue_);
    }
    if (auto error = session->open(known->camera())) {
        return {nullptr, std::move(error)};
    }
    return {std::make_shared<CameraInput>(device, known->camera()), std::nullopt};
}

std::shared_ptr<AVCaptureSession> Cameras::captureSession() {
    auto session = std::make_shared<CaptureSession>(cameraList(), observer_, options_, mainQueue_);
    std::erase_if(sessions_, [](const auto& other) { return other.expired(); });
    sessions_.push_back(session);
    return session;
}

std::shared_ptr<AVCapturePhotoOutput> Cameras::photoOutput() {
    return std::make_shared<PhotoOutput>(mainQueue_);
}

std::shared_ptr<AVCapturePhotoSettings> Cameras::photoSettings() {
    return std::make_shared<PhotoSettings>();
}

std::shared_ptr<AVCapturePhotoSettings>
Cameras::photoSettingsFromPhotoSettings(const AVCapturePhotoSettings&) {
    return std::make_shared<PhotoSettings>();
}

std::shared_ptr<AVCaptureVideoPreviewLayer>
Cameras::layerWithSession(const std::shared_ptr<AVCaptureSession>& session) {
    if (const auto own = std::dynamic_pointer_cast<CaptureSession>(session)) {
        return own->makeLayer();
    }
    return std::make_shared<MediaPreviewLayer>([](bool) {});
}

std::shared_ptr<CameraList> Cameras::cameraList() {
    if (!list_) {
        list_ = std::make_shared<CameraList>();
    }
    return list_;
}

} // namespace vistrane
