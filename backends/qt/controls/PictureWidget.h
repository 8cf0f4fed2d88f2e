#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QColor>
#include <QImage>
#include <QWidget>

#include "platform/appkit/NSImage.h"

namespace vistrane {

/// Shows one picture, scaled to fit and centred. Main thread only.
///
/// A picture file is decoded when it is first painted, and scaled once for each size and screen
/// scale. A large picture is scaled down while it is decoded, so memory never holds all its pixels.
/// If another size is needed, it is decoded again, in full. For a damaged file nothing is shown.
class PictureWidget : public QWidget {
public:
    explicit PictureWidget(QWidget* parent = nullptr);

    /// Without a colour the background is transparent.
    void setBackground(std::optional<QColor> color);

    /// Null removes the picture. A picture with the same source as the last one, such as a still
    /// that is found in the folder again, is not scaled again.
    void setPicture(std::shared_ptr<NSImage> picture);
    /// For moving pictures: each replaces the last one, even if that was not painted yet.
    void setFrame(QImage frame);

    /// Shows a text while there is no picture, until there is a frame again. It is also the
    /// description for screen readers meanwhile. An empty text ends it.
    void setNotice(const QString& text);

    /// Called with true when the widget becomes visible, with false when it is hidden.
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
    void paintText(QPainter& painter, const QString& text) const;

    std::optional<QColor> background_;
    /// Reset once the picture is decoded in full. Kept for vector pictures.
    std::shared_ptr<NSImage> picture_;
    bool isMovingPicture_ = false;
    QString notice_;
    QString usualDescription_;
    /// Whether there has been a picture, even an unreadable one. The hint is then not shown again.
    bool isInUse_ = false;
    QSizeF shape_;
    QImage pixels_;
    QImage scaled_;
    std::function<void(bool)> visibilityHandler_;
    QSize preferredSize_{320, 240};
};

} // namespace vistrane
