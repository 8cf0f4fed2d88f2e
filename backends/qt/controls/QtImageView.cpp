#include "backends/qt/controls/QtImageView.h"

#include "backends/cameras/MediaPreviewLayer.h"

namespace vistrane {

namespace {

/// A copy, because the camera reuses its memory.
QImage copyOf(const PreviewPicture& picture) {
    if (!picture.pixels) {
        return {};
    }
    return QImage(picture.pixels.get(), picture.width, picture.height,
                  static_cast<qsizetype>(picture.stride), QImage::Format_RGB32)
        .copy();
}

} // namespace

QtLayer::QtLayer(PictureWidget& place) : place_(&place) {}

QtLayer::~QtLayer() {
    if (preview_) {
        preview_->setPictureHandler(nullptr);
    }
    if (place_) {
        place_->setVisibilityHandler(nullptr);
    }
}

void QtLayer::setBackgroundColor(CGColor color) {
    if (place_) {
        place_->setBackground(
            QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                             static_cast<float>(color.blue), static_cast<float>(color.alpha)));
    }
}

void QtLayer::addSublayer(std::shared_ptr<CALayer> layer) {
    sublayers_.push_back(layer);
    preview_ = std::dynamic_pointer_cast<MediaPreviewLayer>(layer);
    if (preview_ && place_) {
        place_->setVisibilityHandler([this](bool isSeen) { showPreview(isSeen); });
        showPreview(place_->isVisible());
    }
}

void QtLayer::showPreview(bool isSeen) {
    if (!isSeen) {
        preview_->setPictureHandler(nullptr);
        // Removes the last picture, which would be outdated when the widget is shown again.
        place_->setFrame({});
        return;
    }
    preview_->setPictureHandler([place = place_](const PreviewPicture& picture) {
        if (place) {
            place->setFrame(copyOf(picture));
        }
    });
}

NSRect QtImageView::bounds() const {
    return {{0.0, 0.0},
            {static_cast<double>(place_.width()), static_cast<double>(place_.height())}};
}

void QtImageView::setWantsLayer(bool wanted) {
    if (!wanted) {
        layer_.reset();
        place_.setBackground({});
    } else if (!layer_) {
        layer_ = std::make_shared<QtLayer>(place_);
    }
}

void QtImageView::setNeedsDisplay(bool needed) {
    if (needed) {
        place_.update();
    }
}

void QtImageView::setImage(std::shared_ptr<NSImage> image) {
    place_.setPicture(std::move(image));
}

QWidget* widgetOf(NSView& view) {
    const auto* const own = dynamic_cast<QtImageView*>(&view);
    return own != nullptr ? &own->widget() : nullptr;
}

} // namespace vistrane
