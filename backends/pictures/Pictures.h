#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "backends/pictures/PictureLimits.h"
#include "backends/pictures/PictureObserver.h"
#include "backends/pictures/PictureSource.h"
#include "platform/appkit/ImageUse.h"
#include "platform/appkit/NSBitmapImageRep.h"
#include "platform/appkit/NSGraphicsContext.h"
#include "platform/appkit/NSImage.h"
#include "platform/coregraphics/CoreGraphics.h"

namespace vistrane {

class PictureCache;
class PicturesAhead;

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
    /// the same state of a file share its data. While the last still that was encoded ahead is in
    /// use, a file with exactly its bytes gives its pixels and is not decoded.
    std::shared_ptr<NSImage> imageWithContentsOfFile(const std::string& path) const;
    /// As `AppKit::expectImages`. Expected pictures are read and decoded on other threads, as far
    /// as `PicturesAhead` has room for them. That is never reported, and never changes what
    /// `imageWithContentsOfFile` returns: it takes a picture from memory only if the file at the
    /// path is still in the state (`FileState`) in which the picture was read. A file that was
    /// changed within the last seconds is not read ahead, because another change might leave the
    /// same state, nor are damaged files.
    void expectImages(std::shared_ptr<const std::vector<std::string>> paths, std::size_t first,
                      ImageUse use) const;
    /// For tests.
    PicturesAhead& ahead() const { return *ahead_; }

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
    std::shared_ptr<const PictureSource> lastStill() const;

    PictureObserver& observer_;
    PictureLimits limits_;
    std::shared_ptr<PictureCache> cache_;
    std::unique_ptr<PicturesAhead> ahead_;
    mutable std::mutex stillMutex_;
    mutable std::weak_ptr<const PictureSource> lastStill_;
    mutable std::mutex flawsMutex_;
    /// The names of the pictures whose flaw was reported.
    mutable std::set<std::string> reportedFlaws_;
};

} // namespace vistrane
