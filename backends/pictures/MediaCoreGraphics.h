#pragma once

#include "backends/pictures/MediaCoreVideo.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

/// Bitmap contexts with the layout of a `PixelBuffer`. Generic RGB is treated as sRGB: pictures are
/// drawn with the values that a screen shows.
class MediaCoreGraphics final : public CoreGraphics {
public:
    /// A context on the memory of a locked buffer of `coreVideo` marks that buffer if a picture
    /// that is drawn into it cannot be decoded. `coreVideo` outlives this object.
    explicit MediaCoreGraphics(MediaCoreVideo& coreVideo);

    CGColorSpaceRef CGColorSpaceCreateWithName(CGColorSpaceName name) override;
    void CGColorSpaceRelease(CGColorSpaceRef space) override;
    /// Accepts only 8 bits per component and `kCGImageAlphaNoneSkipFirst`. If the memory belongs to
    /// a locked pixel buffer, the sizes must fit it.
    CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                       std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                       CGColorSpaceRef space, std::uint32_t bitmapInfo) override;
    void CFRelease(CGContextRef context) override;

private:
    MediaCoreVideo& coreVideo_;
};

} // namespace vistrane
