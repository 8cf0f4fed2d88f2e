#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "backends/sim/CallLog.h"
#include "backends/sim/SimControls.h"
#include "platform/avfoundation/AVFoundation.h"

namespace vistrane {

class SimPictures;

inline std::string text(AVMediaType type) {
    return type == AVMediaTypeVideo ? "Video" : type == AVMediaTypeMuxed ? "Muxed" : "Audio";
}
inline std::string text(AVCaptureSessionPreset preset) {
    return preset == AVCaptureSessionPresetPhoto ? "Photo" : "High";
}

/// A camera, described by the test.
class SimCamera final : public SimOf<AVCaptureDevice> {
public:
    SimCamera(CallLog& log, const std::string& name, std::set<AVMediaType> types, bool photo)
        : SimOf(log, name), media(std::move(types)), supportsPhoto(photo) {}

    bool hasMediaType(AVMediaType type) const override {
        mainCall("hasMediaType: %", type);
        return media.contains(type);
    }
    std::string localizedName() const override { return name(); }
    bool supportsAVCaptureSessionPreset(AVCaptureSessionPreset preset) const override {
        return preset == AVCaptureSessionPresetHigh || supportsPhoto;
    }

    const std::set<AVMediaType> media;
    const bool supportsPhoto;
    /// Why an input for it cannot be made; nothing when it can.
    std::optional<NSError> refusal;
};

class SimCaptureSession final : public SimOf<AVCaptureSession> {
public:
    SimCaptureSession(CallLog& log, const std::string& name, const bool& refusesOutputs)
        : SimOf(log, name), refusesOutputs_(refusesOutputs) {}

    void setSessionPreset(AVCaptureSessionPreset value) override {
        mainSet("setSessionPreset:", preset, value);
    }
    bool canAddOutput(const AVCapturePhotoOutput& output) const override {
        mainCall("canAddOutput: %", nameOf(&output));
        return !refusesOutputs_;
    }
    void addOutput(std::shared_ptr<AVCapturePhotoOutput> output) override;
    std::vector<std::shared_ptr<AVCaptureDeviceInput>> inputs() const override {
        return read("inputs", currentInputs);
    }
    void addInput(std::shared_ptr<AVCaptureDeviceInput> input) override {
        mainCall("addInput: %", input);
        currentInputs.push_back(std::move(input));
    }
    void removeInput(const AVCaptureDeviceInput& input) override {
        mainCall("removeInput: %", nameOf(&input));
        if (std::erase_if(currentInputs, [&](const auto& held) { return held.get() == &input; }) ==
            0) {
            log_.misuse(name() + " removeInput: it is not an input of the session");
        }
    }
    void startRunning() override {
        mainCall("startRunning");
        runs = !currentInputs.empty();
    }
    void stopRunning() override {
        mainCall("stopRunning");
        runs = false;
    }
    bool isRunning() const override {
        mainCall("isRunning");
        return runs;
    }
    /// Whether an input has that medium.
    bool offers(AVMediaType type) const {
        return std::any_of(currentInputs.begin(), currentInputs.end(), [type](const auto& input) {
            const auto* camera = dynamic_cast<const SimCamera*>(input->device().get());
            return camera != nullptr && camera->media.contains(type);
        });
    }

    /// Nothing until it is set.
    std::optional<AVCaptureSessionPreset> preset;
    std::vector<std::shared_ptr<AVCaptureDeviceInput>> currentInputs;
    std::vector<std::shared_ptr<AVCapturePhotoOutput>> outputs;
    /// A test may set it: a session that stopped, or one that needs no camera.
    bool runs = false;

private:
    const bool& refusesOutputs_;
};

/// The capture half of AVFoundation: the cameras of the machine, and the sessions and outputs made
/// for them. Stills arrive when the test delivers them. Main thread only.
class SimCameras : public virtual AVFoundation {
public:
    SimCameras(CallLog& log, SimPictures& pictures) : log_(log), pictures_(pictures) {}

    std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discoverySessionWithDeviceTypes(const std::vector<std::optional<AVCaptureDeviceType>>& types,
                                    AVMediaType mediaType,
                                    AVCaptureDevicePosition position) override;
    AVCaptureDeviceInputResult
    deviceInputWithDevice(const std::shared_ptr<AVCaptureDevice>& device) override;
    std::shared_ptr<AVCaptureSession> captureSession() override {
        sessions_.push_back(
            std::make_shared<SimCaptureSession>(log_, log_.nextName("session"), refusesOutputs));
        log_.record("captureSession -> %", sessions_.back());
        return sessions_.back();
    }
    std::shared_ptr<AVCapturePhotoOutput> photoOutput() override;
    std::shared_ptr<AVCapturePhotoSettings> photoSettings() override {
        auto settings = makeSettings();
        log_.record("photoSettings -> %", settings);
        return settings;
    }
    std::shared_ptr<AVCapturePhotoSettings>
    photoSettingsFromPhotoSettings(const AVCapturePhotoSettings& settings) override {
        auto copy = makeSettings();
        log_.record("photoSettingsFromPhotoSettings: % -> %", nameOf(&settings), copy);
        return copy;
    }
    std::shared_ptr<AVCaptureVideoPreviewLayer>
    layerWithSession(std::shared_ptr<AVCaptureSession> session) override {
        auto layer = std::make_shared<SimLayerOf<AVCaptureVideoPreviewLayer>>(
            log_, log_.nextName("previewLayer"));
        log_.record("layerWithSession: % -> %", session, layer);
        return layer;
    }

    std::shared_ptr<SimCamera> add(const std::string& name,
                                   std::set<AVMediaType> media = {AVMediaTypeVideo},
                                   bool supportsPhoto = true);
    void unplugAll() { cameras_.clear(); }

    /// The session of that number, counted from 1.
    std::shared_ptr<SimCaptureSession> session(std::size_t number = 1) const {
        return sessions_.at(number - 1);
    }

    /// The names of the settings of the stills that were requested and not delivered yet.
    std::vector<std::string> pendingStills() const {
        std::vector<std::string> names;
        for (const Still& still : stills_) {
            names.push_back(nameOf(still.settings.get()));
        }
        return names;
    }
    // Each ends the oldest request: with the bytes of a picture, without any bytes, or with an
    // error. A request to a session that did not run ends with an error in any case.
    void deliverPhoto(const std::optional<std::string>& contents);
    void deliverError(const NSError& error) { finish(nullptr, error); }

    bool refusesOutputs = false;

private:
    friend class SimPhotoOutput;
    struct Still {
        AVCapturePhotoOutput* output;
        std::shared_ptr<AVCapturePhotoSettings> settings;
        AVCapturePhotoCaptureDelegate* delegate;
        /// Whether the session ran when the still was requested.
        bool ran;
    };
    void finish(const AVCapturePhoto* photo, std::optional<NSError> error);
    std::shared_ptr<AVCapturePhotoSettings> makeSettings();

    CallLog& log_;
    SimPictures& pictures_;
    std::vector<std::shared_ptr<SimCamera>> cameras_;
    std::vector<std::shared_ptr<SimCaptureSession>> sessions_;
    /// Kept: a pending still refers to its output.
    std::vector<std::shared_ptr<AVCapturePhotoOutput>> outputs_;
    std::deque<Still> stills_;
    std::set<std::int64_t> usedSettings_;
    std::int64_t settingsMade_ = 0;
};

} // namespace vistrane
