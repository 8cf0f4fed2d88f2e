#pragma once

#include <memory>

#include "backends/pictures/PictureSource.h"
#include "platform/appkit/NSImage.h"

namespace vistrane {

struct Drawing;

/// A picture as this folder makes it. Its pixels are decoded each time they are drawn.
class MediaImage final : public NSImage {
public:
    explicit MediaImage(std::shared_ptr<const PictureSource> source);

    NSSize size() const override;
    std::shared_ptr<NSData> TIFFRepresentation() const override;
    void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                     double fraction) const override;
    void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                    double fraction) const override;

    /// The picture's pixels, for a view that shows them; any thread.
    const std::shared_ptr<const PictureSource>& source() const { return source_; }

private:
    void draw(const Drawing& drawing) const;

    std::shared_ptr<const PictureSource> source_;
};

} // namespace vistrane
