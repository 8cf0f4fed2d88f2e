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

/// A picture of the program's resources, made of vectors, which are drawn at any size, or of
/// pixels. Main thread only.
class QtImage final : public NSImage {
public:
    /// Valid vectors, or pixels.
    using Picture = std::variant<std::shared_ptr<QSvgRenderer>, QImage>;

    explicit QtImage(Picture picture) : picture_(std::move(picture)) {}

    NSSize size() const override;
    /// Null: these pictures are only drawn.
    std::shared_ptr<NSData> TIFFRepresentation() const override { return nullptr; }

    // Both draw into a current context that is a `QtGraphicsContext`, and nowhere else.
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

/// An icon that keeps the aspect ratio and is sharp at every size and scale. Empty for a picture
/// that is no `QtImage`.
QIcon iconOf(const NSImage& image);

} // namespace vistrane
