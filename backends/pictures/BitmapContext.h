#pragma once

#include <cstddef>
#include <cstdint>

#include "backends/pictures/PixelBuffer.h"
#include "backends/pictures/drawing.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

/// A drawing context on memory of the form of a `PixelBuffer`. One thread at a time.
class BitmapContext final : public CGContext {
public:
    /// `target` is the pixel buffer whose memory this is, or null; the context keeps it alive.
    BitmapContext(const Surface& surface, PixelBuffer* target);
    ~BitmapContext();

    const Surface& surface() const { return surface_; }

    /// Tells the pixel buffer that what was drawn is not to be used.
    void markDamaged(const NSError& reason);

private:
    Surface surface_;
    PixelBuffer* target_;
};

/// A bitmap context as pictures are drawn into it.
class MediaGraphicsContext final : public NSGraphicsContext {
public:
    /// `flipped`: the origin is the top left corner and pictures come out upside down.
    MediaGraphicsContext(BitmapContext* context, bool flipped)
        : context_(context), flipped_(flipped) {}

    BitmapContext& context() const { return *context_; }
    Surface surface() const;

private:
    BitmapContext* context_;
    bool flipped_;
};

} // namespace vistrane
