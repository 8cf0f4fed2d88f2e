#include "backends/qt/controls/QtImage.h"

#include <utility>

#include <QIconEngine>
#include <QPainter>
#include <QPixmap>

#include "backends/pictures/graphics_state.h"
#include "backends/qt/controls/QtGraphicsContext.h"

namespace vistrane {

namespace {

/// The opacity of the icon of a disabled control.
constexpr double disabledOpacity = 0.35;

class PictureIconEngine final : public QIconEngine {
public:
    explicit PictureIconEngine(QtImage::Picture picture) : image_(std::move(picture)) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const NSSize size = image_.size();
        const QSizeF fitted =
            QSizeF(size.width, size.height).scaled(rect.size(), Qt::KeepAspectRatio);
        QRectF target(QPointF(), fitted);
        target.moveCenter(QRectF(rect).center());
        painter->save();
        if (mode == QIcon::Disabled) {
            painter->setOpacity(painter->opacity() * disabledOpacity);
        }
        image_.paint(*painter, target);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixels(size);
        pixels.fill(Qt::transparent);
        QPainter painter(&pixels);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixels;
    }

    QIconEngine* clone() const override { return new PictureIconEngine(image_.picture()); }

private:
    QtImage image_;
};

} // namespace

NSSize QtImage::size() const {
    if (const auto* vectors = std::get_if<std::shared_ptr<QSvgRenderer>>(&picture_)) {
        const QSizeF size = (*vectors)->viewBoxF().size();
        return {size.width(), size.height()};
    }
    const QSizeF size = std::get<QImage>(picture_).deviceIndependentSize();
    return {size.width(), size.height()};
}

void QtImage::drawAtPoint(NSPoint point, NSRect fromRect, NSCompositingOperation operation,
                          double fraction) const {
    const NSSize part = fromRect == NSZeroRect ? size() : fromRect.size;
    drawInRect({point, part}, fromRect, operation, fraction);
}

void QtImage::drawInRect(NSRect rect, NSRect fromRect, NSCompositingOperation operation,
                         double fraction) const {
    const auto context = std::dynamic_pointer_cast<QtGraphicsContext>(currentGraphicsContext());
    const NSSize whole = size();
    const NSRect from = fromRect == NSZeroRect ? NSRect{{0.0, 0.0}, whole} : fromRect;
    if (!context || from.size.width <= 0.0 || from.size.height <= 0.0) {
        return;
    }
    QPainter& painter = context->painter();
    const QRectF target = context->fromBottomLeft(rect);
    const double scaleX = target.width() / from.size.width;
    const double scaleY = target.height() / from.size.height;
    const double fromTop = whole.height - from.origin.y - from.size.height;

    painter.save();
    painter.setClipRect(target, Qt::IntersectClip);
    painter.setOpacity(painter.opacity() * fraction);
    painter.setCompositionMode(operation == NSCompositingOperationCopy
                                   ? QPainter::CompositionMode_Source
                                   : QPainter::CompositionMode_SourceOver);
    paint(painter, QRectF(target.x() - from.origin.x * scaleX, target.y() - fromTop * scaleY,
                          whole.width * scaleX, whole.height * scaleY));
    painter.restore();
}

void QtImage::paint(QPainter& painter, const QRectF& target) const {
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (const auto* vectors = std::get_if<std::shared_ptr<QSvgRenderer>>(&picture_)) {
        (*vectors)->render(&painter, target);
    } else {
        painter.drawImage(target, std::get<QImage>(picture_));
    }
    painter.restore();
}

QIcon iconOf(const NSImage& image) {
    const auto* const picture = dynamic_cast<const QtImage*>(&image);
    return picture != nullptr ? QIcon(new PictureIconEngine(picture->picture())) : QIcon();
}

} // namespace vistrane
