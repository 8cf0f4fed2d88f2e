#include "backends/qt/controls/PictureWidget.h"

#include <limits>
#include <utility>

#include <QPainter>
#include <QPainterPath>

#include "backends/pictures/Downscaling.h"
#include "backends/pictures/MediaImage.h"
#include "backends/qt/controls/QtImage.h"

namespace vistrane {

namespace {

constexpr double cornerRadius = 6.0;

/// Null if the file is damaged.
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

const PictureSource* fileOf(const std::shared_ptr<NSImage>& picture) {
    const auto* const file = dynamic_cast<const MediaImage*>(picture.get());
    return file != nullptr ? file->source().get() : nullptr;
}

std::size_t number(int side) {
    return static_cast<std::size_t>(side);
}

/// Whether the picture can be scaled down to `size`, which is at least 1 x 1, while it is decoded.
bool canScaleWhileDecoding(const PictureShape& shape, QSize size) {
    return !shape.mayBeTransparent && number(size.width()) <= shape.width &&
           number(size.height()) <= shape.height;
}

/// Null if the file is damaged.
QImage scaledWhileDecoding(const PictureSource& source, QSize size) {
    QImage pixels(size, QImage::Format_RGB32);
    if (pixels.isNull() || source.readSmaller(number(size.width()), number(size.height()),
                                              reinterpret_cast<std::uint32_t*>(pixels.bits()),
                                              pixels.bytesPerLine())) {
        return {};
    }
    return pixels;
}

QImage scaledWhileDecoding(const QImage& image, QSize size) {
    QImage pixels(size, QImage::Format_RGB32);
    if (pixels.isNull()) {
        return {};
    }
    const PictureShape shape{static_cast<std::uint32_t>(image.width()),
                             static_cast<std::uint32_t>(image.height()),
                             {},
                             false};
    Downscaling smaller(shape, PixelForm::RGBA, number(size.width()), number(size.height()),
                        reinterpret_cast<std::uint32_t*>(pixels.bits()), pixels.bytesPerLine());
    smaller.begin();
    for (int y = 0; y < image.height(); ++y) {
        smaller.take(image.constScanLine(y));
    }
    return pixels;
}

QImage scaled(const QImage& image, QSize size) {
    const bool isSmaller = size.width() <= image.width() && size.height() <= image.height();
    if (isSmaller && image.format() == QImage::Format_RGBX8888) {
        return scaledWhileDecoding(image, size);
    }
    // This format is painted without conversion.
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                 : QImage::Format_RGB32);
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
    const bool hasSamePixels = fileOf(picture) != nullptr && fileOf(picture) == fileOf(picture_);
    pixels_ = {};
    if (!hasSamePixels) {
        scaled_ = {};
    }
    const NSSize size = picture ? picture->size() : NSSize{};
    shape_ = QSizeF(size.width, size.height);
    picture_ = std::move(picture);
    const PictureSource* const file = fileOf(picture_);
    if (file != nullptr && !hasSamePixels && isVisible()) {
        const QSize wanted = pixelsIn(place());
        if (canScaleWhileDecoding(file->shape(), wanted)) {
            file->expectSmaller(number(wanted.width()), number(wanted.height()));
        }
    }
    update();
}

void PictureWidget::setFrame(QImage frame) {
    isInUse_ = isInUse_ || !frame.isNull();
    isMovingPicture_ = true;
    picture_.reset();
    scaled_ = {};
    shape_ = frame.size();
    pixels_ = std::move(frame);
    if (!pixels_.isNull() && !notice_.isEmpty()) {
        setNotice({});
    }
    update();
}

void PictureWidget::setNotice(const QString& text) {
    if (notice_.isEmpty()) {
        usualDescription_ = accessibleDescription();
    }
    notice_ = text;
    setAccessibleDescription(text.isEmpty() ? usualDescription_ : text);
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
    if (!notice_.isEmpty() && shape_.isEmpty()) {
        paintText(painter, notice_);
    } else if (!isInUse_) {
        paintText(painter, property("hint").toString());
    }
}

/// The area of the picture.
QRect PictureWidget::place() const {
    QRectF place(QPointF(), shape_.scaled(size(), Qt::KeepAspectRatio));
    place.moveCenter(QRectF(rect()).center());
    return place.toAlignedRect().intersected(rect());
}

QSize PictureWidget::pixelsIn(const QRect& place) const {
    return (QSizeF(place.size()) * devicePixelRatioF()).toSize().expandedTo(QSize(1, 1));
}

void PictureWidget::decode() {
    if (const PictureSource* const file = fileOf(picture_)) {
        pixels_ = decoded(*file);
    } else if (const auto* const resource = dynamic_cast<const QtImage*>(picture_.get())) {
        pixels_ = std::get<QImage>(resource->picture());
    }
    // Also set for a damaged file, so that it is not read again.
    picture_.reset();
}

void PictureWidget::scaleTo(QSize size) {
    if (scaled_.size() == size) {
        return;
    }
    const PictureSource* const file = fileOf(picture_);
    const bool isFirst = scaled_.isNull();
    if (file != nullptr && isFirst && canScaleWhileDecoding(file->shape(), size)) {
        scaled_ = scaledWhileDecoding(*file, size);
        if (scaled_.isNull()) {
            picture_.reset();
        }
        return;
    }
    if (picture_) {
        decode();
    }
    scaled_ = pixels_.isNull() ? QImage() : scaled(pixels_, size);
}

void PictureWidget::paintPicture(QPainter& painter) {
    if (shape_.isEmpty()) {
        return;
    }
    const QRect place = this->place();
    const auto* const drawn = dynamic_cast<const QtImage*>(picture_.get());
    if (drawn != nullptr && !std::holds_alternative<QImage>(drawn->picture())) {
        drawn->paint(painter, place);
    } else if (isMovingPicture_) {
        painter.drawImage(place, pixels_);
    } else {
        scaleTo(pixelsIn(place));
        scaled_.setDevicePixelRatio(devicePixelRatioF());
        painter.drawImage(place.topLeft(), scaled_);
    }
}

void PictureWidget::paintText(QPainter& painter, const QString& text) const {
    constexpr int margin = 24;
    painter.setPen(QColor(150, 150, 150));
    painter.drawText(rect().adjusted(margin, margin, -margin, -margin),
                     Qt::AlignCenter | Qt::TextWordWrap, text);
}

} // namespace vistrane
