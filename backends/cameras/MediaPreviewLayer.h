#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/avfoundation/AVCaptureSession.h"

namespace vistrane {

/// A small picture for the live preview: the top row first, four bytes per pixel: blue, green, red,
/// one ignored. Full-range RGB. If all fields are 0 or null, there is no picture.
struct PreviewPicture {
    /// The top row. Rows are `stride` bytes apart. Immutable.
    std::shared_ptr<const std::uint8_t> pixels;
    int width = 0;
    int height = 0;
    std::size_t stride = 0;
};

/// A layer whose pictures a front end draws, keeping the aspect ratio. Main thread only.
class MediaPreviewLayer final : public AVCaptureVideoPreviewLayer {
public:
    using PictureHandler = std::function<void(PreviewPicture)>;

    /// `wanted` is called with true when a handler is set, with false when it is removed.
    explicit MediaPreviewLayer(std::function<void(bool)> wanted);

    void setFrame(CGRect frame) override;
    void setBackgroundColor(CGColor color) override;
    void addSublayer(std::shared_ptr<CALayer> layer) override;

    CGRect frame() const;
    CGColor backgroundColor() const;
    const std::vector<std::shared_ptr<CALayer>>& sublayers() const;

    /// The handler is called through the main queue with each picture, of at most 640 pixels a
    /// side. While one is queued, later ones are dropped. An empty picture follows when the session
    /// stops or the camera is disconnected. Without a handler no preview is made. The handler may
    /// replace itself.
    void setPictureHandler(PictureHandler handler);

    /// Calls the handler.
    void show(const PreviewPicture& picture) const;

private:
    std::function<void(bool)> wanted_;
    CGRect frame_;
    CGColor backgroundColor_{0.0, 0.0, 0.0, 1.0};
    std::vector<std::shared_ptr<CALayer>> sublayers_;
    PictureHandler handler_;
};

} // namespace vistrane
