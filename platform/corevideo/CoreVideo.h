#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/foundation/NSDictionary.h"

namespace vistrane {

/// A picture in memory: reference-counted, created by `CVPixelBufferCreate` and released by
/// `CVBufferRelease`.
class CVPixelBuffer {
public:
    CVPixelBuffer(const CVPixelBuffer&) = delete;
    CVPixelBuffer& operator=(const CVPixelBuffer&) = delete;

protected:
    CVPixelBuffer() = default;
    ~CVPixelBuffer() = default;
};
using CVPixelBufferRef = CVPixelBuffer*;

/// The reusable buffers of a pixel buffer adaptor.
class CVPixelBufferPool {
public:
    CVPixelBufferPool(const CVPixelBufferPool&) = delete;
    CVPixelBufferPool& operator=(const CVPixelBufferPool&) = delete;

protected:
    CVPixelBufferPool() = default;
    ~CVPixelBufferPool() = default;
};
using CVPixelBufferPoolRef = CVPixelBufferPool*;

using CVReturn = std::int32_t;
inline constexpr CVReturn kCVReturnSuccess = 0;
inline constexpr CVReturn kCVReturnInvalidArgument = -6661;
inline constexpr CVReturn kCVReturnAllocationFailed = -6662;
inline constexpr CVReturn kCVReturnInvalidSize = -6681;

/// 8 bits per component. In memory order: one byte of alpha or padding, red, green, blue.
inline constexpr std::uint32_t kCVPixelFormatType_32ARGB = 32;

inline constexpr char kCVPixelBufferPixelFormatTypeKey[] = "PixelFormatType";
inline constexpr char kCVPixelBufferWidthKey[] = "Width";
inline constexpr char kCVPixelBufferHeightKey[] = "Height";
inline constexpr char kCVPixelBufferCGImageCompatibilityKey[] = "CGImageCompatibility";
inline constexpr char kCVPixelBufferCGBitmapContextCompatibilityKey[] =
    "CGBitmapContextCompatibility";

/// Functions of the CoreVideo kit. Any thread; each buffer by one thread at a time. With a null
/// buffer every function does nothing.
class CoreVideo {
public:
    virtual ~CoreVideo() = default;
    CoreVideo(const CoreVideo&) = delete;
    CoreVideo& operator=(const CoreVideo&) = delete;

    /// Creates a buffer of `width` x `height` pixels; the caller owns its one reference. On failure
    /// `*buffer` is unchanged.
    virtual CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height,
                                         std::uint32_t pixelFormat, const NSDictionary& attributes,
                                         CVPixelBufferRef* buffer) = 0;

    /// The pixels may be accessed only between lock and unlock.
    virtual CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) = 0;
    virtual CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer,
                                                    std::uint64_t flags) = 0;

    /// The first byte of the top row; null if the buffer is not locked.
    virtual void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) = 0;
    /// The row stride in bytes: at least four times the width.
    virtual std::size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) = 0;

    /// Releases one reference; the last one frees the buffer.
    virtual void CVBufferRelease(CVPixelBufferRef buffer) = 0;

    /// Frees the pool's idle buffers. The adaptor owns the pool, so an unbalanced release is
    /// harmless.
    virtual void CVPixelBufferPoolRelease(CVPixelBufferPoolRef pool) = 0;

protected:
    CoreVideo() = default;
};

} // namespace vistrane
