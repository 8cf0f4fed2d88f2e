#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "backends/sim/CallLog.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/coregraphics/CGGeometry.h"
#include "platform/coregraphics/CoreGraphics.h"
#include "platform/corevideo/CoreVideo.h"

namespace vistrane {

/// What a pixel buffer held when a test looked at it.
struct SimPixels {
    std::string name;
    std::size_t width = 0;
    std::size_t height = 0;
    /// More than the pixels of a row need.
    std::size_t bytesPerRow = 0;
    bool isLocked = false;
    std::vector<std::uint8_t> memory;

    /// The four bytes of a pixel in memory order; `y` counts from the top.
    std::vector<int> pixel(std::size_t x, std::size_t y) const;
};

/// The pool that an adaptor shows; it holds nothing.
class SimPixelBufferPool final : public CVPixelBufferPool {
public:
    explicit SimPixelBufferPool(std::string name) : name_(std::move(name)) {}
    const std::string& name() const { return name_; }

private:
    std::string name_;
};

class SimPixelBuffer;
class SimColorSpace;
class SimBitmapContext;

/// Pixel buffers, colour spaces, bitmap contexts and each thread's graphics state. All that is
/// made is counted until it is released; what is left when the sim ends is freed then. Any thread.
class SimDrawing final : public CoreVideo, public CoreGraphics {
public:
    explicit SimDrawing(CallLog& log);
    ~SimDrawing() override;

    // CoreVideo
    CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, std::uint32_t pixelFormat,
                                 const NSDictionary& attributes, CVPixelBufferRef* buffer) override;
    CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) override;
    CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, std::uint64_t flags) override;
    void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) override;
    std::size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) override;
    void CVBufferRelease(CVPixelBufferRef buffer) override;
    void CVPixelBufferPoolRelease(CVPixelBufferPoolRef pool) override;

    // CoreGraphics
    CGColorSpaceRef CGColorSpaceCreateWithName(CGColorSpaceName name) override;
    void CGColorSpaceRelease(CGColorSpaceRef space) override;
    CGContextRef CGBitmapContextCreate(void* data, std::size_t width, std::size_t height,
                                       std::size_t bitsPerComponent, std::size_t bytesPerRow,
                                       CGColorSpaceRef space, std::uint32_t bitmapInfo) override;
    void CFRelease(CGContextRef context) override;

    // The graphics state of the calling thread.
    std::shared_ptr<NSGraphicsContext> wrap(CGContextRef context, bool flipped);
    void saveGraphicsState();
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context);
    void restoreGraphicsState();
    /// Draws a picture of that size into the current context.
    void draw(NSPoint point, NSSize size);
    /// A misuse when the calling thread has no current context.
    void requireCurrentContext(const std::string& call);

    /// Fails that many of the next creations.
    void failBuffers(int count);
    void failContexts(int count);

    /// What a live buffer holds; nothing for anything else.
    std::optional<SimPixels> pixels(CVPixelBufferRef buffer) const;
    std::size_t livePixelBuffers() const;
    std::size_t liveColorSpaces() const;
    std::size_t liveContexts() const;
    /// Graphics states that were saved and not restored.
    std::size_t savedStates() const;

private:
    struct GraphicsState {
        std::shared_ptr<NSGraphicsContext> current;
        std::vector<std::shared_ptr<NSGraphicsContext>> saved;
    };

    SimPixelBuffer* live(CVPixelBufferRef buffer, const std::string& call);
    std::string nameOfBuffer(CVPixelBufferRef buffer) const;
    SimPixelBuffer* bufferAt(const void* memory);
    bool isCurrentAnywhere(const CGContext* context) const;

    CallLog& log_;
    mutable std::recursive_mutex mutex_;
    std::map<const CVPixelBuffer*, std::unique_ptr<SimPixelBuffer>> buffers_;
    std::map<const CGColorSpace*, std::unique_ptr<SimColorSpace>> spaces_;
    std::map<const CGContext*, std::unique_ptr<SimBitmapContext>> contexts_;
    std::map<const void*, GraphicsState> states_;
    int failingBuffers_ = 0;
    int failingContexts_ = 0;
};

} // namespace vistrane
