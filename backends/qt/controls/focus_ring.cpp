#include "backends/qt/controls/focus_ring.h"

#include <QPainter>
#include <QPalette>
#include <QWidget>

namespace vistrane {

bool showsFocusRing(const QWidget& widget) {
    return widget.hasFocus() && widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

void drawFocusRing(QPainter& painter, const QRectF& outline, const QPalette& palette) {
    constexpr double half = focusRingWidth / 2.0;
    constexpr double cornerRadius = 7.0;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette.color(QPalette::Highlight), focusRingWidth));
    painter.drawRoundedRect(outline.adjusted(half, half, -half, -half), cornerRadius, cornerRadius);
}

} // namespace vistrane
