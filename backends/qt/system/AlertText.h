#pragma once

#include <QString>
#include <QTextEdit>

namespace vistrane {

/// One text of an alert. Nothing in it is markup. It has a fixed width, breaks within words that
/// are wider, and is as high as it needs to be. It can be selected and copied.
///
/// Assistive programs see a label with that text. A QLabel would not break a long path.
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
