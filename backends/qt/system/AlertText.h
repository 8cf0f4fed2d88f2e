#pragma once

#include <QString>
#include <QTextEdit>

namespace vistrane {

/// One text of an alert: as it is, nothing in it is markup. It has a fixed width, breaks anywhere
/// where a word is wider, and is as high as it needs to be. It can be selected and copied.
///
/// To assistive programs it is a label with that text.
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
