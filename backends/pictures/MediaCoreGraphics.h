#pragma once

#include "backends/pictures/MediaCoreVideo.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

/// Bitmap contexts of the form of a `PixelBuffer`. The generic RGB space counts as sRGB: pictures
/// are drawn with the values that a screen would be given.
class MediaCoreGraphics final : public CoreGraphics {
public:
    /// A context on the memory of a locked buffer of `coreVideo` marks that buffer when a picture
    /// drawn into it cannot be decoded. `coreVideo` outlives this object.
    explicit MediaCoreGraphics(MediaCoreVideo& coreVideo);

    CGColorSpaceRef CGColorSpaceCreateWithName(CGColorSpaceName name) override;
    void CGColorSpaceRelease(CGColorSpaceRef space) override;
    /// Takes 8 bits a component and `kCGImageAlphaNoneSkipFirst` only. On a locked pixel buffer
    /// the sizes have to fit into it.
    CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                       std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                       CGColorSpaceRef space, std::uint32_t bitmapInfo) override;
    void CFRelease(CGContextRef context) override;

private:
    MediaCoreVideo& coreVideo_;
};

} // namespace vistrane
