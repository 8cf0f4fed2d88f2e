#include "core/app/AppDelegate.h"

#include "core/compiler/picture_size.h"
#include "platform/appkit/AppKit.h"
#include "platform/coregraphics/CoreGraphics.h"
#include "platform/foundation/Foundation.h"

namespace vistrane {

namespace {

/// A side in points, truncated to whole pixels and clamped to the type's range; 0 for NaN.
std::uint64_t truncated(double side) {
    constexpr double limit = 18446744073709551616.0; // 2 to the 64th
    if (!(side >= 1.0)) {
        return 0;
    }
    return side < limit ? static_cast<std::uint64_t>(side) : UINT64_MAX;
}

} // namespace

PictureSize truncatedSize(const std::shared_ptr<NSImage>& image) {
    if (!image) {
        return {};
    }
    const NSSize size = image->size();
    return {truncated(size.width), truncated(size.height)};
}

CVPixelBufferRef AppDelegate::fastImageFromNSImage(const std::shared_ptr<NSImage>& image) {
    AppKit& appKit = platform_.appKit;
    CoreVideo& video = platform_.coreVideo;
    CoreGraphics& graphics = platform_.coreGraphics;

    const PictureSize size = truncatedSize(image);
    const NSDictionary attributes = {{kCVPixelBufferCGImageCompatibilityKey, true},
                                     {kCVPixelBufferCGBitmapContextCompatibilityKey, true}};
    CVPixelBufferRef buffer = nullptr;
    video.CVPixelBufferCreate(size.width, size.height, kCVPixelFormatType_32ARGB, attributes,
                              &buffer);
    video.CVPixelBufferLockBaseAddress(buffer, 0);
    void* const base = video.CVPixelBufferGetBaseAddress(buffer);
    const std::size_t bytesPerRow = video.CVPixelBufferGetBytesPerRow(buffer);

    const CGColorSpaceRef space = graphics.CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
    const CGContextRef context = graphics.CGBitmapContextCreate(
        base, size.width, size.height, 8, bytesPerRow, space, kCGImageAlphaNoneSkipFirst);
    if (!context) {
        platform_.foundation.NSLog("CVPixelBufferRef could not create context");
        graphics.CGColorSpaceRelease(space);
        // The buffer, if there is one, is neither unlocked nor released, on purpose.
        return nullptr;
    }

    // Draws directly into the buffer's memory.
    const auto drawing = appKit.graphicsContextWithCGContext(context, false);
    appKit.saveGraphicsState();
    appKit.setCurrentContext(drawing);
    image->drawAtPoint({0.0, 0.0}, NSZeroRect, NSCompositingOperationCopy, 1.0);
    appKit.restoreGraphicsState();

    video.CVPixelBufferUnlockBaseAddress(buffer, 0);
    graphics.CFRelease(context);
    graphics.CGColorSpaceRelease(space);
    return buffer;
}

} // namespace vistrane
