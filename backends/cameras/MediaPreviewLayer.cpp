#include "backends/cameras/MediaPreviewLayer.h"

#include <utility>

namespace vistrane {

MediaPreviewLayer::MediaPreviewLayer(std::function<void(bool)> wanted)
    : wanted_(std::move(wanted)) {}

void MediaPreviewLayer::setFrame(CGRect frame) {
    frame_ = frame;
}

void MediaPreviewLayer::setBackgroundColor(CGColor color) {
    backgroundColor_ = color;
}

void MediaPreviewLayer::addSublayer(std::shared_ptr<CALayer> layer) {
    sublayers_.push_back(std::move(layer));
}

CGRect MediaPreviewLayer::frame() const {
    return frame_;
}

CGColor MediaPreviewLayer::backgroundColor() const {
    return backgroundColor_;
}

const std::vector<std::shared_ptr<CALayer>>& MediaPreviewLayer::sublayers() const {
    return sublayers_;
}

void MediaPreviewLayer::setPictureHandler(PictureHandler handler) {
    handler_ = std::move(handler);
    wanted_(static_cast<bool>(handler_));
}

void MediaPreviewLayer::show(const PreviewPicture& picture) const {
    // A copy: the handler may replace itself.
    if (const PictureHandler handler = handler_) {
        handler(picture);
    }
}

} // namespace vistrane
