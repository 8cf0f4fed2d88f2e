#pragma once

#include <QString>
#include <QTextEdit>

namespace vistrane {

/// One text of an alert, without markup. It has a fixed width, breaks words that are wider, and is
/// as high as necessary. It can be selected and copied.
///
/// For assistive programs it is a label. Not a QLabel, which would not break a long path.
class AlertText final : public QTextEdit {
    Q_OBJECT

public:
    /// `width` is in pixels.
    AlertText(const QString& text, const QFont& font, int width, QWidget* parent);

    QString text() const { return text_; }

private:
    const QString text_;
};

} // namespace vistrane
