#include "backends/qt/controls/SignWidget.h"

#include <algorithm>

#include <QAccessibleWidget>
#include <QMainWindow>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

namespace vistrane {

namespace {

/// In points. The margins are those of the controls above.
constexpr int sideMargin = 20;
constexpr int bottomMargin = 6;
constexpr int dotSize = 10;
constexpr int gap = 8;

/// Its name is the text of the moment, without an event for each change.
class AccessibleSign final : public QAccessibleWidget {
public:
    explicit AccessibleSign(SignWidget& sign)
        : QAccessibleWidget(&sign, QAccessible::StaticText), sign_(sign) {}

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? sign_.text() : QAccessibleWidget::text(kind);
    }

private:
    const SignWidget& sign_;
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* const sign = dynamic_cast<SignWidget*>(object);
    return sign != nullptr ? new AccessibleSign(*sign) : nullptr;
}

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() <
           palette.color(QPalette::WindowText).lightness();
}

} // namespace

SignWidget::SignWidget(QMainWindow& window) {
    [[maybe_unused]] static const bool isInstalled = [] {
        QAccessible::installFactory(makeAccessible);
        return true;
    }();
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    auto* const contents = new QWidget;
    auto* const column = new QVBoxLayout(contents);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(window.takeCentralWidget(), 1);
    column->addWidget(this);
    window.setCentralWidget(contents);
}

QString SignWidget::text() const {
    return warning_.isEmpty() ? status_ : status_ + QStringLiteral(", ") + warning_;
}

void SignWidget::show(const QString& status, const QString& calmStatus, const QString& warning) {
    if (status == status_ && calmStatus == calmStatus_ && warning == warning_) {
        return;
    }
    const bool isChange = calmStatus != calmStatus_ || warning != warning_;
    const bool isNewWarning = warning_.isEmpty() && !warning.isEmpty();
    status_ = status;
    calmStatus_ = calmStatus;
    warning_ = warning;
    setToolTip(text());
    update();
    if (isChange) {
        tell(QAccessible::NameChanged);
    }
    if (isNewWarning) {
        tell(QAccessible::Alert);
    }
}

void SignWidget::tell(QAccessible::Event type) {
    QAccessibleEvent event(this, type);
    QAccessible::updateAccessibility(&event);
}

QSize SignWidget::sizeHint() const {
    const int width =
        2 * sideMargin + dotSize + 2 * gap + fontMetrics().horizontalAdvance(status_ + warning_);
    return {width, fontMetrics().height() + bottomMargin};
}

QSize SignWidget::minimumSizeHint() const {
    return {2 * sideMargin, sizeHint().height()};
}

void SignWidget::paintEvent(QPaintEvent*) {
    if (status_.isEmpty()) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const int height = fontMetrics().height();
    const auto mirrored = [this](const QRect& place) {
        return QStyle::visualRect(layoutDirection(), rect(), place);
    };
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDark(palette()) ? QColor(0xff, 0x5a, 0x52) : QColor(0xd0, 0x21, 0x1f));
    painter.drawEllipse(mirrored({sideMargin, (height - dotSize) / 2, dotSize, dotSize}));

    const int start = sideMargin + dotSize + gap;
    const int room = std::max(0, width() - sideMargin - start);
    const int forWarning =
        warning_.isEmpty() ? 0 : std::min(room, fontMetrics().horizontalAdvance(warning_) + 1);
    const int forStatus =
        std::clamp(fontMetrics().horizontalAdvance(status_) + 1, 0,
                   std::max(0, room - forWarning - (warning_.isEmpty() ? 0 : gap)));
    const auto draw = [&](int left, int width, const QString& text) {
        painter.drawText(
            mirrored({left, 0, width, height}),
            static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft)) |
                Qt::AlignVCenter | Qt::TextSingleLine,
            fontMetrics().elidedText(text, Qt::ElideRight, width));
    };
    painter.setPen(palette().color(QPalette::WindowText));
    draw(start, forStatus, status_);
    painter.setPen(isDark(palette()) ? QColor(0xff, 0xb8, 0x4d) : QColor(0x94, 0x4a, 0x00));
    draw(start + forStatus + gap, forWarning, warning_);
}

} // namespace vistrane
