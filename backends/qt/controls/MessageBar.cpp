#include "backends/qt/controls/MessageBar.h"

#include <algorithm>
#include <utility>

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QRegularExpression>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "backends/qt/controls/shown_text.h"

namespace vistrane {

namespace {

/// Shortens names that no line of a small window has room for. Lines break at blanks and after
/// slashes.
QString withShortWords(const QString& text) {
    static const QRegularExpression longWord(
        QStringLiteral("([^\\s/]{24})[^\\s/]{17,}([^\\s/]{24})"));
    return QString(text).replace(longWord, QStringLiteral("\\1\u2026\\2"));
}

} // namespace

MessageBar::MessageBar(QMainWindow& window)
    : icon_(new QLabel), text_(new QLabel), button_(new QToolButton) {
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    setForegroundRole(QPalette::ToolTipText);
    hide();
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    // By default the longest word would set the window's least width.
    text_->setMinimumWidth(1);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    text_->setForegroundRole(QPalette::ToolTipText);
    button_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto* const close = new QToolButton;
    close->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    close->setAccessibleName(tr("Close this message"));
    close->setToolTip(tr("Close this message"));
    close->setAutoRaise(true);
    for (QToolButton* each : {button_, close}) {
        each->setFocusPolicy(Qt::TabFocus);
    }

    auto* const row = new QHBoxLayout(this);
    row->setContentsMargins(14, 4, 14, 4);
    row->setSpacing(12);
    row->addWidget(icon_);
    row->addWidget(text_, 1);
    row->addWidget(button_);
    row->addWidget(close);

    auto* const contents = new QWidget;
    auto* const column = new QVBoxLayout(contents);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(this);
    column->addWidget(window.takeCentralWidget(), 1);
    window.setCentralWidget(contents);
    connect(close, &QToolButton::clicked, this, [this] { closeFirst(); });
    connect(button_, &QToolButton::clicked, this, [this] {
        const std::function<void()> action = messages_.front().action;
        closeFirst();
        if (action) {
            action();
        }
    });
}

void MessageBar::showMessage(BarMessage message) {
    const bool isWaiting =
        std::any_of(messages_.begin(), messages_.end(),
                    [&](const BarMessage& other) { return other.text == message.text; });
    if (isWaiting) {
        return;
    }
    const bool makesRoom = !messages_.empty() && !messages_.front().isWarning;
    if (makesRoom) {
        messages_.pop_front();
    }
    if (!message.isWarning) {
        std::erase_if(messages_, [](const BarMessage& other) { return !other.isWarning; });
    }
    messages_.push_back(std::move(message));
    if (makesRoom || messages_.size() == 1) {
        showFirst();
    }
}

void MessageBar::showFirst() {
    const BarMessage& message = messages_.front();
    const QString text = shownText(message.text);
    const QString shortened = withShortWords(text);
    const int side = style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, this);
    icon_->setPixmap(style()
                         ->standardIcon(message.isWarning ? QStyle::SP_MessageBoxWarning
                                                          : QStyle::SP_MessageBoxInformation)
                         .pixmap(side));
    text_->setText(shortened);
    text_->setToolTip(shortened == text ? QString() : text);
    // A label with selectable text does this by the text's direction, not by the layout's.
    text_->setAlignment(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft) |
                        Qt::AlignVCenter);
    setAccessibleName(text);
    button_->setText(withoutMnemonic(shownText(message.buttonTitle)));
    button_->setVisible(!message.buttonTitle.empty());
    show();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void MessageBar::closeFirst() {
    messages_.pop_front();
    if (messages_.empty()) {
        hide();
    } else {
        showFirst();
    }
}

} // namespace vistrane
