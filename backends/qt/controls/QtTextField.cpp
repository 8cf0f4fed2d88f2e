#include "backends/qt/controls/QtTextField.h"

#include "backends/qt/controls/shown_text.h"
#include "platform/foundation/NSString.h"

namespace vistrane {

void QtText::setNeedsDisplay(bool needed) {
    if (needed) {
        any_.update();
    }
}

void QtText::setStringValue(const std::string& text) {
    keep(text);
    show(text);
}

std::int32_t QtText::intValue() const {
    return vistrane::intValue(text_);
}

NSInteger QtText::integerValue() const {
    return vistrane::integerValue(text_);
}

void QtText::setIntValue(std::int32_t value) {
    setStringValue(std::to_string(value));
}

void QtText::setIntegerValue(NSInteger value) {
    setStringValue(std::to_string(value));
}

QtLabel::QtLabel(QLabel& widget) : QtText(widget, widget.text()), widget_(widget) {
    // Never interpret the program's texts as markup.
    widget.setTextFormat(Qt::PlainText);
}

void QtLabel::show(const std::string& text) {
    widget_.setText(shownText(text, true));
}

QtTextField::QtTextField(QLineEdit& widget) : QtText(widget, widget.text()), widget_(widget) {
    QObject::connect(&widget, &QLineEdit::textEdited, &connections_, [this](const QString& text) {
        keep(text.toStdString());
        isEdited_ = true;
    });
    QObject::connect(&widget, &QLineEdit::textChanged, &connections_, [this](const QString& text) {
        if (text != vistrane::shownText(stringValue())) {
            // Neither the program nor a key: a screen reader, which need not move the focus.
            keep(text.toStdString());
            isEdited_ = true;
            endEditing();
        }
    });
    QObject::connect(&widget, &QLineEdit::returnPressed, &connections_, [this] {
        isEdited_ = true;
        endEditing();
        widget_.selectAll();
    });
    QObject::connect(&widget, &QLineEdit::editingFinished, &connections_, [this] { endEditing(); });
}

void QtTextField::endEditing() {
    // Reset first, because the action may end editing in every field.
    if (std::exchange(isEdited_, false)) {
        action_.send(this);
    }
}

void QtTextField::show(const std::string& text) {
    isEdited_ = false;
    const QString shown = shownText(text);
    if (widget_.text() != shown) {
        widget_.setText(shown);
    }
}

} // namespace vistrane
