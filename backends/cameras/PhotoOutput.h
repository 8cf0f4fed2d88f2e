#pragma once

#include <memory>

#include "backends/cameras/MainThreadGate.h"
#include "platform/avfoundation/AVCapturePhotoOutput.h"

namespace vistrane {

/// The source of an output's stills.
class StillSource {
public:
    /// Delivers the outcome for `output` on the main queue, in the order of the requests.
    virtual void requestStill(std::shared_ptr<AVCapturePhotoOutput> output,
                              AVCapturePhotoCaptureDelegate& delegate) = 0;
    virtual bool offers(AVMediaType type) const = 0;

protected:
    ~StillSource() = default;
};

class PhotoSettings final : public AVCapturePhotoSettings {
public:
    PhotoSettings();
    std::int64_t uniqueID() const override;

private:
    std::int64_t uniqueID_;
};

/// An output of at most one session, which it may outlive.
class PhotoOutput final : public AVCapturePhotoOutput,
                          public std::enable_shared_from_this<PhotoOutput> {
public:
    explicit PhotoOutput(std::shared_ptr<MainThreadGate> mainQueue);

    std::shared_ptr<AVCaptureConnection> connectionWithMediaType(AVMediaType type) override;
    void capturePhotoWithSettings(std::shared_ptr<AVCapturePhotoSettings> settings,
                                  AVCapturePhotoCaptureDelegate& delegate) override;

    void attach(std::weak_ptr<StillSource> source);
    bool isAttached() const;

private:
    std::shared_ptr<MainThreadGate> mainQueue_;
    std::weak_ptr<StillSource> source_;
};

} // namespace vistrane
