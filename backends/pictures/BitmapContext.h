#pragma once

#include <cstddef>
#include <cstdint>

#include "backends/pictures/PixelBuffer.h"
#include "backends/pictures/drawing.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

/// A drawing context on memory with the layout of a `PixelBuffer`. One thread at a time.
class BitmapContext final : public CGContext {
public:
    /// `target` is the pixel buffer that owns the memory, or null. The context retains it.
    BitmapContext(const Surface& surface, PixelBuffer* target);
    ~BitmapContext();

    const Surface& surface() const { return surface_; }

    /// Marks the pixel buffer: its pixels must not be used.
    void markDamaged(const NSError& reason);

private:
    Surface surface_;
    PixelBuffer* target_;
};

/// A bitmap context that pictures draw into.
class MediaGraphicsContext final : public NSGraphicsContext {
public:
    /// `flipped`: the origin is the top left corner, and pictures are drawn upside down.
    MediaGraphicsContext(BitmapContext* context, bool flipped)
        : context_(context), flipped_(flipped) {}

    BitmapContext& context() const { return *context_; }
    Surface surface() const;

private:
    BitmapContext* context_;
    bool flipped_;
};

} // namespace vistrane
