#include "backends/cameras/Cameras.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "backends/cameras/CapturePipeline.h"
#include "backends/cameras/CaptureSession.h"
#include "backends/cameras/camera_errors.h"

namespace vistrane {

namespace {

constexpr std::chrono::milliseconds pauseBetweenListings{50};

class DiscoverySession final : public AVCaptureDeviceDiscoverySession {
public:
    explicit DiscoverySession(std::vector<std::shared_ptr<AVCaptureDevice>> devices)
        : devices_(std::move(devices)) {}
    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return devices_; }

private:
    std::vector<std::shared_ptr<AVCaptureDevice>> devices_;
};

/// Finds the camera in a new listing. Waits for a camera that is restarting.
std::optional<Camera> listedNow(CameraList& list, const CameraFacts& wanted,
                                const CameraOptions& options) {
    const auto deadline = std::chrono::steady_clock::now() + options.reappear;
    for (;;) {
        std::vector<Camera> cameras = list.listOf(wanted.provider, options.listing);
        std::vector<CameraFacts> facts;
        for (const Camera& camera : cameras) {
            facts.push_back(camera.facts);
        }
        const std::size_t found = findAgain(wanted, {}, facts);
        if (found != npos) {
            return std::move(cameras[found]);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return std::nullopt;
        }
        std::this_thread::sleep_for(pauseBetweenListings);
    }
}

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
    if (anyType && options_.findsCameras) {
        cameras = cameraList()->list(options_.listing);
    }
    if (anyType && options_.demoCamera) {
        cameras.push_back(demoCamera());
    }
    for (Camera& camera : cameras) {
        if (isFoundBy(mediaType, *camera.modes)) {
            devices.push_back(std::make_shared<CameraDevice>(std::move(camera)));
        }
    }
    return std::make_shared<DiscoverySession>(std::move(devices));
}

AVCaptureDeviceInputResult
Cameras::deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) {
    const auto known = std::dynamic_pointer_cast<CameraDevice>(device);
    if (!known) {
        return {nullptr, noSuchDevice()};
    }
    std::optional<Camera> camera = known->camera();
    if (!camera->isDemo()) {
        camera = listedNow(*cameraList(), camera->facts, options_);
        if (!camera) {
            return {nullptr, deviceNotConnected(known->localizedName())};
        }
    }
    if (const auto reason = testOpening(*camera, options_.driverTimeout)) {
        return {nullptr, deviceCannotBeOpened(known->localizedName(), *reason)};
    }
    return {std::make_shared<CameraInput>(device, std::move(*camera)), std::nullopt};
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
