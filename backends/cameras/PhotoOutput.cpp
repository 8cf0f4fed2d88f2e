#include "backends/cameras/PhotoOutput.h"

#include <atomic>
#include <utility>

#include "backends/cameras/camera_errors.h"

namespace vistrane {

namespace {

class VideoConnection final : public AVCaptureConnection {};

} // namespace

PhotoSettings::PhotoSettings() {
    static std::atomic<std::int64_t> lastID{0};
    uniqueID_ = ++lastID;
}

std::int64_t PhotoSettings::uniqueID() const {
    return uniqueID_;
}

PhotoOutput::PhotoOutput(std::shared_ptr<MainThreadGate> mainQueue)
    : mainQueue_(std::move(mainQueue)) {}

std::shared_ptr<AVCaptureConnection> PhotoOutput::connectionWithMediaType(AVMediaType type) {
    const auto source = source_.lock();
    return source && source->offers(type) ? std::make_shared<VideoConnection>() : nullptr;
}

void PhotoOutput::capturePhotoWithSettings(std::shared_ptr<AVCapturePhotoSettings>,
                                           AVCapturePhotoCaptureDelegate& delegate) {
    if (const auto source = source_.lock()) {
        source->requestStill(shared_from_this(), delegate);
        return;
    }
    mainQueue_->post([weak = weak_from_this(), &delegate] {
        if (const auto output = weak.lock()) {
            delegate.captureOutputDidFinishProcessingPhoto(*output, nullptr, sessionNotRunning());
        }
    });
}

void PhotoOutput::attach(std::weak_ptr<StillSource> source) {
    source_ = std::move(source);
}

bool PhotoOutput::isAttached() const {
    return !source_.expired();
}

} // namespace vistrane
