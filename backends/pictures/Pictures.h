#pragma once

#include <memory>
#include <string>

#include "backends/pictures/PictureLimits.h"
#include "backends/pictures/PictureObserver.h"
#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

class PictureCache;

/// Implements the picture messages of `AppKit`. Any thread.
///
/// Picture files are PNG files of every form. They are checked when loaded and decoded when drawn,
/// into sRGB: untagged ones count as sRGB, an embedded profile is converted. Data may also carry a
/// decoded picture (`PictureData`), as the stills of cameras do.
class Pictures {
public:
    /// The observer outlives every object that is made here.
    explicit Pictures(PictureObserver& observer, PictureLimits limits = {});
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;
    ~Pictures();

    /// Reports to the observer why it returns null. The file name's extension does not matter.
    /// Images of the same state of a file share what was read.
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) const;
    /// A PNG file or `PictureData`. Reports to the observer why it returns null, unless `data` is
    /// null.
    std::shared_ptr<NSImage> imageWithData(const std::shared_ptr<NSData>& data) const;
    /// A PNG file or `PictureData`, which `NSImage::TIFFRepresentation` returns. The data that the
    /// result encodes report their writing to the observer.
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(const std::shared_ptr<NSData>& data) const;

    /// Null without a context. The context is one of `MediaCoreGraphics`.
    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) const;
    /// The graphics state is the calling thread's, not this object's.
    void saveGraphicsState() const;
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) const;
    void restoreGraphicsState() const;

private:
    PictureObserver& observer_;
    PictureLimits limits_;
    std::unique_ptr<PictureCache> cache_;
};

} // namespace vistrane
