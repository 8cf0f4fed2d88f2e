#pragma once

class QPainter;
class QPalette;
class QRectF;
class QWidget;

namespace vistrane {

/// How wide the ring is, in points.
constexpr int focusRingWidth = 2;

/// Whether the widget has the keyboard and its user uses that.
bool showsFocusRing(const QWidget& widget);

/// Draws just within `outline`, with round corners.
void drawFocusRing(QPainter& painter, const QRectF& outline, const QPalette& palette);

} // namespace vistrane
