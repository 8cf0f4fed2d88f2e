#pragma once

#include <functional>
#include <memory>

#include <QSlider>

#include "platform/appkit/NSSliderCell.h"

namespace vistrane {

class QtGraphicsContext;

/// A slider whose knob jumps to where it is clicked and follows the mouse from there.
///
/// With a cell it is the cell that draws the knob and says where the tick marks are; the property
/// "numberOfTickMarks" says how many there are. All else looks as without one.
class SliderWidget : public QSlider {
public:
    explicit SliderWidget(QWidget* parent = nullptr);

    void setCell(std::shared_ptr<NSSliderCell> cell);

    /// Called when the mouse is pressed where it changes no value, in place of valueChanged().
    void setUnmovedPressHandler(std::function<void()> handler);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void paintWithCell();
    void paintTicks(QPainter& painter, const QtGraphicsContext& context);
    QRectF knobRect() const;
    int valueAt(const QPointF& place) const;

    std::shared_ptr<NSSliderCell> cell_;
    std::function<void()> unmovedPress_;
};

} // namespace vistrane
