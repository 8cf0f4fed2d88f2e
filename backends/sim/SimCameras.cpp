#include "backends/sim/SimCameras.h"

#include <algorithm>
#include <utility>

#include "backends/sim/SimPictures.h"
#include "backends/sim/SimRole.h"

namespace vistrane {

namespace {

std::string describe(AVMediaType type) {
    switch (type) {
    case AVMediaTypeVideo:
        return "Video";
    case AVMediaTypeMuxed:
        return "Muxed";
    case AVMediaTypeAudio:
        break;
    }
    return "Audio";
}

std::string describe(AVCaptureSessionPreset preset) {
    return preset == AVCaptureSessionPresetPhoto ? "Photo" : "High";
}

std::string describe(const std::optional<AVCaptureDeviceType>& type) {
    if (!type) {
        return "null";
    }
    return *type == AVCaptureDeviceTypeBuiltInWideAngleCamera ? "BuiltInWideAngleCamera"
                                                              : "ExternalUnknown";
}

class SimDiscovery final : public AVCaptureDeviceDiscoverySession {
public:
    explicit SimDiscovery(std::vector<std::shared_ptr<AVCaptureDevice>> found)
        : devices_(std::move(found)) {}
    std::vector<std::shared_ptr<AVCaptureDevice>> devices() const override { return devices_; }

private:
    std::vector<std::shared_ptr<AVCaptureDevice>> devices_;
};

class SimConnection final : public AVCaptureConnection {};

class SimPhoto final : public AVCapturePhoto {
public:
    explicit SimPhoto(std::shared_ptr<NSData> data) : data_(std::move(data)) {}
    std::shared_ptr<NSData> fileDataRepresentation() const override { return data_; }

private:
    std::shared_ptr<NSData> data_;
};

class SimPreviewLayer final : public SimLayerOf<AVCaptureVideoPreviewLayer> {
public:
    using SimLayerOf::SimLayerOf;
};

} // namespace

bool SimCamera::hasMediaType(AVMediaType type) const {
    mainGetter("hasMediaType: " + describe(type));
    return offers(type);
}

std::string SimCamera::localizedName() const {
    mainGetter("localizedName");
    return name();
}

bool SimCamera::supportsAVCaptureSessionPreset(AVCaptureSessionPreset preset) const {
    mainGetter("supportsAVCaptureSessionPreset: " + describe(preset));
    return preset == AVCaptureSessionPresetHigh || supportsPhoto_;
}

SimCaptureInput::SimCaptureInput(CallLog& log, std::shared_ptr<AVCaptureDevice> device)
    : SimObject(log, nameOf(device.get())), device_(std::move(device)) {}

bool SimCaptureInput::offers(AVMediaType type) const {
    const auto* camera = dynamic_cast<const SimCamera*>(device_.get());
    return camera != nullptr && camera->offers(type);
}

bool SimCaptureSession::offers(AVMediaType type) const {
    return std::any_of(currentInputs.begin(), currentInputs.end(), [type](const auto& held) {
        const auto* input = dynamic_cast<const SimCaptureInput*>(held.get());
        return input != nullptr && input->offers(type);
    });
}

void SimCaptureSession::setSessionPreset(AVCaptureSessionPreset newPreset) {
    mainCall("setSessionPreset: " + describe(newPreset));
    preset = newPreset;
}

bool SimCaptureSession::canAddOutput(const AVCapturePhotoOutput& output) const {
    mainCall("canAddOutput: " + nameOf(&output));
    return !refusesOutputs_;
}

void SimCaptureSession::addOutput(std::shared_ptr<AVCapturePhotoOutput> output) {
    mainCall("addOutput: " + nameOf(output.get()));
    if (refusesOutputs_) {
        log_.misuse(name() + " addOutput: it cannot be added");
    }
    outputs.push_back(std::move(output));
}

std::vector<std::shared_ptr<AVCaptureDeviceInput>> SimCaptureSession::inputs() const {
    mainGetter("inputs");
    return currentInputs;
}

void SimCaptureSession::addInput(std::shared_ptr<AVCaptureDeviceInput> input) {
    mainCall("addInput: " + nameOf(input.get()));
    currentInputs.push_back(std::move(input));
}

void SimCaptureSession::removeInput(const AVCaptureDeviceInput& input) {
    mainCall("removeInput: " + nameOf(&input));
    const auto found = std::find_if(currentInputs.begin(), currentInputs.end(),
                                    [&](const auto& held) { return held.get() == &input; });
    if (found == currentInputs.end()) {
        log_.misuse(name() + " removeInput: it is not an input of the session");
        return;
    }
    currentInputs.erase(found);
}

void SimCaptureSession::startRunning() {
    mainCall("startRunning");
    runs = !currentInputs.empty();
}

void SimCaptureSession::stopRunning() {
    mainCall("stopRunning");
    runs = false;
}

bool SimCaptureSession::isRunning() const {
    mainCall("isRunning");
    return runs;
}

class SimPhotoOutput final : public AVCapturePhotoOutput, public SimObject {
public:
    SimPhotoOutput(CallLog& log, const std::string& name, SimCameras& cameras)
        : SimObject(log, name), cameras_(cameras) {}

    std::shared_ptr<AVCaptureConnection> connectionWithMediaType(AVMediaType type) override {
        mainCall("connectionWithMediaType: " + describe(type));
        const SimCaptureSession* session = attachedSession();
        return session && session->offers(type) ? std::make_shared<SimConnection>() : nullptr;
    }

