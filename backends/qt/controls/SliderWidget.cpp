#include "backends/qt/controls/SliderWidget.h"

#include <cmath>
#include <map>
#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionSlider>
#include <QStylePainter>
#include <QWheelEvent>

#include "backends/pictures/graphics_state.h"
#include "backends/qt/controls/QtGraphicsContext.h"
#include "backends/qt/controls/focus_ring.h"

namespace vistrane {

namespace {

/// The size of the knob in points; larger than the style's.
constexpr int knobSize = 20;

} // namespace

SliderWidget::SliderWidget(QWidget* parent) : QSlider(Qt::Horizontal, parent) {}

void SliderWidget::setCell(std::shared_ptr<NSSliderCell> cell) {
    cell_ = std::move(cell);
    updateGeometry();
    update();
}

void SliderWidget::setUnmovedPressHandler(std::function<void()> handler) {
    unmovedPress_ = std::move(handler);
}

QSize SliderWidget::sizeHint() const {
    const QSize size = QSlider::sizeHint();
    return cell_ ? size.expandedTo(QSize(0, knobSize + 2 * focusRingWidth)) : size;
}

QSize SliderWidget::minimumSizeHint() const {
    const QSize size = QSlider::minimumSizeHint();
    return cell_ ? size.expandedTo(QSize(0, knobSize + 2 * focusRingWidth)) : size;
}

QRectF SliderWidget::knobRect() const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    const double range = width() - knobSize - 2.0 * focusRingWidth;
    const int place = QStyle::sliderPositionFromValue(minimum(), maximum(), sliderPosition(),
                                                      static_cast<int>(range), option.upsideDown);
    return {static_cast<double>(focusRingWidth + place), (height() - knobSize) / 2.0,
            static_cast<double>(knobSize), static_cast<double>(knobSize)};
}

int SliderWidget::valueAt(const QPointF& place) const {
    QStyleOptionSlider option;
    initStyleOption(&option);
    QRectF knob = knobRect();
    double start = focusRingWidth;
    double range = width() - knobSize - 2.0 * focusRingWidth;
    if (!cell_) {
        const QRect groove =
            style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
        knob = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
        start = groove.x();
        range = groove.width() - knob.width();
    }
    return QStyle::sliderValueFromPosition(
        minimum(), maximum(), static_cast<int>(std::lround(place.x() - start - knob.width() / 2.0)),
        static_cast<int>(range), option.upsideDown);
}

void SliderWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const int before = value();
    setSliderDown(true);
    setSliderPosition(valueAt(event->position()));
    update();
    if (value() == before && unmovedPress_) {
        unmovedPress_();
    }
}

void SliderWidget::mouseMoveEvent(QMouseEvent* event) {
    if (isSliderDown()) {
        setSliderPosition(valueAt(event->position()));
    } else {
        event->ignore();
    }
}

void SliderWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (isSliderDown() && event->button() == Qt::LeftButton) {
        setSliderDown(false);
        update();
    } else {
        event->ignore();
    }
}

void SliderWidget::wheelEvent(QWheelEvent* event) {
    constexpr int notch = 120;
    const QPoint turn = event->angleDelta();
    const int forward = downGoesForward() ? -turn.y() : turn.y();
    turned_ += forward != 0 ? forward : -turn.x();
    const int steps = turned_ / notch;
    turned_ %= notch;
    setValue(value() + steps * singleStep());
    event->accept();
}

void SliderWidget::keyPressEvent(QKeyEvent* event) {
    // Not by Qt's inverted controls, which turn the keys Left and Right as well.
    static const std::map<int, SliderAction> actions{{Qt::Key_Up, SliderSingleStepSub},
                                                     {Qt::Key_Down, SliderSingleStepAdd},
                                                     {Qt::Key_PageUp, SliderPageStepSub},
                                                     {Qt::Key_PageDown, SliderPageStepAdd}};
    const auto action = actions.find(event->key());
    if (downGoesForward() && action != actions.end()) {
        triggerAction(action->second);
    } else {
        QSlider::keyPressEvent(event);
    }
}

void SliderWidget::paintEvent(QPaintEvent* event) {
    if (cell_) {
        paintWithCell();
    } else {
        QSlider::paintEvent(event);
    }
}

void SliderWidget::paintWithCell() {
    QStylePainter painter(this);
    // The style draws the bar; the cell draws the knob and places the ticks.
    QStyleOptionSlider option;
    initStyleOption(&option);
    option.subControls = QStyle::SC_SliderGroove;
    option.tickPosition = NoTicks;
    painter.drawComplexControl(QStyle::CC_Slider, option);

    const auto context = std::make_shared<QtGraphicsContext>(painter, height());
    paintTicks(painter, *context);
    const QRectF knob = knobRect();
    if (showsFocusRing(*this)) {
        constexpr double width = focusRingWidth;
        drawFocusRing(painter, knob.adjusted(-width, -width, width, width), palette());
    }
    pushGraphicsContext();
    setCurrentGraphicsContext(context);
    cell_->drawKnob(context->toBottomLeft(knob));
    popGraphicsContext();
}

void SliderWidget::paintTicks(QPainter& painter, const QtGraphicsContext& context) {
    const int ticks = property("numberOfTickMarks").toInt();
    for (NSInteger index = 0; index < ticks; ++index) {
        const NSRect tick = cell_->rectOfTickMarkAtIndex(index);
        if (tick.size.width > 0.0 && tick.size.height > 0.0) {
            painter.fillRect(context.fromBottomLeft(tick), palette().color(QPalette::Dark));
        }
    }
}

} // namespace vistrane
