#pragma once

#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "backends/pictures/PictureLimits.h"
#include "backends/pictures/PictureObserver.h"
#include "backends/pictures/PictureSource.h"
#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

class PictureCache;

/// Implements the picture messages of `AppKit`. Any thread.
///
/// Picture files are PNG files of every kind. They are validated when loaded, and decoded to sRGB
/// when drawn: untagged pictures are taken as sRGB, an embedded profile is converted. Data may also
/// carry a decoded picture (`PictureData`), as camera stills do.
class Pictures {
public:
    /// The observer outlives every object that this one returns.
    explicit Pictures(PictureObserver& observer, PictureLimits limits = {});
    Pictures(const Pictures&) = delete;
    Pictures& operator=(const Pictures&) = delete;
    ~Pictures();

    /// Reports to the observer why it returns null. Ignores the file name's extension. Images of
    /// the same state of a file share its data.
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) const;
    /// `data` is a PNG file or a `PictureData`. Reports to the observer why it returns null, unless
    /// `data` is null.
    std::shared_ptr<NSImage> imageWithData(const std::shared_ptr<NSData>& data) const;
    /// `data` is a PNG file or the `PictureData` that `NSImage::TIFFRepresentation` returns. Data
    /// that the result encodes report their writing to the observer.
    std::shared_ptr<NSBitmapImageRep> imageRepWithData(const std::shared_ptr<NSData>& data) const;

    /// Null without a context. `context` comes from `MediaCoreGraphics`.
    std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(CGContextRef context,
                                                                    bool flipped) const;
    /// The graphics state belongs to the calling thread, not to this object.
    void saveGraphicsState() const;
    void setCurrentContext(std::shared_ptr<NSGraphicsContext> context) const;
    void restoreGraphicsState() const;

private:
    void reportFlaw(const PictureSource& picture) const;

    PictureObserver& observer_;
    PictureLimits limits_;
    std::unique_ptr<PictureCache> cache_;
    mutable std::mutex flawsMutex_;
    /// The names of the pictures whose flaw was reported.
    mutable std::set<std::string> reportedFlaws_;
};

} // namespace vistrane
