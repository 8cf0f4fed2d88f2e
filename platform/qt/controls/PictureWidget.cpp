#include "platform/qt/controls/PictureWidget.h"

#include <limits>
#include <utility>

#include <QPainter>
#include <QPainterPath>

#include "platform/media/pictures/MediaImage.h"
#include "platform/qt/controls/QtImage.h"

namespace vistrane {

namespace {

constexpr double cornerRadius = 6.0;

/// The pixels of a picture file; null when they are damaged.
QImage decoded(const PictureSource& source) {
    const PictureShape& shape = source.shape();
    constexpr auto most = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
    if (shape.width > most || shape.height > most) {
        return {};
    }
    QImage pixels(static_cast<int>(shape.width), static_cast<int>(shape.height),
                  shape.mayBeTransparent ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
    if (pixels.isNull() ||
        source.readPixels(PixelForm::RGBA, pixels.bits(), pixels.bytesPerLine())) {
        return {};
    }
    return shape.mayBeTransparent
               ? std::move(pixels).convertToFormat(QImage::Format_RGBA8888_Premultiplied)
               : pixels;
}

} // namespace

PictureWidget::PictureWidget(QWidget* parent) : QWidget(parent) {}

void PictureWidget::setBackground(std::optional<QColor> color) {
    background_ = color;
    update();
}

void PictureWidget::setPicture(std::shared_ptr<NSImage> picture) {
    isInUse_ = true;
    isMovingPicture_ = false;
    pixels_ = {};
    scaled_ = {};
    picture_ = std::move(picture);
    update();
}

void PictureWidget::setFrame(QImage frame) {
    isInUse_ = isInUse_ || !frame.isNull();
    isMovingPicture_ = true;
    picture_.reset();
    shape_ = frame.size();
    pixels_ = std::move(frame);
    update();
}

void PictureWidget::setVisibilityHandler(std::function<void(bool)> handler) {
    visibilityHandler_ = std::move(handler);
}

void PictureWidget::setPreferredSize(QSize size) {
    preferredSize_ = size;
    updateGeometry();
}

void PictureWidget::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (visibilityHandler_) {
        visibilityHandler_(true);
    }
}

void PictureWidget::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    if (visibilityHandler_) {
        visibilityHandler_(false);
    }
}

void PictureWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    if (background_) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(*background_);
        painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
        QPainterPath inside;
        inside.addRoundedRect(rect(), cornerRadius, cornerRadius);
        painter.setClipPath(inside);
    }
    paintPicture(painter);
    if (!isInUse_) {
        paintHint(painter);
    }
}

void PictureWidget::decode() {
    const auto file = std::dynamic_pointer_cast<MediaImage>(picture_);
    const auto resource = std::dynamic_pointer_cast<QtImage>(picture_);
    const QImage* const pixels = resource ? std::get_if<QImage>(&resource->picture()) : nullptr;
    if (!file && pixels == nullptr) {
        return;
    }
    const NSSize size = picture_->size();
    shape_ = QSizeF(size.width, size.height);
    pixels_ = file ? decoded(*file->source()) : *pixels;
    // Damaged or not: it is not read a second time.
    picture_.reset();
}

QRect PictureWidget::placeFor(const QSizeF& shape) const {
    QRectF place(QPointF(), shape.scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(QRectF(rect()).center());
    return place.toAlignedRect().intersected(rect());
}

void PictureWidget::paintPicture(QPainter& painter) {
    decode();
    if (const auto drawn = std::dynamic_pointer_cast<QtImage>(picture_)) {
        const NSSize size = drawn->size();
        drawn->paint(painter, placeFor(QSizeF(size.width, size.height)));
    } else if (!pixels_.isNull() && !shape_.isEmpty()) {
        paintPixels(painter, placeFor(shape_));
    }
}

void PictureWidget::paintPixels(QPainter& painter, const QRect& place) {
    if (isMovingPicture_) {
        painter.drawImage(place, pixels_);
        return;
    }
    const double ratio = devicePixelRatioF();
    const QSize wanted = (QSizeF(place.size()) * ratio).toSize().expandedTo(QSize(1, 1));
    if (scaled_.size() != wanted) {
        scaled_ = QPixmap::fromImage(
            pixels_.scaled(wanted, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }
    scaled_.setDevicePixelRatio(ratio);
    painter.drawPixmap(place.topLeft(), scaled_);
}

void PictureWidget::paintHint(QPainter& painter) const {
    const QString hint = property("hint").toString();
    if (hint.isEmpty()) {
        return;
    }
    constexpr int margin = 24;
    painter.setPen(QColor(150, 150, 150));
    painter.drawText(rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, hint);
}

} // namespace vistrane
