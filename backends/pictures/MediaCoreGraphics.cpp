#include "backends/pictures/MediaCoreGraphics.h"

#include <new>

#include "backends/pictures/BitmapContext.h"
#include "backends/pictures/PictureLimits.h"

namespace vistrane {

namespace {

/// The only colour space, so it holds no state.
class GenericRgb final : public CGColorSpace {
public:
    GenericRgb() = default;
    ~GenericRgb() = default;
};

/// Releases the reference that `retainLockedBufferAt` has added.
class Held {
public:
    explicit Held(PixelBuffer* buffer) : buffer_(buffer) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    ~Held() {
        if (buffer_ != nullptr) {
            buffer_->release();
        }
    }
    PixelBuffer* get() const { return buffer_; }

private:
    PixelBuffer* buffer_;
};

} // namespace

MediaCoreGraphics::MediaCoreGraphics(MediaCoreVideo& coreVideo) : coreVideo_(coreVideo) {}

CGColorSpaceRef MediaCoreGraphics::CGColorSpaceCreateWithName(CGColorSpaceName name) {
    return name == kCGColorSpaceGenericRGB ? new (std::nothrow) GenericRgb : nullptr;
}

void MediaCoreGraphics::CGColorSpaceRelease(CGColorSpaceRef space) {
    delete static_cast<GenericRgb*>(space);
}

CGContextRef
MediaCoreGraphics::CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                         std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                         CGColorSpaceRef space, std::uint32_t bitmapInfo) {
    if (data == nullptr || space == nullptr || bitsPerComponent != 8 ||
        bitmapInfo != kCGImageAlphaNoneSkipFirst || !PictureLimits().allows(width, height) ||
        bytesPerRow < 4 * width || bytesPerRow > PTRDIFF_MAX / height) {
        return nullptr;
    }
    const Held target(coreVideo_.retainLockedBufferAt(data));
    if (target.get() != nullptr &&
        (width > target.get()->width() || height > target.get()->height() ||
         bytesPerRow != target.get()->bytesPerRow())) {
        return nullptr;
    }
    const Surface surface{static_cast<std::uint8_t*>(data), width, height,
                          static_cast<std::ptrdiff_t>(bytesPerRow)};
    return new (std::nothrow) BitmapContext(surface, target.get());
}

void MediaCoreGraphics::CFRelease(CGContextRef context) {
    delete static_cast<BitmapContext*>(context);
}

} // namespace vistrane
