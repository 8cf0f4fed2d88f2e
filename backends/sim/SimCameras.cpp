#include "backends/sim/SimCameras.h"

#include <algorithm>
#include <utility>

#include "backends/sim/SimPictures.h"
#include "backends/sim/SimThreads.h"

namespace vistrane {

namespace {

std::string text(const std::optional<AVCaptureDeviceType>& type) {
    return !type                                                ? "null"
           : *type == AVCaptureDeviceTypeBuiltInWideAngleCamera ? "BuiltInWideAngleCamera"
                                                                : "ExternalUnknown";
}

struct SimDiscovery final : AVCaptureDeviceDiscoverySession {
    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return found; }
    std::vector<std::shared_ptr<AVCaptureDevice>> found;
};

/// Named after its camera.
struct SimCaptureInput final : SimOf<AVCaptureDeviceInput> {
    using SimOf::SimOf;
    std::shared_ptr<AVCaptureDevice> device() const override { return camera; }
    std::shared_ptr<AVCaptureDevice> camera;
};

struct SimConnection final : AVCaptureConnection {};

struct SimPhoto final : AVCapturePhoto {
    std::shared_ptr<NSData> fileDataRepresentation() const override { return data; }
    std::shared_ptr<NSData> data;
};

struct SimPhotoSettings final : SimOf<AVCapturePhotoSettings> {
    using SimOf::SimOf;
    std::int64_t uniqueID() const override { return id; }
    std::int64_t id = 0;
};

} // namespace

class SimPhotoOutput final : public SimOf<AVCapturePhotoOutput> {
public:
    SimPhotoOutput(CallLog& log, const std::string& name, SimCameras& cameras)
        : SimOf(log, name), cameras_(cameras) {}

    std::shared_ptr<AVCaptureConnection> connectionWithMediaType(AVMediaType type) override {
        mainCall("connectionWithMediaType: %", type);
        return session && session->offers(type) ? std::make_shared<SimConnection>() : nullptr;
    }

    void capturePhotoWithSettings(std::shared_ptr<AVCapturePhotoSettings> settings,
                                  AVCapturePhotoCaptureDelegate& delegate) override {
        mainCall("capturePhotoWithSettings: %", settings);
        if (!settings || !cameras_.usedSettings_.insert(settings->uniqueID()).second) {
            log_.misuse(name() + " capturePhotoWithSettings: settings serve one capture only");
        }
        cameras_.stills_.push_back(
            {this, std::move(settings), &delegate, session && session->runs});
    }

    /// Null when no session has it.
    const SimCaptureSession* session = nullptr;

private:
    SimCameras& cameras_;
};

void SimCaptureSession::addOutput(std::shared_ptr<AVCapturePhotoOutput> output) {
    mainCall("addOutput: %", output);
    if (refusesOutputs_) {
        log_.misuse(name() + " addOutput: it cannot be added");
    }
    std::dynamic_pointer_cast<SimPhotoOutput>(output)->session = this;
    outputs.push_back(std::move(output));
}

std::shared_ptr<SimCamera> SimCameras::add(const std::string& name, std::set<AVMediaType> media,
                                           bool supportsPhoto) {
    cameras_.push_back(std::make_shared<SimCamera>(log_, name, std::move(media), supportsPhoto));
    return cameras_.back();
}

void SimCameras::deliverPhoto(const std::optional<std::string>& contents) {
    SimPhoto photo;
    photo.data = contents ? pictures_.data(*contents) : nullptr;
    finish(&photo, std::nullopt);
}

void SimCameras::finish(const AVCapturePhoto* photo, std::optional<NSError> error) {
    if (stills_.empty()) {
        log_.misuse("deliver: no still was requested");
        return;
    }
    const Still still = std::move(stills_.front());
    stills_.pop_front();
    if (!still.ran && !error) {
        error = NSError{"SimCameras", 2, "The session does not run."};
    }
    const SimRole role = SimRole::main();
    still.delegate->captureOutputDidFinishProcessingPhoto(*still.output, error ? nullptr : photo,
                                                          error);
}

std::shared_ptr<AVCaptureDeviceDiscoverySession> SimCameras::discoverySessionWithDeviceTypes(
    const std::vector<std::optional<AVCaptureDeviceType>>& types, AVMediaType mediaType,
    AVCaptureDevicePosition position) {
    std::string names;
    for (const std::optional<AVCaptureDeviceType>& type : types) {
        names += (names.empty() ? "" : ", ") + text(type);
    }
    log_.recordOnMain("discoverySessionWithDeviceTypes: % mediaType: % position: %", names,
                      mediaType, +position);
    auto discovery = std::make_shared<SimDiscovery>();
    discovery->found.assign(cameras_.begin(), cameras_.end());
    return discovery;
}

AVCaptureDeviceInputResult
SimCameras::deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) {
    log_.recordOnMain("deviceInputWithDevice: %", device);
    const auto* camera = dynamic_cast<const SimCamera*>(device.get());
    if (!camera) {
        return {nullptr, NSError{"SimCameras", 1, "There is no camera to open."}};
    }
    if (camera->refusal) {
        return {nullptr, camera->refusal};
    }
    auto input = std::make_shared<SimCaptureInput>(log_, camera->name());
    input->camera = device;
    return {input, std::nullopt};
}

std::shared_ptr<AVCapturePhotoOutput> SimCameras::photoOutput() {
    outputs_.push_back(std::make_shared<SimPhotoOutput>(log_, log_.nextName("photoOutput"), *this));
    log_.record("photoOutput -> %", outputs_.back());
    return outputs_.back();
}

std::shared_ptr<AVCapturePhotoSettings> SimCameras::makeSettings() {
    auto settings = std::make_shared<SimPhotoSettings>(log_, log_.nextName("photoSettings"));
    settings->id = ++settingsMade_;
    return settings;
}

} // namespace vistrane
