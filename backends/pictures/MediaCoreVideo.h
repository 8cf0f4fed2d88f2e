#pragma once

#include <map>
#include <mutex>
#include <utility>

#include "backends/pictures/PixelBuffer.h"
#include "platform/corevideo/CoreVideo.h"

namespace vistrane {

/// Pixel buffers in plain memory (see `PixelBuffer`). One object serves the process and outlives
/// every context on its buffers.
class MediaCoreVideo final : public CoreVideo {
public:
    MediaCoreVideo() = default;
    /// Releases the references of outstanding locks.
    ~MediaCoreVideo() override;

    CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, std::uint32_t pixelFormat,
                                 const NSDictionary& attributes, CVPixelBufferRef* buffer) override;
    /// A lock retains the buffer until the matching unlock.
    CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) override;
    CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) override;
    void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) override;
    std::size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) override;
    void CVBufferRelease(CVPixelBufferRef buffer) override;
    /// Does nothing: the pool keeps no idle buffers and belongs to its adaptor.
    void CVPixelBufferPoolRelease(CVPixelBufferPoolRef pool) override;

    /// The locked buffer whose top row starts at that address, retained for the caller; null if
    /// there is none. Bitmap contexts find their buffer with it.
    PixelBuffer* retainLockedBufferAt(const void* baseAddress);

private:
    struct Locked {
        PixelBuffer* buffer = nullptr;
        std::size_t locks = 0;
    };

    std::mutex mutex_;
    std::map<const void*, Locked> locked_;
};

} // namespace vistrane
