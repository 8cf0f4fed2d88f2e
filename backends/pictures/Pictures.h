#pragma once

#include <memory>
#include <string>

#include "backends/pictures/PictureLimits.h"
#include "backends/posix/MediaObserver.h"
#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

class PictureCache;

/// The picture messages of `AppKit`, for a front end to pass on. Any thread.
///
/// Pictures are PNG files of every form. They are checked when loaded and decoded when drawn, into
/// sRGB: untagged ones count as sRGB, an embedded profile is converted. Bytes may also be a binary
/// PPM file (see `ppm.h`), which is how raw camera pictures travel.
class Pictures {
public:
    /// The observer outlives everything made here.
    explicit Pictures(MediaObserver& observer, PictureLimits limits = {});
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;
    ~Pictures();

    /// Tells the observer why when it returns null. The name's ending does not matter. What was
    /// read of a file is shared with those who still have a picture of its present state.
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) const;
    /// PNG or PPM.
    std::shared_ptr<NSImage> imageWithData(const std::shared_ptr<NSData>& data) const;
    /// PNG, PPM or what `NSImage::TIFFRepresentation` made. Data that it encodes report their
    /// writing to the observer.
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(const std::shared_ptr<NSData>& data) const;

    /// Null without a context. The context is one of `MediaCoreGraphics`.
    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) const;
    /// The graphics state belongs to the calling thread, not to this object.
    void saveGraphicsState() const;
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) const;
    void restoreGraphicsState() const;

private:
    MediaObserver& observer_;
    PictureLimits limits_;
    std::unique_ptr<PictureCache> cache_;
};

} // namespace vistrane
