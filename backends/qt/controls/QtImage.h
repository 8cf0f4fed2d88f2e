#pragma once

#include <memory>
#include <utility>
#include <variant>

#include <QIcon>
#include <QImage>
#include <QSvgRenderer>

#include "platform/appkit/NSImage.h"

class QPainter;

namespace vistrane {

/// A picture of the program's resources: vectors, which are drawn at any size, or pixels. Main
/// thread only.
class QtImage final : public NSImage {
public:
    /// Either holds valid data.
    using Picture = std::variant<std::shared_ptr<QSvgRenderer>, QImage>;

    explicit QtImage(Picture picture) : picture_(std::move(picture)) {}

    NSSize size() const override;
    /// Null, because these pictures are only drawn.
    std::shared_ptr<NSData> TIFFRepresentation() const override { return nullptr; }

    // Both draw only if the current context is a `QtGraphicsContext`.
    void drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                     double fraction) const override;
    void drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                    double fraction) const override;

    /// Stretches the whole picture over `target`.
    void paint(QPainter& painter, const QRectF& target) const;

    const Picture& picture() const { return picture_; }

private:
    Picture picture_;
};

/// An icon that keeps the aspect ratio and is sharp at every size and scale. Empty if the picture
/// is not a `QtImage`.
QIcon iconOf(const NSImage& image);

} // namespace vistrane
