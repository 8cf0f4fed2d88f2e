#pragma once

class QPainter;
class QPalette;
class QRectF;
class QWidget;

namespace vistrane {

/// In points.
constexpr int focusRingWidth = 2;

/// Whether the widget has the focus and the user navigates by keyboard.
bool showsFocusRing(const QWidget& widget);

/// Draws the ring just inside `outline`, with round corners.
void drawFocusRing(QPainter& painter, const QRectF& outline, const QPalette& palette);

} // namespace vistrane
