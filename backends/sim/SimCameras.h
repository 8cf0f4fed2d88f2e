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
class SimPhotoOutput;

/// A camera, described by the test.
class SimCamera final : public AVCaptureDevice, public SimObject {
public:
    SimCamera(CallLog& log, const std::string& name, std::set<AVMediaType> media,
              bool supportsPhoto)
        : SimObject(log, name), media_(std::move(media)), supportsPhoto_(supportsPhoto) {}

    bool hasMediaType(AVMediaType type) const override;
    std::string localizedName() const override;
    bool supportsAVCaptureSessionPreset(AVCaptureSessionPreset preset) const override;

    /// As `hasMediaType`, not recorded.
    bool offers(AVMediaType type) const { return media_.count(type) != 0; }

    /// Why an input for it cannot be made; nothing when it can.
    std::optional<NSError> refusal;

private:
    std::set<AVMediaType> media_;
    bool supportsPhoto_;
};

class SimCaptureInput final : public AVCaptureDeviceInput, public SimObject {
public:
    SimCaptureInput(CallLog& log, std::shared_ptr<AVCaptureDevice> device);

    std::shared_ptr<AVCaptureDevice> device() const override { return device_; }
    bool offers(AVMediaType type) const;

private:
    std::shared_ptr<AVCaptureDevice> device_;
};

class SimCaptureSession final : public AVCaptureSession, public SimObject {
public:
    SimCaptureSession(CallLog& log, const std::string& name, const bool& refusesOutputs)
        : SimObject(log, name), refusesOutputs_(refusesOutputs) {}

    void setSessionPreset(AVCaptureSessionPreset newPreset) override;
    bool canAddOutput(const AVCapturePhotoOutput& output) const override;
    void addOutput(std::shared_ptr<AVCapturePhotoOutput> output) override;
    std::vector<std::shared_ptr<AVCaptureDeviceInput>> inputs() const override;
    void addInput(std::shared_ptr<AVCaptureDeviceInput> input) override;
    void removeInput(const AVCaptureDeviceInput& input) override;
    void startRunning() override;
    void stopRunning() override;
    bool isRunning() const override;
    /// Whether an input has that medium.
    bool offers(AVMediaType type) const;

    /// Nothing until it is set.
    std::optional<AVCaptureSessionPreset> preset;
    std::vector<std::shared_ptr<AVCaptureDeviceInput>> currentInputs;
    std::vector<std::shared_ptr<AVCapturePhotoOutput>> outputs;
    /// A test may set it itself: a session that stopped, or one that needs no camera.
    bool runs = false;

private:
    const bool& refusesOutputs_;
};

class SimPhotoSettings final : public AVCapturePhotoSettings, public SimObject {
public:
    SimPhotoSettings(CallLog& log, const std::string& name, std::int64_t id)
        : SimObject(log, name), id_(id) {}
    std::int64_t uniqueID() const override { return id_; }

private:
    std::int64_t id_;
};

/// The cameras of the machine, and the sessions and outputs made for them. Stills come when the
/// test delivers them. Main thread only.
class SimCameras {
public:
    SimCameras(CallLog& log, SimPictures& pictures);
    ~SimCameras();
    SimCameras(const SimCameras&) = delete;
    SimCameras& operator=(const SimCameras&) = delete;

    std::shared_ptr<SimCamera> add(const std::string& name,
                                   std::set<AVMediaType> media = {AVMediaTypeVideo},
                                   bool supportsPhoto = true);
    void unplugAll() { cameras_.clear(); }

    /// The session or output of that number, counted from 1; null when there is none.
    std::shared_ptr<SimCaptureSession> session(std::size_t number = 1) const;

    /// The names of the settings of the stills that were asked for and not delivered yet.
    std::vector<std::string> pendingStills() const;
    /// Ends the oldest request: with the bytes of a picture, without any bytes, or with an error.
    /// A request to a session that did not run ends with an error, whatever is delivered.
    void deliverPhoto(const std::string& contents);
    void deliverPhotoWithoutData();
    void deliverError(const NSError& error);

    bool refusesOutputs = false;

    // What the kit's class messages do.
    std::shared_ptr<AVCaptureDeviceDiscoverySession>
    discover(const std::vector<std::optional<AVCaptureDeviceType>>& types, AVMediaType mediaType,
             AVCaptureDevicePosition position);
    AVCaptureDeviceInputResult input(const std::shared_ptr<AVCaptureDevice>& device);
    std::shared_ptr<AVCaptureSession> makeSession();
    std::shared_ptr<AVCapturePhotoOutput> makeOutput();
    std::shared_ptr<AVCapturePhotoSettings> makeSettings();
    std::shared_ptr<AVCapturePhotoSettings> copySettings(const AVCapturePhotoSettings& settings);
    std::shared_ptr<AVCaptureVideoPreviewLayer>
    makeLayer(const std::shared_ptr<AVCaptureSession>& session);

private:
    friend class SimPhotoOutput;
    struct Still {
        AVCapturePhotoOutput* output;
        std::shared_ptr<AVCapturePhotoSettings> settings;
        AVCapturePhotoCaptureDelegate* delegate;
        /// Whether the session ran when the still was asked for.
        bool ran;
    };
    void finish(const AVCapturePhoto* photo, const std::optional<NSError>& error);

    CallLog& log_;
    SimPictures& pictures_;
    std::vector<std::shared_ptr<SimCamera>> cameras_;
    std::vector<std::shared_ptr<SimCaptureSession>> sessions_;
    std::vector<std::shared_ptr<SimPhotoOutput>> outputs_;
    std::deque<Still> stills_;
    std::set<std::int64_t> usedSettings_;
    std::int64_t settingsMade_ = 0;
};

} // namespace vistrane
