#pragma once

#include <memory>

#include "backends/pictures/PictureSource.h"
#include "platform/appkit/NSImage.h"

namespace vistrane {

struct Drawing;

/// A picture of this back end. Its pixels are decoded each time it is drawn.
class MediaImage final : public NSImage {
public:
    explicit MediaImage(std::shared_ptr<const PictureSource> source);

    NSSize size() const override;
    /// Always a `PictureData`.
    std::shared_ptr<NSData> TIFFRepresentation() const override;
    void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                     double fraction) const override;
    void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                    double fraction) const override;

    /// The pixels, for a view. Any thread.
    const std::shared_ptr<const PictureSource>& source() const { return source_; }

private:
    void draw(const Drawing& drawing) const;

    std::shared_ptr<const PictureSource> source_;
};

} // namespace vistrane
