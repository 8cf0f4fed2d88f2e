#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QColor>
#include <QImage>
#include <QWidget>

#include "platform/appkit/NSImage.h"

namespace vistrane {

/// A place for one picture, fitted into it with its aspect ratio kept, and centred. Main thread
/// only.
///
/// A picture file is decoded once, when it is first painted, and scaled once for each size and
/// scale of the screen. A large one is scaled down while it is decoded, so that memory never holds
/// all its pixels. It is decoded again, in full, when another size is needed. A damaged one shows
/// as none.
class PictureWidget : public QWidget {
public:
    explicit PictureWidget(QWidget* parent = nullptr);

    /// Without a color the place is transparent.
    void setBackground(std::optional<QColor> color);

    /// Null empties the place.
    void setPicture(std::shared_ptr<NSImage> picture);
    /// Moving pictures: each replaces the last one, painted or not.
    void setFrame(QImage frame);

    /// Called with true when the place becomes visible, with false when it is hidden.
    void setVisibilityHandler(std::function<void(bool)> handler);

    QSize sizeHint() const override { return preferredSize_; }
    void setPreferredSize(QSize size);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QRect place() const;
    QSize pixelsIn(const QRect& place) const;
    void decode();
    void scaleTo(QSize size);
    void paintPicture(QPainter& painter);
    void paintHint(QPainter& painter) const;

    std::optional<QColor> background_;
    /// Reset once it is decoded in full. Vector pictures are kept.
    std::shared_ptr<NSImage> picture_;
    bool isMovingPicture_ = false;
    /// There has been a picture, even an unreadable one: the hint is not shown again.
    bool isInUse_ = false;
    QSizeF shape_;
    QImage pixels_;
    QImage scaled_;
    std::function<void(bool)> visibilityHandler_;
    QSize preferredSize_{320, 240};
};

} // namespace vistrane
