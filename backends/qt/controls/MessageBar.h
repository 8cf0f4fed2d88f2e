#pragma once

#include <deque>
#include <functional>
#include <string>

#include <QFrame>

class QLabel;
class QMainWindow;
class QToolButton;

namespace vistrane {

/// A notice for the user, with at most one action.
struct BarMessage {
    /// One sentence, which says what happened and what to do.
    std::string text;
    bool isWarning = true;
    /// The button's title; empty for no button.
    std::string buttonTitle = {};
    std::function<void()> action = {};
};

/// Shows messages above the contents of a window, one at a time, until the user closes them. It
/// takes its place from the contents, so that it covers no control, and never takes the keyboard.
/// Screen readers announce each message. Main thread only.
class MessageBar final : public QFrame {
public:
    /// The window owns it. Hidden at first.
    explicit MessageBar(QMainWindow& window);

    /// Shows the message after those that are waiting. A warning stays until the user closes it.
    /// What is no warning is news: if it is shown, it makes room for any message; if it waits, the
    /// next news replaces it. A text that waits already is ignored.
    void showMessage(BarMessage message);

private:
    void showFirst();
    void closeFirst();

    std::deque<BarMessage> messages_;
    QLabel* icon_;
    QLabel* text_;
    QToolButton* button_;
};

} // namespace vistrane
