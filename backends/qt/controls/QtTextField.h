#pragma once

#include <string>
#include <utility>

#include <QLabel>
#include <QLineEdit>
#include <QObject>

#include "backends/qt/controls/Action.h"
#include "platform/appkit/NSTextField.h"

namespace vistrane {

/// A text on a widget that outlives it. Keeps the text byte for byte in addition to what is shown.
class QtText : public NSTextField {
public:
    void setNeedsDisplay(bool needed) override;
    void setStringValue(const std::string& text) override;
    std::int32_t intValue() const override;
    NSInteger integerValue() const override;
    void setIntValue(std::int32_t value) override;
    void setIntegerValue(NSInteger value) override;

    const std::string& stringValue() const { return text_; }

protected:
    QtText(QWidget& widget, const QString& text) : any_(widget), text_(text.toStdString()) {}

    void keep(std::string text) { text_ = std::move(text); }
    virtual void show(const std::string& text) = 0;

private:
    QWidget& any_;
    std::string text_;
};

/// A text that only the program changes.
class QtLabel final : public QtText {
public:
    explicit QtLabel(QLabel& widget);

protected:
    void show(const std::string& text) override;

private:
    QLabel& widget_;
};

/// A line that the user edits. Typing changes the field's value immediately. Enter, or losing the
/// focus after an edit, sends the action. Setting a value discards the edit.
class QtTextField final : public QtText {
public:
    explicit QtTextField(QLineEdit& widget);

    void setAction(NSAction action) { action_.set(std::move(action)); }

    /// Sends the action if the user has edited the text.
    void endEditing();

protected:
    void show(const std::string& text) override;

private:
    QLineEdit& widget_;
    bool isEdited_ = false;
    Action action_;
    QObject connections_;
};

} // namespace vistrane
