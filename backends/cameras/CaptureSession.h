#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "backends/cameras/CaptureEngine.h"
#include "backends/cameras/MainThreadGate.h"
#include "backends/cameras/MediaPreviewLayer.h"
#include "backends/cameras/PhotoOutput.h"
#include "platform/avfoundation/AVCaptureSession.h"

namespace vistrane {

class CameraDevice final : public AVCaptureDevice {
public:
    explicit CameraDevice(Camera camera);

    bool hasMediaType(AVMediaType type) const override;
    std::string localizedName() const override;
    bool supportsAVCaptureSessionPreset(AVCaptureSessionPreset preset) const override;

    const Camera& camera() const;

private:
    Camera camera_;
};

class CameraInput final : public AVCaptureDeviceInput {
public:
    CameraInput(std::shared_ptr<AVCaptureDevice> device, Camera camera);

    std::shared_ptr<AVCaptureDevice> device() const override;
    const Camera& camera() const;

private:
    std::shared_ptr<AVCaptureDevice> device_;
    Camera camera_;
};

/// A session that runs its first input. A preset takes effect at the next start.
class CaptureSession final : public AVCaptureSession,
                             public StillSource,
                             public std::enable_shared_from_this<CaptureSession> {
public:
    CaptureSession(std::shared_ptr<CameraList> list, CameraObserver& observer,
                   const CameraOptions& options, std::shared_ptr<MainThreadGate> mainQueue);
    ~CaptureSession() override;

    void setSessionPreset(AVCaptureSessionPreset preset) override;
    bool canAddOutput(const AVCapturePhotoOutput& output) const override;
    void addOutput(std::shared_ptr<AVCapturePhotoOutput> output) override;
    std::vector<std::shared_ptr<AVCaptureDeviceInput>> inputs() const override;
    void addInput(std::shared_ptr<AVCaptureDeviceInput> input) override;
    void removeInput(const AVCaptureDeviceInput& input) override;
    void startRunning() override;
    void stopRunning() override;
    bool isRunning() const override;

    void requestStill(std::shared_ptr<AVCapturePhotoOutput> output,
                      AVCapturePhotoCaptureDelegate& delegate) override;
    bool offers(AVMediaType type) const override;

    std::shared_ptr<MediaPreviewLayer> makeLayer();

    /// Opens a camera for the next start. Not while the session runs. Returns the reason if there
    /// is no picture in time.
    std::optional<NSError> open(const Camera& camera);

private:
    struct Waiting {
        std::weak_ptr<AVCapturePhotoOutput> output;
        AVCapturePhotoCaptureDelegate* delegate = nullptr;
    };
    /// State that the engine's threads and the main queue use. It may outlive the session.
    struct Shared;

    void preview(bool wanted);

    std::shared_ptr<Shared> shared_;
    AVCaptureSessionPreset preset_ = AVCaptureSessionPresetHigh;
    std::shared_ptr<AVCapturePhotoOutput> output_;
    std::vector<std::shared_ptr<AVCaptureDeviceInput>> inputs_;
    std::uint64_t lastRequest_ = 0;
    bool isRunning_ = false;
    CaptureEngine engine_;
};

} // namespace vistrane
