#pragma once

#include <QAccessible>
#include <QString>
#include <QWidget>

class QMainWindow;

namespace vistrane {

/// One quiet line below the controls of a window that says what goes on: a red dot, a text, and a
/// warning in a colour of its own. The line keeps its place while it is empty, so that no control
/// moves. A text that does not fit is elided, the warning last; the tool tip has all of it.
///
/// Screen readers can read the line at any time. They are told when `calmStatus` or the warning
/// changes, and a new warning is announced; so a text that changes every second is not read out
/// every second. Main thread only.
class SignWidget : public QWidget {
public:
    /// The window owns it. Empty at first.
    explicit SignWidget(QMainWindow& window);

    /// `calmStatus` is the part of `status` whose changes screen readers are told of. An empty
    /// `status` clears the line.
    void show(const QString& status, const QString& calmStatus, const QString& warning);
    void clear() { show({}, {}, {}); }

    /// The whole line.
    QString text() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    /// Sends the event to assistive technologies.
    virtual void tell(QAccessible::Event type);

private:
    QString status_;
    QString calmStatus_;
    QString warning_;
};

} // namespace vistrane
