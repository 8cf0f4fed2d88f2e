#include "backends/qt/system/AlertText.h"

#include <cmath>

#include <QAccessibleWidget>
#include <QTextDocument>
#include <QTextOption>

namespace vistrane {

namespace {

/// Hides the children of the text editor.
class AccessibleText final : public QAccessibleWidget {
public:
    explicit AccessibleText(AlertText& text)
        : QAccessibleWidget(&text, QAccessible::StaticText, text.text()) {}
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
};

QAccessibleInterface* makeAccessible(const QString&, QObject* object) {
    auto* const text = qobject_cast<AlertText*>(object);
    return text == nullptr ? nullptr : new AccessibleText(*text);
}

void makeTextsAccessible() {
    [[maybe_unused]] static const bool isInstalled =
        (QAccessible::installFactory(makeAccessible), true);
}

} // namespace

AlertText::AlertText(const QString& text, const QFont& font, int width, QWidget* parent)
    : QTextEdit(parent), text_(text) {
    makeTextsAccessible();
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setFocusPolicy(Qt::ClickFocus);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    setFont(font);
    document()->setDefaultFont(font);
    document()->setDocumentMargin(0.0);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setPlainText(text);
    setFixedWidth(width);
    document()->setTextWidth(width);
    setFixedHeight(static_cast<int>(std::ceil(document()->size().height())));
}

} // namespace vistrane
