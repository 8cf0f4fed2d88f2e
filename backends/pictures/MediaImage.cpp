#include "backends/pictures/MediaImage.h"

#include <utility>
#include <variant>

#include "backends/pictures/BitmapContext.h"
#include "backends/pictures/DecodedPicture.h"
#include "backends/pictures/PictureData.h"
#include "backends/pictures/drawing.h"
#include "backends/pictures/graphics_state.h"

namespace vistrane {

MediaImage::MediaImage(std::shared_ptr<const PictureSource> source) : source_(std::move(source)) {}

NSSize MediaImage::size() const {
    return source_->shape().sizeInPoints();
}

std::shared_ptr<NSData> MediaImage::TIFFRepresentation() const {
    auto decoded = decodedPicture(source_);
    auto* picture = std::get_if<std::shared_ptr<const PictureSource>>(&decoded);
    return picture != nullptr ? std::make_shared<PictureData>(std::move(*picture)) : nullptr;
}

void MediaImage::drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                             double fraction) const {
    draw({point, fromRect, operation, fraction});
}

void MediaImage::drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                            double fraction) const {
    const NSSize part = fromRect == NSZeroRect ? size() : fromRect.size;
    if (part.width > 0.0 && part.height > 0.0) {
        draw({rect.origin,
              fromRect,
              operation,
              fraction,
              {rect.size.width / part.width, rect.size.height / part.height}});
    }
}

void MediaImage::draw(const Drawing& drawing) const {
    const auto context = std::dynamic_pointer_cast<MediaGraphicsContext>(currentGraphicsContext());
    if (!context) {
        return;
    }
    if (const auto error = drawPicture(*source_, context->surface(), drawing)) {
        context->context().markDamaged(*error);
    }
}

} // namespace vistrane
