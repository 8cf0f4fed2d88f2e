#pragma once

#include <functional>

#include <QAbstractNativeEventFilter>
#include <QPointer>
#include <QWidget>

namespace vistrane {

/// Reports that the user asks the window manager to close a window, also while a modal dialog
/// blocks it: Qt drops such requests. On X11 only; elsewhere the dialog has to be answered first.
/// Main thread only.
class CloseRequests final : public QAbstractNativeEventFilter {
public:
    /// `asked` is called from the event loop and may end the process.
    CloseRequests(QWidget& window, std::function<void()> asked);
    ~CloseRequests() override;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    const QPointer<QWidget> window_;
    const std::function<void()> asked_;
};

} // namespace vistrane
