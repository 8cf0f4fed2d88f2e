#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/corevideo/CoreVideo.h"
#include "platform/foundation/NSError.h"

namespace vistrane {

/// The pixel buffer of `MediaCoreVideo`: `height` rows of `width` pixels, the top row first, 4
/// bytes per pixel: one ignored, red, green, blue. sRGB values, opaque. Rows start at multiples of
/// 64 bytes.
///
/// One thread at a time, except for `retain` and `release`.
class PixelBuffer final : public CVPixelBuffer {
public:
    /// A black buffer with a reference count of one, owned by the caller. Null for sizes that
    /// `PictureLimits` does not allow, or if there is not enough memory.
    static PixelBuffer* make(std::size_t width, std::size_t height);

    /// Every buffer of this process comes from `make`, so the cast is safe.
    static PixelBuffer* from(CVPixelBufferRef buffer) { return static_cast<PixelBuffer*>(buffer); }

    void retain();
    /// The last release frees the buffer.
    void release();

    std::size_t width() const { return width_; }
    std::size_t height() const { return height_; }
    std::size_t bytesPerRow() const { return bytesPerRow_; }
    const std::uint8_t* bytes() const { return rows_; }
    std::uint8_t* bytes() { return rows_; }

    /// Why the pixels must not be used: a picture that was drawn here could not be decoded. The
    /// first reason is kept.
    const std::optional<NSError>& damage() const { return damage_; }
    void markDamaged(NSError reason);

private:
    struct Free {
        void operator()(void* memory) const;
    };
    using Memory = std::unique_ptr<void, Free>;

    PixelBuffer(std::size_t width, std::size_t height, std::size_t bytesPerRow, Memory memory,
                std::uint8_t* rows)
        : width_(width), height_(height), bytesPerRow_(bytesPerRow), memory_(std::move(memory)),
          rows_(rows) {}
    ~PixelBuffer() = default;

    std::atomic<std::size_t> count_{1};
    std::size_t width_;
    std::size_t height_;
    std::size_t bytesPerRow_;
    Memory memory_;
    std::uint8_t* rows_;
    std::optional<NSError> damage_;
};

/// The pool of a pixel buffer adaptor. It holds no buffers: they are created with
/// `CVPixelBufferCreate`. Only its adaptor owns it; `CVPixelBufferPoolRelease` does not free it.
class PixelBufferPool final : public CVPixelBufferPool {
public:
    PixelBufferPool() = default;
    ~PixelBufferPool() = default;
};

} // namespace vistrane
