#include "backends/qt/controls/PathButton.h"

#include <algorithm>

#include <QHelpEvent>
#include <QStyleOptionButton>
#include <QStylePainter>
#include <QTextDocument>
#include <QToolTip>

#include "backends/qt/controls/shown_text.h"

namespace vistrane {

namespace {

bool isRightToLeft(char32_t character) {
    switch (QChar::direction(character)) {
    case QChar::DirR:
    case QChar::DirAL:
    case QChar::DirAN:
    case QChar::DirRLE:
    case QChar::DirRLO:
    case QChar::DirRLI:
        return true;
    default:
        return false;
    }
}

/// Makes the path read from left to right, as paths do in every language. Adds no marks if it does
/// so anyway: most fonts lack them, so all other fonts would be searched.
QString isolated(const QString& path, Qt::LayoutDirection around) {
    const auto characters = path.toUcs4();
    const bool readsByItself = around == Qt::LeftToRight &&
                               std::none_of(characters.begin(), characters.end(), isRightToLeft);
    return readsByItself ? path : QChar(0x2066) + path + QChar(0x2069);
}

/// Escapes the text, because a tool tip interprets markup.
QString tipOf(const QString& path) {
    return Qt::mightBeRichText(path)
               ? QStringLiteral("<p style='white-space:pre'>%1</p>").arg(path.toHtmlEscaped())
               : path;
}

} // namespace

QSize PathButton::sizeHint() const {
    // A long path must not widen the window: the layout gives the button the remaining room.
    constexpr int width = 240;
    return QPushButton::sizeHint().boundedTo(QSize(width, QWIDGETSIZE_MAX));
}

QSize PathButton::minimumSizeHint() const {
    constexpr int width = 120;
    return sizeHint().boundedTo(QSize(width, QWIDGETSIZE_MAX));
}

QString PathButton::fittingText() const {
    QStyleOptionButton option;
    initStyleOption(&option);
    constexpr int padding = 12;
    const int icon = option.icon.isNull() ? 0 : option.iconSize.width() + padding;
    const QRect inside = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, inside.width() - icon - padding,
                                    Qt::TextShowMnemonic);
}

bool PathButton::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) {
        return QPushButton::event(event);
    }
    const QString fitting = fittingText();
    const QString shown = fitting == text() ? toolTip() : tipOf(withoutMarks(text()));
    QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), shown, this);
    return true;
}

void PathButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text = isolated(fittingText(), layoutDirection());
    painter.drawControl(QStyle::CE_PushButton, option);
}

} // namespace vistrane