    void capturePhotoWithSettings(std::shared_ptr<AVCapturePhotoSettings> settings,
                                  AVCapturePhotoCaptureDelegate& delegate) override {
        mainCall("capturePhotoWithSettings: " + nameOf(settings.get()));
        if (!settings || !cameras_.usedSettings_.insert(settings->uniqueID()).second) {
            log_.misuse(name() + " capturePhotoWithSettings: settings serve one capture only");
        }
        const SimCaptureSession* session = attachedSession();
        cameras_.stills_.push_back(
            {this, std::move(settings), &delegate, session && session->runs});
    }

private:
    /// Null when no session has it.
    const SimCaptureSession* attachedSession() const {
        for (const std::shared_ptr<SimCaptureSession>& session : cameras_.sessions_) {
            for (const std::shared_ptr<AVCapturePhotoOutput>& output : session->outputs) {
                if (output.get() == this) {
                    return session.get();
                }
            }
        }
        return nullptr;
    }

    SimCameras& cameras_;
};

SimCameras::SimCameras(CallLog& log, SimPictures& pictures) : log_(log), pictures_(pictures) {}

SimCameras::~SimCameras() = default;

std::shared_ptr<SimCamera> SimCameras::add(const std::string& name, std::set<AVMediaType> media,
                                           bool supportsPhoto) {
    cameras_.push_back(std::make_shared<SimCamera>(log_, name, std::move(media), supportsPhoto));
    return cameras_.back();
}

std::shared_ptr<SimCaptureSession> SimCameras::session(std::size_t number) const {
    return number >= 1 && number <= sessions_.size() ? sessions_[number - 1] : nullptr;
}

std::vector<std::string> SimCameras::pendingStills() const {
    std::vector<std::string> names;
    for (const Still& still : stills_) {
        names.push_back(nameOf(still.settings.get()));
    }
    return names;
}

void SimCameras::deliverPhoto(const std::string& contents) {
    const SimPhoto photo(pictures_.data(contents));
    finish(&photo, std::nullopt);
}

void SimCameras::deliverPhotoWithoutData() {
    const SimPhoto photo(nullptr);
    finish(&photo, std::nullopt);
}

void SimCameras::deliverError(const NSError& error) {
    finish(nullptr, error);
}

void SimCameras::finish(const AVCapturePhoto* photo, const std::optional<NSError>& error) {
    if (stills_.empty()) {
        log_.misuse("deliver: no still was asked for");
        return;
    }
    const Still still = std::move(stills_.front());
    stills_.pop_front();
    const ScopedSimRole role = ScopedSimRole::main();
    if (!still.ran && !error) {
        still.delegate->captureOutputDidFinishProcessingPhoto(
            *still.output, nullptr, NSError{"SimCameras", 2, "The session does not run."});
        return;
    }
    still.delegate->captureOutputDidFinishProcessingPhoto(*still.output, photo, error);
}

std::shared_ptr<AVCaptureDeviceDiscoverySession>
SimCameras::discover(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                     AVMediaType mediaType, AVCaptureDevicePosition position) {
    std::string names;
    for (const std::optional<AVCaptureDeviceType>& type : types) {
        names += (names.empty() ? "" : ", ") + describe(type);
    }
    const std::string call = "discoverySessionWithDeviceTypes: " + names +
                             " mediaType: " + describe(mediaType) +
                             " position: " + std::to_string(position);
    log_.requireMain(call);
    log_.record(call);
    return std::make_shared<SimDiscovery>(
        std::vector<std::shared_ptr<AVCaptureDevice>>(cameras_.begin(), cameras_.end()));
}

AVCaptureDeviceInputResult SimCameras::input(const std::shared_ptr<AVCaptureDevice>& device) {
    const std::string call = "deviceInputWithDevice: " + nameOf(device.get());
    log_.requireMain(call);
    log_.record(call);
    const auto* camera = dynamic_cast<const SimCamera*>(device.get());
    if (!camera) {
        return {nullptr, NSError{"SimCameras", 1, "There is no camera to open."}};
    }
    if (camera->refusal) {
        return {nullptr, camera->refusal};
    }
    return {std::make_shared<SimCaptureInput>(log_, device), std::nullopt};
}

std::shared_ptr<AVCaptureSession> SimCameras::makeSession() {
    sessions_.push_back(
        std::make_shared<SimCaptureSession>(log_, log_.nextName("session"), refusesOutputs));
    log_.record("captureSession -> " + sessions_.back()->name());
    return sessions_.back();
}

std::shared_ptr<AVCapturePhotoOutput> SimCameras::makeOutput() {
    outputs_.push_back(std::make_shared<SimPhotoOutput>(log_, log_.nextName("photoOutput"), *this));
    log_.record("photoOutput -> " + outputs_.back()->name());
    return outputs_.back();
}

std::shared_ptr<AVCapturePhotoSettings> SimCameras::makeSettings() {
    auto settings =
        std::make_shared<SimPhotoSettings>(log_, log_.nextName("photoSettings"), ++settingsMade_);
    log_.record("photoSettings -> " + settings->name());
    return settings;
}

std::shared_ptr<AVCapturePhotoSettings>
SimCameras::copySettings(const AVCapturePhotoSettings& settings) {
    auto copy =
        std::make_shared<SimPhotoSettings>(log_, log_.nextName("photoSettings"), ++settingsMade_);
    log_.record("photoSettingsFromPhotoSettings: " + nameOf(&settings) + " -> " + copy->name());
    return copy;
}

std::shared_ptr<AVCaptureVideoPreviewLayer>
SimCameras::makeLayer(const std::shared_ptr<AVCaptureSession>& session) {
    auto layer = std::make_shared<SimPreviewLayer>(log_, log_.nextName("previewLayer"));
    log_.record("layerWithSession: " + nameOf(session.get()) + " -> " + layer->name());
    return layer;
}

} // namespace vistrane
