#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QColor>
#include <QImage>
#include <QWidget>

#include "platform/appkit/NSImage.h"

namespace vistrane {

/// A place for one picture: as large as it fits with its shape kept, centred. Main thread only.
///
/// A picture file is decoded once, when it is first painted, and scaled once for each size and
/// scale of the screen. A large one is made smaller while it is decoded, so that it is never in
/// memory whole, and is decoded once more, whole, should another size be wanted. One that turns
/// out to be damaged shows as none.
class PictureWidget : public QWidget {
public:
    explicit PictureWidget(QWidget* parent = nullptr);

    /// Nothing lets shine through what is behind.
    void setBackground(std::optional<QColor> color);

    /// Null empties the place.
    void setPicture(std::shared_ptr<NSImage> picture);
    /// Moving pictures: each takes the place of the last one, painted or not.
    void setFrame(QImage frame);

    /// Called when the place comes to be seen, with true, and when it is seen no longer.
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
    /// Until it is decoded whole, or as long as it is made of vectors.
    std::shared_ptr<NSImage> picture_;
    bool isMovingPicture_ = false;
    /// A hint makes room for the first picture, also for one that cannot be read, and does not come
    /// back.
    bool isInUse_ = false;
    QSizeF shape_;
    QImage pixels_;
    QImage scaled_;
    std::function<void(bool)> visibilityHandler_;
    QSize preferredSize_{320, 240};
};

} // namespace vistrane
