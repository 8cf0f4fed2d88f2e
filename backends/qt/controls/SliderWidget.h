#pragma once

#include <functional>
#include <memory>

#include <QSlider>

#include "platform/appkit/NSSliderCell.h"

namespace vistrane {

class QtGraphicsContext;

/// A slider whose knob jumps to the click and follows the mouse from there. A notch of the wheel is
/// a single step. With the property "downGoesForward", turning it down, Down and Page Down go
/// forward, as in a list; other sliders get larger upwards.
///
/// If there is a cell, it draws the knob and places the tick marks; the property
/// "numberOfTickMarks" is their number. The style draws everything else.
class SliderWidget : public QSlider {
public:
    explicit SliderWidget(QWidget* parent = nullptr);

    void setCell(std::shared_ptr<NSSliderCell> cell);

    /// Called instead of valueChanged() if a mouse press does not change the value.
    void setUnmovedPressHandler(std::function<void()> handler);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void paintWithCell();
    void paintTicks(QPainter& painter, const QtGraphicsContext& context);
    bool downGoesForward() const { return property("downGoesForward").toBool(); }
    QRectF knobRect() const;
    int valueAt(const QPointF& place) const;

    std::shared_ptr<NSSliderCell> cell_;
    std::function<void()> unmovedPress_;
    /// Of a notch of the wheel, in eighths of a degree.
    int turned_ = 0;
};

} // namespace vistrane
