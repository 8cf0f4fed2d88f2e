#pragma once

#include <cstddef>
#include <cstdint>

namespace vistrane {

/// A colour space, created and released by `CoreGraphics`.
class CGColorSpace {
public:
    CGColorSpace(const CGColorSpace&) = delete;
    CGColorSpace& operator=(const CGColorSpace&) = delete;

protected:
    CGColorSpace() = default;
    ~CGColorSpace() = default;
};
using CGColorSpaceRef = CGColorSpace*;

enum CGColorSpaceName { kCGColorSpaceGenericRGB };

/// A bitmap context to draw into, created and released by `CoreGraphics`.
class CGContext {
public:
    CGContext(const CGContext&) = delete;
    CGContext& operator=(const CGContext&) = delete;

protected:
    CGContext() = default;
    ~CGContext() = default;
};
using CGContextRef = CGContext*;

/// The position of a pixel's alpha component. 6: it comes first and is ignored.
enum CGBitmapInfo : std::uint32_t { kCGImageAlphaNoneSkipFirst = 6 };

/// Functions of the CoreGraphics kit. Any thread; one object by one thread at a time.
class CoreGraphics {
public:
    virtual ~CoreGraphics() = default;
    CoreGraphics(const CoreGraphics&) = delete;
    CoreGraphics& operator=(const CoreGraphics&) = delete;

    /// The caller owns the result.
    virtual CGColorSpaceRef CGColorSpaceCreateWithName(CGColorSpaceName name) = 0;
    /// Null is allowed.
    virtual void CGColorSpaceRelease(CGColorSpaceRef space) = 0;

    /// A context that draws directly into the caller's memory: `height` rows of `width` pixels, the
    /// top row first, with a row stride of `bytesPerRow`. With `kCGImageAlphaNoneSkipFirst` a pixel
    /// is 4 bytes: one ignored, red, green, blue.
    ///
    /// The memory outlives the context. Null without memory, without pixels, or for an unsupported
    /// layout. The caller owns the result.
    virtual CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                               std::size_t bitsPerComponent,
                                               std::size_t bytesPerRow, CGColorSpaceRef space,
                                               std::uint32_t bitmapInfo) = 0;
    /// Releases a context. Null is allowed.
    virtual void CFRelease(CGContextRef context) = 0;

protected:
    CoreGraphics() = default;
};

} // namespace vistrane
