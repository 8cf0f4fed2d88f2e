#include "backends/pictures/MediaCoreVideo.h"

#include "backends/pictures/PictureLimits.h"

namespace vistrane {

MediaCoreVideo::~MediaCoreVideo() {
    for (const auto& [address, locked] : locked_) {
        locked.buffer->release();
    }
}

CVReturn MediaCoreVideo::CVPixelBufferCreate(std::size_t width, std::size_t height,
                                             std::uint32_t pixelFormat, const NSDictionary&,
                                             CVPixelBufferRef* buffer) {
    if (buffer == nullptr || pixelFormat != kCVPixelFormatType_32ARGB) {
        return kCVReturnInvalidArgument;
    }
    if (!PictureLimits().allows(width, height)) {
        return kCVReturnInvalidSize;
    }
    PixelBuffer* made = PixelBuffer::make(width, height);
    if (made == nullptr) {
        return kCVReturnAllocationFailed;
    }
    *buffer = made;
    return kCVReturnSuccess;
}

CVReturn MediaCoreVideo::CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, std::uint64_t) {
    if (buffer == nullptr) {
        return kCVReturnInvalidArgument;
    }
    PixelBuffer* pixels = PixelBuffer::from(buffer);
    const std::lock_guard guard(mutex_);
    Locked& locked = locked_[pixels->bytes()];
    if (locked.locks == 0) {
        locked.buffer = pixels;
        pixels->retain();
    }
    ++locked.locks;
    return kCVReturnSuccess;
}

CVReturn MediaCoreVideo::CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, std::uint64_t) {
    if (buffer == nullptr) {
        return kCVReturnInvalidArgument;
    }
    PixelBuffer* pixels = PixelBuffer::from(buffer);
    const std::lock_guard guard(mutex_);
    const auto found = locked_.find(pixels->bytes());
    if (found == locked_.end()) {
        return kCVReturnInvalidArgument;
    }
    if (--found->second.locks == 0) {
        locked_.erase(found);
        pixels->release();
    }
    return kCVReturnSuccess;
}

void* MediaCoreVideo::CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
    if (buffer == nullptr) {
        return nullptr;
    }
    PixelBuffer* pixels = PixelBuffer::from(buffer);
    const std::lock_guard guard(mutex_);
    return locked_.contains(pixels->bytes()) ? pixels->bytes() : nullptr;
}

std::size_t MediaCoreVideo::CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
    return buffer == nullptr ? 0 : PixelBuffer::from(buffer)->bytesPerRow();
}

void MediaCoreVideo::CVBufferRelease(CVPixelBufferRef buffer) {
    if (buffer != nullptr) {
        PixelBuffer::from(buffer)->release();
    }
}

void MediaCoreVideo::CVPixelBufferPoolRelease(CVPixelBufferPoolRef) {}

PixelBuffer* MediaCoreVideo::retainLockedBufferAt(const void* baseAddress) {
    const std::lock_guard guard(mutex_);
    const auto found = locked_.find(baseAddress);
    if (found == locked_.end()) {
        return nullptr;
    }
    found->second.buffer->retain();
    return found->second.buffer;
}

} // namespace vistrane
