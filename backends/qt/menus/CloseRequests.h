#pragma once

#include <functional>

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QWidget>

namespace vistrane {

/// Reports when the user asks the window manager to close a window, even while a modal dialog
/// blocks the window: Qt drops such requests. On X11 only; elsewhere the dialog must be answered
/// first. Main thread only.
class CloseRequests final : public QAbstractNativeEventFilter {
public:
    /// `asked` is called from the event loop. It may end the process.
    CloseRequests(QWidget& window, std::function<void()> asked);
    ~CloseRequests() override;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    const QPointer<QWidget> window_;
    const std::function<void()> asked_;
};

} // namespace vistrane
